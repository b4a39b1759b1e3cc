#pragma once

#include <json/json.h>

#include <string>
#include <vector>

#include "Check.h"
#include "Kinds.h"

namespace zelct {

// A member whose text a class writes back exactly as it came while what the text decides
// stays behind: comparing the document with what is written cannot see it.
struct HiddenStateRule {
    const char* kind;    // the record that holds the member
    const char* member;  // the member's name
    // Whether reading `text` leaves the record holding something the text does not say; what
    // it holds then goes into `kept`.
    bool (*hides)(const Json::Value& text, Json::Value& kept);
    // The texts that decide, compared in any letter case.
    std::vector<std::string> (*accepted)();
    const char* catalogue;  // what the texts name, for the schema
    const char* note;       // for the schema: what happens to any other text
};

// Every such member of the library's records.
const std::vector<HiddenStateRule>& hiddenStateRules();

// The rule for the member at `pattern` ("/type") of a record of the kind, or nullptr.
const HiddenStateRule* hiddenStateRuleAt(const Kind& kind, const std::string& pattern);

// Adds a HiddenState finding, without its place, for each member of the document's records
// that a rule says hides state.
void addHiddenStateFindings(const Kind& kind, const Json::Value& document, KeptFindings& kept);

}  // namespace zelct
