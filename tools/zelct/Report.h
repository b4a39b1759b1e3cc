#pragma once

#include <json/json.h>

#include <string>

#include "Check.h"
#include "Kinds.h"

namespace zelct {

// A checked file as a JSON object: "file", "kind", "result" ("exact", "findings" or
// "unusable"), "exit", and "findings" (each with "line" and "column" when known) or "error"
// (with "line", "column", "path" or "filemgr-code" when known).
Json::Value outcomeJson(const std::string& file, const Kind& kind, const Outcome& outcome);

// The kinds, one a line: name, top-level type, description.
std::string kindsText();

// The kinds as an array of objects with "name", "top-level" and "description".
Json::Value kindsJson();

}  // namespace zelct
