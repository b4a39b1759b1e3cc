// The reading of a file by zelct: the traps of the device's parser, positions in the text,
// and files that cannot be parsed at all.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Check.h"
#include "FileUtil.h"
#include "JsonText.h"
#include "Kinds.h"
#include "ReadingScan.h"
#include "SfpInfo.h"
#include "ShownLog.h"
#include "SourceText.h"
#include "TempDir.h"

using namespace zelct;

namespace {

template <class T>
std::unique_ptr<IJsonSerializable> make() {
    return std::make_unique<T>();
}

const Kind kSfp{"sfp", TopLevel::Object, "", "", "", &make<SfpInfo>};

// A document the SFP record reads back exactly, one member a line.
const std::string kCleanSfp =
    "{\n"
    "\t\"connector\" : \"LC\",\n"
    "\t\"part-number\" : \"SFP-10G-SR\",\n"
    "\t\"present\" : true,\n"
    "\t\"revision\" : \"A\",\n"
    "\t\"rx-power\" : -2.35,\n"
    "\t\"serial-number\" : \"F2131470012\",\n"
    "\t\"supply-voltage\" : 3.29,\n"
    "\t\"temperature\" : 41.5,\n"
    "\t\"tx-power\" : -1.8,\n"
    "\t\"vendor-name\" : \"FS\",\n"
    "\t\"wavelength\" : 850\n"
    "}\n";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const size_t at = text.find(from);
    if (at == std::string::npos) {
        throw std::runtime_error("test text lacks " + from);
    }
    return text.replace(at, from.size(), to);
}

std::vector<ReadingTrap> trapsOf(const std::string& text) {
    return scanReadingTraps(text, std::string(text.c_str()).size());
}

bool parsesWith(const Json::Value& settings, const std::string& text, Json::Value& root) {
    Json::CharReaderBuilder builder;
    builder.settings_ = settings;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    return reader->parse(text.data(), text.data() + text.size(), &root, &errors);
}

bool deviceParses(const std::string& text, Json::Value& root) {
    Json::Value settings;
    Json::CharReaderBuilder::setDefaults(&settings);
    return parsesWith(settings, text, root);
}

bool strictParses(const std::string& text) {
    Json::Value settings;
    Json::CharReaderBuilder::strictMode(&settings);
    Json::Value root;
    return parsesWith(settings, text, root);
}

std::string placed(const Finding& finding) {
    return std::to_string(finding.line) + ":" + std::to_string(finding.column) + " " +
           findingTypeName(finding.type) + " " + findingText(finding);
}

class ZelctReadingTest : public ::testing::Test {
protected:
    // The tool's router records what the library logs; nothing above errors is shown.
    void SetUp() override { routeLibraryLog(Logger::logError); }
    void TearDown() override {
        Logger::setSink(nullptr);
        Logger::setThreshold(Logger::logInfo);
    }

    Outcome checkText(const std::string& text) {
        writeFile(dir.file("doc.json"), text);
        return checkFile(kSfp, dir.file("doc.json"), true);
    }

    TempDir dir;
};

// ---- positions ----

TEST_F(ZelctReadingTest, ColumnsCountCharactersWithATabAsOne) {
    const std::string text = "{\n\t\"n\xC3\xA9\" : \"\xE2\x82\xAC\", \"x\": 1\n}";
    const LineIndex lines(text);
    const size_t x = text.find("\"x\"");
    EXPECT_EQ(lines.at(0).line, 1);
    EXPECT_EQ(lines.at(0).column, 1);
    EXPECT_EQ(lines.at(2).line, 2);
    EXPECT_EQ(lines.at(2).column, 1);  // the tab
    EXPECT_EQ(lines.at(3).column, 2);
    EXPECT_EQ(lines.at(x).line, 2);
    EXPECT_EQ(lines.at(x).column, 14);  // é and € are one character each
    EXPECT_EQ(lines.at(text.size() - 1).line, 3);
    EXPECT_EQ(lines.offsetOf(2, 3), 4u);
}

