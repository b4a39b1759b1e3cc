#include "Output.h"

#include "FileMgr.h"

namespace zelct {

std::string storeFailureReason(const std::vector<LogLine>& log) {
    // "ERR::Saving JSON to file 'PATH:' failed to WHAT errno='N' ('TEXT')": the text is the
    // last quoted one, whatever quotes the path holds.
    static const std::string opening = "('";
    static const std::string closing = "')";
    for (auto line = log.rbegin(); line != log.rend(); ++line) {
        const std::string& text = line->text;
        if (text.compare(0, 25, "ERR::Saving JSON to file ") != 0 || text.size() < 4 ||
            text.compare(text.size() - closing.size(), closing.size(), closing) != 0) {
            continue;
        }
        const size_t start = text.rfind(opening);
        if (start != std::string::npos) {
            const size_t from = start + opening.size();
            return text.substr(from, text.size() - closing.size() - from);
        }
    }
    return std::string();
}

namespace {

// What the code says when the log gave no reason.
std::string meaningOf(int code) {
    return code == FileMgr::kErrOpenWrite ? "the file cannot be created or replaced"
                                          : "the text cannot be written out";
}

}  // namespace

Stored storeDocument(const std::string& path, const Json::Value& document) {
    Stored stored;
    LogRecorder recorder;
    stored.code = FileMgr().storeLocalCfgDurable(path, document);
    stored.log = recorder.take();
    if (stored.code != 0) {
        stored.reason = storeFailureReason(stored.log);
        if (stored.reason.empty()) {
            stored.reason = meaningOf(stored.code);
        }
    }
    return stored;
}

}  // namespace zelct
