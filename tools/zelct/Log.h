#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Logger.h"

namespace zelct {

// One line that the library logged.
struct LogLine {
    Logger::logDebugLevel_t level;
    std::string text;

    bool operator==(const LogLine& other) const {
        return level == other.level && text == other.text;
    }
    bool operator!=(const LogLine& other) const { return !(*this == other); }
};

// Takes over the library's logger for the tool's lifetime: every line is formatted (the
// library's threshold is opened fully) and then either recorded by the innermost live
// LogRecorder or written to standard error when its level is at most `shown`.
void routeLibraryLog(Logger::logDebugLevel_t shown);

// The most detailed level written to standard error.
Logger::logDebugLevel_t shownLogLevel();

// Writes lines to standard error as the router would, dropping those above the shown level.
void showLog(const std::vector<LogLine>& lines);

// Rewrites every line shown from now on, after it is escaped, for an output format whose
// reader obeys some lines (GitHub's runner); nullptr shows them as they are.
void setShownLineFilter(std::string (*filter)(const std::string& line));

// While alive, the library's log lines are recorded here instead of being shown. The tool
// reads a document many times when it probes what the library reads; only the first reading
// is allowed to speak.
class LogRecorder {
public:
    LogRecorder();
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    void add(LogLine line) { lines_.push_back(std::move(line)); }
    const std::vector<LogLine>& lines() const { return lines_; }
    std::vector<LogLine> take() { return std::move(lines_); }

private:
    LogRecorder* outer_;
    std::vector<LogLine> lines_;
};

}  // namespace zelct
