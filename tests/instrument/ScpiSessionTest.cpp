#include "examples/instrument/ScpiDll/ScpiSession.h"

#include "examples/instrument/ScpiDll/ScpiError.h"
#include "examples/instrument/ScpiDll/ScpiExtensions.h"
#include "examples/instrument/SourceSettings.h"
#include "platform/ErrorManager.h"
#include "tests/instrument/FakeSettings.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

namespace Orvia {

class ScpiSessionTest : public testing::Test
{
protected:
    ScpiSessionTest()
    {
        registerScpiErrors();
        ErrorManager()->destroyAllAnnouncements();
    }
    ~ScpiSessionTest() override { withdrawScpiErrors(); }

    std::string ask(const std::string &message) { return session.execute(message); }

    FakeSettings settings;
    int selfTestResult = 0;
    ScpiExtensions extensions;
    ScpiInstrument instrument{settings, "Orvia,SG-100,1,1.0.0", [this] { return selfTestResult; },
                              extensions};
    ScpiSession session{instrument};
};

TEST_F(ScpiSessionTest, SetsAndAnswersInOneMessage)
{
    EXPECT_EQ(ask("*IDN?"), "Orvia,SG-100,1,1.0.0");
    EXPECT_EQ(ask("FREQ?;POW?;OUTP?"), "1000000000;-30;0");
    EXPECT_EQ(ask("SOURce:FREQuency:CW 2.5 GHz;:POWer:LEVel 3;:OUTPut:STATe ON"), "");
    EXPECT_EQ(ask(":sour:freq?;pow?;:outp:stat?;*OPC?"), "2500000000;3;1;1");
    EXPECT_EQ(ask("FREQ? MIN;FREQ? MAX;FREQ? DEF;POW? MIN;POW? MAX;POW? DEF"),
              "100000;6000000000;1000000000;-120;20;-30");
    EXPECT_EQ(ask("SYST:VERS?;:SYSTem:ERRor?;:SYST:ERR:NEXT?"), "1999.0;0,\"No error\";0,\"No error\"");
    EXPECT_EQ(settings.values.at("source/frequency"), "2500000000");

    EXPECT_EQ(ask("*RST;FREQ?;POW?;OUTP?;*WAI"), "1000000000;-30;0");
    selfTestResult = 4;
    EXPECT_EQ(ask("*TST?"), "4");
}

TEST_F(ScpiSessionTest, EveryErrorHasItsNumberTextAndStatusBit)
{
    const struct
    {
        const char *message;
        const char *error;
        const char *events;
    } cases[] = {
        {"FOO:BAR 1", "-113,\"Undefined header;FOO:BAR\"", "32"},
        {"FREQ", "-109,\"Missing parameter;FREQ\"", "32"},
        {"*CLS 1", "-108,\"Parameter not allowed;*CLS\"", "32"},
        {"FREQ 1,2", "-108,\"Parameter not allowed;FREQ\"", "32"},
        {"FREQ \"a\"", "-104,\"Data type error;\"\"a\"\"\"", "32"},
        {"FREQ? 1", "-104,\"Data type error;1\"", "32"},
        {"FREQ 1 V", "-131,\"Invalid suffix;1 V\"", "32"},
        {"*ESE 1 HZ", "-138,\"Suffix not allowed;1 HZ\"", "32"},
        {"OUTP 1.2.3", "-121,\"Invalid character in number;1.2.3\"", "32"},
        {"A::B", "-102,\"Syntax error;A::B\"", "32"},
        {"A \x80", "-101,\"Invalid character;A ?\"", "32"},
        {"A 'b", "-151,\"Invalid string data;A 'b\"", "32"},
        {"POW 20.1", "-222,\"Data out of range;20.1\"", "16"},
    };
    for (const auto &[message, error, events] : cases) {
        EXPECT_EQ(ask(message), "") << message;
        EXPECT_EQ(ask("*ESR?"), events) << message;
        EXPECT_EQ(ask("SYST:ERR?"), error) << message;
        EXPECT_EQ(ask("SYST:ERR?"), "0,\"No error\"") << message;
    }
    EXPECT_TRUE(settings.values.empty());
}

TEST_F(ScpiSessionTest, CommandErrorEndsTheMessageAndExecutionErrorDoesNot)
{
    EXPECT_EQ(ask("POW?;FOO;POW 1;*OPC?"), "-30");
    EXPECT_EQ(ask("POW 99;POW 1;POW?"), "1");
    EXPECT_EQ(ask("SYST:ERR?;ERR?;ERR?"),
              "-113,\"Undefined header;FOO\";-222,\"Data out of range;99\";0,\"No error\"");
    EXPECT_EQ(ask("FREQ:CW 1e9;POW 5"), ""); // relative to FREQ
    EXPECT_EQ(ask("SYST:ERR?"), "-113,\"Undefined header;FREQ:POW\"");
}

TEST_F(ScpiSessionTest, StatusByteSumsUpTheRegisters)
{
    EXPECT_EQ(ask("*STB?;*ESR?;*ESE?;*SRE?"), "0;0;0;0");
    ask("*ESE 33;*SRE 255;*OPC");
    EXPECT_EQ(ask("*ESE?;*SRE?"), "33;191"); // bit 64 of *SRE is always 0
    EXPECT_EQ(ask("*STB?"), "96");           // event summary, master summary
    EXPECT_EQ(ask("*ESR?;*STB?"), "1;0");    // reading clears
    ask("FOO");
    EXPECT_EQ(ask("*STB?"), "100"); // and the error queue
    ask("*SRE 0;*ESE 1");
    EXPECT_EQ(ask("*STB?"), "4");
    ask("POW 99");
    EXPECT_EQ(ask("*ESR?"), "48");
    ask("FOO");
    EXPECT_EQ(ask("*CLS;*STB?;*ESR?;*ESE?;SYST:ERR?"), "0;0;1;0,\"No error\"");
    ask("*ESE 256");
    EXPECT_EQ(ask("*ESE?"), "1");
}

TEST_F(ScpiSessionTest, SessionsShareSettingsAndErrorsButNotStatus)
{
    ScpiSession other(instrument);
    ask("*ESE 32;POW 7;FOO");
    EXPECT_EQ(other.execute("*ESE?;*ESR?;POW?;*STB?"), "0;0;7;4");
    EXPECT_EQ(other.execute("SYST:ERR?"), "-113,\"Undefined header;FOO\"");
    EXPECT_EQ(ask("*ESR?;SYST:ERR?"), "32;0,\"No error\"");
}

TEST_F(ScpiSessionTest, ErrorsOfOtherModulesAreReadInOrderUntilTheQueueOverflows)
{
    ErrorManager()->signal(60222, "first");
    for (int i = 0; i < 100; ++i)
        ask("BAD");
    EXPECT_EQ(ask("SYST:ERR?"), "-222,\"Data out of range;first\"");
    for (int i = 2; i < CErrorManager::queueLength; ++i)
        EXPECT_EQ(ask("SYST:ERR?"), "-113,\"Undefined header;BAD\"") << i;
    EXPECT_EQ(ask("SYST:ERR?"), "-350,\"Queue overflow\"");
    EXPECT_EQ(ask("SYST:ERR?"), "0,\"No error\"");
}

TEST_F(ScpiSessionTest, SettingThatCannotBeSavedIsADeviceError)
{
    ask("POW 3");
    settings.diskFails = true;
    EXPECT_EQ(ask("POW 5;POW?;*ESR?"), "3;8");
}

TEST_F(ScpiSessionTest, ModulesAddCommandsAndTakeThemOut)
{
    const NumberSetting delay = {"test/delay", 1e-9, 10, 1};
    const int owner = 0;
    const int other = 0;
    extensions.add(&owner, {{{"[:SOURce]:TEST:DELay", delay, ScpiQuantity::Time},
                             {"[:SOURce]:TEST:STATe", {"test/state", 0, 1, 0}, ScpiQuantity::Switch},
                             {"[:SOURce]:TEST:COUNt", {"test/count", 0, 9, 2}, ScpiQuantity::Count}},
                            {}});
    extensions.add(&other,
                   {{}, {{"[:SOURce]:TEST:THIRd?", [](const SettingsDatabase &) { return 0.1 * 3; }}}});

    ask("SOUR:TEST:DELAY 3 NS;STATE ON;COUNT 2.6"); // 3 * 1e-9 would not be 3e-9
    EXPECT_EQ(ask("TEST:DEL?;DEL? MAX;STAT?;COUN?;THIR?"), "0.000000003;10;1;3;0.3");
    ask("*CLS;TEST:COUNT 2 S;:TEST:DEL 11;STAT? MIN");
    EXPECT_EQ(ask("SYST:ERR?;ERR?;ERR?;ERR?"),
              "-138,\"Suffix not allowed;2 S\";0,\"No error\";0,\"No error\";"
              "0,\"No error\"");
    EXPECT_EQ(ask("*RST;TEST:DEL?;STAT?;COUN?"), "1;0;2");

    settings.rule = [](SettingsMap *changed) { return !changed->contains("test/delay"); };
    EXPECT_EQ(ask("*CLS;TEST:DEL 2;COUN 4;DEL?;COUN?;*ESR?"), "1;4;16");

    extensions.remove(&owner);
    EXPECT_EQ(ask("TEST:THIR?;:TEST:DEL?"), "0.3");
    EXPECT_EQ(ask("SYST:ERR?"), "-113,\"Undefined header;TEST:DEL?\"");
    EXPECT_EQ(extensions.defaults(), SettingsMap());
}

TEST_F(ScpiSessionTest, DamagedSettingsGiveWayToTheDefaults)
{
    for (const char *text : {"", "abc", "1e99", "nan", "5x", "-3"}) {
        settings.values[frequencySetting.key] = text;
        EXPECT_EQ(ask("FREQ?"), "1000000000") << text;
    }
}

TEST_F(ScpiSessionTest, AnyInputIsSurvivedAndAnsweredInPrintableLines)
{
    const char *pieces[] = {"FREQ", "SOUR", ":", ";",     "?",   "*IDN?", " ",     ",",
                            "1e9",  "GHZ",  "'", "\"",    "MAX", "*RST",  "OUTP",  "SYST:ERR?",
                            "\x01", "\xff", "-", "9e999", "#15", "(",     "*ESR?", "\t"};
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        std::string message;
        for (auto length = random() % 12; length > 0; --length)
            message += random() % 8 == 0 ? std::string(1, static_cast<char>(random()))
                                         : pieces[random() % std::size(pieces)];
        const std::string response = ask(message);
        ASSERT_TRUE(
            std::all_of(response.begin(), response.end(), [](char c) { return c >= ' ' && c <= '~'; }))
            << message << " -> " << response;
    }
    ask("*CLS;*RST");
    EXPECT_EQ(ask("*IDN?;FREQ?;SYST:ERR?"), "Orvia,SG-100,1,1.0.0;1000000000;0,\"No error\"");
}

} // namespace Orvia
