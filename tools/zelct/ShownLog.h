#pragma once

#include <string>
#include <vector>

#include "Log.h"

namespace zelct {

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

}  // namespace zelct
