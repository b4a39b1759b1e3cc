#pragma once

#include <json/json.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "IJsonSerializable.h"
#include "JsonText.h"

namespace zelct {

// The JSON type a kind's document has at its top level.
enum class TopLevel { Object, Array };

// A document kind: a class of the library whose JSON form stands alone as a file. Adding a
// kind is one row of allKinds(); the check, the schemas, the tool's listing and the invariant
// tests take every kind from there, and tests hold the fuzz targets and the record tests to it
// (each kind's class is read by the fuzz target of its header, from a seed corpus of its own).
struct Kind {
    const char* name;
    TopLevel topLevel;
    const char* className;  // the class that reads and writes it
    const char* header;     // the public header that declares the class
    const char* description;
    std::unique_ptr<IJsonSerializable> (*make)();  // a default-constructed object
};

// "DESCRIPTION (CLASS)", as the tool lists a kind.
std::string describedKind(const Kind& kind);

// Every kind, in the order `zelct kinds` lists them.
const std::vector<Kind>& allKinds();

// Where a kind's document holds a record of another kind, read by that kind's own class.
// The pattern is a JSON pointer whose "*" stands for every element of an array.
struct Nesting {
    const char* kind;
    const char* pattern;
    const char* child;
};
const std::vector<Nesting>& nestings();

// Calls `visit` with every record of the document: the document itself as the kind, and each
// record nested in it (as `nestings` places them) as its own kind, with its path.
void forEachRecord(
    const Kind& kind, const Json::Value& document,
    const std::function<void(const Kind&, const Json::Value&, const JsonPath&)>& visit);

// The kind of that name, or nullptr.
const Kind* findKind(const std::string& name);

// The name among `names` closest to `typed` when it is a likely typing slip (a few letters
// off), else "".
std::string closestName(const std::string& typed, const std::vector<std::string>& names);

// The names of every kind, in the order `zelct kinds` lists them.
std::vector<std::string> kindNames();

// What the tool writes for what the library understood from a document of the kind. The
// library writes nothing at all for an empty list or set; the kind's own empty shape reads
// back as the same empty list or set, where a null would be refused.
Json::Value normalizedDocument(const Kind& kind, const Json::Value& understood);

// "an object" or "an array".
const char* topLevelText(TopLevel topLevel);

// Whether a document has the top-level JSON type of the kind.
bool hasTopLevel(const Kind& kind, const Json::Value& document);

}  // namespace zelct
