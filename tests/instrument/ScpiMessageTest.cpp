#include "examples/instrument/ScpiDll/ScpiMessage.h"

#include "examples/instrument/ScpiDll/MessageBuffer.h"
#include "examples/instrument/ScpiDll/ScpiError.h"
#include "examples/instrument/ScpiDll/ScpiNumber.h"

#include <gmock/gmock.h>

#include <functional>

using testing::ElementsAre;

namespace Orvia {

namespace {

/// Headers with their parameters in brackets, and the error that ended the message, if any.
std::vector<std::string> unitsOf(std::string_view text)
{
    std::vector<std::string> units;
    ScpiMessage message(text);
    try {
        for (ScpiUnit unit; message.next(&unit);) {
            for (const std::string_view parameter : unit.parameters)
                unit.header += "<" + std::string(parameter) + ">";
            units.push_back(unit.header);
        }
    } catch (const ScpiError &error) {
        units.push_back(std::to_string(error.number));
    }
    return units;
}

/// 0 when nothing is thrown.
int errorOf(const std::function<void()> &parse)
{
    try {
        parse();
    } catch (const ScpiError &error) {
        return error.number;
    }
    return 0;
}

int frequencyError(std::string_view text)
{
    return errorOf([text] { parseSetting(text, frequencySetting, ScpiQuantity::Frequency); });
}

} // namespace

TEST(ScpiMessageTest, CutsUnitsAndParametersOutsideQuotes)
{
    EXPECT_THAT(unitsOf("FREQ 1 GHZ ;\t*OPC?;; :OUTP\tON , 2;\r"),
                ElementsAre("FREQ<1 GHZ>", "*OPC?", "OUTP<ON><2>"));
    EXPECT_THAT(unitsOf("A \"x;y,\"\"z\" , 'it;s';B"), ElementsAre("A<\"x;y,\"\"z\"><'it;s'>", "B"));
    EXPECT_THAT(unitsOf(""), ElementsAre());
    EXPECT_THAT(unitsOf(" ; ;"), ElementsAre());
}

TEST(ScpiMessageTest, RelativeHeadersContinueThePathBefore)
{
    EXPECT_THAT(unitsOf("SOUR:FREQ:CW 1;MODE 2;:POW 3;LEV 4"),
                ElementsAre("SOUR:FREQ:CW<1>", "SOUR:FREQ:MODE<2>", "POW<3>", "LEV<4>"));
    EXPECT_THAT(unitsOf("SOUR:FREQ 1;*WAI;POW?"), ElementsAre("SOUR:FREQ<1>", "*WAI", "SOUR:POW?"));
}

TEST(ScpiMessageTest, MalformedUnitsAreRefusedAfterTheGoodOnes)
{
    for (const char *syntaxError : {"::A", "A:", "A::B", "1A", "*", "?", ":", "A?B", "A?? 1", "*A:*B", "A,1",
                                    "A 1,", "A ,1", "A 1,,2", "_A", "A!"})
        EXPECT_THAT(unitsOf("*CLS;" + std::string(syntaxError)), ElementsAre("*CLS", "-102")) << syntaxError;
    EXPECT_THAT(unitsOf("*CLS;A 'open"), ElementsAre("*CLS", "-151"));
    EXPECT_THAT(unitsOf(std::string_view("*CLS;A \0B", 9)), ElementsAre("*CLS", "-101"));
    EXPECT_THAT(unitsOf("*CLS;A\xc3\xa4"), ElementsAre("*CLS", "-101"));
}

TEST(ScpiHeaderTest, LongAndShortFormsMatchAndNothingBetween)
{
    const char *pattern = "[:SOURce]:FREQuency[:CW]?";
    for (const char *header :
         {"FREQ?", "frequency?", "SOUR:FREQ?", "Source:Frequency:Cw?", "FREQ:CW?", "sour:frequency?"})
        EXPECT_TRUE(matchesHeader(pattern, header)) << header;
    for (const char *header : {"FREQ", "FRE?", "FREQU?", "FREQUENCYS?", "SOURC:FREQ?", "CW?", "SOUR?",
                               "SOUR:CW?", "FREQ:CW:CW?", "SOUR:SOUR:FREQ?", "?", "FREQ:?"})
        EXPECT_FALSE(matchesHeader(pattern, header)) << header;
    EXPECT_TRUE(matchesHeader("*IDN?", "*idn?"));
    EXPECT_FALSE(matchesHeader("*IDN?", "IDN?"));
}

TEST(ScpiNumberTest, ReadsDecimalNumbersWithUnits)
{
    const std::pair<const char *, double> frequencies[] = {
        {"100000", 1e5},    {"+1.5e9", 1.5e9},        {"2.5GHZ", 2.5e9},
        {"2.5 ghz", 2.5e9}, {"433.92 MHz", 433.92e6}, {".5E9 HZ", .5e9},
        {"200 kHz", 200e3}, {"3 MAHZ", 3e6},          {"1.e6", 1e6},
        {"MIN", 100e3},     {"MAXimum", 6e9},         {"default", 1e9},
        {"6E9", 6e9}};
    for (const auto &[text, expected] : frequencies)
        EXPECT_DOUBLE_EQ(parseSetting(text, frequencySetting, ScpiQuantity::Frequency), expected) << text;
    EXPECT_EQ(parseSetting("-12.5 dBm", levelSetting, ScpiQuantity::Level), -12.5);
    EXPECT_EQ(parseRegister("254.6"), 255);
    EXPECT_TRUE(parseBoolean("ON") && parseBoolean("1") && parseBoolean("-7"));
    EXPECT_FALSE(parseBoolean("off") || parseBoolean("0") || parseBoolean("0.4"));
}

TEST(ScpiNumberTest, RefusesWhatIsNoNumberInRange)
{
    for (const char *text : {"99999.9", "6.1 GHZ", "-1e9", "1e999", "0"})
        EXPECT_EQ(frequencyError(text), ScpiDataOutOfRange) << text;
    for (const char *text : {"1 DBM", "1 GIGAHZ", "1 HZS", "1e9 G"})
        EXPECT_EQ(frequencyError(text), ScpiInvalidSuffix) << text;
    for (const char *text : {"inf", "nan", "-inf", "ABC", "\"1\"", "#H10", "-", "MINI", "(1)"})
        EXPECT_EQ(frequencyError(text), ScpiDataTypeError) << text;
    for (const char *text : {"--1", "+-1", "1.2.3", "1-", "."})
        EXPECT_EQ(frequencyError(text), ScpiInvalidCharacterInNumber) << text;
    for (const char *text : {"256", "-1", "1e30"})
        EXPECT_EQ(errorOf([text] { parseRegister(text); }), ScpiDataOutOfRange) << text;
    EXPECT_EQ(errorOf([] { parseBoolean("1 HZ"); }), ScpiSuffixNotAllowed);
}

TEST(ScpiNumberTest, NumbersReadBackAsWritten)
{
    for (const double number : {1e5, 6e9, 433920000.1, 0.1, -120.0, 1.0 / 3, 1e-300, 1e300}) {
        const std::string text = numberText(number);
        EXPECT_EQ(text.find_first_not_of("-.0123456789"), std::string::npos) << text;
        EXPECT_EQ(std::stod(text), number);
    }
    EXPECT_EQ(numberText(1e9), "1000000000");
    EXPECT_EQ(numberText(-0.0), "0");
}

TEST(MessageBufferTest, CutsLinesHoweverTheyArrive)
{
    const std::string stream = "*IDN?\n\r\n*OPC?\r\nrest";
    for (std::size_t step = 1; step <= stream.size(); ++step) {
        MessageBuffer buffer;
        std::vector<std::string> lines;
        for (std::size_t at = 0; at < stream.size(); at += step) {
            buffer.append(stream.substr(at, step));
            for (std::string_view line; buffer.next(&line) == MessageBuffer::Piece::Message;)
                lines.emplace_back(line);
        }
        EXPECT_THAT(lines, ElementsAre("*IDN?", "\r", "*OPC?\r")) << step;
    }
}

TEST(MessageBufferTest, DropsAnOverlongLineToItsEndAndSaysSoOnce)
{
    using Piece = MessageBuffer::Piece;
    const std::string longest(MessageBuffer::maxLength, 'x');
    MessageBuffer buffer;
    std::string_view line;

    buffer.append(longest + "\n");
    ASSERT_EQ(buffer.next(&line), Piece::Message);
    EXPECT_EQ(line, longest);

    buffer.append(longest + "y\nA\n"); // complete and too long
    EXPECT_EQ(buffer.next(&line), Piece::Overrun);
    ASSERT_EQ(buffer.next(&line), Piece::Message);
    EXPECT_EQ(line, "A");

    buffer.append(longest + "y"); // without an end
    EXPECT_EQ(buffer.next(&line), Piece::Overrun);
    for (int i = 0; i < 3; ++i) {
        buffer.append(longest);
        EXPECT_EQ(buffer.next(&line), Piece::Nothing);
    }
    buffer.append("z\nB\n");
    ASSERT_EQ(buffer.next(&line), Piece::Message);
    EXPECT_EQ(line, "B");
    EXPECT_EQ(buffer.next(&line), Piece::Nothing);
}

} // namespace Orvia