TEST_F(ZelctReadingTest, ColumnsStayRightFarIntoALongLine) {
    std::string text = "[";
    for (int i = 0; i < 5000; ++i) {
        text += "\"\xC3\xA9\",";  // 4 characters, 5 bytes
    }
    text += "1]";
    const LineIndex lines(text);
    EXPECT_EQ(lines.at(1 + 5 * 4999).column, 2 + 4 * 4999);
    EXPECT_EQ(lines.at(text.size() - 2).column, 2 + 4 * 5000);
}

TEST_F(ZelctReadingTest, FindingsPointAtTheMemberNameAndAddedOnesAtTheirObject) {
    const std::string text = replaced(replaced(kCleanSfp, "\t\"revision\" : \"A\",\n", ""),
                                      "\"present\" : true", "\"present\" : 1");
    const Outcome outcome = checkText(text);
    ASSERT_EQ(outcome.findings.size(), 2u);
    EXPECT_EQ(placed(outcome.findings[0]), "4:2 changed /present: 1 read as true");
    EXPECT_EQ(placed(outcome.findings[1]), "1:1 added /revision: added with default \"\"");
}

TEST_F(ZelctReadingTest, ParseErrorCarriesTheParsersPosition) {
    const Outcome outcome = checkText("{\n  \"present\" : tru\n}\n");
    EXPECT_EQ(outcome.status, Outcome::Status::Unusable);
    EXPECT_EQ(outcome.fileMgrCode, -13);
    EXPECT_EQ(outcome.line, 2);
    EXPECT_EQ(outcome.column, 15);
}

TEST_F(ZelctReadingTest, RejectedNodeCarriesItsPosition) {
    const Outcome outcome = checkText(replaced(kCleanSfp, "850", "[850]"));
    EXPECT_EQ(outcome.status, Outcome::Status::Unusable);
    EXPECT_EQ(pointerText(outcome.problemPlace.path), "/wavelength");
    EXPECT_EQ(outcome.line, 12);
    EXPECT_EQ(outcome.column, 2);
}

// ---- traps of the device's parser ----

TEST_F(ZelctReadingTest, CleanTextHasNoTrapAndPassesTheStrictReader) {
    EXPECT_TRUE(trapsOf(kCleanSfp).empty());
    EXPECT_TRUE(strictParses(kCleanSfp));
    const Outcome outcome = checkText(kCleanSfp);
    EXPECT_EQ(outcome.status, Outcome::Status::Exact);
}

// Each trap is a text that the device's reader takes and jsoncpp's strict reader refuses.
TEST_F(ZelctReadingTest, EveryTrapIsOneTheStrictReaderRefuses) {
    const std::vector<std::string> texts = {
        "{\"a\":1,\"a\":2}", "{\"a\":1} x", "[1,2,]", "{\"a\":1,}", "// c\n[1]",
    };
    for (const std::string& text : texts) {
        Json::Value root;
        EXPECT_TRUE(deviceParses(text, root)) << text;
        EXPECT_FALSE(strictParses(text)) << text;
        EXPECT_EQ(trapsOf(text).size(), 1u) << text;
    }
}

// Which is why the scan is the tool's own: jsoncpp's strict settings let this one through.
TEST_F(ZelctReadingTest, CommentBeforeAClosingBraceIsATrapTheStrictReaderMisses) {
    const std::string text = "{\"a\":1 /* c */}";
    EXPECT_TRUE(strictParses(text));
    const std::vector<ReadingTrap> traps = trapsOf(text);
    ASSERT_EQ(traps.size(), 1u);
    EXPECT_EQ(traps[0].type, ReadingTrap::Type::Comment);
    EXPECT_EQ(traps[0].offset, 7u);
}

