// What zelct prints: escaping and shortening of lines, the output formats, suggestions for
// mistyped names, why a file cannot be loaded or stored, and that what normalize writes is
// understood exactly by check.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Check.h"
#include "ChildProcess.h"
#include "FileMgr.h"
#include "FindingKinds.h"
#include "Input.h"
#include "JsonText.h"
#include "Kinds.h"
#include "Printer.h"
#include "SafeText.h"
#include "ShownLog.h"
#include "TempDir.h"

using namespace zelct;

namespace {

Json::Value parsed(const std::string& text) {
    Json::CharReaderBuilder builder;
    Json::Value value;
    std::string errors;
    std::istringstream in(text);
    EXPECT_TRUE(Json::parseFromStream(builder, in, &value, &errors)) << errors << "\n" << text;
    return value;
}

std::vector<std::string> documentsUnder(const std::string& folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        // The symbolic-link loop of the cases is no document.
        if (std::filesystem::is_regular_file(entry.symlink_status()) &&
            entry.path().extension() == ".json") {
            files.push_back(entry.path().string());
        }
    }
    return files;
}

Finding droppedAt(const std::string& name, int line, int column) {
    Finding finding{
        Finding::Type::Dropped, {PathStep::member(name)}, Json::Value(1), Json::Value()};
    finding.line = line;
    finding.column = column;
    return finding;
}

}  // namespace

// ---- safe lines ----

TEST(ZelctSafeText, ControlCharactersAndBrokenBytesBecomeVisibleEscapes) {
    EXPECT_EQ(escapedForTerminal("a\nb\r\tc\x1b[2J\x7f"), "a\\nb\\r\\tc\\x1b[2J\\x7f");
    EXPECT_EQ(escapedForTerminal("caf\xc3\xa9 \xe2\x82\xac"), "caf\xc3\xa9 \xe2\x82\xac");
    EXPECT_EQ(escapedForTerminal("x\xff"), "x\\xff");
    EXPECT_EQ(escapedForTerminal(std::string("nul\0end", 7)), "nul\\x00end");
}

