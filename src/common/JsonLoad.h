#pragma once

// How the file store loads a JSON document: the file read whole, its text (the bytes before
// the first NUL) counted and parsed. FileMgr::loadLocalCfg is this and nothing more; the check
// engine compiles the same code, so that what it checks is byte for byte what the device
// loads, with the same limits, codes and log lines, and keeps what the store throws away: the
// bytes after a NUL, why a file was refused, and the parser's own error.

#include <json/json.h>

#include <cstddef>
#include <string>

#include "FileMgr.h"

namespace zelcommon {

// Why a load gave FileMgr::kErrOpenRead.
enum class LoadRefusal {
    None,
    Open,           // the path cannot be opened (openError says why)
    Size,           // the opened file cannot be sized
    NotRegular,     // a directory, a FIFO, a device or a socket (directory says which)
    TooLarge,       // more bytes than the limit
    TooManyValues,  // more JSON values in its text than the limit
};

struct JsonLoad {
    int code = FileMgr::kOk;
    LoadRefusal refusal = LoadRefusal::None;
    int openError = 0;       // errno of a failed open
    bool directory = false;  // NotRegular: a directory
    long long size = 0;      // the file's size when it was sized
    long long values = 0;    // the values counted in its text
    // The file as read: its size in bytes, NULs and what follows them included, zero-filled
    // past a read that came up short.
    std::string bytes;
    std::size_t textLength = 0;  // bytes before the first NUL: the text that is parsed
    Json::Value document;        // what the parser made of the text, when code is kOk
    // kErrParse: the parser's error text ("* Line 2, Column 14\n  Syntax error: ..."), or what
    // it threw, and whether it threw.
    std::string parseErrors;
    bool parserThrew = false;
    bool outOfMemory = false;  // the parser threw std::bad_alloc
};

// Loads the file as FileMgr::loadLocalCfg does, logging what it logs. Returns load.code.
int loadJsonFile(const std::string& path, const FileMgr::Limits& limits, JsonLoad& load);

// The same for bytes already in memory, as if a file of that path held them.
int loadJsonBytes(const std::string& path, std::string bytes, const FileMgr::Limits& limits,
                  JsonLoad& load);

// Reads the file whole into bytes, logging a refusal as the store does. kOk or kErrOpenRead;
// load.refusal says why on the latter.
int readWholeFile(const std::string& path, long long maxFileSize, JsonLoad& load);

}  // namespace zelcommon
