// zelct over a repository of documents: the patterns, the project files and the order they are
// read in, the kinds chosen for files, the walk through folders, and checks run on several
// threads handed back in order.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "CheckCommand.h"
#include "FileKinds.h"
#include "Glob.h"
#include "InOrder.h"
#include "OrderedJson.h"
#include "TempDir.h"
#include "Walk.h"

using namespace zelct;

namespace {

void write(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << text;
}

std::vector<std::string> pathsOf(const Walked& walked) {
    std::vector<std::string> paths;
    for (const FoundPath& found : walked.paths) {
        paths.push_back(found.path + (found.problem.empty() ? "" : " [" + found.problem + "]"));
    }
    return paths;
}

}  // namespace

// ---- patterns ----

TEST(ZelctGlob, StarStaysWithinOneName) {
    EXPECT_TRUE(globMatches("devices/*/system-info.json", "devices/a/system-info.json"));
    EXPECT_FALSE(globMatches("devices/*/system-info.json", "devices/a/b/system-info.json"));
    EXPECT_TRUE(globMatches("*.json", "x.json"));
    EXPECT_FALSE(globMatches("*.json", "a/x.json"));
    EXPECT_TRUE(globMatches("sfp-?.json", "sfp-0.json"));
    EXPECT_FALSE(globMatches("sfp-?.json", "sfp-10.json"));
    EXPECT_TRUE(globMatches("sfp-[0-3].json", "sfp-2.json"));
    EXPECT_FALSE(globMatches("sfp-[0-3].json", "sfp-7.json"));
}

TEST(ZelctGlob, DoubleStarTakesAnyNumberOfFolders) {
    EXPECT_TRUE(globMatches("devices/**/sfp.json", "devices/sfp.json"));
    EXPECT_TRUE(globMatches("devices/**/sfp.json", "devices/a/ports/sfp.json"));
    EXPECT_FALSE(globMatches("devices/**/sfp.json", "other/a/sfp.json"));
    EXPECT_TRUE(globMatches("**", "a/b/c.json"));
    EXPECT_TRUE(globMatches("old/**", "old"));
    EXPECT_FALSE(globMatches("**/x.json", "a/y.json"));
}

