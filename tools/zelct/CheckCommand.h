#pragma once

#include <string>
#include <vector>

#include "Printer.h"

namespace zelct {

// What check takes besides its words.
struct CheckOptions {
    std::string kind;                   // --kind: every file has this kind
    std::vector<std::string> excludes;  // --exclude
    unsigned jobs = 0;                  // -j: files checked at once; 0 for one a core
    bool listFiles = false;             // --list-files: each file's kind, and no check
    bool noTime = false;                // --no-time: the summary without its time
    bool skipUnmapped = false;          // --skip-unmapped: files no rule gives a kind are left out
};

// Check's words: a kind first when the first word names one, then paths. A first word that
// names no kind and no file, spelt as kinds are and followed by paths, is taken for a mistyped
// kind, so that it is answered as one rather than as a missing file.
struct CheckWords {
    bool hasKind = false;
    std::string kind;
    std::vector<std::string> paths;
};
CheckWords splitCheckWords(const std::vector<std::string>& words);

// zelct check. With the kind as the first word, each path is one file of that kind and the
// output is what it has always been. Otherwise folders are walked, each file's kind is chosen
// by the rules of FileKinds.h, and a summary follows. Files are checked on `jobs` threads and
// printed in the order they were found, so the output never depends on the threads.
int runCheckCommand(const std::vector<std::string>& words, const CheckOptions& options,
                    Printer& printer);

}  // namespace zelct