TEST(ZelctSafeText, InvalidUtf8FormsAreEscapedByteByByte) {
    EXPECT_EQ(escapedForTerminal("\xc0\xaf"), "\\xc0\\xaf");                    // overlong "/"
    EXPECT_EQ(escapedForTerminal("\xed\xa0\x80"), "\\xed\\xa0\\x80");           // a surrogate
    EXPECT_EQ(escapedForTerminal("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // past U+10FFFF
    EXPECT_EQ(escapedForTerminal("\xe2\x82"), "\\xe2\\x82");                    // cut off
    EXPECT_EQ(escapedForTerminal("\xc2\x85"), "\\xc2\\x85");                    // C1 next-line
    EXPECT_EQ(escapedForTerminal("\xc2\xa0"), "\xc2\xa0");                      // no-break space
}

TEST(ZelctSafeText, LongLinesAreCutWithTheCountOfWhatIsLeftOut) {
    EXPECT_EQ(shortenedLine(std::string(240, 'a')), std::string(240, 'a'));
    EXPECT_EQ(shortenedLine(std::string(300, 'a')), std::string(240, 'a') + " ... (60 more bytes)");
    // A two-byte character across the cut is kept whole on the far side.
    const std::string text = std::string(9, 'a') + "\xc3\xa9" + std::string(5, 'b');
    EXPECT_EQ(shortenedLine(text, 10), std::string(9, 'a') + " ... (7 more bytes)");
    std::string newlines;
    for (int i = 0; i < 120; ++i) {
        newlines += "\\n";
    }
    EXPECT_EQ(safeLine(std::string(130, '\n')), newlines + " ... (20 more bytes)");
}

TEST(ZelctSafeText, JsonStringsAndNamesAreMadeValidUtf8) {
    EXPECT_EQ(validUtf8("a\xff\xc3\xa9"), "a\\xff\xc3\xa9");
    Json::Value value(Json::objectValue);
    value["na\xffme"] = "x\xfe";
    value["list"].append("\xc0");
    const Json::Value valid = withValidUtf8(value);
    EXPECT_EQ(valid["na\\xffme"].asString(), "x\\xfe");
    EXPECT_EQ(valid["list"][0].asString(), "\\xc0");
    EXPECT_FALSE(valid.isMember("na\xffme"));
}

TEST(ZelctSafeText, ARawByteAndTheTextThatNamesItStayApart) {
    EXPECT_EQ(validUtf8("\xff"), "\\xff");
    EXPECT_EQ(validUtf8("\\xff"), "\\\\xff");
    EXPECT_EQ(validUtf8("a\\b"), "a\\\\b");
    Json::Value value(Json::objectValue);
    value["\xff"] = 1;
    value["\\xff"] = 2;
    const Json::Value valid = withValidUtf8(value);
    ASSERT_EQ(valid.size(), 2u);
    EXPECT_EQ(valid["\\xff"].asInt(), 1);
    EXPECT_EQ(valid["\\\\xff"].asInt(), 2);
}

TEST(ZelctJsonText, CommentsReadWithAValueAreNeverWrittenWithIt) {
    const Json::Value read =
        parsed("[ /* lead */ {\"id\": 1, \"x\": {\"y\": 1 /* inner */ } } // tail\n ]");
    const std::string written = indentedJson(read);
    EXPECT_EQ(written.find("/*"), std::string::npos) << written;
    EXPECT_EQ(written.find("//"), std::string::npos) << written;
    EXPECT_EQ(written,
              "[\n  {\n    \"id\" : 1,\n    \"x\" : \n    {\n      \"y\" : 1\n    }\n  }\n]\n");
}

// ---- printers ----

TEST(ZelctPrinter, TextNamesTheFileLineAndColumnOfEachFinding) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Text, out, err);
    Outcome outcome;
    outcome.status = Outcome::Status::Findings;
    outcome.findings = {droppedAt("name", 3, 5), droppedAt("x\x1b", 0, 0)};
    printer->checked("a.json", *findKind("sfp"), outcome);
    EXPECT_EQ(printer->finish(1), 1);
    EXPECT_EQ(out.str(),
              "a.json:3:5: /name: dropped (never read)\n"
              "a.json: /x\\x1b: dropped (never read)\n");
    EXPECT_EQ(err.str(), "");
}

TEST(ZelctPrinter, TextShowsAnUnusableFileOnStandardErrorWithItsPlace) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Text, out, err);
    Outcome outcome;
    outcome.status = Outcome::Status::Unusable;
    outcome.problem = "not valid JSON: Syntax error";
    outcome.line = 2;
    outcome.column = 14;
    printer->checked("b.json", *findKind("sfp"), outcome);
    EXPECT_EQ(printer->finish(2), 2);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(err.str(), "b.json:2:14: not valid JSON: Syntax error\n");
}

TEST(ZelctPrinter, JsonCarriesPositionsAsNumbersAndFileNamesAsValidUtf8) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Json, out, err);
    Outcome outcome;
    outcome.status = Outcome::Status::Findings;
    outcome.findings = {droppedAt("name", 7, 3)};
    printer->checked("c\xff.json", *findKind("sfp"), outcome);
    EXPECT_EQ(printer->finish(1), 1);
    const Json::Value report = parsed(out.str());
    ASSERT_EQ(report.size(), 1u);
    EXPECT_EQ(report[0]["file"].asString(), "c\\xff.json");
    EXPECT_EQ(report[0]["exit"].asInt(), 1);
    EXPECT_EQ(report[0]["findings"][0]["line"].asInt(), 7);
    EXPECT_EQ(report[0]["findings"][0]["column"].asInt(), 3);
    EXPECT_EQ(report[0]["findings"][0]["path"].asString(), "/name");
}