TEST_F(ZelctReadingTest, PastTheKeptTrapsTheOthersAreOnlyCountedInTheOrderOfTheText) {
    // Duplicated members are known only when their object closes, after the comments that
    // follow them in the text; thousands of them make the scan trim what it holds on the way.
    std::string text = "{\"a\":0,";
    for (int i = 0; i < 3000; ++i) {
        text += "\"a\":0,";
    }
    text += "\"b\":[1,/* x */ 2,]}";
    for (int i = 0; i < 5; ++i) {
        text += "// after\n";
    }
    const std::vector<ReadingTrap> every = trapsOf(text);
    ASSERT_EQ(every.size(), 3000u + 1 + 1 + 5);
    for (size_t keep : {size_t{0}, size_t{1}, size_t{2999}, size_t{3001}, size_t{3006}}) {
        size_t more = 0;
        const std::vector<ReadingTrap> kept = scanReadingTraps(text, text.size(), keep, &more);
        ASSERT_EQ(kept.size(), keep);
        EXPECT_EQ(more, every.size() - keep);
        for (size_t i = 0; i < keep; ++i) {
            EXPECT_EQ(kept[i].offset, every[i].offset) << i;
            EXPECT_EQ(kept[i].type, every[i].type) << i;
        }
    }
    EXPECT_EQ(every[3000].type, ReadingTrap::Type::Comment);
    EXPECT_EQ(every[3001].type, ReadingTrap::Type::TrailingComma);
}

TEST_F(ZelctReadingTest, DuplicatedMemberKeepsTheLastValueAsTheDevicesParserDoes) {
    const std::string text = "{\"a\":1,\"b\":{\"c\":[1]},\"\\u0061\":2,\"a\":3}";
    Json::Value root;
    ASSERT_TRUE(deviceParses(text, root));
    EXPECT_EQ(root["a"], 3);
    const std::vector<ReadingTrap> traps = trapsOf(text);
    ASSERT_EQ(traps.size(), 2u);
    for (const ReadingTrap& trap : traps) {
        EXPECT_EQ(trap.type, ReadingTrap::Type::DuplicateMember);
        EXPECT_EQ(pointerText(trap.path), "/a");
        EXPECT_EQ(trap.keptOffset, text.rfind("\"a\""));
    }
    EXPECT_EQ(traps[0].offset, 1u);
    EXPECT_EQ(text.substr(traps[0].valueStart, traps[0].valueEnd - traps[0].valueStart), "1");
    EXPECT_EQ(traps[1].offset, text.find("\"\\u0061\""));
}

TEST_F(ZelctReadingTest, DuplicatedMemberFindingNamesBothValues) {
    const Outcome outcome =
        checkText(replaced(kCleanSfp, "\t\"wavelength\" : 850\n",
                           "\t\"wavelength\" : {\"nm\": 1310},\n\t\"wavelength\" : 850\n"));
    ASSERT_EQ(outcome.findings.size(), 1u);
    EXPECT_EQ(placed(outcome.findings[0]),
              "12:2 duplicate-member /wavelength: member given again later in its object; the "
              "device keeps the last value, 850, and ignores this one, {\"nm\":1310}");
}

TEST_F(ZelctReadingTest, CommentsAndTrailingCommasAreFoundWhereTheyStand) {
    const std::string text = "{ \"a\": [1, // one\n 2,], /* b */ \"b\": {\"c\": 1,},\n}";
    const std::vector<ReadingTrap> traps = trapsOf(text);
    ASSERT_EQ(traps.size(), 5u);
    EXPECT_EQ(traps[0].type, ReadingTrap::Type::Comment);
    EXPECT_EQ(pointerText(traps[0].path), "/a");
    EXPECT_EQ(traps[0].offset, text.find("//"));
    EXPECT_EQ(traps[1].type, ReadingTrap::Type::TrailingComma);
    EXPECT_EQ(pointerText(traps[1].path), "/a");
    EXPECT_EQ(traps[1].offset, text.find("2,") + 1);
    EXPECT_EQ(traps[2].type, ReadingTrap::Type::Comment);
    EXPECT_EQ(pointerText(traps[2].path), "");
    EXPECT_EQ(traps[3].type, ReadingTrap::Type::TrailingComma);
    EXPECT_EQ(pointerText(traps[3].path), "/b");
    EXPECT_EQ(traps[4].type, ReadingTrap::Type::TrailingComma);
    EXPECT_EQ(traps[4].offset, text.rfind(','));
}

