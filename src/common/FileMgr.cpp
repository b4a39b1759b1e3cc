#include "FileMgr.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include "JsonLoad.h"
#include "Logger.h"

namespace {

void logSaveFailure(const char* what, const std::string& path, int err) {
    Logger::log(Logger::logError, "ERR::Saving JSON to file '%s:' failed to %s errno='%d' ('%s')",
                path.c_str(), what, err, std::strerror(err));
}

// The folder that holds the path, where its temporary sibling is made and whose entry the
// rename changes.
std::string folderOf(const std::string& path) {
    const std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Eight letters or digits that no other writer is likely to pick at the same moment. They
// need not be secret: the exclusive create below settles any clash.
std::string randomLetters() {
    static std::atomic<std::uint64_t> counter{0};
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    std::uint64_t bits = (static_cast<std::uint64_t>(::getpid()) << 40) ^
                         static_cast<std::uint64_t>(now.tv_sec) * 1000000007u ^
                         static_cast<std::uint64_t>(now.tv_nsec) ^
                         counter.fetch_add(0x9E3779B97F4A7C15u, std::memory_order_relaxed);
    // splitmix64's finaliser spreads every input bit over all the output bits.
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9u;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBu;
    bits ^= bits >> 31;
    static const char kLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::string letters(8, 'x');
    for (char& letter : letters) {
        letter = kLetters[bits % (sizeof kLetters - 1)];
        bits /= sizeof kLetters - 1;
    }
    return letters;
}

// Creates a fresh temporary file in the folder, named ".<8 letters>.tmp": short, so it fits
// wherever the target's own name fits, and hidden from a plain listing. O_EXCL never opens a
// file someone else made; a clash is retried with other letters. Mode 0600: nobody else may
// open it before it has the mode it is meant to have, since a descriptor opened early would
// read whatever text is written later. Returns the descriptor, or -1 with errno.
int createTemporary(const std::string& folder, std::string& name) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        name = folder + "/." + randomLetters() + ".tmp";
        int fd;
        do {
            fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        } while (fd < 0 && errno == EINTR);
        if (fd >= 0 || errno != EEXIST) {
            return fd;
        }
    }
    return -1;
}

// Whether the kernel's protected_symlinks rule lets this process follow the link: in a
// sticky folder that anyone may write to (/tmp), only a link that the process itself or the
// folder's owner made. The store applies it whatever the system's setting, because it
// follows links itself and renames over what they name, where the kernel's own check never
// runs: a link that another user planted in /tmp would otherwise make the store replace any
// file that user cannot even read.
bool mayFollow(const std::string& link, const struct stat& linkInfo) {
    struct stat folder {};
    if (::stat(folderOf(link).c_str(), &folder) != 0) {
        return false;
    }
    const bool shared = (folder.st_mode & S_ISVTX) != 0 && (folder.st_mode & S_IWOTH) != 0;
    return !shared || linkInfo.st_uid == ::geteuid() || linkInfo.st_uid == folder.st_uid;
}

