#pragma once

// What every fuzz target shares: the fuzzer's bytes become a JSON document as a file or a
// message would, and each reader of the family gets its own copy to read and write back.
//
// The readers' contract: a value of a JSON type that jsoncpp cannot convert (an object where
// a number belongs, a string where an array is walked) makes jsoncpp throw a
// Json::LogicError, which Deserialize lets through to its caller. That, and only that, is
// caught here. Any other exception, any exception from Serialize, a sanitizer report, a leak,
// an allocation beyond libFuzzer's limit or a hang ends the run as a finding.

#include <json/json.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "Logger.h"

namespace fuzz {

// Every log line is formatted, as at the most detailed level, and dropped: formatting is part
// of what is tested, printing would only slow the run down.
inline void quietLogger() {
    Logger::setThreshold(Logger::logVerbose);
    Logger::setSink([](Logger::logDebugLevel_t, const std::string&) {});
}

// Parses the bytes with jsoncpp's default reader settings, as FileMgr::loadLocalCfg does; like
// it, a text that makes the parser throw (nesting past its limit) is one that does not parse.
inline bool parse(const uint8_t* data, size_t size, Json::Value& root) {
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    const char* begin = reinterpret_cast<const char*>(data);
    std::string errors;
    try {
        return reader->parse(begin, begin + size, &root, &errors);
    } catch (const Json::Exception&) {
        return false;
    }
}

// How a target builds a blank object of a class and what else it asks of an object that was
// read; a target specializes it for a class without a default constructor or with
// operations that work on what was read.
template <typename Document>
struct Handling {
    static Document make() { return Document(); }
    static void exercise(Document&) {}
};

// Reads the document twice into one object (containers append on the second read), keeps
// whatever was read before jsoncpp threw, puts the object's own operations to work on it and
// writes the object and a copy of it back.
template <typename Document>
void readAndWrite(Json::Value document) {
    Document object = Handling<Document>::make();
    for (int pass = 0; pass < 2; ++pass) {
        try {
            object.Deserialize(document);
        } catch (const Json::Exception&) {
            // The documented outcome for a value of the wrong JSON type.
        }
    }
    Handling<Document>::exercise(object);
    Json::Value written;
    object.Serialize(written);
    Document copy = object;
    Json::Value writtenAgain;
    copy.Serialize(writtenAgain);
    if (!(writtenAgain == written)) {
        __builtin_trap();  // a copy must write what its original writes
    }
    (void)written.toStyledString();
}

template <typename... Documents>
int readEach(const uint8_t* data, size_t size) {
    Json::Value root;
    if (parse(data, size, root)) {
        (readAndWrite<Documents>(root), ...);
    }
    return 0;
}

}  // namespace fuzz

// Defines the fuzzer's entry points for a target that hands every document to the readers of
// the listed classes, one after the other.
#define ZELCT_FUZZ_READERS(...)                                               \
    extern "C" int LLVMFuzzerInitialize(int*, char***) {                      \
        fuzz::quietLogger();                                                  \
        return 0;                                                             \
    }                                                                         \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) { \
        return fuzz::readEach<__VA_ARGS__>(data, size);                       \
    }
