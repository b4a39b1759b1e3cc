#pragma once

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>

// A fresh directory under the system's temporary folder, removed with everything in it.
// Throws when it cannot be made, which fails the test that made it.
class TempDir {
public:
    TempDir() : TempDir(std::filesystem::temp_directory_path().string()) {}
    // In the given folder instead, as a test that needs a particular file system asks.
    explicit TempDir(const std::string& base) {
        std::string pattern = base + "/zelct-XXXXXX";
        if (::mkdtemp(&pattern[0]) == nullptr) {
            // An empty path would send every file of the test to the working folder (and the
            // destructor would remove nothing), so the test stops here instead.
            throw std::runtime_error("TempDir: cannot make " + pattern + ": " +
                                     std::strerror(errno));
        }
        path_ = pattern;
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