TEST_F(ZelctReadingTest, SlashesInsideStringsAreNoComments) {
    EXPECT_TRUE(trapsOf("{\"url\": \"http://x/*y*/\", \"q\": \"\\\"//\"}").empty());
}

TEST_F(ZelctReadingTest, TextAfterTheDocumentIsOneTrapAndACommentAfterItIsAComment) {
    const std::vector<ReadingTrap> traps = trapsOf("[1] // end\n  [2] [3]");
    ASSERT_EQ(traps.size(), 2u);
    EXPECT_EQ(traps[0].type, ReadingTrap::Type::Comment);
    EXPECT_EQ(traps[1].type, ReadingTrap::Type::TrailingText);
    EXPECT_EQ(traps[1].offset, 13u);
}

TEST_F(ZelctReadingTest, BytesAfterANulAreNeverLoaded) {
    const std::string text = kCleanSfp + std::string(1, '\0') + "{\"present\": false}";
    const Outcome outcome = checkText(text);
    ASSERT_EQ(outcome.findings.size(), 1u);
    EXPECT_EQ(placed(outcome.findings[0]),
              "14:1 after-nul NUL byte; the device loads the file only up to here and ignores "
              "the 19 bytes from here");
}

TEST_F(ZelctReadingTest, StringNotUtf8IsWrittenBackAsJsoncppsWriterDoes) {
    const std::string bad =
        "F\xE9nix S\xC3"
        "A";
    const Outcome outcome = checkText(replaced(kCleanSfp, "\"FS\"", "\"" + bad + "\""));
    ASSERT_EQ(outcome.findings.size(), 1u);
    const Finding& finding = outcome.findings[0];
    EXPECT_EQ(finding.type, Finding::Type::NotUtf8);
    EXPECT_EQ(finding.original, bad);
    // The device stores with toStyledString, which decodes without checking the bytes after a
    // lead byte: E9 swallows "ni", C3 swallows "A".
    EXPECT_EQ(finding.understood, "\"F\\u9ba9x S\\u00c1\"");
    EXPECT_EQ(Json::Value(bad).toStyledString(), finding.understood.asString() + "\n");
    EXPECT_EQ(finding.line, 11);
    EXPECT_EQ(finding.column, 18);
}

TEST_F(ZelctReadingTest, MemberNameNotUtf8IsATrapAtTheName) {
    const std::vector<ReadingTrap> traps = trapsOf("{\"ok\": 1, \"b\xFF\": 2}");
    ASSERT_EQ(traps.size(), 1u);
    EXPECT_EQ(traps[0].type, ReadingTrap::Type::NotUtf8);
    EXPECT_EQ(traps[0].offset, 10u);
    EXPECT_EQ(pointerText(traps[0].path), "/b\xFF");
}

TEST_F(ZelctReadingTest, EscapedLoneSurrogateIsNotUtf8AndWrittenBackAsAReplacement) {
    const std::string text =
        replaced(kCleanSfp, "\"FS\"", "\"F\\udc00S\"");             // "F\udc00S" in the file
    EXPECT_EQ(trapsOf("[\"\\u00e9 \\ud83c\\udfb5\"]").size(), 0u);  // é and a pair are fine
    const Outcome outcome = checkText(text);
    ASSERT_EQ(outcome.findings.size(), 1u);
    EXPECT_EQ(outcome.findings[0].type, Finding::Type::NotUtf8);
    EXPECT_EQ(outcome.findings[0].understood, "\"F\\ufffdS\"");
    EXPECT_EQ(outcome.findings[0].line, 11);
    EXPECT_EQ(outcome.findings[0].column, 18);
}

// jsoncpp takes a control character as it stands inside a string; its writer escapes it.
TEST_F(ZelctReadingTest, AControlCharacterInAStringIsWrittenBackEscaped) {
    const Outcome outcome = checkText(replaced(kCleanSfp, "\"FS\"", "\"F\tS\x01\""));
    ASSERT_EQ(outcome.findings.size(), 1u);
    const Finding& finding = outcome.findings[0];
    EXPECT_EQ(finding.type, Finding::Type::ControlInString);
    EXPECT_EQ(finding.original, "F\tS\x01");
    EXPECT_EQ(finding.understood, "\"F\\tS\\u0001\"");
    EXPECT_EQ(finding.line, 11);
    EXPECT_EQ(finding.column, 20);  // the tab, not the string
    EXPECT_EQ(findingText(finding),
              "/vendor-name: control character unescaped in a string, which strict JSON forbids; "
              "the device keeps it and writes it back escaped, as \"F\\tS\\u0001\"");
}

