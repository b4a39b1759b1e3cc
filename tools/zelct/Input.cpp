#include "Input.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "FileMgr.h"

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
    // One byte past the loader's limit is enough for it to refuse the input as too large;
    // an endless input would otherwise fill the temporary folder.
    size_t left = static_cast<size_t>(FileMgr::kMaxFileSize) + 1;
    char buffer[65536];
    while (left > 0) {
        const ssize_t got = ::read(STDIN_FILENO, buffer, std::min(sizeof buffer, left));
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
        left -= static_cast<size_t>(got);
    }
    ::close(fd);
    return true;
}

Outcome checkInput(const Kind& kind, const std::string& name, bool withFindings) {
    if (name != kStandardInput) {
        return checkFile(kind, name, withFindings);
    }
    StandardInputFile input;
    std::string error;
    if (!input.copy(error)) {
        Outcome outcome;
        outcome.status = Outcome::Status::Unusable;
        outcome.problem = error;
        return outcome;
    }
    Outcome outcome = checkFile(kind, input.path(), withFindings);
    for (LogLine& line : outcome.log) {
        for (size_t at = line.text.find(input.path()); at != std::string::npos;
             at = line.text.find(input.path(), at + 1)) {
            line.text.replace(at, input.path().size(), kStandardInput);
        }
    }
    return outcome;
}

int withinMemory(Printer& printer, const std::string& file, const std::function<int()>& step) {
    try {
        return step();
    } catch (const std::bad_alloc&) {
        printer.problem({file, 0, 0, "out of memory", 2});
        return 2;
    }
}

std::string unusableOutput(const std::string& path) {
    if (path.empty()) {
        return "-o names no file";
    }
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        return std::string();
    }
    if (S_ISDIR(info.st_mode)) {
        return "cannot store: a directory";
    }
    if (!S_ISREG(info.st_mode)) {
        return "cannot store: not a regular file (a FIFO, a device or a socket)";
    }
    return std::string();
}

}  // namespace zelct
