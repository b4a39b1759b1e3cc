#include "Logger.h"

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace {

// The most bytes of one line that the default sink writes; the rest is counted. A broken
// file's whole text is logged on a failed parse, and a log of 100 MiB lines helps nobody.
constexpr std::size_t kMaxShownBytes = 4096;

// One log call is one line on standard error, whatever the text holds: a newline or a
// carriage return inside it would let a file's text pass for a log line of its own, and
// other control bytes would steer the terminal. They are written as \n, \r, \t or \xHH.
void appendShown(std::string& out, unsigned char byte) {
    static const char kHex[] = "0123456789abcdef";
    switch (byte) {
        case '\n':
            out += "\\n";
            return;
        case '\r':
            out += "\\r";
            return;
        case '\t':
            out += "\\t";
            return;
        default:
            break;
    }
    if (byte < 0x20 || byte == 0x7f) {
        out += "\\x";
        out += kHex[byte >> 4];
        out += kHex[byte & 0xf];
    } else {
        out += static_cast<char>(byte);
    }
}

// Where a line of more than kMaxShownBytes bytes is cut: not inside a UTF-8 character.
std::size_t cutAt(const std::string& line) {
    std::size_t cut = kMaxShownBytes;
    while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xc0) == 0x80) {
        --cut;
    }
    return cut;
}

void writeToStderr(Logger::logDebugLevel_t /*level*/, const std::string& line) {
    const std::size_t shown = line.size() > kMaxShownBytes ? cutAt(line) : line.size();
    std::string out;
    out.reserve(shown + 64);
    for (std::size_t at = 0; at < shown; ++at) {
        appendShown(out, static_cast<unsigned char>(line[at]));
    }
    if (shown < line.size()) {
        out += " ... (" + std::to_string(line.size() - shown) + " more bytes not shown)";
    }
    out += '\n';
    std::fwrite(out.data(), 1, out.size(), stderr);
}

struct LoggerState {
    std::mutex mutex;  // guards sink and serialises calls into it
    Logger::Sink sink{writeToStderr};
    std::atomic<int> threshold{Logger::logInfo};
};

LoggerState& state() {
    static LoggerState instance;
    return instance;
}

// The capture that takes this thread's lines now, if any; the ones around it hang off it.
thread_local Logger::Capture* innermost = nullptr;

std::string formatLine(const char* format, va_list args) __attribute__((format(printf, 1, 0)));

std::string formatLine(const char* format, va_list args) {
    char small[256];
    va_list again;
    va_copy(again, args);
    const int needed = std::vsnprintf(small, sizeof small, format, args);
    std::string line;
    if (needed < 0) {
        va_end(again);
        return line;
    }
    if (static_cast<size_t>(needed) < sizeof small) {
        line.assign(small, static_cast<size_t>(needed));
    } else {
        line.resize(static_cast<size_t>(needed));
        std::vsnprintf(&line[0], line.size() + 1, format, again);
    }
    va_end(again);
    return line;
}

}  // namespace

void Logger::log(logDebugLevel_t level, const char* format, ...) {
    Capture* const capture = innermost;
    if (capture != nullptr) {
        if (static_cast<int>(level) > static_cast<int>(capture->max_)) {
            return;
        }
        va_list args;
        va_start(args, format);
        std::string line = formatLine(format, args);
        va_end(args);
        capture->lines_.push_back({level, std::move(line)});
        return;
    }

    LoggerState& s = state();
    if (static_cast<int>(level) > s.threshold.load(std::memory_order_relaxed)) {
        return;
    }
    va_list args;
    va_start(args, format);
    const std::string line = formatLine(format, args);
    va_end(args);

    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.sink) {
        s.sink(level, line);
    }
}

void Logger::setSink(Sink sink) {
    LoggerState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.sink = sink ? std::move(sink) : Sink(writeToStderr);
}

void Logger::setThreshold(logDebugLevel_t max) {
    state().threshold.store(static_cast<int>(max), std::memory_order_relaxed);
}

Logger::logDebugLevel_t Logger::getThreshold() {
    return static_cast<logDebugLevel_t>(state().threshold.load(std::memory_order_relaxed));
}

Logger::Capture::Capture(logDebugLevel_t max) : max_(max), outer_(innermost) {
    innermost = this;
}

// Captures end in the reverse order of their making, but one kept on the heap may end
// while a capture made inside it still lives: then it only leaves the chain.
Logger::Capture::~Capture() {
    if (innermost == this) {
        innermost = outer_;
        return;
    }
    for (Capture* inner = innermost; inner != nullptr; inner = inner->outer_) {
        if (inner->outer_ == this) {
            inner->outer_ = outer_;
            return;
        }
    }
}

std::vector<Logger::Capture::Line> Logger::Capture::take() {
    std::vector<Line> taken;
    taken.swap(lines_);
    return taken;
}