TEST(ZelctPrinter, MachineFormatsQuoteACommentedValueWithoutItsComments) {
    const Json::Value read = parsed("{\"y\": 1 /* inner */, \"z\": [2 // tail\n]}");
    for (const Format format : {Format::Json, Format::Sarif}) {
        std::ostringstream out;
        std::ostringstream err;
        const std::unique_ptr<Printer> printer = makePrinter(format, out, err);
        Outcome outcome;
        outcome.status = Outcome::Status::Findings;
        outcome.findings = {droppedAt("x", 1, 2)};
        outcome.findings[0].original = read;
        printer->checked("c.json", *findKind("sfp"), outcome);
        EXPECT_EQ(printer->finish(1), 1);
        EXPECT_EQ(out.str().find("inner"), std::string::npos) << out.str();
        EXPECT_EQ(out.str().find("tail"), std::string::npos) << out.str();
        const Json::Value report = parsed(out.str());
        const Json::Value& original =
            format == Format::Json ? report[0]["findings"][0]["original"]
                                   : report["runs"][0]["results"][0]["properties"]["original"];
        EXPECT_EQ(original["y"].asInt(), 1);
        EXPECT_EQ(original["z"][0].asInt(), 2);
    }
}

TEST(ZelctPrinter, JsonKeepsMembersApartThatOnlyDifferInARawByte) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Json, out, err);
    Outcome outcome;
    outcome.status = Outcome::Status::Findings;
    outcome.findings = {droppedAt("x", 1, 2)};
    outcome.findings[0].original = Json::Value(Json::objectValue);
    outcome.findings[0].original["\xff"] = 1;
    outcome.findings[0].original["\\xff"] = 2;
    printer->checked("c.json", *findKind("sfp"), outcome);
    EXPECT_EQ(printer->finish(1), 1);
    const Json::Value original = parsed(out.str())[0]["findings"][0]["original"];
    ASSERT_EQ(original.size(), 2u);
    EXPECT_EQ(original["\\xff"].asInt(), 1);
    EXPECT_EQ(original["\\\\xff"].asInt(), 2);
}

// ---- SARIF ----

namespace {

// The SARIF log of checking the files as the kind.
Json::Value sarifOf(const Kind& kind, const std::vector<std::string>& files) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Sarif, out, err);
    for (const std::string& file : files) {
        printer->checked(file, kind, checkFile(kind, file, true));
    }
    printer->finish(1);
    return parsed(out.str());
}

}  // namespace

TEST(ZelctSarif, ColumnsCountCodePointsAsTheRunDeclares) {
    TempDir dir;
    // "é" is two bytes and one UTF-16 unit, "𝄞" four bytes and two UTF-16 units: "extra"
    // starts at code point 18 of its line, byte 21, UTF-16 unit 19.
    std::ofstream(dir.file("sfp.json"))
        << "{\"vendor\": \"\xc3\xa9\xf0\x9d\x84\x9e\", \"extra\": 1}";
    const Json::Value run = sarifOf(*findKind("sfp"), {dir.file("sfp.json")})["runs"][0];
    EXPECT_EQ(run["columnKind"].asString(), "unicodeCodePoints");
    bool found = false;
    for (const Json::Value& result : run["results"]) {
        if (result["properties"]["path"].asString() == "/extra") {
            const Json::Value& region = result["locations"][0]["physicalLocation"]["region"];
            EXPECT_EQ(region["startLine"].asInt(), 1);
            EXPECT_EQ(region["startColumn"].asInt(), 18);
            found = true;
        }
    }
    EXPECT_TRUE(found);
}

TEST(ZelctSarif, EveryResultHasARegionTheFirstLineWhenThePlaceIsUnknown) {
    TempDir dir;
    const Json::Value run = sarifOf(*findKind("sfp"), {dir.file("missing.json")})["runs"][0];
    ASSERT_EQ(run["results"].size(), 1u);
    const Json::Value& region = run["results"][0]["locations"][0]["physicalLocation"]["region"];
    EXPECT_EQ(region["startLine"].asInt(), 1);
    EXPECT_FALSE(region.isMember("startColumn"));
}

