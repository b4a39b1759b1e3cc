#include "FileMgr.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>

#include "Logger.h"

namespace {

// Where a failed load reports from in the check-and-report form. Fixed text and number, not
// this file's: the device's log readers match the line as the first build of the library wrote it.
constexpr struct {
    const char* signature;
    int line;
} kLoadCheck = {"int FileMgr::loadLocalCfg(const string&, Json::Value&)", 55};

// Opens the path for reading without ever waiting: a FIFO without a writer would block a
// plain fopen until some other process opened it for writing.
int openForReading(const std::string& path) {
    return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

// Checks what the open descriptor refers to before anything is allocated for it, and sizes
// it: the one size that is read. Logs and returns -1 when the file cannot be loaded as a
// whole.
off_t loadableSize(const std::string& path, int fd) {
    struct stat info {};
    if (::fstat(fd, &info) != 0) {
        Logger::log(Logger::logError, "ERR::path '%s' error reading file size", path.c_str());
        return -1;
    }
    if (!S_ISREG(info.st_mode)) {
        // A directory opens fine and reports a size that means nothing; a FIFO or a device
        // has no size at all, and reading one may never end.
        Logger::log(Logger::logError, "ERR::path '%s' is not a regular file", path.c_str());
        return -1;
    }
    if (info.st_size > FileMgr::kMaxFileSize) {
        Logger::log(Logger::logError, "ERR::path '%s' is too large (%lld bytes, limit %d)",
                    path.c_str(), static_cast<long long>(info.st_size), FileMgr::kMaxFileSize);
        return -1;
    }
    return info.st_size;
}

// Reads up to size bytes, going on after short reads and interruptions, and stops early at
// the end of a file that shrank meanwhile. Returns the bytes read, or -1 when nothing was
// read without reaching the end: a read error, or a request for no bytes at all (an empty
// file), which is how a single fread of the whole file reports both.
ssize_t readFully(int fd, char* data, size_t size) {
    size_t done = 0;
    bool ended = false;
    while (done < size) {
        const ssize_t got = ::read(fd, data + done, size - done);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            ended = got == 0;
            break;
        }
        done += static_cast<size_t>(got);
    }
    return done == 0 && !ended ? -1 : static_cast<ssize_t>(done);
}

void logSaveFailure(const char* what, const std::string& path, int err) {
    Logger::log(Logger::logError, "ERR::Saving JSON to file '%s:' failed to %s errno='%d' ('%s')",
                path.c_str(), what, err, std::strerror(err));
}

// The folder that holds the path, where its temporary sibling is made and whose entry the
// rename changes.
std::string folderOf(const std::string& path) {
    const std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Creates a fresh temporary file beside the path. The name carries the process id and a
// per-process counter, so two writers never share one; O_EXCL skips leftovers of a process
// that died with the same id. Mode 0666 lets the umask decide, as for any new file.
int createTemporary(const std::string& path, std::string& name) {
    static std::atomic<unsigned> counter{0};
    for (int attempt = 0; attempt < 100; ++attempt) {
        name = path + ".tmp." + std::to_string(::getpid()) + "." +
               std::to_string(counter.fetch_add(1, std::memory_order_relaxed));
        const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST) {
            return fd;
        }
    }
    return -1;
}

// What the path names now: 0 when it can be replaced by a new file (it is missing or a
// regular file), else the errno that opening it for a plain store would meet, or EINVAL for
// a FIFO, a device or a socket, which a rename would replace by a file instead of writing
// into it. mode receives the permissions of an existing file.
int checkReplaceable(const std::string& path, mode_t& mode) {
    if (path.empty()) {
        return ENOENT;
    }
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        return 0;  // missing, or a folder on the way is: creating the temporary tells
    }
    if (S_ISDIR(info.st_mode)) {
        return EISDIR;
    }
    if (!S_ISREG(info.st_mode)) {
        return EINVAL;
    }
    mode = info.st_mode & 07777;
    return 0;
}

// Writes every byte, going on after short writes and interruptions. Returns 0 or errno.
int writeAll(int fd, const std::string& text) {
    const char* data = text.data();
    size_t left = text.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, left);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return errno;
        }
        data += written;
        left -= static_cast<size_t>(written);
    }
    return 0;
}