TEST_F(ZelctReadingTest, ControlCharactersAreTrapsInNamesAndOnlyWhenUnescaped) {
    EXPECT_TRUE(trapsOf("{\"a\\tb\": \"c\\n\\u0001\"}").empty());
    const std::vector<ReadingTrap> traps = trapsOf("{\"a\nb\": \"\xFF\tc\"}");
    ASSERT_EQ(traps.size(), 3u);
    EXPECT_EQ(traps[0].type, ReadingTrap::Type::ControlInString);
    EXPECT_EQ(traps[0].offset, 3u);
    EXPECT_EQ(pointerText(traps[0].path), "/a\nb");
    EXPECT_EQ(traps[1].type, ReadingTrap::Type::NotUtf8);
    EXPECT_EQ(traps[1].offset, 8u);
    EXPECT_EQ(traps[2].type, ReadingTrap::Type::ControlInString);
    EXPECT_EQ(traps[2].offset, 10u);
}

TEST_F(ZelctReadingTest, Utf8ValidityFollowsTheStandard) {
    const auto valid = [](const std::string& bytes) {
        return isValidUtf8(bytes.data(), bytes.data() + bytes.size());
    };
    EXPECT_TRUE(valid("plain"));
    EXPECT_TRUE(valid("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xB5"));
    EXPECT_FALSE(valid("\xC0\x80"));          // overlong NUL
    EXPECT_FALSE(valid("\xE0\x80\xAF"));      // overlong slash
    EXPECT_FALSE(valid("\xED\xA0\x80"));      // a surrogate
    EXPECT_FALSE(valid("\xF4\x90\x80\x80"));  // past U+10FFFF
    EXPECT_FALSE(valid("\xE2\x82"));          // cut short
    EXPECT_FALSE(valid("\x80"));              // a continuation alone
}

TEST_F(ZelctReadingTest, ReadingTrapsComeBeforeTheDifferencesInTextOrder) {
    const std::string text =
        replaced(replaced(kCleanSfp, "\"present\" : true,", "\"present\" : 1, // yes"),
                 "\"wavelength\" : 850\n", "\"wavelength\" : 850,\n");
    const Outcome outcome = checkText(text);
    EXPECT_EQ(outcome.status, Outcome::Status::Findings);
    ASSERT_EQ(outcome.findings.size(), 3u);
    EXPECT_EQ(placed(outcome.findings[0]),
              "4:17 comment comment; the device skips it and never writes it back");
    EXPECT_EQ(placed(outcome.findings[1]),
              "12:20 trailing-comma trailing comma; the device skips it");
    EXPECT_EQ(placed(outcome.findings[2]), "4:2 changed /present: 1 read as true");
}

// ---- files that cannot be parsed ----

TEST_F(ZelctReadingTest, AParseErrorQuotesTheParsersWholeMessage) {
    const Outcome outcome = checkText("{\n  \"present\" : true,\n  ]\n}\n");
    EXPECT_EQ(outcome.status, Outcome::Status::Unusable);
    EXPECT_EQ(outcome.problem,
              "not valid JSON: Missing '}' or object member name (FileMgr code -13)");
    EXPECT_EQ(outcome.line, 3);
    EXPECT_EQ(outcome.column, 3);
}

// A document whole on disk fails when a NUL cuts it: the device parses only what comes before.
TEST_F(ZelctReadingTest, AParseErrorAfterANulByteSaysWhereTheDeviceStoppedReading) {
    const Outcome outcome =
        checkText(std::string("{\"present\" : true,\n\0 \"wavelength\" : 1}\n", 39));
    EXPECT_EQ(outcome.status, Outcome::Status::Unusable);
    EXPECT_EQ(outcome.problem,
              "not valid JSON: Missing '}' or object member name; the device loads the file "
              "only up to the NUL byte at 2:1 (FileMgr code -13)");
    EXPECT_EQ(outcome.line, 2);
    EXPECT_EQ(outcome.column, 1);
}

