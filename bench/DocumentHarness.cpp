#include "DocumentHarness.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace bench {

// Where the files of a run go: ZELCT_BENCH_DIR when set, else a RAM file system when the
// machine has one. Rewriting a file in place on a disk file system starts its write-back at
// close (ext4 does so for a truncated file), which costs milliseconds, hides the work of
// reading and writing JSON and depends on the disk rather than on the code measured.
std::filesystem::path scratchBase() {
    if (const char* chosen = std::getenv("ZELCT_BENCH_DIR")) {
        return chosen;
    }
    std::error_code ignored;
    if (std::filesystem::is_directory("/dev/shm", ignored)) {
        return "/dev/shm";
    }
    return std::filesystem::temp_directory_path();
}

namespace {

class ScratchFolder {
public:
    ScratchFolder() {
        std::string pattern = (scratchBase() / "zelct-bench-XXXXXX").string();
        const char* made = ::mkdtemp(&pattern[0]);
        path_ = made != nullptr ? made : std::filesystem::temp_directory_path().string();
        owned_ = made != nullptr;
    }
    ~ScratchFolder() {
        if (owned_) {
            std::error_code ignored;
            std::filesystem::remove_all(path_, ignored);
        }
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
    bool owned_ = false;
};

}  // namespace

const std::string& scratchFolder() {
    static const ScratchFolder folder;
    return folder.path();
}

bool parseText(const std::string& text, Json::Value& root, std::string* errors) {
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    return reader->parse(text.data(), text.data() + text.size(), &root, errors);
}

bool readWholeFile(const std::string& path, std::string& text) {
    FILE* file = std::fopen(path.c_str(), "r");
    if (file == nullptr) {
        return false;
    }
    std::fseek(file, 0, SEEK_END);
    const long size = std::ftell(file);
    std::rewind(file);
    bool ok = size >= 0;
    if (ok) {
        text.resize(static_cast<size_t>(size));
        ok = std::fread(&text[0], 1, text.size(), file) == text.size();
    }
    std::fclose(file);
    return ok;
}

bool writeWholeFile(const std::string& path, const std::string& text) {
    FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) {
        return false;
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    return std::fclose(file) == 0 && written;
}

void floorFileRoundTrip(const std::string& in, const std::string& out) {
    std::string text;
    readWholeFile(in, text);
    Json::Value root;
    parseText(text, root);
    writeWholeFile(out, root.toStyledString());
}

void silenceLogger() {
    Logger::setSink([](Logger::logDebugLevel_t, const std::string&) {});
}

}  // namespace bench

// The report names the folder the file round trips ran in: a RAM file system and a disk give
// very different floors.
int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::AddCustomContext("scratch_folder", bench::scratchBase().string());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