int fsyncRetrying(int fd) {
    while (::fsync(fd) != 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

// Writes, flushes to disk and closes the temporary. Returns 0 or errno; the descriptor is
// closed either way.
int writeDurably(int fd, const std::string& text) {
    int err = writeAll(fd, text);
    if (err == 0) {
        err = fsyncRetrying(fd);
    }
    if (::close(fd) != 0 && err == 0) {
        err = errno;
    }
    return err;
}

// Makes the rename itself survive a power cut. Returns 0 or errno; a file system that cannot
// sync a folder (EINVAL) has nothing more to make durable.
int syncFolder(const std::string& folder) {
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        return errno;
    }
    int err = fsyncRetrying(fd);
    ::close(fd);
    return err == EINVAL ? 0 : err;
}

// Parses with jsoncpp's default settings, where the text lies: Json::parseFromStream would copy
// it into a stream and out again before handing it to the same reader, with the same result
// and the same error text. jsoncpp throws instead of reporting for some
// documents (nesting beyond its stack limit of 1,000 levels); that is a malformed file like
// any other, and its message becomes the error text.
bool parseText(const std::string& text, Json::Value& parsed, std::string& errors) {
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    try {
        return reader->parse(text.data(), text.data() + text.size(), &parsed, &errors);
    } catch (const std::exception& thrown) {
        errors = thrown.what();
        return false;
    }
}

}  // namespace

int FileMgr::loadFileContent(const std::string& path, std::string& content) {
    const int fd = openForReading(path);
    if (fd < 0) {
        Logger::log(Logger::logError, "ERR::path '%s' error opening file", path.c_str());
        return kErrOpenRead;
    }
    const off_t size = loadableSize(path, fd);
    if (size < 0) {
        ::close(fd);
        return kErrOpenRead;
    }

    // Zero-filled, so whatever a failed or short read leaves out reads as the end of the text.
    std::string buffer(static_cast<size_t>(size), '\0');
    if (readFully(fd, &buffer[0], buffer.size()) < 0) {
        Logger::log(Logger::logError, "ERR::fread failed");
    }
    ::close(fd);

    // The content ends at the first NUL byte of the file.
    content.assign(buffer.c_str());
    Logger::log(Logger::logVerbose, "VBS::path '%s' size loaded '%d'", path.c_str(),
                static_cast<int>(content.size()));
    return kOk;
}

int FileMgr::loadLocalCfg(const std::string& path, Json::Value& root) {
    std::string text;
    const int result = loadFileContent(path, text);
    if (result < 0) {
        Logger::log(Logger::logError, "ERR::CHK(%s)::%d Error Code %d", kLoadCheck.signature,
                    kLoadCheck.line, result);
        return result;
    }

    // The document is parsed into a value of its own and handed over whole, so a failed
    // parse never leaves half a document in the caller's root.
    Json::Value parsed;
    std::string errors;
    if (!parseText(text, parsed, errors)) {
        Logger::log(Logger::logError, "ERR::Error parsing Json '%s'", text.c_str());
        Logger::log(Logger::logError, "ERR::Error: '%s'", errors.c_str());
        return kErrParse;
    }
    root.swap(parsed);
    return kOk;
}

int FileMgr::storeLocalCfg(const std::string& path, const Json::Value& root) {
    std::ofstream out(path, std::ios::out);
    if (!out.is_open()) {
        logSaveFailure("open file", path, errno);
        return kErrOpenWrite;
    }
    out << root.toStyledString();
    out.flush();
    if (!out.good()) {
        logSaveFailure("write file", path, errno);
        out.close();
        return kErrWrite;
    }
    out.close();
    return kOk;
}

int FileMgr::storeLocalCfgDurable(const std::string& path, const Json::Value& root) {
    mode_t mode = 0;
    const int unfit = checkReplaceable(path, mode);
    if (unfit != 0) {
        logSaveFailure("open file", path, unfit);
        return kErrOpenWrite;
    }
    const std::string text = root.toStyledString();
    std::string temporary;
    const int fd = createTemporary(path, temporary);
    if (fd < 0) {
        logSaveFailure("open file", path, errno);
        return kErrOpenWrite;
    }
    if (mode != 0) {
        // The permissions of the file it replaces, as rewriting that file in place keeps them.
        ::fchmod(fd, mode);
    }

    int err = writeDurably(fd, text);
    if (err == 0 && ::rename(temporary.c_str(), path.c_str()) != 0) {
        err = errno;
    }
    if (err != 0) {
        ::unlink(temporary.c_str());
        logSaveFailure("write file", path, err);
        return kErrWrite;
    }
    err = syncFolder(folderOf(path));
    if (err != 0) {
        logSaveFailure("write file", path, err);
        return kErrWrite;
    }
    return kOk;
}