TEST(ZelctGlob, ManyStarsCostNoMoreThanTheTable) {
    const std::string name(200, 'a');
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(globMatches("*a*a*a*a*a*a*a*a*a*a*a*b", name));
    EXPECT_FALSE(globMatches("**/**/**/**/**/**/**/**/b", "a/a/a/a/a/a/a/a/a/a/a/a/a/a/a/a/a"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

// ---- the ordered reader ----

TEST(ZelctOrderedJson, KeepsTheMembersInTheOrderWritten) {
    const OrderedParse parse = parseOrdered("{\"z\": 1, \"a\": \"x\", \"m\": [true, null]}", {});
    ASSERT_TRUE(parse.ok) << parse.error;
    ASSERT_EQ(parse.value.members.size(), 3u);
    EXPECT_EQ(parse.value.members[0].first, "z");
    EXPECT_EQ(parse.value.members[1].first, "a");
    EXPECT_EQ(parse.value.members[1].second.text, "x");
    EXPECT_EQ(parse.value.members[2].first, "m");
    EXPECT_EQ(parse.value.members[2].second.elements.size(), 2u);
    EXPECT_EQ(parse.value.members[1].second.line, 1);
    EXPECT_EQ(parse.value.members[1].second.column, 15);
    EXPECT_EQ(parse.value.members[1].second.nameLine, 1);
    EXPECT_EQ(parse.value.members[1].second.nameColumn, 10);
}

TEST(ZelctOrderedJson, SaysWhereTheTextGoesWrong) {
    const OrderedParse parse = parseOrdered("{\n  \"a\": 1\n  \"b\": 2\n}", {});
    EXPECT_FALSE(parse.ok);
    EXPECT_EQ(parse.line, 3);
    EXPECT_EQ(parse.column, 3);
    EXPECT_EQ(parse.error, "expected ',' or '}'");
    EXPECT_FALSE(parseOrdered("{\"a\": 1,}", {}).ok);
    EXPECT_FALSE(parseOrdered("{\"a\": 1} x", {}).ok);
    EXPECT_FALSE(parseOrdered("// note\n{}", {}).ok);
}

TEST(ZelctOrderedJson, TakesCommentsAndTrailingCommasWhenAsked) {
    OrderedOptions options;
    options.comments = true;
    options.trailingCommas = true;
    const OrderedParse parse =
        parseOrdered("// note\n{\"a\": [1, 2,], /* x */ \"b\": 2,}", options);
    ASSERT_TRUE(parse.ok) << parse.error;
    EXPECT_EQ(parse.value.members.size(), 2u);
    EXPECT_EQ(parse.value.members[0].second.elements.size(), 2u);
}

TEST(ZelctOrderedJson, DecodesEscapes) {
    const OrderedParse parse = parseOrdered("\"a\\u00e9\\ud83d\\ude00\\n\"", {});
    ASSERT_TRUE(parse.ok);
    EXPECT_EQ(parse.value.text, "a\xC3\xA9\xF0\x9F\x98\x80\n");
    EXPECT_FALSE(parseOrdered("\"\\ud83d\\u0041\"", {}).ok);
}

TEST(ZelctOrderedJson, ScansDeepValuesWithoutRecursing) {
    OrderedOptions options;
    options.readDepth = 1;
    const std::string deep(1000000, '[');
    const std::string text =
        "{\"$schema\": \"x\", \"deep\": " + deep + std::string(1000000, ']') + "}";
    const OrderedParse parse = parseOrdered(text, options);
    ASSERT_TRUE(parse.ok) << parse.error;
    ASSERT_NE(parse.value.member("$schema"), nullptr);
    EXPECT_EQ(parse.value.member("$schema")->text, "x");
    EXPECT_EQ(parse.value.member("deep")->type, OrderedValue::Type::Skipped);
}

// ---- kinds ----

TEST(ZelctFileKinds, ASchemaNamesItsKindByIdOrFileName) {
    EXPECT_STREQ(kindOfSchema("https://zel.invalid/zelCommonTypes/schemas/sfp.schema.json")->name,
                 "sfp");
    EXPECT_STREQ(
        kindOfSchema("file:///usr/share/zelCommonTypes/schemas/system-info.schema.json")->name,
        "system-info");
    EXPECT_STREQ(kindOfSchema("../schemas/channel-tables.schema.json")->name, "channel-tables");
    EXPECT_EQ(kindOfSchema("https://json-schema.org/draft/2020-12/schema"), nullptr);
    EXPECT_EQ(kindOfSchema("sfp"), nullptr);
}

TEST(ZelctFileKinds, AProjectFileKeepsItsPatternsInTheOrderWritten) {
    const Project project = projectFromText(
        Project::Source::ProjectFile, ".zelct.json", "/r",
        "{\"kinds\": {\"z/*.json\": \"sfp\", \"a/*.json\": \"eth\", \"m/**\": \"alarms\"}}");
    ASSERT_TRUE(project.problem.message.empty()) << project.problem.message;
    ASSERT_EQ(project.entries.size(), 1u);
    ASSERT_EQ(project.entries[0].size(), 3u);
    EXPECT_EQ(project.entries[0][0].pattern, "z/*.json");
    EXPECT_STREQ(project.entries[0][1].kind->name, "eth");
    EXPECT_EQ(project.entries[0][2].pattern, "m/**");
    EXPECT_EQ(project.entries[0][1].line, 1);
    EXPECT_EQ(project.entries[0][1].column, 31);  // at the pattern, where an editor jumps
}

TEST(ZelctFileKinds, AProjectFileThatCannotBeUsedSaysWhere) {
    const Project broken = projectFromText(Project::Source::ProjectFile, "p/.zelct.json", "/p",
                                           "{\"kinds\": {\n  \"*.json\": \"sytem-info\"\n}}");
    EXPECT_EQ(broken.problem.file, "p/.zelct.json");
    EXPECT_EQ(broken.problem.line, 2);
    EXPECT_EQ(broken.problem.column, 13);
    EXPECT_EQ(broken.problem.message,
              "unknown kind 'sytem-info' (did you mean 'system-info'? zelct kinds lists them)");
    const Project wrong =
        projectFromText(Project::Source::ProjectFile, ".zelct.json", "/p", "[\"sfp\"]");
    EXPECT_EQ(wrong.problem.message, "expected {\"kinds\": {\"PATTERN\": \"KIND\", ...}}");
}

TEST(ZelctFileKinds, EditorSettingsGiveTheKindsOfTheirSchemas) {
    const Project project =
        projectFromText(Project::Source::EditorSettings, ".vscode/settings.json", "/w",
                        "{ // mine\n \"json.schemas\": [\n"
                        "  {\"fileMatch\": [\"a.json\"], \"url\": \"other\"},\n"
                        "  {\"fileMatch\": [\"/d/*.json\", \"!/d/x.json\"],\n"
                        "   \"url\": \"./s/sfp.schema.json\"},\n ],\n}");
    ASSERT_TRUE(project.problem.message.empty()) << project.problem.message;
    ASSERT_EQ(project.entries.size(), 1u);
    ASSERT_EQ(project.entries[0].size(), 2u);
    EXPECT_STREQ(project.entries[0][0].kind->name, "sfp");
    EXPECT_TRUE(project.entries[0][1].exclusion);
    EXPECT_EQ(project.entries[0][1].pattern, "/d/x.json");
}

TEST(ZelctFileKinds, ChoosesByCommandLineThenSchemaThenNearestProject) {
    TempDir dir;
    write(dir.file(".zelct.json"), "{\"kinds\": {\"**/*.json\": \"eth\", \"a/*.json\": \"sfp\"}}");
    write(dir.file("a/b/.zelct.json"), "{\"kinds\": {\"*.json\": \"alarms\"}}");
    write(dir.file("a/x.json"), "{}");
    write(dir.file("a/b/y.json"), "{}");
    write(dir.file("s.json"), "{\"$schema\": \"temperature.schema.json\"}");
    KindChooser chooser(nullptr, KindChoice::Rule::None);
    const KindChoice first = chooser.choose(dir.file("a/x.json"));
    EXPECT_STREQ(first.kind->name, "eth");  // the first pattern written wins
    EXPECT_EQ(first.rule, KindChoice::Rule::ProjectFile);
    EXPECT_EQ(first.pattern->pattern, "**/*.json");
    EXPECT_STREQ(chooser.choose(dir.file("a/b/y.json")).kind->name, "alarms");
    const KindChoice schema = chooser.choose(dir.file("s.json"));
    EXPECT_EQ(schema.rule, KindChoice::Rule::SchemaMember);
    EXPECT_STREQ(schema.kind->name, "temperature");
    KindChooser given(findKind("sfp"), KindChoice::Rule::KindOption);
    EXPECT_STREQ(given.choose(dir.file("s.json")).kind->name, "sfp");
    EXPECT_EQ(given.choose(dir.file("s.json")).rule, KindChoice::Rule::KindOption);
}

TEST(ZelctFileKinds, EditorSettingsOnlyWithoutAProjectFile) {
    TempDir dir;
    write(dir.file(".vscode/settings.json"),
          "{\"json.schemas\": [{\"fileMatch\": [\"/d/*.json\"], \"url\": "
          "\"file:///usr/share/zelCommonTypes/schemas/eth.schema.json\"}]}");
    write(dir.file("d/e.json"), "{}");
    write(dir.file("e.json"), "{}");
    KindChooser chooser(nullptr, KindChoice::Rule::None);
    const KindChoice choice = chooser.choose(dir.file("d/e.json"));
    EXPECT_EQ(choice.rule, KindChoice::Rule::EditorSettings);
    EXPECT_STREQ(choice.kind->name, "eth");
    const KindChoice none = chooser.choose(dir.file("e.json"));
    EXPECT_EQ(none.kind, nullptr);
    EXPECT_EQ(none.rule, KindChoice::Rule::None);
    write(dir.file("d/.zelct.json"), "{\"kinds\": {}}");
    KindChooser later(nullptr, KindChoice::Rule::None);
    EXPECT_EQ(later.choose(dir.file("d/e.json")).kind, nullptr);
}

TEST(ZelctFileKinds, AMappingIsNoDocumentOfItsOwn) {
    TempDir dir;
    write(dir.file(".zelct.json"), "{\"kinds\": {\"**/*.json\": \"eth\"}}");
    write(dir.file(".vscode/settings.json"), "{}");
    write(dir.file("e.json"), "{}");
    KindChooser chooser(nullptr, KindChoice::Rule::None);
    EXPECT_STREQ(chooser.choose(dir.file("e.json")).kind->name, "eth");
    EXPECT_EQ(chooser.choose(dir.file(".zelct.json")).kind, nullptr);
    EXPECT_EQ(chooser.choose(dir.file(".vscode/settings.json")).kind, nullptr);
}

TEST(ZelctFileKinds, NeverWaitsOnAFifo) {
    TempDir dir;
    const std::string fifo = dir.file("f.json");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    KindChooser chooser(nullptr, KindChoice::Rule::None);
    const KindChoice choice = chooser.choose(fifo);
    EXPECT_EQ(choice.kind, nullptr);
    EXPECT_EQ(choice.readError, "not a regular file");
}

// ---- the walk ----

TEST(ZelctWalk, TakesJsonFilesInByteOrderAndLeavesHiddenOnesOut) {
    TempDir dir;
    for (const char* name : {"b.json", "a.json", "B.json", "x.txt", ".hidden/h.json", ".git/g.json",
                             "d/z.json", "d/old/o.json", "c.json/inner.json"}) {
        write(dir.file(name), "{}");
    }
    const Walked walked = walkPaths({dir.path()}, WalkOptions{{"old"}});
    const std::string base = dir.path() + "/";
    EXPECT_TRUE(walked.anyFolder);
    EXPECT_EQ(pathsOf(walked),
              (std::vector<std::string>{base + "B.json", base + "a.json", base + "b.json",
                                        base + "c.json/inner.json", base + "d/z.json"}));
}

TEST(ZelctWalk, ExcludesByPathBelowTheFolderGiven) {
    TempDir dir;
    write(dir.file("d/a/x.json"), "{}");
    write(dir.file("d/b/x.json"), "{}");
    const Walked walked = walkPaths({dir.path()}, WalkOptions{{"d/a/**"}});
    EXPECT_EQ(pathsOf(walked), (std::vector<std::string>{dir.file("d/b/x.json")}));
}

TEST(ZelctWalk, LinkLoopsAndFifosAreProblemsOfTheirOwn) {
    TempDir dir;
    write(dir.file("d/a.json"), "{}");
    ASSERT_EQ(::symlink("..", dir.file("d/up").c_str()), 0);
    ASSERT_EQ(::symlink("self.json", dir.file("self.json").c_str()), 0);
    ASSERT_EQ(::mkfifo(dir.file("pipe.json").c_str(), 0600), 0);
    const Walked walked = walkPaths({dir.path(), dir.file("named.txt")}, WalkOptions{});
    EXPECT_EQ(pathsOf(walked),
              (std::vector<std::string>{
                  dir.file("d/a.json"),
                  dir.file("d/up") + " [a symbolic-link loop: the folder is one it is in]",
                  dir.file("pipe.json") + " [not a regular file (a FIFO)]",
                  dir.file("self.json") + " [a symbolic-link loop]", dir.file("named.txt")}));
}

TEST(ZelctWalk, ASocketNamedLikeADocumentIsNeverOpened) {
    TempDir dir;
    const std::string path = dir.file("s.json");
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    const Walked walked = walkPaths({dir.path()}, WalkOptions{});
    ::close(fd);
    EXPECT_EQ(pathsOf(walked),
              (std::vector<std::string>{path + " [not a regular file (a socket)]"}));
}

// Root reads every folder; the suite runs again as nobody (scripts/test.sh), where it counts.
TEST(ZelctWalk, AFolderThatCannotBeReadIsAProblemOfItsOwn) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root reads every folder";
    }
    TempDir dir;
    write(dir.file("closed/a.json"), "{}");
    write(dir.file("open/b.json"), "{}");
    ASSERT_EQ(::chmod(dir.file("closed").c_str(), 0), 0);
    const Walked walked = walkPaths({dir.path()}, WalkOptions{});
    ::chmod(dir.file("closed").c_str(), 0700);
    EXPECT_EQ(pathsOf(walked),
              (std::vector<std::string>{
                  dir.file("closed") + " [cannot read the folder: Permission denied]",
                  dir.file("open/b.json")}));
}

// ---- words ----

TEST(ZelctCheckWords, TheFirstWordIsAKindWhenItNamesOne) {
    const CheckWords named = splitCheckWords({"sfp", "a.json"});
    EXPECT_TRUE(named.hasKind);
    EXPECT_EQ(named.kind, "sfp");
    EXPECT_EQ(named.paths, std::vector<std::string>{"a.json"});
    EXPECT_FALSE(splitCheckWords({"a.json", "b.json"}).hasKind);
    EXPECT_TRUE(splitCheckWords({"sytem-info", "a.json"}).hasKind);  // answered as a typo
    EXPECT_FALSE(splitCheckWords({"devices"}).hasKind);
    EXPECT_TRUE(splitCheckWords({"sfp"}).paths.empty());
}

// ---- in order ----

TEST(ZelctInOrder, HandsResultsBackInOrderWhateverFinishesFirst) {
    std::vector<size_t> seen;
    std::atomic<int> running{0};
    std::atomic<int> most{0};
    runInOrder<size_t>(
        64, 4,
        [&](size_t i) {
            const int now = ++running;
            int before = most.load();
            while (now > before && !most.compare_exchange_weak(before, now)) {
            }
            std::this_thread::sleep_for(std::chrono::microseconds((64 - i) * 50));
            --running;
            return i * 10;
        },
        [&](size_t i, size_t& result) {
            EXPECT_EQ(result, i * 10);
            seen.push_back(i);
        });
    ASSERT_EQ(seen.size(), 64u);
    for (size_t i = 0; i < seen.size(); ++i) {
        EXPECT_EQ(seen[i], i);
    }
    EXPECT_GT(most.load(), 1);
    EXPECT_LE(most.load(), 4);
}

TEST(ZelctInOrder, StopsTheWorkersWhenPrintingThrows) {
    std::atomic<size_t> worked{0};
    EXPECT_THROW(runInOrder<int>(
                     1000, 3,
                     [&](size_t) {
                         ++worked;
                         return 1;
                     },
                     [&](size_t i, int&) {
                         if (i == 5) {
                             throw std::runtime_error("stop");
                         }
                     }),
                 std::runtime_error);
    EXPECT_LT(worked.load(), 1000u);
}
