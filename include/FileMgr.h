#pragma once

#include <json/json.h>

#include <string>

#include "zelCommonTypesExport.h"

// Loads and stores JSON configuration files. Every outcome is a result code plus a log line;
// nothing is thrown for a missing or malformed file.
//
//    0  success
//  -17  the file could not be opened (or sized) for reading
//  -13  the text is not valid JSON
//  -43  the file could not be created or truncated for writing
//  -41  writing or flushing the styled text failed
//
// The path is handed to the operating system unchanged.
class ZELCT_API FileMgr {
public:
    static constexpr int kOk = 0;
    static constexpr int kErrOpenRead = -17;
    static constexpr int kErrParse = -13;
    static constexpr int kErrOpenWrite = -43;
    static constexpr int kErrWrite = -41;

    // Reads the file into content, up to its first NUL byte. 0 or -17; content is left
    // untouched on -17.
    int loadFileContent(const std::string& path, std::string& content);

    // Loads and parses the file into root; any JSON document is accepted (object, array or
    // scalar). 0, -17 or -13; root is left untouched on -17.
    int loadLocalCfg(const std::string& path, Json::Value& root);

    // Writes root as styled JSON text straight into the file, replacing its content.
    // 0, -43 or -41.
    int storeLocalCfg(const std::string& path, const Json::Value& root);
};
