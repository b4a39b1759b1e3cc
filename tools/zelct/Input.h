#pragma once

#include <functional>
#include <string>

#include "Check.h"
#include "Kinds.h"
#include "Printer.h"

namespace zelct {

// The name that stands for standard input where a command takes a file.
constexpr const char* kStandardInput = "-";

// Standard input copied into a temporary file, so that it is loaded exactly as a file is
// (FileMgr::loadLocalCfg takes a path, and a pipe has no size to read by). The file is
// removed with this object.
class StandardInputFile {
public:
    StandardInputFile() = default;
    ~StandardInputFile();
    StandardInputFile(const StandardInputFile&) = delete;
    StandardInputFile& operator=(const StandardInputFile&) = delete;

    // Copies standard input; false with the reason in `error` when it cannot.
    bool copy(std::string& error);

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

// Checks a file named on the command line, or standard input for "-", as checkFile does;
// the temporary file's name is taken out of what the library logs about it.
Outcome checkInput(const Kind& kind, const std::string& name, bool withFindings);

// Checks the copy of standard input as checkFile does, with "-" for the copy's name in what
// the library logs.
Outcome checkCopiedInput(const Kind& kind, const StandardInputFile& input, bool withFindings);

// Runs one file's step of a command (`step` returns its exit code). Running out of memory
// on the way says nothing about the file, and is no finding or reading failure of it: it is
// reported as what it is, "FILE: out of memory", with exit code 2, once the step's memory has
// been given back by the unwinding.
int withinMemory(Printer& printer, const std::string& file, const std::function<int()>& step);

// Why a file cannot be stored at that path, looked at before anything is read, so that a
// wrong -o fails at once rather than after a long check. The store decides again when it
// stores (see storeDocument); this only says early what it would say late. Empty when it can
// be tried (an absent path included: storing creates it or says why it cannot).
std::string unusableOutput(const std::string& path);

}  // namespace zelct
