// The check loads a file with the file store's own code: for every document the fuzzers start
// from, every example and every input of the tool's cases, and files the store refuses, it
// gets the very document or the very failure code, and the very log lines, that
// FileMgr::loadLocalCfg gets, whether it is given the file or the file's bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <sys/stat.h>

#include "Check.h"
#include "FileMgr.h"
#include "Logger.h"
#include "TempDir.h"

namespace {

using Lines = std::vector<Logger::Capture::Line>;

struct StoreLoad {
    int code = 0;
    Json::Value document;
    Lines log;
};

StoreLoad loadedByTheStore(const std::string& path) {
    StoreLoad load;
    Logger::Capture capture;
    load.code = FileMgr().loadLocalCfg(path, load.document);
    load.log = capture.take();
    return load;
}

std::string bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::vector<std::string> filesUnder(const std::vector<std::string>& folders) {
    std::vector<std::string> files;
    for (const std::string& folder : folders) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            // A link that loops is a case of the tool's own; the store's refusals are below.
            std::error_code unreadable;
            if (entry.is_regular_file(unreadable)) {
                files.push_back(entry.path().string());
            }
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::string> documentsOfTheRepository() {
    return filesUnder({ZELCT_FUZZ_CORPUS_DIR, ZELCT_EXAMPLES_DIR, ZELCT_CLI_CASES_DIR "/inputs"});
}

void expectSameLines(const Lines& expected, const Lines& actual, const std::string& path) {
    ASSERT_EQ(expected.size(), actual.size()) << path;
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i].level, actual[i].level) << path << " line " << i;
        EXPECT_EQ(expected[i].text, actual[i].text) << path << " line " << i;
    }
}

// The engine's load of the file, given as a path, or as its bytes under the path's name.
void expectLoadedAsTheStoreLoads(const std::string& path, bool fromBytes) {
    const StoreLoad store = loadedByTheStore(path);
    zelct::LoadedFile loaded;
    zelct::Outcome failure;
    const bool ok = fromBytes ? zelct::loadText(path, bytesOf(path), loaded, failure)
                              : zelct::loadFile(path, loaded, failure);
    EXPECT_EQ(store.code == FileMgr::kOk, ok) << path;
    if (ok) {
        EXPECT_EQ(store.document, loaded.document) << path;
        ASSERT_NE(nullptr, loaded.source) << path;
        EXPECT_EQ(bytesOf(path), loaded.source->bytes) << path;
        expectSameLines(store.log, loaded.log, path);
    } else {
        EXPECT_EQ(store.code, failure.fileMgrCode) << path;
        EXPECT_EQ(zelct::Outcome::Status::Unusable, failure.status) << path;
        expectSameLines(store.log, failure.log, path);
    }
}

TEST(ZelctLoad, EveryDocumentOfTheRepositoryLoadsAsTheStoreLoadsIt) {
    const std::vector<std::string> files = documentsOfTheRepository();
    ASSERT_GT(files.size(), 100u);
    size_t refused = 0;
    for (const std::string& path : files) {
        expectLoadedAsTheStoreLoads(path, false);
        refused += loadedByTheStore(path).code != FileMgr::kOk ? 1 : 0;
    }
    // The corpora hold malformed texts too: both outcomes are compared.
    EXPECT_GT(refused, 0u);
    EXPECT_LT(refused, files.size());
}

TEST(ZelctLoad, EveryDocumentOfTheRepositoryGivenAsBytesLoadsAsTheStoreLoadsItsFile) {
    for (const std::string& path : documentsOfTheRepository()) {
        expectLoadedAsTheStoreLoads(path, true);
    }
}

TEST(ZelctLoad, FilesTheStoreRefusesAreRefusedWithItsCodeAndLines) {
    TempDir dir;
    std::ofstream(dir.file("nested.json")) << std::string(1000, '[') << std::string(1000, ']');
    std::ofstream(dir.file("after-nul.json")) << std::string("{\"a\": 1", 7) << '\0' << "}";
    std::ofstream(dir.file("empty.json")).flush();
    std::string values = "[0";
    for (int i = 1; i <= FileMgr::kMaxValues; ++i) {
        values += ",0";
    }
    std::ofstream(dir.file("many.json")) << values << "]";
    ASSERT_EQ(0, ::mkfifo(dir.file("fifo.json").c_str(), 0600));
    for (const std::string name : {"nested.json", "after-nul.json", "empty.json", "many.json",
                                   "fifo.json", "missing.json"}) {
        expectLoadedAsTheStoreLoads(dir.file(name), false);
    }
    expectLoadedAsTheStoreLoads(dir.path(), false);
}

TEST(ZelctLoad, ARefusalSaysWhyWithoutOpeningTheFileAgain) {
    TempDir dir;
    zelct::LoadedFile loaded;
    zelct::Outcome failure;
    EXPECT_FALSE(zelct::loadFile(dir.path(), loaded, failure));
    EXPECT_EQ("cannot load: a directory, not a regular file (FileMgr code -17)", failure.problem);
    EXPECT_FALSE(zelct::loadFile(dir.file("missing.json"), loaded, failure));
    EXPECT_EQ("cannot load: No such file or directory (FileMgr code -17)", failure.problem);
}

TEST(ZelctLoad, AParseErrorIsTheParsersOwnMessageAtItsPlace) {
    zelct::LoadedFile loaded;
    zelct::Outcome failure;
    ASSERT_FALSE(zelct::loadText("t.json", "{\n  \"a\": ,\n}", loaded, failure));
    EXPECT_EQ("not valid JSON: Syntax error: value, object or array expected. (FileMgr code -13)",
              failure.problem);
    EXPECT_EQ(2, failure.line);
    EXPECT_EQ(8, failure.column);
    // After a byte-order mark, the parser counts from the mark's end; the place does not.
    ASSERT_FALSE(zelct::loadText("t.json", "\xEF\xBB\xBF[1,,2]", loaded, failure));
    EXPECT_EQ(1, failure.line);
    EXPECT_EQ(5, failure.column);
}

}  // namespace