TEST_F(ZelctReadingTest, NestingPastTheParsersLimitIsUnusableWithItsPosition) {
    const std::string deep = "{\"a\": " + std::string(2000, '[') + std::string(2000, ']') + "}";
    EXPECT_EQ(nestingPastLimit(deep, 1000), 6u + 999u);
    const Outcome outcome = checkText(deep);
    EXPECT_EQ(outcome.status, Outcome::Status::Unusable);
    EXPECT_EQ(outcome.problem,
              "not valid JSON: Exceeded stackLimit in readValue(). (FileMgr code -13)");
    EXPECT_EQ(outcome.fileMgrCode, -13);
    EXPECT_EQ(outcome.line, 1);
    EXPECT_EQ(outcome.column, 1006);
}

TEST_F(ZelctReadingTest, NestingAtTheLimitIsRead) {
    const std::string text = std::string(1000, '[') + std::string(1000, ']');
    EXPECT_EQ(nestingPastLimit(text, 1000), text.size());
    Json::Value root;
    EXPECT_TRUE(deviceParses(text, root));
}

// The parser's limit is on values: the 1,000th may be an empty container or a scalar inside
// 999 of them, never a scalar inside 1,000.
TEST_F(ZelctReadingTest, TheNestingLimitCountsTheInnermostValue) {
    Json::Value root;
    const std::string fits = std::string(999, '[') + "0" + std::string(999, ']');
    EXPECT_EQ(nestingPastLimit(fits, 1000), fits.size());
    EXPECT_TRUE(deviceParses(fits, root));

    const std::string past = std::string(1000, '[') + " 0" + std::string(1000, ']');
    EXPECT_EQ(nestingPastLimit(past, 1000), 1001u);
    EXPECT_THROW(deviceParses(past, root), Json::RuntimeError);
    const Outcome outcome = checkText(past);
    EXPECT_EQ(outcome.problem,
              "not valid JSON: Exceeded stackLimit in readValue(). (FileMgr code -13)");
    EXPECT_EQ(outcome.column, 1002);

    // A member's name in the innermost object is no value; its value is one.
    const std::string named = std::string(999, '[') + "{\"a\":[]}" + std::string(999, ']');
    EXPECT_EQ(nestingPastLimit(named, 1000), named.find("[]"));
    EXPECT_THROW(deviceParses(named, root), Json::RuntimeError);
    const std::string empty = std::string(999, '[') + "{}" + std::string(999, ']');
    EXPECT_EQ(nestingPastLimit(empty, 1000), empty.size());
    EXPECT_TRUE(deviceParses(empty, root));
}

TEST_F(ZelctReadingTest, LogLinesOfTheLoadAreInTheOutcome) {
    const Outcome outcome = checkText("{\"present\": tru}");
    ASSERT_EQ(outcome.log.size(), 3u);
    EXPECT_EQ(outcome.log[0].level, Logger::logVerbose);
    EXPECT_EQ(outcome.log[1].text, "ERR::Error parsing Json '{\"present\": tru}'");
    EXPECT_EQ(outcome.log[2].text,
              "ERR::Error: '* Line 1, Column 13\n  Syntax error: value, object or array "
              "expected.\n'");
}

}  // namespace

// ---- numbers, byte-order marks, escaped NULs ----

