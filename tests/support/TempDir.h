#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

// A fresh directory under the system's temporary folder, removed with everything in it.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zelct-XXXXXX").string();
        char* made = ::mkdtemp(&pattern[0]);
        path_ = made != nullptr ? made : "";
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};
