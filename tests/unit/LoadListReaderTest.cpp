#include "tests/unit/StartupFixture.h"

#include <QFile>

namespace Orvia {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

using Texts = std::vector<std::string>;

class LoadListReaderTest : public StartupTest
{
protected:
    /// The module files that the startup object receives from this document.
    Texts filesOf(const QByteArray &document)
    {
        calls.clear();
        startup.loadListFiles.clear();
        const QByteArray name = folder.filePath("document.xml").toLatin1();
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(document);
        file.close();
        startup.loadListName = name.constData();
        startup.parseLoadList();
        Texts files;
        for (const QFileInfo &info : startup.loadListFiles)
            files.push_back(info.filePath().toStdString());
        return files;
    }
    /// A load list with its section's contents.
    static QByteArray list(const QByteArray &contents)
    {
        return "<?xml version='1.0'?><Root><Instrument><Module name='MainStartup'><ModuleLoadList "
               "version='1.0'>" +
               contents + "</ModuleLoadList></Module></Instrument></Root>";
    }
    static QByteArray attributes(int count)
    {
        QByteArray text;
        for (int i = 0; i < count; ++i)
            text += " a" + QByteArray::number(i) + "='x'";
        return text;
    }
};

TEST_F(LoadListReaderTest, JoinsDirectoriesAndNames)
{
    const std::vector<std::pair<QByteArray, Texts>> cases = {
        {"<Directory nameLinux='/opt/x'><File name='a.so'/></Directory>", {"/opt/x/a.so"}},
        {"<Directory nameLinux='/opt/x/'><File name='a.so'/></Directory>", {"/opt/x/a.so"}},
        {"<Directory nameLinux='/opt/x\\'><File name='a.so'/></Directory>", {"/opt/x\\a.so"}},
        {"<Directory nameWin='D:\\m'><File name='a.so'/></Directory>", {"a.so"}},
        {"<Directory nameLinux='/x'/><Directory nameLinux='' nameWin='y'><File name='a.so'/></Directory>",
         {"/x/a.so"}},
        {"<Directory nameLinux='/x'/><Directory><File name='a.so'/></Directory>", {"/x/a.so"}},
        {"<Directory nameLinux='/x'/><Directory namelinux='/y'><File name='a.so'/></Directory>", {"/x/a.so"}},
        {"<Directory nameLinux='/x'><File name='a.so'/></Directory><Any><File name='b.so'/></Any>"
         "<Directory nameLinux='/y'><File name='c.so'/><Directory nameLinux='/z'/><File "
         "name='d.so'/></Directory>",
         {"/x/a.so", "/x/b.so", "/y/c.so", "/z/d.so"}},
        {"<Directory nameLinux='/o'><File name='../../lib/a.so'/><File name='/abs/a.so'/><File "
         "name='.\\a..so'/>"
         "<File name='./.'/><File name=''/><File Name='b.so'/></Directory>",
         {"/o/lib/a.so", "/o/abs/a.so", "/o/a..so", "/o/"}},
    };
    for (const auto &[contents, files] : cases) {
        EXPECT_EQ(filesOf(list(contents)), files) << contents.constData();
        EXPECT_THAT(calls.of({"debug", "error", "option"}), IsEmpty());
    }
}

TEST_F(LoadListReaderTest, TakesFilesTwoLevelsInsideTheList)
{
    const QByteArray file = "<File name='a.so'/>";
    EXPECT_THAT(filesOf(list(file)), IsEmpty());
    EXPECT_THAT(filesOf(list("<D><E>" + file + "</E></D>")), IsEmpty());
    EXPECT_THAT(filesOf("<Root><Startup><D>" + file + "</D></Startup></Root>"), IsEmpty());
    EXPECT_THAT(filesOf("<ModuleLoadList><File name='a.so'>" + file + "</File></ModuleLoadList>"),
                ElementsAre("a.so"));
    EXPECT_THAT(filesOf("<x><ModuleLoadList><Foreign>" + file + "</Foreign></ModuleLoadList></x>"),
                ElementsAre("a.so"));
}

TEST_F(LoadListReaderTest, ReadsElementsWith1To32Attributes)
{
    for (auto [count, taken] : {std::pair{30, true}, {31, true}, {32, false}}) { // and the one that counts
        const QByteArray more = attributes(count);
        EXPECT_EQ(filesOf(list("<D><File name='a.so'" + more + "/></D>")).size(), taken ? 1u : 0u) << count;
        EXPECT_THAT(filesOf(list("<Directory nameLinux='/x'" + more + "><File name='a.so'/></Directory>")),
                    ElementsAre(taken ? "/x/a.so" : "a.so"));
    }
    EXPECT_THAT(filesOf(list("<Directory nameLinux='/x'><File/></Directory>")), IsEmpty());
}

TEST_F(LoadListReaderTest, FitsFilesToTheInstrumentsOptions)
{
    answers.knownOptions = {{"K1", 1}, {"K2", 2}, {"K3", 0x30003}, {" K2", 288}};
    answers.installedOptions = {2, 3};
    struct Case
    {
        QByteArray option;
        bool taken;
        Texts asked;
    };
    const std::vector<Case> cases = {
        {"", true, {}},
        {"|||", true, {}},
        {"K2", true, {"find K2", "has 2"}},
        {"K1", false, {"find K1", "has 1"}},
        {"K3", true, {"find K3", "has 3"}}, // the identifier's low 16 bits
        {"K1||K2|K3", true, {"find K1", "has 1", "find K2", "has 2"}},
        {"k2|K2", true, {"find k2", "10008 > k2 for module ./a.so", "find K2", "has 2"}},
        {"K1| K2", false, {"find K1", "has 1", "find  K2", "10008 >  K2 for module ./a.so"}},
        {" ", false, {"find  ", "10008 >   for module ./a.so"}},
    };
    for (const Case &expected : cases) {
        const Texts files = filesOf(list("<D><File name='./a.so' option='" + expected.option + "'/></D>"));
        EXPECT_EQ(files.size(), expected.taken ? 1u : 0u) << expected.option.constData();
        EXPECT_EQ(calls.of({"option", "error"}), expected.asked);
    }
    // Unknown options are reported of files in the wrong place and of files without a name, too.
    EXPECT_THAT(filesOf(list("<File name='b.so' option='U1|U2'/><D><File option='U3'/></D>")), IsEmpty());
    EXPECT_THAT(calls.of("error"), ElementsAre("10008 > U1 for module b.so", "10008 > U2 for module b.so",
                                               "10008 > U3 for module "));
    HwAbstractionLayer::m_repository = nullptr; // knows no option
    EXPECT_THAT(filesOf(list("<D><File name='a.so' option='K2'/><File name='b.so'/></D>")),
                ElementsAre("b.so"));
    EXPECT_THAT(calls.of("error"), ElementsAre("10008 > K2 for module a.so"));
}

TEST_F(LoadListReaderTest, LeavesTheSectionsOfOtherModulesAlone)
{
    answers.knownOptions = {};
    const QByteArray contents = "<ModuleLoadList><Directory nameLinux='/x'><File name='a.so' option='U'/>"
                                "<File name='b.so'/></Directory></ModuleLoadList><Startup><RegKey "
                                "type='defaultMaster' value='1'/></Startup>";
    EXPECT_THAT(filesOf("<Root><Module name='Other'>" + contents + "<Module name='MainStartup'>" + contents +
                        "</Module></Module></Root>"),
                IsEmpty());
    EXPECT_THAT(calls.of({"error", "property"}), IsEmpty());
    for (const char *module : {"<Module name='MainStartup'>", "<Module>", "<Module name='Other'/><Module>"})
        EXPECT_THAT(filesOf("<Root>" + QByteArray(module) + contents + "</Module></Root>"),
                    ElementsAre("/x/b.so"));
    EXPECT_THAT(
        filesOf("<Root><Module name='mainstartup'>" + contents + "</Module><D>" + contents + "</D></Root>"),
        ElementsAre("/x/b.so")); // the section's end is noticed
}

TEST_F(LoadListReaderTest, KeepsWhatStandsBeforeAnErrorAndSaysWhereThatIs)
{
    EXPECT_THAT(
        filesOf("<ModuleLoadList>\n<D>\n<File name='a.so'/>\n<File name='b.so'></D>\n<File name='c.so'/>"),
        ElementsAre("a.so", "b.so"));
    ASSERT_THAT(calls.of("debug"),
                ElementsAre(MatchesRegex("\\[1 0\\] .*/document.xml:4:[0-9]+: XML error: .*; "
                                         "what was read before it stays in effect")));
    EXPECT_EQ("[1 0] " + calls.of("trace")[0], calls.of("debug")[0]);
}

TEST_F(LoadListReaderTest, RefusesDocumentTypesAndSoAllEntities)
{
    const QByteArray use = "<ModuleLoadList><D><File name='&e;.so'/><File name='a.so'/></D></ModuleLoadList>";
    QByteArray bomb = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx'>";
    for (int i = 1; i < 30; ++i) {
        const QByteArray inner = "&e" + QByteArray::number(i - 1) + ";";
        bomb += "<!ENTITY e" + QByteArray::number(i) + " '" + inner.repeated(10) + "'>";
    }
    for (const QByteArray &document :
         {"<!DOCTYPE a>" + use, "<!DOCTYPE a [<!ENTITY e 'x'>]>" + use,
          "<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/hostname'>]>" + use,
          "<!DOCTYPE a SYSTEM 'http://nowhere.invalid/a.dtd'>" + use, bomb + "]><a>&e29;</a>",
          "<!DOCTYPE a [<!ENTITY e '" + QByteArray(1 << 20, 'x') + "'>]><a>" +
              QByteArray("&e;").repeated(100000) + "</a>",
          "<!DOCTYPE a [<!ELEMENT a " + QByteArray(100000, '(') + "]><a/>"}) {
        EXPECT_THAT(filesOf(document), IsEmpty());
        EXPECT_THAT(calls.of("debug"), ElementsAre(HasSubstr("document type declarations are not accepted")));
    }
}

TEST_F(LoadListReaderTest, DocumentsThatCannotBeReadAddNothing)
{
    for (const QByteArray &document :
         {QByteArray(), QByteArray("no XML"), QByteArray("<File name='a.so'"), QByteArray(5000, '\0'),
          QByteArray("\xff\xfe\x3c"), QByteArray(1 << 20, '<')}) {
        EXPECT_THAT(filesOf(document), IsEmpty());
        EXPECT_EQ(calls.of("debug").size(), 1u);
    }
}

} // namespace
} // namespace Orvia
