#pragma once

// The command lines of zelct explain and zelct diff, which take the kind either as their first
// word or with --kind, so that a kind chosen elsewhere (a script's variable, a git diff driver)
// goes in front of the files without moving them.
#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "Kinds.h"
#include "Printer.h"

namespace zelct {

struct KindAndFiles {
    std::string kind;                // from --kind
    bool kindOption = false;         // --kind was given
    std::vector<std::string> words;  // the positional words in order: [KIND] FILE...
    bool compact = false;            // explain --compact
};

extern const char* const kExplainHelp;
extern const char* const kDiffHelp;

// Adds [KIND] and the named files as positional words, --kind, and for a single file
// explain's --compact.
void addKindAndFiles(CLI::App* command, KindAndFiles& args, const std::vector<const char*>& files);

// The kind of that name, or nullptr once the printer was told it is unknown.
using KindLookup = const Kind* (*)(const std::string& name, Printer& printer);

int explainCommand(const KindAndFiles& args, KindLookup lookup, Printer& printer);
int diffCommand(const KindAndFiles& args, KindLookup lookup, Printer& printer);

}  // namespace zelct
