#include "Input.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace zelct {

namespace {

std::string temporaryFolder() {
    const char* folder = std::getenv("TMPDIR");
    return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

bool writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(fd, data, size);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        data += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

}  // namespace

StandardInputFile::~StandardInputFile() {
    if (!path_.empty()) {
        ::unlink(path_.c_str());
    }
}

bool StandardInputFile::copy(std::string& error) {
    std::string pattern = temporaryFolder() + "/zelct-stdin-XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int fd = ::mkstemp(name.data());
    if (fd < 0) {
        error = std::string("cannot make a temporary file for standard input (") +
                std::strerror(errno) + ")";
        return false;
    }
    path_ = name.data();
    char buffer[65536];
    while (true) {
        const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (got == 0) {
            break;
        }
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0 || !writeAll(fd, buffer, static_cast<size_t>(got))) {
            error = std::string("cannot read standard input (") + std::strerror(errno) + ")";
            ::close(fd);
            return false;
        }
    }
    ::close(fd);
    return true;
}

}  // namespace zelct
