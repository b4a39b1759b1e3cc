#pragma once

#include <functional>
#include <string>
#include <vector>

#include "zelCommonTypesExport.h"

// The device's logger. Every line goes to one replaceable sink; lines above the threshold
// are dropped before they are formatted. Safe to call from many threads at once: the sink
// is called for one line at a time. A thread can take its own lines for a while with a
// Logger::Capture instead of letting them reach the sink.
class ZELCOMMONTYPES_API Logger {
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

    // While it lives, takes every line that its thread logs, up to its own maximum level
    // (every level by default), whatever the threshold says; those lines never reach the
    // sink. Lines above its maximum are dropped before they are formatted. The innermost
    // live capture of a thread takes the line; when it goes, the one around it takes them
    // again, and with none left the thread's lines go through the threshold to the sink as
    // before. Other threads, the sink and the threshold are left as they are. A capture is
    // used and ended on the thread that made it.
    class ZELCOMMONTYPES_API Capture {
    public:
        struct Line {
            logDebugLevel_t level;
            std::string text;

            bool operator==(const Line& other) const {
                return level == other.level && text == other.text;
            }
            bool operator!=(const Line& other) const { return !(*this == other); }
        };

        explicit Capture(logDebugLevel_t max = logVerbose);
        ~Capture();
        Capture(const Capture&) = delete;
        Capture& operator=(const Capture&) = delete;

        // The lines taken so far, in the order they were logged.
        const std::vector<Line>& lines() const { return lines_; }
        // Hands over the lines taken so far; the capture goes on from none.
        std::vector<Line> take();

    private:
        friend class Logger;

        logDebugLevel_t max_;
        Capture* outer_;
        std::vector<Line> lines_;
    };
};
