#include "FileMgr.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>

#include "Logger.h"

int FileMgr::loadFileContent(const std::string& path, std::string& content) {
    FILE* file = std::fopen(path.c_str(), "r");
    if (file == nullptr) {
        Logger::log(Logger::logError, "ERR::path '%s' error opening file", path.c_str());
        return kErrOpenRead;
    }
    std::fseek(file, 0, SEEK_END);
    const long size = std::ftell(file);
    std::rewind(file);
    if (size < 0) {
        // Pipes and character devices have no size; nothing sensible can be read from them.
        Logger::log(Logger::logError, "ERR::path '%s' error reading file size", path.c_str());
        std::fclose(file);
        return kErrOpenRead;
    }

    // One byte more than the file, zero-filled, so the text is always NUL-terminated.
    char* buffer = static_cast<char*>(std::calloc(static_cast<size_t>(size) + 1, 1));
    if (std::fread(buffer, 1, static_cast<size_t>(size), file) == 0 && !std::feof(file)) {
        Logger::log(Logger::logError, "ERR::fread failed");
    }
    std::fclose(file);

    // The content ends at the first NUL byte of the file.
    content.clear();
    content.append(buffer);
    Logger::log(Logger::logVerbose, "VBS::path '%s' size loaded '%d'", path.c_str(),
                static_cast<int>(content.size()));
    std::free(buffer);
    return kOk;
}

int FileMgr::loadLocalCfg(const std::string& path, Json::Value& root) {
    std::string text;
    const int result = loadFileContent(path, text);
    if (result < 0) {
        Logger::log(Logger::logError, "ERR::CHK(%s)::%d Error Code %d",
                    "int FileMgr::loadLocalCfg(const string&, Json::Value&)", 55, result);
        return result;
    }

    // The reader parses the loaded text where it lies. Json::parseFromStream would copy it
    // into a stream and out again before handing it to the same reader, with the same result
    // and the same error text.
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &root, &errors)) {
        Logger::log(Logger::logError, "ERR::Error parsing Json '%s'", text.c_str());
        Logger::log(Logger::logError, "ERR::Error: '%s'", errors.c_str());
        return kErrParse;
    }
    return kOk;
}

int FileMgr::storeLocalCfg(const std::string& path, const Json::Value& root) {
    std::ofstream out(path, std::ios::out);
    if (!out.is_open()) {
        const int err = errno;
        Logger::log(Logger::logError,
                    "ERR::Saving JSON to file '%s:' failed to open file errno='%d' ('%s')",
                    path.c_str(), err, std::strerror(err));
        return kErrOpenWrite;
    }
    out << root.toStyledString();
    out.flush();
    if (!out.good()) {
        const int err = errno;
        Logger::log(Logger::logError,
                    "ERR::Saving JSON to file '%s:' failed to write file errno='%d' ('%s')",
                    path.c_str(), err, std::strerror(err));
        out.close();
        return kErrWrite;
    }
    out.close();
    return kOk;
}