TEST(ZelctSarif, TheDriverSaysItsVersionAndWhereItIsDescribed) {
    const Json::Value driver = sarifOf(*findKind("sfp"), {})["runs"][0]["tool"]["driver"];
    EXPECT_EQ(driver["name"].asString(), "zelct");
    EXPECT_EQ(driver["version"].asString(), ZELCT_VERSION);
    EXPECT_EQ(driver["semanticVersion"].asString(), ZELCT_VERSION);
    EXPECT_EQ(driver["informationUri"].asString(), "https://zel.invalid/zelCommonTypes/");
}

TEST(ZelctSarif, RulesAreNamedOtherwiseThanTheirIds) {
    const Json::Value rules = sarifOf(*findKind("sfp"), {})["runs"][0]["tool"]["driver"]["rules"];
    ASSERT_EQ(rules.size(), 16u);
    EXPECT_EQ(rules[0]["id"].asString(), "dropped");
    EXPECT_EQ(rules[0]["name"].asString(), "MemberNeverRead");
    EXPECT_EQ(rules[0]["helpUri"].asString(),
              "https://zel.invalid/zelCommonTypes/docs/findings.md#dropped");
    EXPECT_EQ(rules[12]["id"].asString(), "number-text");
    EXPECT_EQ(rules[12]["name"].asString(), "NumberOutsideJson");
    EXPECT_EQ(rules[15]["id"].asString(), "unusable");
    EXPECT_EQ(rules[15]["name"].asString(), "FileNotUsable");
    for (const Json::Value& rule : rules) {
        std::string id = rule["id"].asString();
        std::string name = rule["name"].asString();
        for (std::string* text : {&id, &name}) {
            text->erase(std::remove(text->begin(), text->end(), '-'), text->end());
            std::transform(text->begin(), text->end(), text->begin(), ::tolower);
        }
        EXPECT_NE(id, name) << rule["id"].asString();
    }
}

// ---- workflow commands ----

namespace {

// Every line of the text, without its newline.
std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace

TEST(ZelctGithub, AFileNameNeverStartsALineOfItsOwn) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Github, out, err);
    Outcome exact;
    exact.status = Outcome::Status::Exact;
    printer->checked("::error file=README.md,line=1,title=FORGED::y.json", *findKind("sfp"), exact);
    Outcome unusable;
    unusable.status = Outcome::Status::Unusable;
    unusable.problem = "cannot load";
    printer->checked("\xe3\x80\x80::add-mask::x.json", *findKind("sfp"), unusable);
    printer->problem({" ::stop-commands::t", 0, 0, "cannot store ##[add-mask]x", 2});
    EXPECT_EQ(printer->finish(2), 2);
    EXPECT_EQ(
        linesOf(out.str()),
        (std::vector<std::string>{
            "\\x3a:error file=README.md,line=1,title=FORGED::y.json: understood exactly",
            "::error file=\xe3\x80\x80%3A%3Aadd-mask%3A%3Ax.json,title=zelct sfp%3A "
            "unusable::cannot load",
            "::error file= %3A%3Astop-commands%3A%3At,title=zelct::cannot store ##[add-mask]x",
        }));
    EXPECT_EQ(linesOf(err.str()), (std::vector<std::string>{
                                      "\xe3\x80\x80\\x3a:add-mask::x.json: cannot load",
                                      " \\x3a:stop-commands::t: cannot store ##\\x5badd-mask]x",
                                  }));
}

TEST(ZelctGithub, TheLibrarysLinesAreMadeInertWhileThePrinterLives) {
    const std::vector<LogLine> lines = {
        {Logger::logError, "ERR::Unknown video format '##[add-mask]x'"}};
    {
        std::ostringstream out;
        std::ostringstream err;
        const std::unique_ptr<Printer> printer = makePrinter(Format::Github, out, err);
        testing::internal::CaptureStderr();
        showLog(lines);
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "ERR::Unknown video format '##\\x5badd-mask]x'\n");
    }
    testing::internal::CaptureStderr();
    showLog(lines);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERR::Unknown video format '##[add-mask]x'\n");
}

