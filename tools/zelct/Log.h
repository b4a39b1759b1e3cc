#pragma once

#include <string>
#include <vector>

#include "Logger.h"

namespace zelct {

// One line that the library logged.
using LogLine = Logger::Capture::Line;

// Installs the tool's sink for the process: the library's lines that no LogRecorder takes are
// written to standard error when their level is at most `shown` (the library's threshold is
// set there, so the others are not even formatted).
void routeLibraryLog(Logger::logDebugLevel_t shown);

// The most detailed level written to standard error.
Logger::logDebugLevel_t shownLogLevel();

// Writes lines to standard error as the router would, dropping those above the shown level.
void showLog(const std::vector<LogLine>& lines);

// Rewrites every line shown from now on, after it is escaped, for an output format whose
// reader obeys some lines (GitHub's runner); nullptr shows them as they are.
void setShownLineFilter(std::string (*filter)(const std::string& line));

// While alive, the library's log lines of this thread are recorded here, at every level,
// instead of being shown; the innermost recorder takes them. The tool reads a document many
// times when it probes what the library reads; only the first reading is allowed to speak.
class LogRecorder {
public:
    LogRecorder() = default;
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    const std::vector<LogLine>& lines() const { return capture_.lines(); }
    std::vector<LogLine> take() { return capture_.take(); }

private:
    Logger::Capture capture_;
};

}  // namespace zelct
