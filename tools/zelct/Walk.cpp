#include "Walk.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "Glob.h"

namespace zelct {

namespace {

using Identity = std::pair<dev_t, ino_t>;

bool hasJsonName(const std::string& name) {
    return name.size() > 5 && name.compare(name.size() - 5, 5, ".json") == 0;
}

std::string nonRegularKind(mode_t mode) {
    if (S_ISFIFO(mode)) {
        return "a FIFO";
    }
    if (S_ISSOCK(mode)) {
        return "a socket";
    }
    return S_ISCHR(mode) || S_ISBLK(mode) ? "a device" : "not a regular file";
}

class Walker {
public:
    Walker(const WalkOptions& options, Walked& walked) : options_(options), walked_(walked) {}

    // A folder given on the command line.
    void root(const std::string& folder, const struct stat& info) {
        root_ = folder;
        while (root_.size() > 1 && root_.back() == '/') {
            root_.pop_back();
        }
        walkFolder(root_, info);
    }

private:
    bool excluded(const std::string& path, const std::string& name) const {
        const size_t start = root_ == "/" ? 1 : root_.size() + 1;  // past the root and its "/"
        const std::string below = path.size() > start ? path.substr(start) : std::string();
        for (const std::string& pattern : options_.excludes) {
            const bool byName = pattern.find('/') == std::string::npos;
            if (byName ? globMatches(pattern, name)
                       : globMatches(pattern, below) || globMatches(pattern, path)) {
                return true;
            }
        }
        return false;
    }

    void problem(const std::string& path, const std::string& message) {
        walked_.paths.push_back({path, message});
    }

    std::vector<std::string> namesIn(const std::string& folder) {
        std::vector<std::string> names;
        DIR* dir = ::opendir(folder.c_str());
        if (dir == nullptr) {
            problem(folder, std::string("cannot read the folder: ") + std::strerror(errno));
            return names;
        }
        // readdir says it ended and that it failed alike, by nullptr: errno tells them apart.
        errno = 0;
        while (const dirent* entry = ::readdir(dir)) {
            if (entry->d_name[0] != '.') {  // ".", "..", and every hidden name
                names.emplace_back(entry->d_name);
            }
            errno = 0;
        }
        const int error = errno;
        ::closedir(dir);
        if (error != 0) {
            problem(folder, std::string("cannot read the folder: ") + std::strerror(error));
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    void walkFolder(const std::string& folder, const struct stat& info) {
        const Identity self(info.st_dev, info.st_ino);
        if (std::find(open_.begin(), open_.end(), self) != open_.end()) {
            problem(folder, "a symbolic-link loop: the folder is one it is in");
            return;
        }
        open_.push_back(self);
        const std::string prefix = folder == "/" ? folder : folder + "/";
        for (const std::string& name : namesIn(folder)) {
            entry(prefix + name, name);
        }
        open_.pop_back();
    }

    void entry(const std::string& path, const std::string& name) {
        if (excluded(path, name)) {
            return;
        }
        struct stat info {};
        if (::stat(path.c_str(), &info) != 0) {
            const int error = errno;
            struct stat link {};
            const bool isLink = ::lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode);
            if (error == ELOOP) {
                problem(path, "a symbolic-link loop");
            } else if (isLink && error == ENOENT) {
                problem(path, "a symbolic link to nothing");
            } else {
                problem(path, std::string("cannot be read: ") + std::strerror(error));
            }
            return;
        }
        if (S_ISDIR(info.st_mode)) {
            walkFolder(path, info);
        } else if (hasJsonName(name)) {
            if (S_ISREG(info.st_mode)) {
                walked_.paths.push_back({path, ""});
            } else {
                problem(path, "not a regular file (" + nonRegularKind(info.st_mode) + ")");
            }
        }
    }

    const WalkOptions& options_;
    Walked& walked_;
    std::string root_;
    std::vector<Identity> open_;  // the folders being walked, outermost first
};

}  // namespace

Walked walkPaths(const std::vector<std::string>& paths, const WalkOptions& options) {
    Walked walked;
    for (const std::string& path : paths) {
        struct stat info {};
        if (::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
            walked.anyFolder = true;
            Walker(options, walked).root(path, info);
        } else {
            walked.paths.push_back({path, ""});
        }
    }
    return walked;
}

}  // namespace zelct