// Follows symbolic links from the path to the name that is really replaced, so that a link
// keeps pointing where it pointed and the file behind it gets the new text, as a store
// through the link in place would. A link to a missing file gives that file's name. Returns
// 0 or errno: ELOOP past 40 links, as the kernel counts, and EACCES for a link that
// mayFollow refuses.
int followLinks(const std::string& path, std::string& resolved) {
    resolved = path;
    for (int hops = 0; hops <= 40; ++hops) {
        struct stat info {};
        if (::lstat(resolved.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) {
            return 0;
        }
        if (!mayFollow(resolved, info)) {
            return EACCES;
        }
        std::string link(PATH_MAX, '\0');
        const ssize_t length = ::readlink(resolved.c_str(), &link[0], link.size());
        if (length < 0) {
            return errno;
        }
        link.resize(static_cast<size_t>(length));
        resolved = link[0] == '/' ? link : folderOf(resolved) + "/" + link;
    }
    return ELOOP;
}

// What the durable store replaces: the file behind any links, and what it was like.
struct Target {
    std::string path;
    bool exists = false;
    struct stat info {};
};

// Finds the target of a durable store. Returns 0 when it can be replaced by a new file (it
// is missing or a regular file), else the errno that opening it for a plain store would
// meet, or EINVAL for a FIFO, a device or a socket, which a rename would replace by a file
// instead of writing into it.
int findTarget(const std::string& path, Target& target) {
    if (path.empty()) {
        return ENOENT;
    }
    const int err = followLinks(path, target.path);
    if (err != 0) {
        return err;
    }
    if (::stat(target.path.c_str(), &target.info) != 0) {
        return 0;  // missing, or a folder on the way is: creating the temporary tells
    }
    if (S_ISDIR(target.info.st_mode)) {
        return EISDIR;
    }
    if (!S_ISREG(target.info.st_mode)) {
        return EINVAL;
    }
    target.exists = true;
    return 0;
}

// Copies the extended attributes (security labels, ACLs, file capabilities, user data) of
// the old file to the new one. A file system without them, an attribute the process may not
// set or one that vanishes meanwhile is skipped: the text matters more than its labels.
void copyExtendedAttributes(const std::string& from, int to) {
    const ssize_t listed = ::listxattr(from.c_str(), nullptr, 0);
    if (listed <= 0) {
        return;
    }
    std::string names(static_cast<size_t>(listed), '\0');
    const ssize_t length = ::listxattr(from.c_str(), &names[0], names.size());
    if (length <= 0) {
        return;
    }
    names.resize(static_cast<size_t>(length));
    for (size_t at = 0; at < names.size(); at += std::strlen(names.c_str() + at) + 1) {
        const char* name = names.c_str() + at;
        const ssize_t size = ::getxattr(from.c_str(), name, nullptr, 0);
        if (size < 0) {
            continue;
        }
        std::string value(static_cast<size_t>(size), '\0');
        const ssize_t got = ::getxattr(from.c_str(), name, &value[0], value.size());
        if (got >= 0) {
            ::fsetxattr(to, name, value.data(), static_cast<size_t>(got), 0);
        }
    }
}

// Gives the new file what rewriting the old one in place would have kept. Only a privileged
// process may give a file away; any other keeps the file as its own and goes on. The mode
// comes last, because a change of owner clears the set-user-ID and set-group-ID bits.
void takeOver(const Target& old, int fd) {
    const int owned = ::fchown(fd, old.info.st_uid, old.info.st_gid);
    static_cast<void>(owned);
    copyExtendedAttributes(old.path, fd);
    ::fchmod(fd, old.info.st_mode & 07777);
}

// The process's file mode creation mask. Linux shows it in /proc/self/status; reading it
// with umask() means setting it for a moment, which another thread creating a file at that
// moment would suffer from, so that is left for kernels without the line.
mode_t currentUmask() {
    std::FILE* status = std::fopen("/proc/self/status", "re");
    if (status != nullptr) {
        char line[128];
        unsigned mask = 0;
        bool found = false;
        while (!found && std::fgets(line, sizeof line, status) != nullptr) {
            found = std::sscanf(line, "Umask: %o", &mask) == 1;
        }
        std::fclose(status);
        if (found) {
            return static_cast<mode_t>(mask);
        }
    }
    const mode_t mask = ::umask(022);
    ::umask(mask);
    return mask;
}

// Gives a temporary that replaces nothing the mode any new file gets: 0666 less the umask.
void takeNewFileMode(int fd) {
    ::fchmod(fd, 0666 & ~currentUmask());
}

// Writes every byte, going on after short writes and interruptions. Returns 0 or errno.
int writeAll(int fd, const std::string& text) {
    const char* data = text.data();
    size_t left = text.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, left);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return errno;
        }
        data += written;
        left -= static_cast<size_t>(written);
    }
    return 0;
}

