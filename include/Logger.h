#pragma once

#include <functional>
#include <string>

#include "zelCommonTypesExport.h"

// The device's logger. Every line goes to one replaceable sink; lines above the threshold
// are dropped before they are formatted. Safe to call from many threads at once: the sink
// is called for one line at a time.
class ZELCT_API Logger {
public:
    enum logDebugLevel_t {
        logEmergency = 0,
        logAlert = 1,
        logError = 2,
        logWarning = 3,
        logNotice = 4,
        logInfo = 5,
        logDebug = 6,
        logVerbose = 7
    };
    using Sink = std::function<void(logDebugLevel_t level, const std::string& line)>;

    // printf-style; the format text carries its level tag ("ERR::", "INF::", ...).
    static void log(logDebugLevel_t level, const char* format, ...)
        __attribute__((format(printf, 2, 3)));

    // nullptr restores the default sink, which writes one line to standard error for each
    // call: newlines, carriage returns, tabs and other control bytes are written as \n, \r,
    // \t and \xHH, and a line of more than 4,096 bytes is cut there with
    // " ... (N more bytes not shown)". A sink of the caller's receives the line as logged.
    static void setSink(Sink sink);

    // Lines of a higher level than max are dropped; the default is logInfo.
    static void setThreshold(logDebugLevel_t max);
    static logDebugLevel_t getThreshold();
};
