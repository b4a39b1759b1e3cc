#pragma once

#include <vector>

#include "Check.h"

namespace zelct {

// One kind of finding, as every output names it: the id of text lines, --json and SARIF's
// ruleId, its severity (SARIF's level, the annotation GitHub shows), the SARIF rule's name
// (what happened, in the words viewers show as a title), its one-line description and how to
// fix it in one sentence. docs/findings.md has a section headed by each id, whose "How to fix"
// starts with that sentence; `zelct check --help` lists the ids with their descriptions.
struct FindingKind {
    Finding::Type type;
    const char* id;
    const char* severity;  // "warning": the file was read, and the device runs on it
    const char* ruleName;
    const char* description;
    const char* fix;
    bool showsUnderstood;  // --json gives "understood" (what the device reads or keeps)
};

// Every kind, in the order of the SARIF rules.
const std::vector<FindingKind>& findingKinds();

// The row of a kind; every Finding::Type has one.
const FindingKind& findingKind(Finding::Type type);

}  // namespace zelct
