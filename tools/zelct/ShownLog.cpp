#include "ShownLog.h"

#include <cstdio>

#include "SafeText.h"

namespace zelct {

namespace {

Logger::logDebugLevel_t shownLevel = Logger::logError;
std::string (*lineFilter)(const std::string&) = nullptr;

// FileMgr quotes the whole text of a file it cannot parse; for a large file that would be
// the file again on the terminal. Its size says enough: the next line has the position.
std::string condensed(const std::string& text) {
    static const std::string wholeFile = "ERR::Error parsing Json '";
    if (text.compare(0, wholeFile.size(), wholeFile) != 0) {
        return text;
    }
    size_t quoted = text.size() - wholeFile.size();
    if (quoted > 0 && text.back() == '\'') {
        --quoted;
    }
    return "ERR::Error parsing Json (" + std::to_string(quoted) + " bytes, not shown)";
}

void writeLine(Logger::logDebugLevel_t level, const std::string& text) {
    if (level <= shownLevel) {
        const std::string line = safeLine(condensed(text));
        std::fprintf(stderr, "%s\n", (lineFilter != nullptr ? lineFilter(line) : line).c_str());
    }
}

}  // namespace

void routeLibraryLog(Logger::logDebugLevel_t shown) {
    shownLevel = shown;
    Logger::setThreshold(shown);
    Logger::setSink(writeLine);
}

Logger::logDebugLevel_t shownLogLevel() {
    return shownLevel;
}

void showLog(const std::vector<LogLine>& lines) {
    for (const LogLine& line : lines) {
        writeLine(line.level, line.text);
    }
}

void setShownLineFilter(std::string (*filter)(const std::string& line)) {
    lineFilter = filter;
}

}  // namespace zelct
