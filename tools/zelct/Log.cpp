#include "Log.h"

#include <cstdio>

namespace zelct {

namespace {

Logger::logDebugLevel_t shownLevel = Logger::logError;
LogRecorder* current = nullptr;

void writeLine(Logger::logDebugLevel_t level, const std::string& text) {
    if (level <= shownLevel) {
        std::fprintf(stderr, "%s\n", text.c_str());
    }
}

void record(Logger::logDebugLevel_t level, const std::string& text) {
    if (current != nullptr) {
        current->add({level, text});
    } else {
        writeLine(level, text);
    }
}

}  // namespace

void routeLibraryLog(Logger::logDebugLevel_t shown) {
    shownLevel = shown;
    Logger::setThreshold(Logger::logVerbose);
    Logger::setSink(record);
}

Logger::logDebugLevel_t shownLogLevel() {
    return shownLevel;
}

void showLog(const std::vector<LogLine>& lines) {
    for (const LogLine& line : lines) {
        writeLine(line.level, line.text);
    }
}

LogRecorder::LogRecorder() : outer_(current) {
    current = this;
}

LogRecorder::~LogRecorder() {
    current = outer_;
}

}  // namespace zelct