// Only an interrupted fsync is retried. After any other failure (EIO above all) the kernel
// may already have dropped the dirty pages and marked them clean, so a second fsync can
// succeed without the text ever reaching the disk.
int fsyncRetrying(int fd) {
    while (::fsync(fd) != 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

// Writes, flushes to disk and closes the temporary. Returns 0 or errno; the descriptor is
// closed either way. An interrupted close has still closed the descriptor (Linux), and the
// text is on disk by then.
int writeDurably(int fd, const std::string& text) {
    int err = writeAll(fd, text);
    if (err == 0) {
        err = fsyncRetrying(fd);
    }
    if (::close(fd) != 0 && err == 0 && errno != EINTR) {
        err = errno;
    }
    return err;
}

int renameRetrying(const std::string& from, const std::string& to) {
    while (::rename(from.c_str(), to.c_str()) != 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

// Makes the rename itself survive a power cut. Returns 0 or errno; a file system that cannot
// sync a folder (EINVAL) has nothing more to make durable.
int syncFolder(const std::string& folder) {
    int fd;
    do {
        fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) {
        return errno;
    }
    const int err = fsyncRetrying(fd);
    ::close(fd);
    return err == EINVAL ? 0 : err;
}

// Opens the path for a plain store: created if missing, emptied if a regular file. Opened
// without waiting and judged on the descriptor, not on the path: a FIFO without a reader
// would block the open for ever, and one with a reader, a device or a socket is no file to
// keep a document in (EINVAL). A check of the path before the open could be outrun by a
// swap of what the path names. Returns the descriptor, or -1 with err set.
int openForReplacing(const std::string& path, int& err) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666);
    if (fd < 0) {
        err = errno;
        return -1;
    }
    struct stat info {};
    err = ::fstat(fd, &info) != 0 ? errno : !S_ISREG(info.st_mode) ? EINVAL : 0;
    if (err == 0 && ::ftruncate(fd, 0) != 0) {
        err = errno;
    }
    if (err != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

}  // namespace

int FileMgr::loadFileContent(const std::string& path, std::string& content) {
    return loadFileContent(path, content, kDefaultLimits);
}

int FileMgr::loadFileContent(const std::string& path, std::string& content, const Limits& limits) {
    zelcommon::JsonLoad load;
    if (zelcommon::readWholeFile(path, limits.maxFileSize, load) != kOk) {
        return kErrOpenRead;
    }
    // The content ends at the first NUL byte of the file; the buffer is handed over, not copied.
    load.bytes.resize(load.textLength);
    content.swap(load.bytes);
    Logger::log(Logger::logVerbose, "VBS::path '%s' size loaded '%d'", path.c_str(),
                static_cast<int>(content.size()));
    return kOk;
}

int FileMgr::loadLocalCfg(const std::string& path, Json::Value& root) {
    return loadLocalCfg(path, root, kDefaultLimits);
}

int FileMgr::loadLocalCfg(const std::string& path, Json::Value& root, const Limits& limits) {
    // The document is parsed into a value of its own and handed over whole, so a failed
    // parse never leaves half a document in the caller's root.
    zelcommon::JsonLoad load;
    const int result = zelcommon::loadJsonFile(path, limits, load);
    if (result == kOk) {
        root.swap(load.document);
    }
    return result;
}

int FileMgr::storeLocalCfg(const std::string& path, const Json::Value& root) {
    int err = 0;
    const int fd = openForReplacing(path, err);
    if (fd < 0) {
        logSaveFailure("open file", path, err);
        return kErrOpenWrite;
    }
    err = writeAll(fd, root.toStyledString());
    if (err != 0) {
        logSaveFailure("write file", path, err);
        ::close(fd);
        return kErrWrite;
    }
    ::close(fd);  // the text is the file's by now; a failed close changes nothing of it
    return kOk;
}

int FileMgr::storeLocalCfgDurable(const std::string& path, const Json::Value& root) {
    Target target;
    const int unfit = findTarget(path, target);
    if (unfit != 0) {
        logSaveFailure("open file", path, unfit);
        return kErrOpenWrite;
    }
    const std::string text = root.toStyledString();
    const std::string folder = folderOf(target.path);
    std::string temporary;
    const int fd = createTemporary(folder, temporary);
    if (fd < 0) {
        logSaveFailure("open file", path, errno);
        return kErrOpenWrite;
    }
    if (target.exists) {
        takeOver(target, fd);
    } else {
        takeNewFileMode(fd);
    }

    int err = writeDurably(fd, text);
    if (err == 0) {
        err = renameRetrying(temporary, target.path);
    }
    if (err != 0) {
        ::unlink(temporary.c_str());
        logSaveFailure("write file", path, err);
        return kErrWrite;
    }
    err = syncFolder(folder);
    if (err != 0) {
        logSaveFailure("write file", path, err);
        return kErrWrite;
    }
    return kOk;
}