TEST(ZelctGithub, ADocumentKeepsItsMeaningWhileNoLineOfItReadsAsACommand) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Github, out, err);
    Json::Value document(Json::objectValue);
    document["vendor-name"] = "##[add-mask]s\tt";
    printer->document(document, document.toStyledString());
    EXPECT_EQ(printer->finish(0), 0);
    EXPECT_EQ(out.str().find("##["), std::string::npos) << out.str();
    EXPECT_EQ(parsed(out.str())["vendor-name"].asString(), "##[add-mask]s\tt");
}

TEST(ZelctGithub, AnnotationsEscapeControlBytesAndTheCommandsOwnCharacters) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Github, out, err);
    Outcome outcome;
    outcome.status = Outcome::Status::Findings;
    outcome.findings = {droppedAt(std::string("a\x1b[2J\x07\0%\r\nb", 11), 3, 4)};
    printer->checked("d,e:f%.json", *findKind("sfp"), outcome);
    EXPECT_EQ(printer->finish(1), 1);
    EXPECT_EQ(out.str(),
              "::warning file=d%2Ce%3Af%25.json,line=3,col=4,title=zelct sfp%3A dropped::"
              "/a\\x1b[2J\\x07\\x00%25\\r\\nb: dropped (never read)\n");
}

TEST(ZelctPrinter, JsonReportsAProblemAsAnObjectWithTheExitCode) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Json, out, err);
    Json::Value ignored(Json::arrayValue);
    ignored.append(1);
    printer->result(ignored, "1\n");
    printer->problem({"", 0, 0, "unknown video format 'x'", 1});
    EXPECT_EQ(printer->finish(1), 1);
    const Json::Value error = parsed(out.str());
    EXPECT_EQ(error["error"].asString(), "unknown video format 'x'");
    EXPECT_EQ(error["exit"].asInt(), 1);
    EXPECT_FALSE(error.isMember("file"));
    EXPECT_EQ(err.str(), "zelct: unknown video format 'x'\n");
}

TEST(ZelctPrinter, AnOutputThatCannotBeWrittenMakesTheExitCodeTwo) {
    std::ostringstream out;
    std::ostringstream err;
    const std::unique_ptr<Printer> printer = makePrinter(Format::Text, out, err);
    printer->result(Json::Value(), "table\n");
    out.setstate(std::ios::badbit);
    EXPECT_EQ(printer->finish(0), 2);
    EXPECT_EQ(err.str().rfind("zelct: cannot write standard output", 0), 0u) << err.str();
}

TEST(ZelctPrinter, FormatsAreNamedAsTheOptionTakesThem) {
    Format format = Format::Text;
    EXPECT_TRUE(formatNamed("json", format));
    EXPECT_EQ(format, Format::Json);
    EXPECT_TRUE(formatNamed("text", format));
    EXPECT_EQ(format, Format::Text);
    EXPECT_TRUE(formatNamed("sarif", format));
    EXPECT_EQ(format, Format::Sarif);
    EXPECT_TRUE(formatNamed("github", format));
    EXPECT_EQ(format, Format::Github);
    EXPECT_FALSE(formatNamed("xml", format));
    EXPECT_EQ(formatNames(), (std::vector<std::string>{"text", "json", "sarif", "github"}));
}

// ---- suggestions ----

TEST(ZelctSuggestion, AFewLettersOffSuggestTheClosestName) {
    const std::vector<std::string> commands = {"kinds", "check", "normalize", "template"};
    EXPECT_EQ(closestName("chek", commands), "check");
    EXPECT_EQ(closestName("normalise", commands), "normalize");
    EXPECT_EQ(closestName("tempalte", commands), "template");
    EXPECT_EQ(closestName("video", commands), "");
    EXPECT_EQ(closestName("x", commands), "");
    EXPECT_EQ(closestName("system-inf", kindNames()), "system-info");
    EXPECT_EQ(closestName("channel-tabels", kindNames()), "channel-tables");
}

// ---- files that cannot be loaded or stored ----

