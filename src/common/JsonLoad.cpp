// How the file store loads a JSON document; see JsonLoad.h.
#include "JsonLoad.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "Logger.h"

namespace zelcommon {

namespace {

// Fixed parts of a failed load's check line, whatever this file's lines: log readers match them.
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
off_t loadableSize(const std::string& path, int fd, long long limit, JsonLoad& load) {
    struct stat info {};
    if (::fstat(fd, &info) != 0) {
        Logger::log(Logger::logError, "ERR::path '%s' error reading file size", path.c_str());
        load.refusal = LoadRefusal::Size;
        return -1;
    }
    load.size = info.st_size;
    if (!S_ISREG(info.st_mode)) {
        load.refusal = LoadRefusal::NotRegular;
        load.directory = S_ISDIR(info.st_mode);
        // A directory opens fine and reports a size that means nothing; a FIFO or a device
        // has no size at all, and reading one may never end.
        Logger::log(Logger::logError, "ERR::path '%s' is not a regular file", path.c_str());
        return -1;
    }
    if (info.st_size > limit) {
        load.refusal = LoadRefusal::TooLarge;
        Logger::log(Logger::logError, "ERR::path '%s' is too large (%lld bytes, limit %lld)",
                    path.c_str(), static_cast<long long>(info.st_size), limit);
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

// Counts the JSON values of a text the way the parser will meet them, without parsing: each
// object and array, and each scalar or string that is not a member's name. Strings and
// comments are stepped over, so their content counts for nothing. What is not JSON counts as
// it comes; the parser refuses it later. One pass, no allocation.
class ValueCounter {
public:
    long long count(const char* text, std::size_t size) {
        for (at_ = 0; at_ < size; ++at_) {
            step(text, size);
        }
        settleString(false);
        return values_;
    }

private:
    void step(const char* text, std::size_t size) {
        const char c = text[at_];
        if (c == '/' && at_ + 1 < size && (text[at_ + 1] == '/' || text[at_ + 1] == '*')) {
            skipComment(text, size);
            inScalar_ = false;
            return;
        }
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            inScalar_ = false;
            return;
        }
        settleString(c == ':');
        if (c == '"') {
            skipString(text, size);
            stringPending_ = true;
            inScalar_ = false;
        } else if (c == '{' || c == '[') {
            ++values_;
            inScalar_ = false;
        } else if (c == '}' || c == ']' || c == ',' || c == ':') {
            inScalar_ = false;
        } else if (!inScalar_) {
            ++values_;
            inScalar_ = true;
        }
    }

    // A string just closed is a value unless a colon makes it a member's name.
    void settleString(bool colonFollows) {
        if (stringPending_ && !colonFollows) {
            ++values_;
        }
        stringPending_ = false;
    }

    void skipString(const char* text, std::size_t size) {
        for (++at_; at_ < size && text[at_] != '"'; ++at_) {
            if (text[at_] == '\\') {
                ++at_;
            }
        }
    }

    void skipComment(const char* text, std::size_t size) {
        const bool block = text[at_ + 1] == '*';
        const std::string_view rest(text, size);
        const std::size_t end = block ? rest.find("*/", at_ + 2) : rest.find('\n', at_);
        at_ = end == std::string_view::npos ? size : end + (block ? 1 : 0);
    }

    std::size_t at_ = 0;
    long long values_ = 0;
    bool inScalar_ = false;
    bool stringPending_ = false;
};

// Refuses, before the parser builds anything, a text whose values would take more memory
// than the limit allows for.
bool fewEnoughValues(const std::string& path, long long limit, JsonLoad& load) {
    const long long values = ValueCounter().count(load.bytes.data(), load.textLength);
    load.values = values;
    if (values <= limit) {
        return true;
    }
    load.refusal = LoadRefusal::TooManyValues;
    Logger::log(Logger::logError, "ERR::path '%s' holds too many values (%lld values, limit %lld)",
                path.c_str(), values, limit);
    return false;
}

// Parses the text with jsoncpp's default settings, where it lies: Json::parseFromStream would copy
// it into a stream and out again before handing it to the same reader, with the same result
// and the same error text. jsoncpp throws instead of reporting for some documents (nested
// 1,000 levels deep or more, its stack limit); that is a malformed file like
// any other, and its message becomes the error text.
bool parseText(JsonLoad& load) {
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    const char* text = load.bytes.data();
    try {
        return reader->parse(text, text + load.textLength, &load.document, &load.parseErrors);
    } catch (const std::bad_alloc& thrown) {
        load.outOfMemory = true;
        load.parserThrew = true;
        load.parseErrors = thrown.what();
    } catch (const std::exception& thrown) {
        load.parserThrew = true;
        load.parseErrors = thrown.what();
    }
    load.document = Json::Value();
    return false;
}

// What a refused load logs last, whatever refused it.
int refused(JsonLoad& load) {
    Logger::log(Logger::logError, "ERR::CHK(%s)::%d Error Code %d", kLoadCheck.signature,
                kLoadCheck.line, FileMgr::kErrOpenRead);
    load.code = FileMgr::kErrOpenRead;
    return load.code;
}

// Counts and parses bytes that were read whole, as the store does after reading a file.
int parseLoaded(const std::string& path, long long maxValues, JsonLoad& load) {
    Logger::log(Logger::logVerbose, "VBS::path '%s' size loaded '%d'", path.c_str(),
                static_cast<int>(load.textLength));
    if (!fewEnoughValues(path, maxValues, load)) {
        return refused(load);
    }
    if (!parseText(load)) {
        Logger::log(Logger::logError, "ERR::Error parsing Json '%s'", load.bytes.c_str());
        Logger::log(Logger::logError, "ERR::Error: '%s'", load.parseErrors.c_str());
        load.code = FileMgr::kErrParse;
        return load.code;
    }
    load.code = FileMgr::kOk;
    return load.code;
}

}  // namespace

int readWholeFile(const std::string& path, long long maxFileSize, JsonLoad& load) {
    const int fd = openForReading(path);
    if (fd < 0) {
        load.openError = errno;
        load.refusal = LoadRefusal::Open;
        Logger::log(Logger::logError, "ERR::path '%s' error opening file", path.c_str());
        return FileMgr::kErrOpenRead;
    }
    const off_t size = loadableSize(path, fd, maxFileSize, load);
    if (size < 0) {
        ::close(fd);
        return FileMgr::kErrOpenRead;
    }
    // Zero-filled, so whatever a failed or short read leaves out reads as the end of the text.
    load.bytes.assign(static_cast<std::size_t>(size), '\0');
    if (readFully(fd, &load.bytes[0], load.bytes.size()) < 0) {
        Logger::log(Logger::logError, "ERR::fread failed");
    }
    ::close(fd);
    // The text ends at the first NUL byte of the file.
    load.textLength = std::strlen(load.bytes.c_str());
    return FileMgr::kOk;
}

int loadJsonFile(const std::string& path, const FileMgr::Limits& limits, JsonLoad& load) {
    if (readWholeFile(path, limits.maxFileSize, load) != FileMgr::kOk) {
        return refused(load);
    }
    return parseLoaded(path, limits.maxValues, load);
}

int loadJsonBytes(const std::string& path, std::string bytes, const FileMgr::Limits& limits,
                  JsonLoad& load) {
    load.size = static_cast<long long>(bytes.size());
    if (load.size > limits.maxFileSize) {
        load.refusal = LoadRefusal::TooLarge;
        Logger::log(Logger::logError, "ERR::path '%s' is too large (%lld bytes, limit %lld)",
                    path.c_str(), load.size, limits.maxFileSize);
        return refused(load);
    }
    if (bytes.empty()) {
        // A file of no bytes reads as a failed read, and says so.
        Logger::log(Logger::logError, "ERR::fread failed");
    }
    load.bytes = std::move(bytes);
    load.textLength = std::strlen(load.bytes.c_str());
    return parseLoaded(path, limits.maxValues, load);
}

}  // namespace zelcommon
