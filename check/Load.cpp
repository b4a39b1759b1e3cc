// Loading a file as the device does, and what is said when the device cannot.
#include "CheckSteps.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "FileMgr.h"
#include "ReadingScan.h"

namespace zelct {

namespace {

const char* fileMgrMeaning(int code) {
    switch (code) {
        case FileMgr::kErrOpenRead:
            return "the file cannot be opened or is refused";
        case FileMgr::kErrParse:
            return "not valid JSON";
        default:
            return "unexpected code";
    }
}

// FileMgr only says that it refused the file; opening it the same way tells why.
std::string loadFailureCause(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return std::strerror(errno);
    }
    std::string cause = fileMgrMeaning(FileMgr::kErrOpenRead);
    struct stat info {};
    if (::fstat(fd, &info) == 0) {
        if (S_ISDIR(info.st_mode)) {
            cause = "a directory, not a regular file";
        } else if (!S_ISREG(info.st_mode)) {
            cause = "not a regular file";
        } else if (info.st_size > FileMgr::kMaxFileSize) {
            cause = "larger than 100 MiB";
        } else {
            // A regular file of a size it takes: the store counted the values in its text.
            cause = "more than " + std::to_string(FileMgr::kMaxValues) +
                    " JSON values, the most the device loads";
        }
    }
    ::close(fd);
    return cause;
}

// A parse failure quotes jsoncpp's first message, as FileMgr logged it between quotes: "* Line
// 2, Column 14\n  Syntax error: ..." (the position is the outcome's own), or a bare text such
// as "Exceeded stackLimit in readValue()." for nesting past the parser's limit. The message
// may hold quotes of its own ("Missing '}' or object member name"). A file with a NUL byte
// is parsed only up to it, which is why a document whole on disk can fail: that is said too.
void describeParseError(Outcome& failure, const SourceText* source) {
    static const std::string logged = "ERR::Error: '";
    static const std::string placed = "* Line ";
    static const std::string indent = "\n  ";
    for (const LogLine& line : failure.log) {
        if (line.text.compare(0, logged.size(), logged) != 0) {
            continue;
        }
        std::string message = line.text.substr(logged.size());
        if (message.compare(0, placed.size(), placed) == 0) {
            const size_t start = message.find(indent);
            if (start == std::string::npos) {
                continue;
            }
            message = message.substr(start + indent.size());
        }
        if (!message.empty() && message.back() == '\'') {
            message.pop_back();
        }
        message = message.substr(0, message.find('\n'));
        failure.problem = "not valid JSON: " + message;
        if (source != nullptr && source->deviceLength < source->bytes.size()) {
            const Position nul = source->lines.at(source->deviceLength);
            failure.problem += "; the device loads the file only up to the NUL byte at " +
                               std::to_string(nul.line) + ":" + std::to_string(nul.column);
        }
        failure.problem += " (FileMgr code " + std::to_string(failure.fileMgrCode) + ")";
        return;
    }
}

// FileMgr takes whatever its parser throws for a malformed text, running out of memory
// included; its log line then quotes std::bad_alloc's own text.
bool parserRanOutOfMemory(const std::vector<LogLine>& log) {
    static const std::string logged = std::string("ERR::Error: '") + std::bad_alloc().what() + "'";
    return std::any_of(log.begin(), log.end(),
                       [](const LogLine& line) { return line.text == logged; });
}

// jsoncpp's error text starts with "* Line L, Column C" (C counting bytes).
// How deep jsoncpp's reader, with its default settings (stackLimit), nests values: the
// top-level value is the first, and an empty innermost container is one like any other.
constexpr size_t kParserNestingLimit = 1000;

// Where the text nests deeper than the parser's limit, or no position when it does not.
Position nestingPosition(const SourceText& source) {
    const size_t deep =
        nestingPastLimit(source.bytes.substr(0, source.deviceLength), kParserNestingLimit);
    return deep < source.deviceLength ? source.lines.at(deep) : Position();
}

Position parseErrorPosition(const SourceText& source) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value ignored;
    std::string errors;
    try {
        if (reader->parse(source.bytes.data(), source.bytes.data() + source.deviceLength, &ignored,
                          &errors)) {
            return Position();
        }
    } catch (const std::exception&) {
        // Only nesting past the parser's limit throws here: the bracket that goes too deep.
        return nestingPosition(source);
    }
    int line = 0;
    int column = 0;
    if (std::sscanf(errors.c_str(), "* Line %d, Column %d", &line, &column) != 2) {
        return Position();
    }
    return source.lines.at(source.offsetOfParserPlace(line, column));
}

// The whole file, as it lies on disk, for positions and for what follows a NUL byte.
std::unique_ptr<SourceText> readSource(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return nullptr;
    }
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return std::make_unique<SourceText>(std::move(bytes));
}

}  // namespace

bool loadFile(const std::string& path, LoadedFile& loaded, Outcome& failure) {
    LogRecorder recorder;
    int code = 0;
    std::string thrown;
    try {
        code = FileMgr().loadLocalCfg(path, loaded.document);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& e) {
        thrown = e.what();
    } catch (...) {
        thrown = "unknown exception";
    }
    if (code == FileMgr::kErrParse && parserRanOutOfMemory(recorder.lines())) {
        throw std::bad_alloc();
    }
    if (code == 0 && thrown.empty()) {
        loaded.source = readSource(path);
        loaded.log = recorder.take();
        return true;
    }
    const std::unique_ptr<SourceText> source =
        code == FileMgr::kErrOpenRead ? nullptr : readSource(path);
    if (!thrown.empty()) {
        failure = unusable("cannot load (the parser gave up: " + thrown + ")");
        if (source != nullptr) {
            placeOutcome(failure, nestingPosition(*source));
        }
    } else {
        const std::string cause =
            code == FileMgr::kErrOpenRead ? loadFailureCause(path) : fileMgrMeaning(code);
        failure =
            unusable("cannot load: " + cause + " (FileMgr code " + std::to_string(code) + ")");
        failure.fileMgrCode = code;
        if (code == FileMgr::kErrParse && source != nullptr) {
            placeOutcome(failure, parseErrorPosition(*source));
        }
    }
    failure.log = recorder.take();
    if (code == FileMgr::kErrParse) {
        describeParseError(failure, source.get());
    }
    return false;
}

}  // namespace zelct