// JSON's number grammar, written out on its own for the tests as the automaton of its railroad
// diagram: each state says what may come next, and the text must end in an accepting state.
bool isJsonNumberText(const std::string& text) {
    enum State { Start, Minus, Zero, Integer, Point, Fraction, E, ESign, Exponent, Refused };
    State state = Start;
    for (char c : text) {
        const bool digit = c >= '0' && c <= '9';
        switch (state) {
            case Start:
                state = c == '-' ? Minus : c == '0' ? Zero : digit ? Integer : Refused;
                break;
            case Minus:
                state = c == '0' ? Zero : digit ? Integer : Refused;
                break;
            case Zero:
            case Integer:
                state = c == '.'                    ? Point
                        : c == 'e' || c == 'E'      ? E
                        : digit && state == Integer ? Integer
                                                    : Refused;
                break;
            case Point:
            case Fraction:
                state = digit                                         ? Fraction
                        : state == Fraction && (c == 'e' || c == 'E') ? E
                                                                      : Refused;
                break;
            case E:
                state = c == '+' || c == '-' ? ESign : digit ? Exponent : Refused;
                break;
            case ESign:
            case Exponent:
                state = digit ? Exponent : Refused;
                break;
            case Refused:
                return false;
        }
    }
    return state == Zero || state == Integer || state == Fraction || state == Exponent;
}

// Every text of up to five characters from the number's alphabet that the device's parser
// takes as an array's element: the scan calls it a trap exactly when JSON does not allow it.
// The parser's rules are found by trying it, not written down again.
TEST_F(ZelctReadingTest, EveryNumberTextTheParserTakesOutsideJsonIsATrap) {
    const std::string alphabet = "01-+.eE";
    std::vector<std::string> texts = {""};
    size_t taken = 0;
    size_t outside = 0;
    for (size_t length = 1; length <= 5; ++length) {
        std::vector<std::string> longer;
        for (const std::string& text : texts) {
            for (char c : alphabet) {
                longer.push_back(text + c);
            }
        }
        texts = longer;
        for (const std::string& number : texts) {
            const std::string document = "[" + number + "]";
            Json::Value root;
            if (!deviceParses(document, root)) {
                continue;
            }
            ++taken;
            const std::vector<ReadingTrap> traps = trapsOf(document);
            if (isJsonNumberText(number)) {
                EXPECT_TRUE(traps.empty()) << number;
                continue;
            }
            ++outside;
            ASSERT_EQ(traps.size(), 1u) << number;
            EXPECT_EQ(traps[0].type, ReadingTrap::Type::NumberText) << number;
            EXPECT_EQ(traps[0].offset, 1u) << number;
            EXPECT_EQ(pointerText(traps[0].path), "/0") << number;
        }
    }
    // The ones a hand-typed document is likely to hold are among them.
    for (const char* number :
         {"-", "+850", "0850", "850.", "-.5", "+.5", "00", "-0850", "850.e3"}) {
        Json::Value root;
        EXPECT_TRUE(deviceParses(std::string("[") + number + "]", root)) << number;
        EXPECT_FALSE(isJsonNumberText(number)) << number;
    }
    EXPECT_GT(taken, 700u);
    EXPECT_GT(outside, 400u);
}

TEST_F(ZelctReadingTest, ALoneMinusIsReadAsZeroAtTheNumbersOwnPlace) {
    const Outcome outcome = checkText(replaced(kCleanSfp, "850\n", "-\n"));
    ASSERT_EQ(outcome.findings.size(), 1u);
    const Finding& finding = outcome.findings[0];
    EXPECT_EQ(finding.type, Finding::Type::NumberText);
    EXPECT_EQ(finding.original, "-");
    EXPECT_EQ(finding.understood, 0);
    EXPECT_EQ(placed(finding),
              "12:17 number-text /wavelength: `-` is not a JSON number; the device reads 0");
}

TEST_F(ZelctReadingTest, APlusOrAPointWithoutDigitsIsReadAsAReal) {
    const Outcome plus = checkText(replaced(kCleanSfp, "850\n", "+850\n"));
    ASSERT_EQ(plus.findings.size(), 1u);
    EXPECT_EQ(plus.findings[0].understood, 850.0);
    EXPECT_TRUE(plus.findings[0].understood.isDouble());
    EXPECT_EQ(findingText(plus.findings[0]),
              "/wavelength: `+850` is not a JSON number; the device reads 850.0");
    const Outcome zeros = checkText(replaced(kCleanSfp, "850\n", "0850\n"));
    ASSERT_EQ(zeros.findings.size(), 1u);
    EXPECT_EQ(zeros.findings[0].understood, 850);
    EXPECT_TRUE(zeros.findings[0].understood.isInt());
}

