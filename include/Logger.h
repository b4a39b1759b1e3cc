#pragma once

#include <functional>
#include <string>

#include "zelCommonTypesExport.h"

/// The device's logger. Every line goes to one replaceable sink; lines above the threshold
/// are dropped before they are formatted. Safe to call from many threads at once: the sink
/// is called for one line at a time.
class ZELCT_API Logger {
public:
    /// Level of a line, most urgent first; a higher number is a more detailed line.
    enum logDebugLevel_t {
        logEmergency = 0,  ///< The system is unusable.
        logAlert = 1,      ///< Action must be taken at once.
        logError = 2,      ///< Error conditions.
        logWarning = 3,    ///< Warning conditions.
        logNotice = 4,     ///< Normal but significant conditions.
        logInfo = 5,       ///< Informational; the default threshold.
        logDebug = 6,      ///< Debugging detail.
        logVerbose = 7     ///< The most detailed lines.
    };
    /// Receives every line that passes the threshold, fully formatted, prefix included.
    using Sink = std::function<void(logDebugLevel_t level, const std::string& line)>;

    /// Formats and logs one line, printf-style; the format text carries its level tag
    /// ("ERR::", "INF::", ...).
    static void log(logDebugLevel_t level, const char* format, ...)
        __attribute__((format(printf, 2, 3)));

    /// Replaces the sink every line goes to.
    ///
    /// nullptr restores the default sink, which writes one line to standard error for each
    /// call: newlines, carriage returns, tabs and other control bytes are written as \\n, \\r,
    /// \\t and \\xHH, and a line of more than 4,096 bytes is cut there with
    /// " ... (N more bytes not shown)". A sink of the caller's receives the line as logged.
    static void setSink(Sink sink);

    /// Lines of a higher level than max are dropped; the default is logInfo.
    static void setThreshold(logDebugLevel_t max);
    /// The level set by setThreshold: lines of a higher level are dropped.
    static logDebugLevel_t getThreshold();
};
