#pragma once

#include <string>
#include <vector>

namespace zelct {

// A path that a check takes: a file to check, or something found on the way that cannot be
// (a symbolic-link loop, a folder that cannot be read, a FIFO named like a document).
struct FoundPath {
    std::string path;     // as the tool prints it
    std::string problem;  // empty for a file to check
};

struct WalkOptions {
    // Patterns of what a walk leaves out (see Glob.h): one without "/" matches a name, one
    // with it the path below the folder given or the path as printed.
    std::vector<std::string> excludes;
};

struct Walked {
    std::vector<FoundPath> paths;
    bool anyFolder = false;  // a folder was given
};

// The files the paths name: a file as it is, whatever its name; a folder walked through in
// the order of its names' bytes, so that every run lists the same files in the same order,
// taking the files named *.json and leaving out names starting with "." (.git, .vscode,
// the project file). Symbolic links are followed, except back into a folder being walked.
Walked walkPaths(const std::vector<std::string>& paths, const WalkOptions& options);

}  // namespace zelct
