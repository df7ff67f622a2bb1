#include "tests/unit/ReaderFixture.h"
#include "xmlconfig/CXmlParseMenuTree.h"
#include "xmlconfig/SMenuTree.h"

#include <limits>

namespace Orvia {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::SizeIs;

constexpr int W0 = 1'000'000; // what the utility library answers here
constexpr int W1 = 2'000;

class MenuTreeReaderTest : public ReaderTest
{
protected:
    using Reader = CXmlParseMenuTree;

    static QByteArray menu(const QByteArray &contents)
    {
        return "<Root><Startup><Menu>" + contents + "</Menu></Startup></Root>";
    }
    static QByteArray elements(const char *name, int first, int last, const QByteArray &contents = "")
    {
        QByteArray text;
        for (int i = first; i <= last; ++i)
            text += "<" + QByteArray(name) + " id='" + QByteArray::number(i) + "'>" + contents + "</" + name +
                    ">";
        return text;
    }
    static const SMenuTree *node(const char *key, std::size_t menu = 0)
    {
        const auto &entries = *handovers.menus.at(menu);
        const auto found = entries.find(key);
        return found != entries.end() ? found->second : nullptr;
    }
    /// -1 when there is no such entry.
    static int position(const char *key, std::size_t menu = 0)
    {
        const SMenuTree *found = node(key, menu);
        return found != nullptr ? found->position : -1;
    }
    /// "key|label|position" of each entry.
    static Texts entries()
    {
        Texts texts;
        for (const auto &[key, node] : *handovers.menus.back()) {
            EXPECT_FALSE(node->flag);
            texts.push_back((key + "|" + node->label + "|").toStdString() + std::to_string(node->position));
        }
        return texts;
    }
};

TEST_F(MenuTreeReaderTest, FlattensTheTree)
{
    const QByteArray file =
        write(menu("<Group id='File' label='&amp;Fil\xc3\xa9'><Item id='Open' label='Open'/><SubGroup "
                   "label='Last' id='Recent'><Item id='Last'/></SubGroup></Group><Group id='Edit'/>"));
    EXPECT_TRUE(CXmlParseMenuTree::parseProperties(file));
    EXPECT_THAT(entries(),
                ElementsAre("Edit||2000000", "File|&Fil\xc3\xa9|1000000", "File::Open|Open|1000010",
                            "File:Recent|Last|1002000", "File:Recent:Last||1002010"));
    // Items behind a subgroup carry its id in their key, in later groups as well.
    resultsOf<Reader>(menu("<Group id='A'><SubGroup id='S'><Item id='1'/></SubGroup><Item id='2'/></Group>"
                           "<Group id=''><Item id='3'/><SubGroup id=''><Item id=''/></SubGroup></Group>"));
    EXPECT_THAT(entries(), ElementsAre("||2000000", ":||2002000", "::||2002010", ":S:3||2000010",
                                       "A||1000000", "A:S||1002000", "A:S:1||1002010", "A:S:2||1002020"));
}

TEST_F(MenuTreeReaderTest, RefusesThe100thSubgroupAndItem)
{
    const std::string results = resultsOf<Reader>(menu(
        "<Group id='G'>" + elements("Item", 1, 100) + elements("SubGroup", 1, 99, elements("Item", 1, 100)) +
        "<SubGroup id='100'><Item id='in'/></SubGroup></Group><Group id='H'><SubGroup "
        "id='1'><Item id='1'/></SubGroup></Group>"));
    int refused = 0;
    for (std::size_t at = results.find('1'); at != std::string::npos; at = results.find('1', at + 1))
        ++refused;
    EXPECT_EQ(refused, 1 + 99 + 1 + 1); // the last item meets the full count of the 99th subgroup
    EXPECT_TRUE(results.ends_with("Item1 SubGroup1 Item1 Group0 SubGroup0 Item0")) << results;
    EXPECT_THAT(*handovers.menus[0], SizeIs(1 + 99 + 99 * 100 + 3));
    EXPECT_EQ(position("G::99"), W0 + 990);
    EXPECT_EQ(position("G::100"), -1);
    EXPECT_EQ(position("G:99"), W0 + 99 * W1);
    EXPECT_EQ(position("G:99:99"), W0 + 99 * W1 + 990);
    EXPECT_EQ(position("G:100"), -1);
    EXPECT_EQ(position("H:1:1"), 2 * W0 + W1 + 10);
    // A refused subgroup takes no id, and what it holds is judged on its own.
    resultsOf<Reader>(
        menu("<Group id='G'>" + elements("SubGroup", 1, 100, "<Item id='x' label='of this'/>") + "</Group>"));
    EXPECT_THAT(entries(), Contains("G:99:x|of this|" + std::to_string(W0 + 99 * W1 + 20)));
}

TEST_F(MenuTreeReaderTest, RefusesMisplacedElementsAndThoseWithoutIdAndCountsNone)
{
    const std::vector<std::tuple<QByteArray, std::string, Texts>> cases = {
        {"<Group id='a'/><Menu/><Group id='b'/>", "Group1 Menu0 Group1", {}},
        {"<x><Menu><Group id='a'/></Menu></x><Menu><Group id='b'/></Menu>",
         "Menu1 Group1 Menu0 Group0",
         {"b||1000000"}},
        {"<Group id='a'><SubGroup id='b'><Item id='c'/></SubGroup></Group><Menu/>",
         "Group1 SubGroup1 Item1 Menu0",
         {}},
        {"<Menu><Group label='no id'/><Group/><Group ID='a'/><Group id='b'/></Menu>",
         "Menu0 Group1 Group0 Group1 Group0",
         {"b||1000000"}},
        {"<Menu><Group id='a'><SubGroup label='b'/><SubGroup/><Item label='c'/><Item/><SubGroup id='d'>"
         "<Item label='e'/><Item/><Item id='f'/></SubGroup></Group></Menu>",
         "Menu0 Group0 SubGroup1 SubGroup0 Item1 Item0 SubGroup0 Item1 Item0 Item0",
         {"a||1000000", "a:d||1002000", "a:d:f||1002010"}},
        {"<Menu><SubGroup id='a'/><Item id='b'/><x><Group id='c'/></x><Group id='d'><Group id='e'/>"
         "<SubGroup id='f'><SubGroup id='g'/><x><Item id='h'/></x></SubGroup></Group></Menu>",
         "Menu0 SubGroup1 Item1 Group1 Group0 Group1 SubGroup0 SubGroup1 Item1",
         {"d||1000000", "d:f||1002000"}},
        // What stands in a refused element is judged by its own parent.
        {"<Menu><Group label='a'><SubGroup id='b'><Item id='c'><Item "
         "id='d'/></Item></SubGroup></Group></Menu>",
         "Menu0 Group1 SubGroup0 Item0 Item1",
         {":b||2000", ":b:c||2010"}},
    };
    for (const auto &[contents, results, expected] : cases) {
        EXPECT_EQ(resultsOf<Reader>("<Startup>" + contents + "</Startup>"), results) << contents.constData();
        EXPECT_EQ(entries(), expected) << contents.constData();
    }
    EXPECT_THAT(calls.of({"debug", "error"}), testing::IsEmpty());
}

TEST_F(MenuTreeReaderTest, NumbersGroupsThroughAllMenusAndKeepsReplacedNodes)
{
    std::vector<const SMenuTree *> seen;
    resultsOf<Reader>("<Startup><Menu><Group id='A' label='one'/><Group id='B'/><Group id='A'/></Menu>"
                      "<Menu><Group id='A'><SubGroup id='S'/></Group></Menu></Startup>",
                      [&] {
                          if (!handovers.menus.empty())
                              seen.push_back(node("A"));
                      });
    EXPECT_THAT(handovers.menus, SizeIs(2));
    EXPECT_THAT(*handovers.menus[0], SizeIs(2));
    EXPECT_NE(seen[1], nullptr);
    EXPECT_EQ(seen[1], node("A")); // whoever holds it sees the new values
    EXPECT_EQ(node("A")->label, "");
    EXPECT_EQ(position("A"), 3 * W0);
    EXPECT_EQ(position("B"), 2 * W0);
    EXPECT_EQ(position("A", 1), 4 * W0);
    EXPECT_EQ(position("A:S", 1), 4 * W0 + W1);
}

TEST_F(MenuTreeReaderTest, PositionsOfVeryManyGroupsStopAtTheLargestNumber)
{
    resultsOf<Reader>(menu(elements("Group", 1, 2'500, "<SubGroup id='s'><Item id='i'/></SubGroup>")));
    EXPECT_THAT(*handovers.menus[0], SizeIs(7'500));
    EXPECT_EQ(position("2147:s:i"), 2147 * W0 + W1 + 10);
    EXPECT_EQ(position("2148"), std::numeric_limits<int>::max());
    EXPECT_EQ(position("2500:s:i"), std::numeric_limits<int>::max());
}

} // namespace
} // namespace Orvia
