#pragma once

#include <json/json.h>

#include <string>
#include <vector>

namespace zelct {

// A JSON value on one line, as a finding quotes it: "enabled", 256, {"id":3}. Numbers with a
// fraction take the fewest digits that read back to the same double.
std::string compactJson(const Json::Value& value);

// A machine-readable document: indented by two spaces, UTF-8 kept, numbers exact, and never a
// comment, whatever the values carry from the document they were read from.
std::string indentedJson(const Json::Value& value);

// Equality of meaning: numbers compare by value whatever their JSON representation (5, 5.0
// and an unsigned 5 are the same number); everything else compares as jsoncpp does.
bool sameValue(const Json::Value& a, const Json::Value& b);

// How alike two elements of a list are: the number of members they share with equal values
// (0 unless both are objects); pairing elements by it survives a reordered list.
size_t likeness(const Json::Value& a, const Json::Value& b);

// "an object", "an array", "a string", "a number", "a boolean" or "null".
const char* jsonTypeText(const Json::Value& value);

// One step of a path into a document: a member name or an array index.
struct PathStep {
    bool isIndex;
    std::string key;
    Json::ArrayIndex index;

    static PathStep member(const std::string& name) { return {false, name, 0}; }
    static PathStep element(Json::ArrayIndex i) { return {true, std::string(), i}; }
};

using JsonPath = std::vector<PathStep>;

// JSON Pointer text of a path: /0/channels/3/name; "~" and "/" in names are escaped as
// ~0 and ~1. The empty path (the whole document) is "".
std::string pointerText(const JsonPath& path);

// The node a path names, or nullptr when the document has none there. Never adds a member.
const Json::Value* nodeAt(const Json::Value& document, const JsonPath& path);
Json::Value* nodeAt(Json::Value& document, const JsonPath& path);

// A copy of the document with the node at the path replaced by the given value.
Json::Value replacedAt(const Json::Value& document, const JsonPath& path, const Json::Value& value);

// Removes the node at the path in place: a member is removed, the last array element is cut
// off, an element in the middle becomes null so the others keep their index.
void removeAt(Json::Value& document, const JsonPath& path);

// A copy of the document with the node at the path removed as removeAt does.
Json::Value removedAt(const Json::Value& document, const JsonPath& path);

}  // namespace zelct
