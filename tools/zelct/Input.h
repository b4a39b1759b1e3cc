#pragma once

#include <string>

namespace zelct {

// The name that stands for standard input where a command takes a file.
constexpr const char* kStandardInput = "-";

// Standard input copied into a temporary file, so that it is loaded exactly as a file is
// (FileMgr::loadLocalCfg takes a path, and a pipe has no size to read by). The file is
// removed with this object.
class StandardInputFile {
public:
    StandardInputFile() = default;
    ~StandardInputFile();
    StandardInputFile(const StandardInputFile&) = delete;
    StandardInputFile& operator=(const StandardInputFile&) = delete;

    // Copies standard input; false with the reason in `error` when it cannot.
    bool copy(std::string& error);

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace zelct
