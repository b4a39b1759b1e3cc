// Loading a file as the device does, and what is said when the device cannot. The file is
// read once and its text parsed once, by the file store's own loading code (JsonLoad), which
// also keeps the bytes after a NUL for the text's findings and positions, why a file was
// refused, and the parser's error as the parser gave it.
#include "CheckSteps.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "FileMgr.h"
#include "JsonLoad.h"
#include "ReadingScan.h"

namespace zelct {

namespace {

// The store's own limits, as a daemon's load without Limits has them.
constexpr FileMgr::Limits kStoreLimits = {FileMgr::kMaxFileSize, FileMgr::kMaxValues};

using zelcommon::JsonLoad;
using zelcommon::LoadRefusal;

// Why the store refused the file, in the words of a finding line.
std::string refusalCause(const JsonLoad& load) {
    switch (load.refusal) {
        case LoadRefusal::Open:
            return std::strerror(load.openError);
        case LoadRefusal::NotRegular:
            return load.directory ? "a directory, not a regular file" : "not a regular file";
        case LoadRefusal::TooLarge:
            return "larger than 100 MiB";
        case LoadRefusal::TooManyValues:
            return "more than " + std::to_string(FileMgr::kMaxValues) +
                   " JSON values, the most the device loads";
        case LoadRefusal::Size:
        case LoadRefusal::None:
            break;
    }
    return "the file cannot be opened or is refused";
}

// How deep jsoncpp's reader, with its default settings (stackLimit), nests values: the
// top-level value is the first, and an empty innermost container is one like any other.
constexpr size_t kParserNestingLimit = 1000;

// Where the text nests deeper than the parser's limit, or no position when it does not.
Position nestingPosition(const SourceText& source) {
    const size_t deep =
        nestingPastLimit(source.bytes.substr(0, source.deviceLength), kParserNestingLimit);
    return deep < source.deviceLength ? source.lines.at(deep) : Position();
}

// The parser's first error: "* Line L, Column C\n  MESSAGE\n..." (C counting bytes from after a
// byte-order mark), or for what it threw, its bare text ("Exceeded stackLimit in readValue().").
struct ParseError {
    std::string message;
    int line = 0;
    int column = 0;
};

ParseError firstParseError(const JsonLoad& load) {
    static const std::string indent = "\n  ";
    ParseError error;
    std::string message = load.parseErrors;
    if (!load.parserThrew &&
        std::sscanf(message.c_str(), "* Line %d, Column %d", &error.line, &error.column) == 2) {
        const size_t start = message.find(indent);
        message =
            start == std::string::npos ? std::string() : message.substr(start + indent.size());
    }
    error.message = message.substr(0, message.find('\n'));
    return error;
}

// A text the parser refused: its message, and where it stopped or the nesting went too deep.
Outcome unparsed(const JsonLoad& load, const SourceText& source) {
    const ParseError error = firstParseError(load);
    std::string problem =
        error.message.empty() ? "cannot load: not valid JSON" : "not valid JSON: " + error.message;
    if (source.deviceLength < source.bytes.size()) {
        const Position nul = source.lines.at(source.deviceLength);
        problem += "; the device loads the file only up to the NUL byte at " +
                   std::to_string(nul.line) + ":" + std::to_string(nul.column);
    }
    Outcome failure = unusable(problem + " (FileMgr code " + std::to_string(load.code) + ")");
    failure.fileMgrCode = load.code;
    if (load.parserThrew) {
        placeOutcome(failure, nestingPosition(source));
    } else if (error.line > 0) {
        placeOutcome(failure,
                     source.lines.at(source.offsetOfParserPlace(error.line, error.column)));
    }
    return failure;
}

// What the load came to: the document and its text, or why the device cannot use the file.
bool settled(JsonLoad& load, LogRecorder& recorder, LoadedFile& loaded, Outcome& failure) {
    if (load.outOfMemory) {
        // No fault of the file: the caller says so as what it is.
        throw std::bad_alloc();
    }
    if (load.code == FileMgr::kOk) {
        loaded.document = std::move(load.document);
        loaded.source = std::make_unique<SourceText>(std::move(load.bytes));
        loaded.log = recorder.take();
        loaded.values = load.values;
        return true;
    }
    if (load.code == FileMgr::kErrParse) {
        failure = unparsed(load, SourceText(std::move(load.bytes)));
    } else {
        failure = unusable("cannot load: " + refusalCause(load) + " (FileMgr code " +
                           std::to_string(load.code) + ")");
        failure.fileMgrCode = load.code;
    }
    failure.log = recorder.take();
    return false;
}

}  // namespace

bool loadFile(const std::string& path, LoadedFile& loaded, Outcome& failure) {
    LogRecorder recorder;
    JsonLoad load;
    zelcommon::loadJsonFile(path, kStoreLimits, load);
    return settled(load, recorder, loaded, failure);
}

bool loadText(const std::string& name, std::string bytes, LoadedFile& loaded, Outcome& failure) {
    LogRecorder recorder;
    JsonLoad load;
    zelcommon::loadJsonBytes(name, std::move(bytes), kStoreLimits, load);
    return settled(load, recorder, loaded, failure);
}

}  // namespace zelct
