#pragma once

#include <vector>

#include "Check.h"

namespace zelct {

// One kind of finding, as every output names it: the id of text lines, --json and SARIF's
// ruleId, the SARIF rule's name (what happened, in the words viewers show as a title) and its
// one-line description. docs/findings.md has a section headed by each id.
struct FindingKind {
    Finding::Type type;
    const char* id;
    const char* ruleName;
    const char* description;
    bool showsUnderstood;  // --json gives "understood" (what the device reads or keeps)
};

// Every kind, in the order of the SARIF rules.
const std::vector<FindingKind>& findingKinds();

// The row of a kind; every Finding::Type has one.
const FindingKind& findingKind(Finding::Type type);

}  // namespace zelct
