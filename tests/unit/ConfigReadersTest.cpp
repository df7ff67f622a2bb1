#include "tests/unit/ReaderFixture.h"
#include "xmlconfig/CXmlParseLanguages.h"
#include "xmlconfig/CXmlParseMasterRegKeys.h"
#include "xmlconfig/CXmlParseMenuTree.h"

#include <QDir>

namespace Orvia {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class ConfigReadersTest : public ReaderTest
{
protected:
    /// The files that the load list reader finds.
    std::vector<QFileInfo> filesOf(const QByteArray &file)
    {
        startup.loadListName = file.constData();
        startup.parseLoadList();
        return {startup.loadListFiles.begin(), startup.loadListFiles.end()};
    }
};

TEST_F(ConfigReadersTest, MasterKeysAreReadWithAndWithoutTheLoadList)
{
    const auto key = [](int more) {
        QByteArray text = "<RegKey type='defaultMaster' value='" + QByteArray::number(more + 2) + "'";
        for (int i = 0; i < more; ++i)
            text += " a" + QByteArray::number(i) + "='x'";
        return text + "/>";
    };
    const QByteArray file = write(
        "<Root><Startup version='1.0'><RegKey type='defaultMaster' value=' d '/>"
        "<RegKey value='p' type='preferedMaster'/><RegKey type='requiredMemoryMB' value='many'/>"
        "<RegKey type='requiredMemoryMB' value=''/><RegKey type='DefaultMaster' value='x'/>"
        "<RegKey type='defaultMaster'/><RegKey value='x'/><RegKey/>" +
        key(30) + key(31) +
        "<Any><RegKey type='defaultMaster' value='x'/></Any></Startup><ModuleLoadList><D><File name='a.so' "
        "option='any'/></D></ModuleLoadList><RegKey type='defaultMaster' value='x'/><Module "
        "name='Other'><Startup><RegKey type='defaultMaster' value='x'/></Startup></Module></Root>");
    const Texts keys = {"DefaultMaster =  d ", "PreferedMaster = p", "RequiredMemoryMB = many",
                        "RequiredMemoryMB = ", "DefaultMaster = 32"};
    EXPECT_TRUE(CXmlParseMasterRegKeys::parseProperties(file));
    EXPECT_EQ(calls.of("property"), keys);
    EXPECT_THAT(calls.of({"option", "error", "debug"}), IsEmpty()); // files are none of its business
    calls.clear();
    filesOf(file);
    EXPECT_EQ(calls.of("property"), keys);
}

TEST_F(ConfigReadersTest, LanguagesAreThoseWhoseFileIsThere)
{
    for (const char *directory : {"sub", "folder.qm"})
        ASSERT_TRUE(QDir(folder.path()).mkdir(directory));
    for (const char *file : {"english.qm", "english.QM", "english.qm.bak", "qm", "sub/deutsch.qm"})
        write("", file);
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    const auto in = [](const QByteArray &directory, const QByteArray &languages) {
        return "<Directory" + directory + ">" + languages + "</Directory>";
    };
    const QByteArray here = " nameLinux='" + folder.path().toUtf8() + "'";
    const QByteArray hereWithSlash = " nameLinux='" + folder.path().toUtf8() + "/'";
    const QByteArray english = "<Language name='E' path='english.qm'/>";
    const QByteArray fromRoot =
        "<Language name='R' path='" + folder.path().mid(1).toUtf8() + "/english.qm'/>";
    const std::vector<std::pair<QByteArray, Texts>> cases = {
        {in(here, english + "<Language path='sub/deutsch.qm' name='D'/>"),
         {"D=sub/deutsch.qm", "E=english.qm"}},
        {in(hereWithSlash, english), {"E=english.qm"}},
        {in(" nameLinux='sub'", "<Language name='D' path='deutsch.qm'/>"), {"D=sub/deutsch.qm"}},
        {in(here, "") + in(" nameWin='x'", english), {"E=english.qm"}}, // keeps the directory before
        {in(here, "") + in(" nameLinux=''", english + fromRoot), {"R=english.qm"}},
        {in("", fromRoot), {"R=english.qm"}},
        {in(here, "<Language name='1' path='english.QM'/><Language name='2' path='english.qm.bak'/>"
                  "<Language name='3' path='folder.qm'/><Language name='4' path='qm'/>"
                  "<Language name='5' path='missing.qm'/><Language name='6' path=''/>"),
         {}},
        {in(here, "<Language name='E'/><Language path='english.qm'/><Language/><Language name='E' a='b'/>"
                  "<Language path='english.qm' a='b'/>"),
         {}},
        {in(" nameLinux='" + folder.path().toUtf8() + "/english.qm'", "<Language name='E' path=''/>"), {}},
        {in(here, english + "<Language name='E' path='sub/deutsch.qm'/>"), {"E=sub/deutsch.qm"}},
        {in(here, english + "<Language name='E' path='english.QM'/><Language name='' path='english.qm'/>"),
         {"=english.qm", "E=english.qm"}},
    };
    for (const auto &[contents, expected] : cases) {
        resultsOf<CXmlParseLanguages>("<Startup><Languages>" + contents + "</Languages></Startup>");
        Texts found;
        for (const auto &[name, path] : *handovers.languages.back())
            found.push_back(QString(name + "=" + path).remove(folder.path() + "/").toStdString());
        EXPECT_EQ(found, expected) << contents.constData();
    }
    EXPECT_EQ(fileExtension, "qm");
    EXPECT_EQ(languageDir, "Languages");
}

TEST_F(ConfigReadersTest, LanguagesStandInADirectoryOfTheirList)
{
    write("", "a.qm");
    const QByteArray here = "<Directory nameLinux='" + folder.path().toUtf8() + "'>";
    const QByteArray one = "<Language name='1' path='a.qm'/>";
    EXPECT_EQ(resultsOf<CXmlParseLanguages>("<Root><Languages>" + here + one + "</Directory></Languages>" +
                                            "<Startup>" + one + here + one + "</Directory><Languages>" + one +
                                            "</Languages></Startup></Root>"),
              "Languages1 Directory0 Language1 Language1 Directory1 Language1 Languages0 Language1");
    EXPECT_THAT(handovers.languages, ElementsAre(testing::Pointee(IsEmpty())));
    // A second list starts empty; the directory carries over to it.
    resultsOf<CXmlParseLanguages>("<Startup><Languages>" + here + one +
                                  "</Directory></Languages><Languages><Directory><Language name='2' "
                                  "path='a.qm'/></Directory></Languages></Startup>");
    ASSERT_THAT(handovers.languages, SizeIs(3));
    EXPECT_THAT(*handovers.languages[1], ElementsAre(Pair("1", folder.filePath("a.qm"))));
    EXPECT_THAT(*handovers.languages[2], ElementsAre(Pair("2", folder.filePath("a.qm"))));
}

/// One document with a load list of this many files, keys, a menu of as many entries, and languages.
QByteArray wholeDocument(int count, const QByteArray &directory)
{
    QByteArray files;
    QByteArray groups;
    for (int i = 0; i < count; ++i)
        files += "<File name='m" + QByteArray::number(i) + ".so'/>";
    for (int i = 0; i < count / 5; ++i)
        groups += "<Group id='g" + QByteArray::number(i) +
                  "'><SubGroup id='s'><Item id='1'/><Item id='2'/><Item id='3'/></SubGroup></Group>";
    return "<Root><Instrument><Module name='MainStartup'><ModuleLoadList><Directory nameLinux='" + directory +
           "'>" + files +
           "</Directory></ModuleLoadList><Startup><RegKey type='defaultMaster' value='k'/><Menu>" + groups +
           "</Menu><Languages><Directory><Language name='not there' path='a.qm'/></Directory><Directory "
           "nameLinux='" +
           directory +
           "'><Language name='E' "
           "path='a.qm'/></Directory></Languages></Startup></Module></Instrument></Root>";
}

TEST_F(ConfigReadersTest, EachTakesItsOwnSectionOfOneDocument)
{
    for (int count : {5, 10'000}) {
        resetFakes();
        startup.loadListFiles.clear();
        write("", "a.qm");
        const QByteArray file = write(wholeDocument(count, folder.path().toUtf8()));
        EXPECT_TRUE(CXmlParseMenuTree::parseProperties(file));
        EXPECT_TRUE(CXmlParseLanguages::parseProperties(file));
        EXPECT_THAT(calls.all, SizeIs(2)); // the two hand-overs
        EXPECT_TRUE(CXmlParseMasterRegKeys::parseProperties(file));
        EXPECT_THAT(calls.of("property"), ElementsAre("DefaultMaster = k"));
        EXPECT_THAT(startup.loadListFiles, IsEmpty());
        const std::vector<QFileInfo> files = filesOf(file);
        ASSERT_EQ(files.size(), static_cast<std::size_t>(count));
        EXPECT_EQ(files.back().filePath(), folder.filePath("m" + QString::number(count - 1) + ".so"));
        ASSERT_THAT(handovers.menus, SizeIs(1));
        EXPECT_EQ(handovers.menus[0]->size(), static_cast<std::size_t>(count));
        EXPECT_EQ(handovers.menus[0]->count("g" + QString::number(count / 5 - 1) + ":s:3"), 1u);
        ASSERT_THAT(handovers.languages, SizeIs(1));
        EXPECT_THAT(*handovers.languages[0], ElementsAre(Pair("E", folder.filePath("a.qm"))));
    }
}

TEST_F(ConfigReadersTest, DocumentsThatCannotBeReadGiveFalseAndWhatStandsBeforeTheError)
{
    const auto readers = {&CXmlParseMenuTree::parseProperties, &CXmlParseLanguages::parseProperties,
                          &CXmlParseMasterRegKeys::parseProperties};
    for (auto *parse : readers) {
        for (const char *name : {"/no/such/file.xml", "/", "", static_cast<const char *>(nullptr)})
            EXPECT_FALSE(parse(name));
    }
    EXPECT_THAT(calls.of({"handover", "property"}), IsEmpty());
    const QByteArray broken = write("<Startup><Menu><Group id='A'/></Menu><Languages/>"
                                    "<RegKey type='defaultMaster' value='k'/></Root>");
    for (auto *parse : readers)
        EXPECT_FALSE(parse(broken));
    EXPECT_THAT(calls.of({"handover", "property"}), ElementsAre("menu", "languages", "DefaultMaster = k"));
    EXPECT_THAT(*handovers.menus[0], SizeIs(1));
}

} // namespace
} // namespace Orvia
