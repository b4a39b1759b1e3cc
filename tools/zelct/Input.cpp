#include "Input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

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

// The copy's name where a signal handler can read it: a handler may only call what is
// async-signal-safe, so it finds the name here rather than in a std::string.
char copyName[PATH_MAX];

const int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};
struct sigaction previousActions[sizeof kEndingSignals / sizeof kEndingSignals[0]];

// Ctrl-C during a long read, or a kill, would otherwise leave the copy of standard input in
// the temporary folder. The signal is then raised again with its default action, so the
// process ends as the signal means.
void removeCopyAndEnd(int signal) {
    if (copyName[0] != '\0') {
        ::unlink(copyName);
    }
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

// A signal ignored by whoever started zelct (nohup) stays ignored.
void removeCopyOnEndingSignals() {
    struct sigaction action {};
    action.sa_handler = &removeCopyAndEnd;
    sigemptyset(&action.sa_mask);
    for (size_t i = 0; i < sizeof kEndingSignals / sizeof kEndingSignals[0]; ++i) {
        ::sigaction(kEndingSignals[i], nullptr, &previousActions[i]);
        if (previousActions[i].sa_handler != SIG_IGN) {
            ::sigaction(kEndingSignals[i], &action, nullptr);
        }
    }
}

void restoreEndingSignals() {
    for (size_t i = 0; i < sizeof kEndingSignals / sizeof kEndingSignals[0]; ++i) {
        ::sigaction(kEndingSignals[i], &previousActions[i], nullptr);
    }
    copyName[0] = '\0';
}

bool standardInputIsClosed() {
    return ::fcntl(STDIN_FILENO, F_GETFD) < 0 && errno == EBADF;
}

}  // namespace

StandardInputFile::~StandardInputFile() {
    if (!path_.empty()) {
        ::unlink(path_.c_str());
        restoreEndingSignals();
    }
}

bool StandardInputFile::copy(std::string& error) {
    if (standardInputIsClosed()) {
        // Else the temporary file would take descriptor 0 and be read as an empty input.
        error = "standard input is closed";
        return false;
    }
    const std::string pattern = temporaryFolder() + "/zelct-stdin-XXXXXX";
    if (pattern.size() >= sizeof copyName) {
        error = "cannot make a temporary file for standard input (" +
                std::string(std::strerror(ENAMETOOLONG)) + ")";
        return false;
    }
    // The handlers are in place before the file exists, and the name mkstemp fills in is the
    // one they remove.
    pattern.copy(copyName, pattern.size());
    copyName[pattern.size()] = '\0';
    removeCopyOnEndingSignals();
    const int fd = ::mkstemp(copyName);
    if (fd < 0) {
        const int err = errno;
        restoreEndingSignals();
        error = std::string("cannot make a temporary file for standard input (") +
                std::strerror(err) + ")";
        return false;
    }
    path_ = copyName;
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
    return checkCopiedInput(kind, input, withFindings);
}

Outcome checkCopiedInput(const Kind& kind, const StandardInputFile& input, bool withFindings) {
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