TEST(ZelctFiles, ALoadFailureNamesItsCause) {
    TempDir dir;
    const Kind& sfp = *findKind("sfp");
    EXPECT_EQ(checkFile(sfp, dir.file("missing.json"), true).problem,
              "cannot load: No such file or directory (FileMgr code -17)");

    const std::string large = dir.file("large.json");
    { std::ofstream create(large); }
    ASSERT_EQ(::truncate(large.c_str(), FileMgr::kMaxFileSize + 1), 0);  // sparse: no disk
    EXPECT_EQ(checkFile(sfp, large, true).problem,
              "cannot load: larger than 100 MiB (FileMgr code -17)");

    const std::string many = dir.file("many.json");
    {
        std::ofstream create(many);
        create << "[0";
        for (int i = 0; i < FileMgr::kMaxValues; ++i) {
            create << ",0";
        }
        create << "]";
    }
    EXPECT_EQ(checkFile(*findKind("channel-list"), many, true).problem,
              "cannot load: more than 1000000 JSON values, the most the device loads (FileMgr "
              "code -17)");

    const std::string fifo = dir.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(checkFile(sfp, fifo, true).problem,
              "cannot load: not a regular file (FileMgr code -17)");

    const std::string loop = dir.file("loop.json");
    ASSERT_EQ(::symlink(loop.c_str(), loop.c_str()), 0);
    EXPECT_EQ(checkFile(sfp, loop, true).problem,
              "cannot load: Too many levels of symbolic links (FileMgr code -17)");
}

// Runs what in a child process that has given up root for nobody, where the process is
// root; else in this process. Returns what it returned.
template <typename What>
std::string asUnprivileged(What what) {
    if (::geteuid() != 0) {
        return what();
    }
    int status = 0;
    const std::string text = textOfChild(
        [&]() -> std::string {
            if (::setgid(65534) != 0 || ::setuid(65534) != 0) {
                return "cannot become nobody";
            }
            return what();
        },
        status);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? text
                                                         : "child status " + std::to_string(status);
}

// Root reads every file whatever its permissions, so a root run asks as nobody.
TEST(ZelctFiles, AFileWithoutReadPermissionSaysSo) {
    TempDir dir;
    ASSERT_EQ(::chmod(dir.path().c_str(), 0755), 0);
    const std::string locked = dir.file("locked.json");
    { std::ofstream(locked) << "{}"; }
    ASSERT_EQ(::chmod(locked.c_str(), 0), 0);
    EXPECT_EQ(asUnprivileged([&] { return checkFile(*findKind("sfp"), locked, true).problem; }),
              "cannot load: Permission denied (FileMgr code -17)");
}

TEST(ZelctFiles, AnOutputThatIsNoRegularFileIsRefusedBeforeAnythingIsOpened) {
    TempDir dir;
    EXPECT_EQ(unusableOutput(""), "-o names no file");
    EXPECT_EQ(unusableOutput(dir.path()), "cannot store: a directory");
    const std::string fifo = dir.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(unusableOutput(fifo),
              "cannot store: not a regular file (a FIFO, a device or a socket)");
    EXPECT_EQ(unusableOutput("/dev/null"),
              "cannot store: not a regular file (a FIFO, a device or a socket)");
    EXPECT_EQ(unusableOutput(dir.file("new.json")), "");
    const std::string existing = dir.file("existing.json");
    { std::ofstream(existing) << "{}"; }
    EXPECT_EQ(unusableOutput(existing), "");
}

// ---- normalize, then check ----

TEST(ZelctNormalize, AnEmptyListOrSetIsWrittenInTheKindsOwnShape) {
    EXPECT_EQ(normalizedDocument(*findKind("channel-tables"), Json::Value()),
              Json::Value(Json::arrayValue));
    EXPECT_EQ(normalizedDocument(*findKind("alarms"), Json::Value()),
              Json::Value(Json::objectValue));
    Json::Value written(Json::objectValue);
    written["present"] = true;
    EXPECT_EQ(normalizedDocument(*findKind("sfp"), written), written);
}

