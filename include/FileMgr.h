#pragma once

#include <json/json.h>

#include <string>

#include "zelCommonTypesExport.h"

/// Loads and stores JSON configuration files. Every outcome is a result code plus a log line;
/// nothing is thrown for a missing, malformed or odd file.
///
/// ~~~
///    0  success
///  -17  the file could not be opened, sized or accepted for reading: it is missing or
///       unreadable, it is not a regular file (a directory, a FIFO, a device, a socket), it
///       is larger than kMaxFileSize (100 MiB), or (loadLocalCfg) its text holds more than
///       kMaxValues JSON values. Nothing is allocated for a refused file and a FIFO is never
///       waited on.
///  -13  the text is not valid JSON (a file of NUL bytes only has no text and gives -13)
///  -43  the file (or the temporary beside it) could not be created or truncated for writing
///  -41  writing, flushing or replacing the file failed
/// ~~~
///
/// The path is handed to the operating system unchanged. Loading and parsing never throw: a
/// document of any shape is returned as jsoncpp parsed it, and its readers decide.
class ZELCOMMONTYPES_API FileMgr {
public:
    static constexpr int kOk = 0;              ///< Success.
    static constexpr int kErrOpenRead = -17;   ///< Not opened, sized or accepted for reading.
    static constexpr int kErrParse = -13;      ///< Not valid JSON.
    static constexpr int kErrOpenWrite = -43;  ///< Not created or truncated for writing.
    static constexpr int kErrWrite = -41;      ///< Writing, flushing or replacing failed.

    /// The largest file that loadFileContent reads, in bytes (100 MiB). Configuration files
    /// are a few kilobytes; anything near this is a wrong path or a corrupted file.
    static constexpr int kMaxFileSize = 100 * 1024 * 1024;

    /// The most JSON values (objects, arrays, member values, elements) a loaded text may hold.
    /// Memory follows the number of values, not the file's size: parsed, each value costs
    /// jsoncpp up to about 90 bytes on the 32-bit board (160 on a 64-bit host), so 100 MiB of
    /// "[{},{},...]" would take gigabytes. At this limit a load stays under about 90 MB on the
    /// board; the largest channel tables in use (16 tables of 512 rows) hold about 280,000
    /// values. A daemon with less memory to spare passes Limits of its own. The count is taken
    /// by a scan of the text before anything is parsed.
    static constexpr int kMaxValues = 1000000;

    /// What a load accepts, for a daemon that wants other bounds than the defaults.
    struct Limits {
        long long maxFileSize;  ///< bytes
        long long maxValues;    ///< JSON values in the text
    };
    /// kMaxFileSize and kMaxValues, the limits of the loads without a Limits argument.
    static constexpr Limits kDefaultLimits = {kMaxFileSize, kMaxValues};

    /// Reads the file into content, up to its first NUL byte. 0 or -17; content is left
    /// untouched on -17. Besides "ERR::path '%s' error opening file", a refused file logs
    /// "ERR::path '%s' is not a regular file" or
    /// "ERR::path '%s' is too large (%lld bytes, limit %lld)".
    int loadFileContent(const std::string& path, std::string& content);
    /// The same with the limits' maxFileSize instead of kMaxFileSize.
    int loadFileContent(const std::string& path, std::string& content, const Limits& limits);

    /// Loads and parses the file into root; any JSON document is accepted (object, array or
    /// scalar). 0, -17 or -13; on -17 and -13 root is exactly as it was. Never throws: a
    /// document that jsoncpp refuses by throwing (values nested more than 1,000 deep, the
    /// top-level value counted as the first: 1,000 arrays load around nothing, 999 around a
    /// number) gives -13 with the same two lines as any malformed text, the second carrying
    /// jsoncpp's message.
    /// A text of more than kMaxValues values gives -17 before it is parsed, with
    /// "ERR::path '%s' holds too many values (%lld values, limit %lld)" and the check line.
    int loadLocalCfg(const std::string& path, Json::Value& root);
    /// The same with the given limits.
    int loadLocalCfg(const std::string& path, Json::Value& root, const Limits& limits);

    /// Writes root as styled JSON text straight into the file, replacing its content. A
    /// failure half-way (full disk, power cut) leaves a truncated file. 0, -43 or -41. Only a
    /// regular file (or nothing) is written: a FIFO, a device or a socket gives -43 with
    /// errno EINVAL (a FIFO without a reader ENXIO) at once, instead of blocking or writing
    /// into it; the decision is taken on the opened descriptor.
    int storeLocalCfg(const std::string& path, const Json::Value& root);

    /// Writes the same styled text with the same codes and log lines as storeLocalCfg, but
    /// never leaves a partly written file at the path: the text goes to a new temporary file
    /// in the same folder (".<8 random letters>.tmp", created exclusively, so any name that
    /// fits the folder works), is flushed to disk with fsync, renamed over the path, and the
    /// folder is synced so the rename survives a power cut.
    ///  - Crash or power cut: the path holds the complete old or the complete new text; a
    ///    temporary may be left in the folder.
    ///  - Full disk, quota, I/O error before the rename (-43 or -41): the old file is left
    ///    byte for byte as it was and the temporary is removed.
    ///  - A failed fsync is a failed write (-41), never retried: after EIO the kernel may
    ///    have dropped the text it could not write. Interrupted calls (EINTR) and short
    ///    writes are retried or continued.
    ///  - A -41 from opening or syncing the folder comes after the rename: the new text is
    ///    in place but not known to be on disk.
    /// The new file keeps what rewriting the old one in place would keep: its permissions
    /// (set-user-ID and set-group-ID bits too), its owner and group where the process may
    /// give them (a process that may not goes on with its own), and its extended attributes
    /// where the file system and the process allow. A new file gets 0666 less the umask.
    /// The temporary is created with mode 0600 and given the old file's owner and mode (or
    /// 0666 less the umask for a new file) before any text is written, so no other user can
    /// open it while it holds a text that the old file's mode keeps from them.
    /// A symbolic link at the path stays and keeps pointing where it pointed; the file it
    /// points to (followed through any chain of links) is replaced, or created if missing; a
    /// loop of links gives -43 with ELOOP. A link is followed only where the kernel's
    /// protected_symlinks rule allows it, whatever the system's setting: in a sticky folder
    /// that everyone may write to (/tmp), only a link owned by this process's user or by the
    /// folder's owner; any other gives -43 with EACCES and nothing is written.
    /// Only a regular file (or nothing) is replaced: an empty path, a directory and a FIFO,
    /// device or socket give -43 (errno ENOENT, EISDIR, EINVAL) and stay as they are.
    int storeLocalCfgDurable(const std::string& path, const Json::Value& root);
};
