#pragma once

// What explain and diff share: a file named on the command line as the device understands
// it, and the places in its text that what the device holds comes from.
#include <json/json.h>

#include <string>
#include <vector>

#include "Check.h"
#include "JsonText.h"
#include "Kinds.h"
#include "Printer.h"

namespace zelct {

// A file as the device loads it, and what checking it as a kind gave.
struct UnderstoodFile {
    LoadedFile loaded;  // the document as the file has it, and its text
    Outcome outcome;    // Unusable when the file cannot be used
};

// Loads the file, or standard input for "-", and checks it as the kind; with findings, every
// one of them is kept, since each member of the document may need its own. Log lines name
// standard input "-", as check's do. Running out of memory goes through to the caller.
UnderstoodFile understandFile(const Kind& kind, const std::string& name, bool withFindings);

// The line check gives on standard error for a file that cannot be used.
Problem unusableProblem(const std::string& file, const Outcome& outcome);

// What the device writes for the file: the kind's own empty shape when it writes nothing.
Json::Value heldDocument(const Kind& kind, const Outcome& outcome);

// A value as one line quotes it: compact JSON, a long object or array by its size.
std::string shownValue(const Json::Value& value);

// For each element of `written`, the element of `given` it was read from, or nullptr. Equal
// elements pair first, in place and then anywhere, since a set is written in its own order;
// then the most alike; what is left pairs by position.
std::vector<const Json::Value*> elementSources(const Json::Value& given,
                                               const Json::Value& written);

// The node of `given` that the node of `written` at `path` was read from, followed down as far
// as the file has it: the node itself, or else the innermost object or array holding its place.
struct SourceNode {
    const Json::Value* node;  // never null: the document at least
    bool member;              // reached by a member's name
    bool whole;               // the node itself, not one that holds its place
};
SourceNode sourceNode(const Json::Value& given, const Json::Value& written, const JsonPath& path);

// Where a node of the file stands: a member's name, an element's value.
Position placeOf(const SourceText* source, const Json::Value& node, bool member);

// Whether `a` comes before `b` in the order the device writes members: names byte by byte,
// indices by number, a node before what it holds.
bool writtenBefore(const JsonPath& a, const JsonPath& b);

}  // namespace zelct
