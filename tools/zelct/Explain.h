#pragma once

// zelct explain: what the device holds from a document, member by member, and where each
// value comes from. Support is asked "why does the board show this value?"; the answer is a
// line of the file, a default of the class, or a value the reading changed.
#include <json/json.h>

#include <string>
#include <vector>

#include "Check.h"
#include "JsonText.h"
#include "Kinds.h"
#include "Printer.h"

namespace zelct {

// Where a value the device holds comes from, or why a member of the file is not held.
enum class Origin {
    File,            // as the file has it
    Default,         // absent from the file: the class writes its default
    Changed,         // in the file, read as another value
    HiddenState,     // as the file has it, while the record keeps something else behind it
    Dropped,         // in the file, never read: not held
    NotWrittenBack,  // in the file, read, and absent from what the class writes: not held
};

// "file", "default", "changed", "hidden-state", "dropped" or "not-written-back".
const char* originName(Origin origin);

// A finding of the text itself that bears on a member: a name given twice, a number or a
// string the parser reads otherwise than it is written.
struct MemberNote {
    Finding::Type type;
    std::string text;  // the finding's sentence, without its pointer
    int line = 0;
    int column = 0;
};

// One value the device holds (a leaf of what the class writes: a scalar, or an empty object or
// array), or one member of the file it does not hold.
struct ExplainedMember {
    JsonPath path;
    Origin origin = Origin::File;
    Json::Value value;    // what the device holds; null when it holds nothing there
    Json::Value from;     // the file's value, for Changed, Dropped, NotWrittenBack and unread
    bool unread = false;  // Default: the file has a value here that the class never reads
    Json::Value kept;     // HiddenState: what the record keeps behind the text
    std::string hidden;   // HiddenState: the finding's sentence, without its pointer
    int line = 0;         // the file's member or value; for a Default the object it is
    int column = 0;       // added to; 0 when unknown
    std::vector<MemberNote> notes;

    bool held() const { return origin != Origin::Dropped && origin != Origin::NotWrittenBack; }
};

// Every value the device holds from a usable document, in the order it writes them, with the
// members of the file it does not hold among them. `document` is the file's document, `source`
// its text (null: no places), `outcome` its check with findings.
std::vector<ExplainedMember> explainMembers(const Kind& kind, const Json::Value& document,
                                            const SourceText* source, const Outcome& outcome);

// Whether a member is worth showing when only what the file does not say as written is asked
// for: anything but a value taken as it stands, and any value with a note of the text.
bool differsFromFile(const ExplainedMember& member);

// The members as lines, aligned in columns: pointer, value, origin; a note on a line of its
// own below its member.
std::string explanationText(const std::vector<ExplainedMember>& members, bool compact);

// The members as an array of objects: "pointer", "origin", "value" (when held), "line" and
// "column" (when known), "from", "kept", "hidden", "notes".
Json::Value explanationJson(const std::vector<ExplainedMember>& members, bool compact);

// The command: explains the file, or says why it cannot be used as check does. Returns 0, or
// 2 for a file that cannot be used.
int explainFile(const Kind& kind, const std::string& file, bool compact, Printer& printer);

}  // namespace zelct
