#pragma once

#include <string>
#include <vector>

#include "Logger.h"

namespace zelct {

// One line that the library logged.
using LogLine = Logger::Capture::Line;

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
