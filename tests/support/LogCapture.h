#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Logger.h"

// Captures every log line (level and text) for the lifetime of the object, at every level.
// Restores the default sink and the threshold it found when it goes.
class LogCapture {
public:
    using Line = std::pair<Logger::logDebugLevel_t, std::string>;

    LogCapture() : threshold_(Logger::getThreshold()) {
        Logger::setThreshold(Logger::logVerbose);
        Logger::setSink([this](Logger::logDebugLevel_t level, const std::string& text) {
            std::lock_guard<std::mutex> lock(mutex_);
            lines_.emplace_back(level, text);
        });
    }
    ~LogCapture() {
        Logger::setSink(nullptr);
        Logger::setThreshold(threshold_);
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<Line> lines() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return lines_;
    }
    void clear() {
        std::lock_guard<std::mutex> lock(mutex_);
        lines_.clear();
    }

private:
    const Logger::logDebugLevel_t threshold_;
    mutable std::mutex mutex_;
    std::vector<Line> lines_;
};

inline LogCapture::Line logLine(Logger::logDebugLevel_t level, const std::string& text) {
    return {level, text};
}
