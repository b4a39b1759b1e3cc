#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Kinds.h"
#include "Printer.h"

namespace zelct {

// One pattern of a project file (.zelct.json) or of an editor's schema mapping, and the kind
// its files have.
struct KindPattern {
    std::string pattern;  // as written
    const Kind* kind = nullptr;
    int line = 0;  // where the pattern is written
    int column = 0;
    bool exclusion = false;  // an editor's "!pattern"
};

// The mapping from paths to kinds that a folder's files share: the nearest .zelct.json, or
// else the json.schemas of the nearest .vscode/settings.json, so that the editor and the
// pipeline read one mapping.
struct Project {
    enum class Source { ProjectFile, EditorSettings };
    Source source = Source::ProjectFile;
    std::string file;    // the mapping's file, as the tool names it
    std::string folder;  // absolute; the patterns are relative to it
    // Project file: patterns in the order written, the first match wins. Editor settings: one
    // list a schema entry, in the order written; the first entry that matches wins.
    std::vector<std::vector<KindPattern>> entries;
    Problem problem;  // a file that cannot be used: its message is not empty
};

// How a file's kind was chosen, and what chose it.
struct KindChoice {
    enum class Rule { CommandLine, KindOption, SchemaMember, ProjectFile, EditorSettings, None };
    Rule rule = Rule::None;
    const Kind* kind = nullptr;
    std::string schema;                      // SchemaMember: the "$schema" text
    std::shared_ptr<const Project> project;  // ProjectFile, EditorSettings, or a broken one
    const KindPattern* pattern = nullptr;    // the pattern that matched
    std::string readError;                   // the file could not be read for its "$schema"
};

// "command-line", "kind-option", "schema-member", "project-file", "editor-settings", "none".
const char* ruleName(KindChoice::Rule rule);

// What chose the kind, for a person: "command line", "\"$schema\": URL",
// "repo/.zelct.json:3:5: devices/*/system-info.json".
std::string ruleText(const KindChoice& choice);

// The line that says a file has no kind, naming the ways to give it one.
std::string noKindText(const KindChoice& choice);

// The kind whose schema a "$schema" text names, by the schema's $id or its file name
// ("file:///usr/share/zelCommonTypes/schemas/system-info.schema.json"); nullptr for none.
const Kind* kindOfSchema(const std::string& url);

// Reads a project file or editor settings from its text. `file` is the name the problems
// give; `folder` the absolute folder the patterns are relative to.
Project projectFromText(Project::Source source, const std::string& file, const std::string& folder,
                        const std::string& text);

// Chooses the kind of each file in this order: the kind given on the command line, the file's
// top-level "$schema", the nearest project mapping. Never guesses from a name or the content.
// Safe to call from several threads at once: the project files found are read once.
class KindChooser {
public:
    // `given` is the command line's kind (nullptr for none) and the rule that gave it.
    KindChooser(const Kind* given, KindChoice::Rule givenRule)
        : given_(given), givenRule_(givenRule) {}

    KindChoice choose(const std::string& path);

    // The kind of the document's "$schema" alone, for a file that has no place of its own in
    // a repository (the copy of standard input).
    KindChoice bySchema(const std::string& path) const;

    // Whether the command line gave every file its kind.
    bool givesKind() const { return given_ != nullptr; }

private:
    std::shared_ptr<const Project> projectFor(const std::string& folder);
    std::shared_ptr<const Project> projectIn(const std::string& folder, Project::Source source);

    const Kind* given_;
    KindChoice::Rule givenRule_;
    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<const Project>> found_;  // by folder and source
};

}  // namespace zelct
