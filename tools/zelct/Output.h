#pragma once

#include <json/json.h>

#include <string>
#include <vector>

#include "Log.h"

namespace zelct {

// What storing a document came to: FileMgr's code (0 when stored), why it failed in words,
// and what the library logged on the way.
struct Stored {
    int code = 0;
    std::string reason;
    std::vector<LogLine> log;
};

// Stores the document at `path` through FileMgr::storeLocalCfgDurable, whatever the command
// line asked: the text goes to a new temporary file beside the target, which is renamed over
// it only once whole and synced. A full disk, a quota or a crash therefore never leaves OUT,
// or the input when OUT is the input, cut off. zelct itself never opens the target, so nothing
// swapped in at the path (a FIFO, a device) can make it wait or write into something else:
// the library refuses what is not a regular file when it looks, and a rename never opens
// what it replaces.
Stored storeDocument(const std::string& path, const Json::Value& document);

// The errno text that FileMgr's line about a failed store quotes, or "" when none does.
std::string storeFailureReason(const std::vector<LogLine>& log);

}  // namespace zelct