// Every kind against every document of the examples and the command-line cases: whatever
// normalize writes from a usable document, check understands exactly, but for a channel's kind
// that no text names and an escaped NUL: the device writes those texts back itself, so
// normalize keeps them too.
TEST(ZelctNormalize, CheckUnderstandsWhatNormalizeWroteExactly) {
    std::vector<std::string> documents = documentsUnder(ZELCT_EXAMPLES_DIR);
    const std::vector<std::string> inputs = documentsUnder(ZELCT_CLI_CASES_DIR);
    documents.insert(documents.end(), inputs.begin(), inputs.end());
    ASSERT_GT(documents.size(), 50u);
    routeLibraryLog(Logger::logError);
    LogRecorder quiet;  // hundreds of documents that do not parse as some kind say so
    TempDir dir;
    const std::string written = dir.file("normalized.json");
    size_t normalized = 0;
    for (const Kind& kind : allKinds()) {
        for (const std::string& document : documents) {
            const Outcome read = checkFile(kind, document, false);
            if (read.status == Outcome::Status::Unusable) {
                continue;
            }
            FileMgr files;
            ASSERT_EQ(files.storeLocalCfg(written, normalizedDocument(kind, read.understood)), 0);
            const Outcome again = checkFile(kind, written, true);
            for (const Finding& finding : again.findings) {
                EXPECT_TRUE(finding.type == Finding::Type::HiddenState ||
                            finding.type == Finding::Type::NulInString)
                    << kind.name << " " << document << ": " << findingText(finding);
            }
            EXPECT_NE(again.status, Outcome::Status::Unusable) << kind.name << " " << document;
            ++normalized;
        }
    }
    EXPECT_GT(normalized, 500u);
}

// ---- the kinds of finding, as the documentation describes them ----

std::string sourceFile(const std::string& relative) {
    std::ifstream in(std::string(ZELCT_EXAMPLES_DIR) + "/../" + relative);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The section of the reference headed by the id, up to the next heading.
std::string sectionOf(const std::string& reference, const std::string& id) {
    const size_t start = reference.find("\n## " + id + "\n");
    if (start == std::string::npos) {
        return "";
    }
    return reference.substr(start, reference.find("\n## ", start + 1) - start);
}

// The text with every run of white space, line breaks included, as one space.
std::string withSpacesOnly(const std::string& text) {
    std::string out;
    for (const char c : text) {
        const bool space = c == ' ' || c == '\n';
        if (!space || (!out.empty() && out.back() != ' ')) {
            out += space ? ' ' : c;
        }
    }
    return out;
}

// Each SARIF rule's helpUri lands on a section of the reference, whose table names the rule
// and whose "How to fix" starts with the kind's own sentence, and the README lists every kind.
TEST(ZelctFindingKinds, EveryKindHasItsSectionTableRowAndReadmeMention) {
    const std::string reference = sourceFile("docs/findings.md");
    const std::string readme = sourceFile("README.md");
    ASSERT_FALSE(reference.empty());
    ASSERT_FALSE(readme.empty());
    std::set<std::string> ids;
    for (const FindingKind& kind : findingKinds()) {
        const std::string id = kind.id;
        EXPECT_TRUE(ids.insert(id).second) << id;
        EXPECT_STREQ(findingTypeName(kind.type), kind.id);
        EXPECT_NE(reference.find("\n## " + id + "\n"), std::string::npos) << id;
        EXPECT_NE(reference.find("| [`" + id + "`](#" + id + ") | `" + kind.ruleName + "` |"),
                  std::string::npos)
            << id;
        EXPECT_NE(readme.find("`" + id + "`"), std::string::npos) << id;
        EXPECT_NE(
            withSpacesOnly(sectionOf(reference, id)).find("How to fix: " + std::string(kind.fix)),
            std::string::npos)
            << id;
        EXPECT_STREQ("warning", kind.severity) << id;
    }
    EXPECT_EQ(ids.size(), static_cast<size_t>(Finding::Type::HiddenState) + 1);
}
