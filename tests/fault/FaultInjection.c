// Loaded with LD_PRELOAD into a process whose file store is put to the test: makes the N-th
// call of one kind of system call fail, as a full disk, a quota, a dying disk or a signal
// would make it fail, and counts the calls of every kind. Nothing is counted or failed until
// the process calls zelct_fault_arm(), so what the loader, the C++ runtime and the test's
// own set-up do before that does not shift the numbers.
//
// Environment, read when armed:
//   ZELCT_FAULT_CALL   the kind of call to fail: open, write, read, fsync, close, rename,
//                      diropen (an open with O_DIRECTORY) or dirfsync (fsync of such a
//                      descriptor); open and write include their variants (openat, fopen,
//                      writev, ...)
//   ZELCT_FAULT_NTH    which call of that kind fails, counting from 1
//   ZELCT_FAULT_ERRNO  the errno it fails with; "short" makes a write or read move half of
//                      what it was asked for instead
//
// Besides, while armed, the trail records what decides who may read a new file and when
// text reaches it: the mode of every file created, fchown, fchmod with its mode, and every
// write, in order (zelct_fault_trail). These calls are never failed.
//
// A failing close still closes the descriptor, as Linux does for every error of close.
// Written in C and built without sanitizers, so it sits in front of any runtime's own
// interceptors and calls on to them.
#undef _FORTIFY_SOURCE
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

enum Kind { kOpen, kWrite, kRead, kFsync, kClose, kRename, kDirOpen, kDirFsync, kKinds };

static const char* const kKindNames[kKinds] = {"open",  "write",  "read",    "fsync",
                                               "close", "rename", "diropen", "dirfsync"};

enum Strike { kGoOn, kFail, kShort };

static int armed;
static long counts[kKinds];
static int faultKind = -1;
static long faultNth;
static int faultErrno;
static int faultShort;

// The descriptors of folders opened while armed, so their fsync counts as the folder's.
static int folders[64];
static int folderCount;

static char sequence[4096];
static char trail[4096];

// Appends one entry to the trail, separated by a space.
static void note(const char* what, unsigned mode, int withMode) {
    if (!armed) {
        return;
    }
    const size_t used = strlen(trail);
    snprintf(trail + used, sizeof trail - used, withMode ? "%s%s %04o" : "%s%s",
             used > 0 ? " " : "", what, mode);
}

void zelct_fault_arm(void) {
    const char* call = getenv("ZELCT_FAULT_CALL");
    const char* nth = getenv("ZELCT_FAULT_NTH");
    const char* err = getenv("ZELCT_FAULT_ERRNO");
    faultKind = -1;
    for (int kind = 0; call != NULL && kind < kKinds; ++kind) {
        if (strcmp(call, kKindNames[kind]) == 0) {
            faultKind = kind;
        }
    }
    faultNth = nth != NULL ? atol(nth) : 0;
    faultShort = err != NULL && strcmp(err, "short") == 0;
    faultErrno = err != NULL && !faultShort ? atoi(err) : 0;
    memset(counts, 0, sizeof counts);
    folderCount = 0;
    sequence[0] = '\0';
    trail[0] = '\0';
    armed = 1;
}

void zelct_fault_disarm(void) {
    armed = 0;
}

// How many calls of the named kind were made while armed, or -1 for an unknown name.
long zelct_fault_count(const char* name) {
    for (int kind = 0; kind < kKinds; ++kind) {
        if (strcmp(name, kKindNames[kind]) == 0) {
            return counts[kind];
        }
    }
    return -1;
}

// Every call made while armed, in order, as kind names separated by spaces.
const char* zelct_fault_sequence(void) {
    return sequence;
}

// The trail of calls made while armed: "create 0600 fchown fchmod 0640 write ...".
const char* zelct_fault_trail(void) {
    return trail;
}

static enum Strike strike(enum Kind kind) {
    if (!armed) {
        return kGoOn;
    }
    const long n = ++counts[kind];
    const size_t used = strlen(sequence);
    snprintf(sequence + used, sizeof sequence - used, "%s%s", used > 0 ? " " : "",
             kKindNames[kind]);
    if ((int)kind != faultKind || n != faultNth) {
        return kGoOn;
    }
    if (faultShort) {
        return kShort;
    }
    errno = faultErrno;
    return kFail;
}

static int isFolder(int fd) {
    for (int i = 0; i < folderCount; ++i) {
        if (folders[i] == fd) {
            return 1;
        }
    }
    return 0;
}

