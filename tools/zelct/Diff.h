#pragma once

// zelct diff: what changes on the device between two versions of a document, as the device
// understands them rather than as their texts differ. Members moved or reformatted, and
// members the device never reads, change nothing; a text the device reads otherwise
// ("enabled" read as Disabled) changes what the device holds.
#include <json/json.h>

#include <string>
#include <vector>

#include "JsonText.h"
#include "Kinds.h"
#include "Printer.h"
#include "SourceText.h"

namespace zelct {

// One value the device holds otherwise after the change.
struct Change {
    enum class Type {
        Changed,  // held before and after, as another value
        Added,    // held only after
        Removed,  // held only before
    };
    Type type = Type::Changed;
    JsonPath path;
    Json::Value before;  // null when Added
    Json::Value after;   // null when Removed
    // For a text whose meaning the record keeps apart from it (a channel's interface kind): what
    // the record keeps from each text; null for other members.
    Json::Value beforeKept;
    Json::Value afterKept;
    int line = 0;    // in NEW: the member, or when NEW's file lacks it, the innermost object or
    int column = 0;  // array that holds its place; 0 when unknown
};

// "changed", "added" or "removed".
const char* changeTypeName(Change::Type type);

// The changes between what the device holds from two documents of the kind (each as
// heldDocument gives it), in the order the device writes the members. A member whose text
// decides what the record keeps compares by what it keeps: two texts that name the same
// interface kind, in any letter case, are the same channel.
std::vector<Change> heldChanges(const Kind& kind, const Json::Value& before,
                                const Json::Value& after);

// Gives each change its place in NEW's file: `document` is NEW's document as the file has it,
// `held` what the device holds from it.
void placeChanges(std::vector<Change>& changes, const Json::Value& document,
                  const Json::Value& held, const SourceText* source);

// "/0/state: "Disabled" -> "Enabled"", a value the device does not hold as "(absent)".
std::string changeText(const Change& change);

// The changes as an object: "kind", "old", "new", "exit" and "changes", each with "pointer",
// "change", "old" and "new" (when held), "line" and "column" (when known), "old-kept" and
// "new-kept" (a text whose meaning the record keeps apart), and "text".
Json::Value changesJson(const Kind& kind, const std::string& oldFile, const std::string& newFile,
                        const std::vector<Change>& changes);

// The command: 0 when the device holds the same from both files, 1 when it holds otherwise,
// 2 when either file cannot be used (said as check says it).
int diffFiles(const Kind& kind, const std::string& oldFile, const std::string& newFile,
              Printer& printer);

}  // namespace zelct
