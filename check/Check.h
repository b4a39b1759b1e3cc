#pragma once

#include <json/json.h>

#include <memory>
#include <string>
#include <vector>

#include "JsonText.h"
#include "Kinds.h"
#include "Log.h"
#include "SourceText.h"

namespace zelct {

// What the library made of one document: the document a fresh object of the kind writes
// after reading it, and what it logged on the way. Reading works on a copy, since it adds
// null members to what it is given.
struct Reading {
    bool failed = false;     // reading or writing threw
    std::string error;       // the exception's text when it did
    Json::Value understood;  // null when it failed
    std::vector<LogLine> log;
};

// Reads the document into a default object of the kind and writes that into an empty value.
// Log lines are recorded, not shown. Never throws.
Reading readAs(const Kind& kind, const Json::Value& document);

// The same on a document of the caller's that may be changed: reading adds null members.
Reading readInPlace(const Kind& kind, Json::Value& document);

// Whether two readings of a document end alike: same failure, understanding and log.
bool sameReading(const Reading& a, const Reading& b);

// A value that every reader of the library rejects or reads differently: a conversion of an
// array to a scalar throws, and so does a member lookup in it.
Json::Value probeValue();

// Another value of the same JSON type, for readers that only look at whether a node is
// there; false for null, arrays and objects.
bool otherValueOfType(const Json::Value& value, Json::Value& other);

// One difference between a document and what the library understood from it.
struct Finding {
    enum class Type {
        Dropped,         // the class never reads it
        Changed,         // read, and written back as another value
        NotWrittenBack,  // read, and absent from what the class writes
        Added,           // absent from the document, written by the class
        // What the device's parser makes of the text before any class reads it:
        DuplicateMember,  // a name given again in the same object; the last value stays
        TrailingText,     // text after the document, never parsed
        Comment,          // a comment, skipped
        TrailingComma,    // a comma before } or ], skipped
        AfterNul,         // the file's bytes from a NUL byte on, never loaded
        NotUtf8,          // a string that is not UTF-8, written back otherwise
        ControlInString,  // a control character unescaped in a string, written back escaped
        ByteOrderMark,    // a byte-order mark before the document, skipped, never written
        NumberText,       // a number JSON does not allow, which the parser reads all the same
        NulInString,      // an escaped NUL in a string or name; a C string ends there
        // What a class keeps from its reading that the written document does not show:
        HiddenState,  // a text no catalogue name matches, written back while the kind stays
    };
    Type type;
    JsonPath path;
    Json::Value original;    // null for Added; the ignored value of a duplicated member
    Json::Value understood;  // null for Dropped and NotWrittenBack; the kept value of a
                             // duplicated member; the text written back for a NotUtf8 or
                             // ControlInString string; the value read for a NumberText (its
                             // original is the text); the text before the NUL for NulInString;
                             // the kind number kept for HiddenState
    int line = 0;            // where it is in the file (an added member: its object); 0 when
    int column = 0;          // the document has no file
};

// "dropped", "changed", "not-written-back", "added", "duplicate-member", "trailing-text",
// "comment", "trailing-comma", "after-nul", "not-utf8", "control-in-string",
// "byte-order-mark", "number-text", "nul-in-string" or "hidden-state".
const char* findingTypeName(Finding::Type type);

// The finding as one line: "/0/channels/3/name: dropped (never read)". Values are compact
// JSON; an object or array longer than a line's worth is summarised by its size.
std::string findingText(const Finding& finding);

// How many findings of one file a check keeps. A hostile file can hold millions (every element
// of a long list an unknown member); kept whole, they would cost many times the document and
// print a report nobody reads. Those after the first ones are only counted.
constexpr size_t kKeptFindings = 1000;

// The findings of one file in the order they are found: the first `keep`, and the number of
// those after them.
struct KeptFindings {
    explicit KeptFindings(size_t keep) : keep(keep) {}

    size_t room() const { return findings.size() < keep ? keep - findings.size() : 0; }

