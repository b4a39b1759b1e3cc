#pragma once

#include <json/json.h>

#include <cstddef>
#include <string>

#include "Check.h"
#include "Kinds.h"

namespace zelct {

// A checked file as a JSON object: "file", "kind", "result" ("exact", "findings" or
// "unusable"), "exit", and "findings" (each with "line" and "column" when known, followed by
// "omitted", the number of findings counted but not kept, when there are any) or "error"
// (with "line", "column", "path" or "filemgr-code" when known).
Json::Value outcomeJson(const std::string& file, const Kind& kind, const Outcome& outcome);

// The line that stands for the findings a check counted without keeping them:
// "... and 9,999,000 more findings like these".
std::string omittedText(size_t omitted);

// The kinds, one a line: name, top-level type, description.
std::string kindsText();

// The kinds as an array of objects with "name", "top-level" and "description".
Json::Value kindsJson();

}  // namespace zelct