static void noteFolder(int fd, int flags) {
    if (armed && fd >= 0 && (flags & O_DIRECTORY) && folderCount < 64) {
        folders[folderCount++] = fd;
    }
}

static void forgetFolder(int fd) {
    for (int i = 0; i < folderCount; ++i) {
        if (folders[i] == fd) {
            folders[i] = folders[--folderCount];
            return;
        }
    }
}

#define NEXT(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

static mode_t modeOf(int flags, va_list args) {
    return (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(args, mode_t) : 0;
}

static enum Kind openKind(int flags) {
    return (flags & O_DIRECTORY) ? kDirOpen : kOpen;
}

#define DEFINE_OPEN(name)                             \
    int name(const char* path, int flags, ...) {      \
        va_list args;                                 \
        va_start(args, flags);                        \
        const mode_t mode = modeOf(flags, args);      \
        va_end(args);                                 \
        if (strike(openKind(flags)) != kGoOn) {       \
            return -1;                                \
        }                                             \
        if (flags & O_CREAT) {                        \
            note("create", mode, 1);                  \
        }                                             \
        const int fd = NEXT(name)(path, flags, mode); \
        noteFolder(fd, flags);                        \
        return fd;                                    \
    }

#define DEFINE_OPENAT(name)                               \
    int name(int at, const char* path, int flags, ...) {  \
        va_list args;                                     \
        va_start(args, flags);                            \
        const mode_t mode = modeOf(flags, args);          \
        va_end(args);                                     \
        if (strike(openKind(flags)) != kGoOn) {           \
            return -1;                                    \
        }                                                 \
        if (flags & O_CREAT) {                            \
            note("create", mode, 1);                      \
        }                                                 \
        const int fd = NEXT(name)(at, path, flags, mode); \
        noteFolder(fd, flags);                            \
        return fd;                                        \
    }

DEFINE_OPEN(open)
DEFINE_OPEN(open64)
DEFINE_OPENAT(openat)
DEFINE_OPENAT(openat64)

FILE* fopen(const char* path, const char* mode) {
    return strike(kOpen) != kGoOn ? NULL : NEXT(fopen)(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
    return strike(kOpen) != kGoOn ? NULL : NEXT(fopen64)(path, mode);
}

int fchown(int fd, uid_t owner, gid_t group) {
    note("fchown", 0, 0);
    return NEXT(fchown)(fd, owner, group);
}

int fchmod(int fd, mode_t mode) {
    note("fchmod", mode, 1);
    return NEXT(fchmod)(fd, mode);
}

ssize_t write(int fd, const void* data, size_t size) {
    note("write", 0, 0);
    switch (strike(kWrite)) {
        case kFail:
            return -1;
        case kShort:
            return NEXT(write)(fd, data, size > 1 ? size / 2 : size);
        default:
            return NEXT(write)(fd, data, size);
    }
}

ssize_t writev(int fd, const struct iovec* parts, int count) {
    note("write", 0, 0);
    switch (strike(kWrite)) {
        case kFail:
            return -1;
        case kShort:
            return count > 0
                       ? NEXT(write)(fd, parts[0].iov_base,
                                     parts[0].iov_len > 1 ? parts[0].iov_len / 2 : parts[0].iov_len)
                       : 0;
        default:
            return NEXT(writev)(fd, parts, count);
    }
}

ssize_t read(int fd, void* data, size_t size) {
    switch (strike(kRead)) {
        case kFail:
            return -1;
        case kShort:
            return NEXT(read)(fd, data, size > 1 ? size / 2 : size);
        default:
            return NEXT(read)(fd, data, size);
    }
}

int fsync(int fd) {
    return strike(isFolder(fd) ? kDirFsync : kFsync) != kGoOn ? -1 : NEXT(fsync)(fd);
}

int close(int fd) {
    const enum Strike struck = strike(kClose);
    const int saved = errno;
    forgetFolder(fd);
    const int result = NEXT(close)(fd);
    if (struck != kGoOn) {
        errno = saved;
        return -1;
    }
    return result;
}

int rename(const char* from, const char* to) {
    return strike(kRename) != kGoOn ? -1 : NEXT(rename)(from, to);
}

int renameat(int fromAt, const char* from, int toAt, const char* to) {
    return strike(kRename) != kGoOn ? -1 : NEXT(renameat)(fromAt, from, toAt, to);
}