TEST_F(ZelctReadingTest, AByteOrderMarkIsATrapAndPlacesAfterItStayRight) {
    const std::string mark = "\xEF\xBB\xBF";
    const std::vector<ReadingTrap> traps = trapsOf(mark + "[1]");
    ASSERT_EQ(traps.size(), 1u);
    EXPECT_EQ(traps[0].type, ReadingTrap::Type::ByteOrderMark);
    EXPECT_EQ(traps[0].offset, 0u);
    EXPECT_TRUE(trapsOf("[\"" + mark + "\"]").empty());  // inside a string it is a character

    const Outcome outcome = checkText(mark + "{\"wavelength\": 850, \"zz\": 1, \"present\": 1}");
    std::vector<std::string> places;
    for (const Finding& finding : outcome.findings) {
        places.push_back(placed(finding));
    }
    ASSERT_GE(places.size(), 3u);
    EXPECT_EQ(places[0],
              "1:1 byte-order-mark byte-order mark; the device skips it and never writes it "
              "back, and strict JSON readers refuse the file");
    // The mark is one character: "zz" stands at the 22nd, "present" at the 31st.
    EXPECT_NE(std::find(places.begin(), places.end(), "1:22 dropped /zz: dropped (never read)"),
              places.end());
    EXPECT_NE(std::find(places.begin(), places.end(), "1:31 changed /present: 1 read as true"),
              places.end());
}

TEST_F(ZelctReadingTest, AnEscapedNulIsATrapInAStringAndInAName) {
    const Outcome outcome = checkText(replaced(kCleanSfp, "\"FS\"", "\"FS\\u0000Optics\""));
    ASSERT_EQ(outcome.findings.size(), 1u);
    const Finding& finding = outcome.findings[0];
    EXPECT_EQ(finding.type, Finding::Type::NulInString);
    EXPECT_EQ(finding.original, std::string("FS\0Optics", 9));
    EXPECT_EQ(finding.understood, "FS");
    EXPECT_EQ(placed(finding),
              "11:21 nul-in-string /vendor-name: \\u0000 in a string; the device keeps it, and "
              "whatever takes the text as a C string (log lines, name comparisons) sees only "
              "\"FS\"");

    const std::vector<ReadingTrap> traps = trapsOf("{\"a\\u0000b\": \"\\\\u0000\"}");
    ASSERT_EQ(traps.size(), 1u);  // an escaped backslash before u0000 escapes no NUL
    EXPECT_EQ(traps[0].type, ReadingTrap::Type::NulInString);
    EXPECT_EQ(traps[0].offset, 3u);
    EXPECT_EQ(pointerText(traps[0].path), std::string("/a\0b", 4));
}

// ---- a document the library refuses ----

TEST_F(ZelctReadingTest, ARefusedDocumentKeepsTheFindingsOfItsText) {
    writeFile(dir.file("list.json"), "[{\"id\": 1, \"type\": \"madi\", \"position\": 1,}, \"x\"]");
    const Outcome outcome = checkFile(*findKind("channel-list"), dir.file("list.json"), true);
    EXPECT_EQ(outcome.status, Outcome::Status::Unusable);
    EXPECT_EQ(exitCodeOf(outcome.status), 2);
    EXPECT_EQ(outcome.line, 1);
    EXPECT_EQ(outcome.column, 45);
    ASSERT_EQ(outcome.findings.size(), 1u);
    EXPECT_EQ(placed(outcome.findings[0]),
              "1:41 trailing-comma /0: trailing comma; the device skips it");

    writeFile(dir.file("object.json"), "// a list, not a set\n[1,]");
    const Outcome wrongType = checkFile(*findKind("alarms"), dir.file("object.json"), true);
    EXPECT_EQ(wrongType.status, Outcome::Status::Unusable);
    ASSERT_EQ(wrongType.findings.size(), 2u);
    EXPECT_EQ(wrongType.findings[0].type, Finding::Type::Comment);
    EXPECT_EQ(wrongType.findings[1].type, Finding::Type::TrailingComma);
}