    size_t keep;
    std::vector<Finding> findings;
    size_t omitted = 0;
    // A difference that is no finding at all, neither kept nor counted; null for none.
    bool (*noFinding)(Finding::Type type, const JsonPath& path) = nullptr;
};

// Walks the document and what the library understood from it (`baseline`, a successful
// reading of it) side by side. Where they differ, it finds out whether the class reads the
// node by reading the document again with the node replaced by a value no reader accepts,
// removed, and replaced by another value of its type: if none of these changes what is
// understood or logged, the node is never read. Past `exactWork` nodes read again, an answer
// that the same member of several elements of a list has had alike is taken for the others.
constexpr size_t kExactWork = 200000;
std::vector<Finding> findDifferences(const Kind& kind, const Json::Value& document,
                                     const Reading& baseline, size_t exactWork = kExactWork);

// The same into `kept`, on a document of the caller's that it empties: the originals of the
// kept findings are moved out of it, not copied (their places in the text stay, as jsoncpp keeps
// offsets apart from values). Nodes are perturbed in place and restored while it runs.
void findDifferencesTaking(const Kind& kind, Json::Value& document, const Reading& baseline,
                           KeptFindings& kept, size_t exactWork = kExactWork);

// Where a reading that throws goes wrong: the first node in document order that the reading
// rejects, as deep as replacing nodes by null (read as the defaults) can tell, and what the
// reading says about it alone. `found` is false when nulling the document's members does not
// let the reading succeed.
struct FailurePlace {
    bool found = false;
    JsonPath path;
    std::string error;
};
FailurePlace locateFailure(const Kind& kind, const Json::Value& document);

// The same on a document of the caller's, which it changes (members nulled, lists cut).
FailurePlace locateFailureInPlace(const Kind& kind, Json::Value& work);

// The verdict on one document or file.
struct Outcome {
    enum class Status { Exact, Findings, Unusable };
    Status status = Status::Exact;
    // The first kKeptFindings (or the check's own limit). An Unusable file the device's parser
    // took keeps the findings of its text, which the refusal does not make untrue.
    std::vector<Finding> findings;
    size_t omitted = 0;  // findings after those, counted only
    Json::Value understood;
    std::string problem;        // Unusable: one line, without the file name
    int fileMgrCode = 0;        // Unusable because FileMgr refused the file; else 0
    FailurePlace problemPlace;  // Unusable because a node has the wrong JSON type
    int line = 0;               // Unusable: where the parser stopped or the rejected node is
    int column = 0;
    std::vector<LogLine> log;  // what loading and reading logged, in order; shown by the caller
};

// 0 for Exact, 1 for Findings, 2 for Unusable.
int exitCodeOf(Outcome::Status status);

// Checks a document: its top-level type, then reads it (recording what the library logs in
// the outcome) and, when `withFindings`, compares. A reading that throws makes it Unusable.
// With the file's `source`, findings carry their positions and the text's own traps are
// reported first.
Outcome checkDocument(const Kind& kind, const Json::Value& document, bool withFindings,
                      const SourceText* source = nullptr, size_t keep = kKeptFindings);

// A file as the device loads it, with its text for positions.
struct LoadedFile {
    Json::Value document;
    std::unique_ptr<SourceText> source;  // the file's bytes, those after a NUL included
    std::vector<LogLine> log;            // what the load logged
    long long values = 0;                // JSON values in its text, as the store counted them
};

// Loads the file as FileMgr::loadLocalCfg does, with the same code: the same limits, failure
// codes and log lines, the file read once and its text parsed once. When it cannot be used,
// returns false with the Unusable outcome in `failure` (its log holds what the load logged).
// A text nested deeper than the parser allows is a failure like any other; only running out
// of memory throws (std::bad_alloc).
bool loadFile(const std::string& path, LoadedFile& loaded, Outcome& failure);

// The same for bytes already in memory, loaded as a file of that name holding them would be.
bool loadText(const std::string& name, std::string bytes, LoadedFile& loaded, Outcome& failure);

// Checks a loaded file; the outcome's log starts with the load's lines.
Outcome checkLoaded(const Kind& kind, const LoadedFile& loaded, bool withFindings,
                    size_t keep = kKeptFindings);

// Loads the file and checks the document, keeping its first `keep` findings. Whatever goes
// wrong with one file is its own Unusable outcome, except running out of memory, which is no
// fault of the file: std::bad_alloc goes through to the caller.
Outcome checkFile(const Kind& kind, const std::string& path, bool withFindings,
                  size_t keep = kKeptFindings);

// The same for bytes in memory, checked as a file of that name holding them would be.
Outcome checkText(const Kind& kind, const std::string& name, std::string bytes, bool withFindings,
                  size_t keep = kKeptFindings);

}  // namespace zelct
