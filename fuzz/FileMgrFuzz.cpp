// Configuration files of arbitrary bytes: loading never fails in any other way than its
// result codes, the content is the bytes up to the first NUL, and whatever loads can be
// stored and loaded again. jsoncpp writes text that is not valid UTF-8 with U+FFFD in place
// of the bad bytes, so the first store may change a document; from then on a store and a
// load give back the same value.
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "FileMgr.h"
#include "FuzzHarness.h"

namespace {

// A file that lives in memory only, reached by a path as any configuration file is, so
// millions of runs leave nothing behind on disk.
struct MemoryFile {
    int fd = -1;
    std::string path;

    explicit MemoryFile(const char* name) : fd(::memfd_create(name, 0)) {
        if (fd < 0) {
            __builtin_trap();
        }
        path = "/proc/self/fd/" + std::to_string(fd);
    }

    void fill(const uint8_t* data, size_t size) const {
        if (::ftruncate(fd, 0) != 0 || ::pwrite(fd, data, size, 0) != static_cast<ssize_t>(size)) {
            __builtin_trap();
        }
    }
};

MemoryFile& input() {
    static MemoryFile file("zelct-fuzz-input");
    return file;
}

MemoryFile& output() {
    static MemoryFile file("zelct-fuzz-output");
    return file;
}

const Json::Value& previous() {
    static const Json::Value value = [] {
        Json::Value made;
        made["kept"][0] = "previous";
        made["kept"][1]["n"] = 1;
        return made;
    }();
    return value;
}

void check(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::quietLogger();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    input().fill(data, size);
    FileMgr files;

    std::string content = "previous";
    check(files.loadFileContent(input().path, content) == FileMgr::kOk);
    check(content == std::string(reinterpret_cast<const char*>(data),
                                 strnlen(reinterpret_cast<const char*>(data), size)));

    // A failed load leaves the caller's value exactly as it was; nothing is thrown, whatever
    // the depth.
    Json::Value root = previous();
    const int loaded = files.loadLocalCfg(input().path, root);
    check(loaded == FileMgr::kOk || loaded == FileMgr::kErrParse);
    if (loaded != FileMgr::kOk) {
        check(root == previous());
        return 0;
    }
    check(files.storeLocalCfg(output().path, root) == FileMgr::kOk);
    Json::Value stored;
    check(files.loadLocalCfg(output().path, stored) == FileMgr::kOk);
    check(files.storeLocalCfg(output().path, stored) == FileMgr::kOk);
    Json::Value storedAgain;
    check(files.loadLocalCfg(output().path, storedAgain) == FileMgr::kOk);
    check(storedAgain == stored);
    return 0;
}
