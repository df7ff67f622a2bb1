#include "platform/CUtilXmlEvntHdlr.h"
#include "tests/fakes/Fakes.h"

#include <QXmlInputSource>

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>

namespace Orvia {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A reader that notes what its handlers are called with and what the levels tell them.
class ProbeReader : public CUtilXmlEvntHdlr
{
public:
    ProbeReader();

    bool read(const QByteArray &document)
    {
        QXmlInputSource source;
        source.setData(document);
        return parse(&source);
    }
    int elemNote(const QString &name, const QXmlAttributes &attributes, bool start)
    {
        const QString kind = start ? "<" + attributes.value("id") : QStringLiteral(">");
        bool taken = true;
        if (start)
            taken = incrLevel("Note");
        seen.push_back((name + kind + (taken ? "" : " refused")).toStdString());
        if (start && throwing)
            throwing();
        for (int outside = 0; start && outside <= 3; ++outside) {
            if (isLevel(-outside, "Note"))
                levels += std::to_string(outside);
        }
        levels += start ? " " : "";
        if (!start)
            decrLevel();
        return attributes.value("id") == "no" ? 1 : 0;
    }
    int elemRclInstrument(const QString &name, const QXmlAttributes &attributes, bool start) override
    {
        seen.push_back("own Instrument");
        return CUtilXmlEvntHdlr::elemRclInstrument(name, attributes, start);
    }

    std::vector<std::string> seen;
    std::string levels; ///< for each start of a Note, which of the levels around it are Notes
    std::function<void()> throwing;
};

using Frame = CUtilXmlEvntHdlr;
const Frame::TableEntry table[] = {
    {"Instrument", &Frame::elemRclInstrument},
    {"Module", &Frame::elemRclModule},
    {"Note", static_cast<Frame::Handler>(&ProbeReader::elemNote)},
    {"Root", &Frame::elemRclRoot},
};

ProbeReader::ProbeReader()
{
    setElemTbl(4, table);
    setModuleName("Mine");
    setFileName("probe%2.xml");
}

class XmlFrameTest : public testing::Test
{
protected:
    XmlFrameTest() { resetFakes(); }
    static QByteArray nested(int depth, const QByteArray &innermost = "<Note id='in'/>")
    {
        return QByteArray("<x>").repeated(depth) + innermost + QByteArray("</x>").repeated(depth);
    }
    ProbeReader reader;
};

TEST_F(XmlFrameTest, CallsTheHandlerOfEachNameAtStartAndEnd)
{
    EXPECT_TRUE(reader.read("<Root><Note id='1'><note id='2'/></Note><Instrument/><Notes/><Note/></Root>"));
    EXPECT_THAT(reader.seen,
                ElementsAre("Note<1", "Note>", "own Instrument", "own Instrument", "Note<", "Note>"));
    EXPECT_THAT(calls.all, IsEmpty());
}

TEST_F(XmlFrameTest, EveryElementIsALevel)
{
    EXPECT_TRUE(reader.read("<Root><Note><Note/><x><Note/></x></Note><Module><Note/></Module></Root>"));
    EXPECT_EQ(reader.levels, "0 01 02 0 ");
    EXPECT_FALSE(reader.isLevel(0, "Root")); // all closed again
    EXPECT_FALSE(reader.isLevel(-1, "Root"));
    EXPECT_FALSE(reader.isLevel(1, "Root"));
    reader.decrLevel(); // one too many does no harm
    EXPECT_TRUE(reader.incrLevel("Note"));
    EXPECT_TRUE(reader.isLevel(0, "Note"));
    EXPECT_FALSE(reader.isLevel(0, "Not"));
}

TEST_F(XmlFrameTest, Refuses65LevelsButKeepsTheBalance)
{
    EXPECT_TRUE(reader.read(nested(63)));
    EXPECT_THAT(reader.seen, ElementsAre("Note<in", "Note>"));
    reader.seen.clear();
    reader.levels.clear();
    EXPECT_TRUE(reader.read("<Root>" + nested(62, "<Note id='1'><Note id='2'/></Note><Note id='3'/>") +
                            "<Note id='4'><Note id='5'/></Note></Root>"));
    EXPECT_THAT(reader.seen, ElementsAre("Note<1", "Note<2 refused", "Note>", "Note>", "Note<3", "Note>",
                                         "Note<4", "Note<5", "Note>", "Note>"));
    EXPECT_EQ(reader.levels, "0 1 0 0 01 "); // the refused one knows its parent still
}

TEST_F(XmlFrameTest, RefusesDocumentsDeeperThan256)
{
    EXPECT_TRUE(reader.read(nested(255)));
    EXPECT_FALSE(reader.read(nested(256)));
    EXPECT_FALSE(reader.read(nested(20000)));
    EXPECT_THAT(calls.of("debug"),
                ElementsAre(HasSubstr("nested deeper than 256"), HasSubstr("nested deeper than 256")));
    EXPECT_TRUE(reader.read("<Note/>")); // starts afresh
    EXPECT_EQ(reader.levels.back(), ' ');
}

TEST_F(XmlFrameTest, TellsItsObserverWhatBecameOfElements)
{
    std::vector<std::string> outcomes;
    reader.setObserver([&](const QString &name, Frame::Outcome outcome, int line, int column) {
        const char *texts[] = {"handled", "refused", "level refused", "foreign"};
        EXPECT_GT(column, 0);
        outcomes.push_back(name.toStdString() + " " + texts[static_cast<int>(outcome)] + " " +
                           std::to_string(line));
    });
    EXPECT_TRUE(
        reader.read("<Root>\n<Note id='no'/>\n<x/>\n<Module name='Yours'><Note/></Module>\n<Note/></Root>"));
    EXPECT_THAT(outcomes, ElementsAre("Root handled 1", "Note refused 2", "x foreign 3", "Module handled 4",
                                      "Note level refused 4", "Note handled 5"));
}

TEST_F(XmlFrameTest, ExceptionsOfHandlersEndTheParse)
{
    const std::vector<std::pair<std::function<void()>, std::string>> cases = {
        {[] { throw std::runtime_error("broken"); }, "element Note: broken"},
        {[] { throw 5; }, "element Note: unknown exception"},
        {[] { throw std::bad_alloc(); }, "element Note: "}};
    for (const auto &[throwing, text] : cases) {
        resetFakes();
        reader.seen.clear();
        reader.throwing = throwing;
        EXPECT_FALSE(reader.read("<Root>\n\n<Note/><Note/></Root>"));
        EXPECT_EQ(reader.seen.size(), 1u);
        ASSERT_EQ(calls.of("debug").size(), 1u);
        EXPECT_THAT(calls.of("debug")[0], testing::StartsWith("[1 0] probe%2.xml:3:"));
        EXPECT_THAT(calls.of("debug")[0], HasSubstr(text));
    }
}

TEST_F(XmlFrameTest, TracesErrorsThatTheDebugOutputDoesNotWant)
{
    answers.debugLevel = 0;
    EXPECT_FALSE(reader.read("<Root>"));
    EXPECT_THAT(calls.of("debug"), IsEmpty());
    EXPECT_EQ(calls.of("trace").size(), 1u);
}

} // namespace
} // namespace Orvia
