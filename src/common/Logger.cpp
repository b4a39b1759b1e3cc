#include "Logger.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

void writeToStderr(Logger::logDebugLevel_t /*level*/, const std::string& line) {
    std::fprintf(stderr, "%s\n", line.c_str());
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
