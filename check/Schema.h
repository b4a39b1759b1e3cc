#pragma once

#include <json/json.h>

#include <string>
#include <vector>

#include "Kinds.h"

namespace zelct {

// Every schema's "$id" is this address followed by its file name.
extern const char* const kSchemaBase;

// "<kind>.schema.json".
std::string schemaFileName(const Kind& kind);

// Names that the library's readers compare texts against, one list per catalogue, each with
// the text the reader's own fallback writes (an unknown state writes "Undefined"), so that
// probing sees the names the reader refuses too.
struct NameCatalogue {
    const char* title;  // "state names"
    std::vector<std::string> names;
    // What the catalogue says about a name, "" when it says nothing.
    std::string (*describe)(const std::string& name);
    // Other spellings the reader accepts for the names and never writes ("aes10").
    std::vector<std::string> aliases;
};
const std::vector<NameCatalogue>& nameCatalogues();

// A JSON Schema (draft 2020-12) of the documents of a kind, found by reading documents into
// the library: the members and JSON types of what it writes, the catalogue names each text
// member keeps, the numbers each member keeps unchanged, the elements an array holds, and the
// members that are written but never read (fixed to what the library writes when nothing in
// the document changes it). Kinds nested in it are in "$defs", so each schema stands alone.
Json::Value schemaOf(const Kind& kind);

}  // namespace zelct
