#pragma once

#include <json/json.h>

#include <ostream>
#include <string>

#include "Check.h"
#include "Kinds.h"

namespace zelct {

// A checked file as text: one line a finding on `out`, prefixed with the file name, or
// "FILE: understood exactly"; an unusable file is one line on `err`.
void printOutcome(const std::string& file, const Outcome& outcome, std::ostream& out,
                  std::ostream& err);

// A checked file as a JSON object: "file", "kind", "result" ("exact", "findings" or
// "unusable"), "exit", and "findings" or "error" (with "path" or "filemgr-code" when known).
Json::Value outcomeJson(const std::string& file, const Kind& kind, const Outcome& outcome);

// The kinds, one a line: name, top-level type, description.
void printKinds(std::ostream& out);

}  // namespace zelct
