#pragma once

#include <functional>
#include <string>
#include <vector>

#include "zelCommonTypesExport.h"

/// The device's logger. Every line goes to one replaceable sink; lines above the threshold
/// are dropped before they are formatted. Safe to call from many threads at once: the sink
/// is called for one line at a time. A thread can take its own lines for a while with a
/// Logger::Capture instead of letting them reach the sink.
class ZELCOMMONTYPES_API Logger {
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

    /// Takes the lines of one thread for as long as it lives.
    ///
    /// While it lives, takes every line that its thread logs, up to its own maximum level
    /// (every level by default), whatever the threshold says; those lines never reach the
    /// sink. Lines above its maximum are dropped before they are formatted. The innermost
    /// live capture of a thread takes the line; when it goes, the one around it takes them
    /// again, and with none left the thread's lines go through the threshold to the sink as
    /// before. Other threads, the sink and the threshold are left as they are. A capture is
    /// used and ended on the thread that made it.
    class ZELCOMMONTYPES_API Capture {
    public:
        /// One line taken: its level and its text as formatted.
        struct Line {
            logDebugLevel_t level;  ///< The level it was logged at.
            std::string text;       ///< The formatted line, level tag included.

            /// Same level and same text.
            bool operator==(const Line& other) const {
                return level == other.level && text == other.text;
            }
            /// Another level or another text.
            bool operator!=(const Line& other) const { return !(*this == other); }
        };

        /// Starts taking the thread's lines of level `max` and below.
        explicit Capture(logDebugLevel_t max = logVerbose);
        /// Stops taking lines; the capture around it, if any, takes them again.
        ~Capture();
        Capture(const Capture&) = delete;             ///< Bound to its thread and place.
        Capture& operator=(const Capture&) = delete;  ///< Bound to its thread and place.

        /// The lines taken so far, in the order they were logged.
        const std::vector<Line>& lines() const { return lines_; }
        /// Hands over the lines taken so far; the capture goes on from none.
        std::vector<Line> take();

    private:
        friend class Logger;

        logDebugLevel_t max_;
        Capture* outer_;
        std::vector<Line> lines_;
    };
};
