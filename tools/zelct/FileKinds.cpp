#include "FileKinds.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "FileMgr.h"
#include "Glob.h"
#include "OrderedJson.h"
#include "Schema.h"

namespace zelct {

namespace fs = std::filesystem;

namespace {

const char* const kProjectFile = ".zelct.json";
const char* const kEditorSettings = ".vscode/settings.json";

// Reads a regular file whole; anything else (a FIFO, a device) is never opened for long, so
// that choosing a kind cannot wait on it.
bool readText(const std::string& path, std::string& text, std::string& error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        error = std::strerror(errno);
        return false;
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        error = S_ISDIR(info.st_mode) ? "a directory" : "not a regular file";
        ::close(fd);
        return false;
    }
    char buffer[65536];
    while (text.size() <= static_cast<size_t>(FileMgr::kMaxFileSize)) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            error = got < 0 ? std::strerror(errno) : "";
            ::close(fd);
            return got == 0;
        }
        text.append(buffer, static_cast<size_t>(got));
    }
    ::close(fd);
    return true;  // too large to load: the check says so
}

// The document's top-level "$schema" text, or "" when it has none. The device's parser takes
// comments, so the scan does too; nothing below the top level is read.
std::string schemaMember(const std::string& text) {
    OrderedOptions options;
    options.comments = true;
    options.readDepth = 1;
    const OrderedParse parse = parseOrdered(text, options);
    if (!parse.ok || parse.value.type != OrderedValue::Type::Object) {
        return "";
    }
    const OrderedValue* schema = parse.value.member("$schema");
    return schema != nullptr && schema->type == OrderedValue::Type::String ? schema->text : "";
}

// The name the tool gives a file it found itself: relative to the working folder when it is
// in it, as the files given on the command line mostly are.
std::string shownName(const fs::path& absolute) {
    std::error_code error;
    const fs::path here = fs::current_path(error);
    if (!error) {
        const fs::path relative = absolute.lexically_relative(here);
        if (!relative.empty() && *relative.begin() != "..") {
            return relative.generic_string();
        }
    }
    return absolute.generic_string();
}

Problem problemAt(const std::string& file, int line, int column, const std::string& message) {
    return {file, line, column, message, 2};
}

const Kind* kindOrProblem(const OrderedValue& value, Project& project) {
    if (value.type != OrderedValue::Type::String) {
        project.problem = problemAt(project.file, value.line, value.column,
                                    "a pattern's kind must be a string (zelct kinds lists them)");
        return nullptr;
    }
    const Kind* kind = findKind(value.text);
    if (kind == nullptr) {
        const std::string closest = closestName(value.text, kindNames());
        project.problem =
            problemAt(project.file, value.line, value.column,
                      "unknown kind '" + value.text + "' (" +
                          (closest.empty() ? "" : "did you mean '" + closest + "'? ") +
                          "zelct kinds lists them)");
    }
    return kind;
}

void readProjectFile(const OrderedValue& root, Project& project) {
    const OrderedValue* kinds =
        root.type == OrderedValue::Type::Object ? root.member("kinds") : nullptr;
    if (kinds == nullptr || kinds->type != OrderedValue::Type::Object) {
        const OrderedValue& at = kinds != nullptr ? *kinds : root;
        project.problem = problemAt(project.file, at.line, at.column,
                                    "expected {\"kinds\": {\"PATTERN\": \"KIND\", ...}}");
        return;
    }
    project.entries.emplace_back();
    for (const auto& member : kinds->members) {
        const Kind* kind = kindOrProblem(member.second, project);
        if (kind == nullptr) {
            return;
        }
        project.entries.back().push_back(
            {member.first, kind, member.second.nameLine, member.second.nameColumn, false});
    }
}

// One entry of "json.schemas"; entries whose schema is no kind's are left out, as they are
// other documents' schemas.
void readSchemaEntry(const OrderedValue& entry, Project& project) {
    const OrderedValue* url = entry.member("url");
    const OrderedValue* fileMatch = entry.member("fileMatch");
    if (url == nullptr || url->type != OrderedValue::Type::String || fileMatch == nullptr ||
        fileMatch->type != OrderedValue::Type::Array) {
        return;
    }
    const Kind* kind = kindOfSchema(url->text);
    if (kind == nullptr) {
        return;
    }
    std::vector<KindPattern> patterns;
    for (const OrderedValue& match : fileMatch->elements) {
        if (match.type == OrderedValue::Type::String && !match.text.empty()) {
            const bool exclusion = match.text[0] == '!';
            patterns.push_back(
                {match.text.substr(exclusion ? 1 : 0), kind, match.line, match.column, exclusion});
        }
    }
    project.entries.push_back(std::move(patterns));
}

void readEditorSettings(const OrderedValue& root, Project& project) {
    const OrderedValue* schemas =
        root.type == OrderedValue::Type::Object ? root.member("json.schemas") : nullptr;
    if (schemas == nullptr) {
        return;
    }
    if (schemas->type != OrderedValue::Type::Array) {
        project.problem = problemAt(project.file, schemas->line, schemas->column,
                                    "\"json.schemas\" must be an array");
        return;
    }
    for (const OrderedValue& entry : schemas->elements) {
        if (entry.type == OrderedValue::Type::Object) {
            readSchemaEntry(entry, project);
        }
    }
}

bool isMapping(const fs::path& path) {
    return path.filename() == kProjectFile ||
           (path.filename() == "settings.json" && path.parent_path().filename() == ".vscode");
}

// An editor matches "/a/*.json" from the workspace's folder and "a/*.json" in any folder.
std::string editorPattern(const std::string& pattern) {
    return pattern[0] == '/' ? pattern.substr(1) : "**/" + pattern;
}

const KindPattern* matching(const Project& project, const std::string& relative) {
    if (project.source == Project::Source::ProjectFile) {
        for (const KindPattern& pattern : project.entries.front()) {
            if (globMatches(pattern.pattern, relative)) {
                return &pattern;
            }
        }
        return nullptr;
    }
    // An editor applies an entry when a pattern of it matches and the last one that does is
    // no exclusion.
    for (const std::vector<KindPattern>& entry : project.entries) {
        const KindPattern* last = nullptr;
        for (const KindPattern& pattern : entry) {
            if (globMatches(editorPattern(pattern.pattern), relative)) {
                last = &pattern;
            }
        }
        if (last != nullptr && !last->exclusion) {
            return last;
        }
    }
    return nullptr;
}

}  // namespace

const char* ruleName(KindChoice::Rule rule) {
    switch (rule) {
        case KindChoice::Rule::CommandLine:
            return "command-line";
        case KindChoice::Rule::KindOption:
            return "kind-option";
        case KindChoice::Rule::SchemaMember:
            return "schema-member";
        case KindChoice::Rule::ProjectFile:
            return "project-file";
        case KindChoice::Rule::EditorSettings:
            return "editor-settings";
        case KindChoice::Rule::None:
            break;
    }
    return "none";
}

std::string ruleText(const KindChoice& choice) {
    switch (choice.rule) {
        case KindChoice::Rule::CommandLine:
            return "command line";
        case KindChoice::Rule::KindOption:
            return "--kind";
        case KindChoice::Rule::SchemaMember:
            return "\"$schema\": " + choice.schema;
        case KindChoice::Rule::ProjectFile:
        case KindChoice::Rule::EditorSettings:
            return placeText(choice.project->file, choice.pattern->line, choice.pattern->column) +
                   ": " + choice.pattern->pattern;
        case KindChoice::Rule::None:
            break;
    }
    return noKindText(choice);
}

std::string noKindText(const KindChoice& choice) {
    if (choice.project != nullptr && !choice.project->problem.message.empty()) {
        return "no kind: " + choice.project->file + " cannot be used";
    }
    return "no kind: name one (zelct check KIND FILE, or --kind KIND), give the document a "
           "\"$schema\" naming a kind's schema, or map its path in a .zelct.json (or "
           ".vscode/settings.json) in its folder or above";
}

const Kind* kindOfSchema(const std::string& url) {
    const size_t slash = url.find_last_of('/');
    const std::string name = slash == std::string::npos ? url : url.substr(slash + 1);
    for (const Kind& kind : allKinds()) {
        if (url == kSchemaBase + schemaFileName(kind) || name == schemaFileName(kind)) {
            return &kind;
        }
    }
    return nullptr;
}

Project projectFromText(Project::Source source, const std::string& file, const std::string& folder,
                        const std::string& text) {
    Project project;
    project.source = source;
    project.file = file;
    project.folder = folder;
    OrderedOptions options;
    // Editors read their settings as JSON with comments; the project file is plain JSON.
    options.comments = source == Project::Source::EditorSettings;
    options.trailingCommas = options.comments;
    const OrderedParse parse = parseOrdered(text, options);
    if (!parse.ok) {
        project.problem = problemAt(file, parse.line, parse.column, "not JSON: " + parse.error);
    } else if (source == Project::Source::ProjectFile) {
        readProjectFile(parse.value, project);
    } else {
        readEditorSettings(parse.value, project);
    }
    return project;
}

std::shared_ptr<const Project> KindChooser::projectIn(const std::string& folder,
                                                      Project::Source source) {
    const std::string key =
        std::string(source == Project::Source::ProjectFile ? "p" : "e") + folder;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = found_.find(key);
        if (found != found_.end()) {
            return found->second;
        }
    }
    const fs::path path = fs::path(folder) /
                          (source == Project::Source::ProjectFile ? kProjectFile : kEditorSettings);
    std::shared_ptr<const Project> project;
    std::error_code error;
    if (fs::exists(fs::symlink_status(path, error))) {
        std::string text;
        std::string why;
        Project read = readText(path.string(), text, why)
                           ? projectFromText(source, shownName(path), folder, text)
                           : Project{};
        if (read.file.empty()) {
            read.file = shownName(path);
            read.problem = problemAt(read.file, 0, 0, "cannot be read: " + why);
        }
        project = std::make_shared<const Project>(std::move(read));
    }
    const bool unmapped = project != nullptr && project->problem.message.empty() &&
                          project->entries.empty() && source == Project::Source::EditorSettings;
    if ((project == nullptr || unmapped) && fs::path(folder).has_relative_path()) {
        project = projectIn(fs::path(folder).parent_path().string(), source);
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    found_[key] = project;
    return project;
}

std::shared_ptr<const Project> KindChooser::projectFor(const std::string& folder) {
    std::shared_ptr<const Project> project = projectIn(folder, Project::Source::ProjectFile);
    return project != nullptr ? project : projectIn(folder, Project::Source::EditorSettings);
}

KindChoice KindChooser::bySchema(const std::string& path) const {
    KindChoice choice;
    std::string text;
    if (readText(path, text, choice.readError)) {
        choice.schema = schemaMember(text);
        choice.kind = kindOfSchema(choice.schema);
        choice.rule = choice.kind != nullptr ? KindChoice::Rule::SchemaMember : choice.rule;
    }
    return choice;
}

KindChoice KindChooser::choose(const std::string& path) {
    if (given_ != nullptr) {
        KindChoice choice;
        choice.rule = givenRule_;
        choice.kind = given_;
        return choice;
    }
    KindChoice choice = bySchema(path);
    if (choice.kind != nullptr) {
        return choice;
    }
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error).lexically_normal();
    if (isMapping(absolute)) {
        return choice;  // a mapping is never one of the documents it maps, whatever it matches
    }
    choice.project = projectFor(absolute.parent_path().string());
    if (choice.project == nullptr || !choice.project->problem.message.empty()) {
        return choice;
    }
    const std::string relative =
        absolute.lexically_relative(choice.project->folder).generic_string();
    choice.pattern = matching(*choice.project, relative);
    if (choice.pattern != nullptr) {
        choice.kind = choice.pattern->kind;
        choice.rule = choice.project->source == Project::Source::ProjectFile
                          ? KindChoice::Rule::ProjectFile
                          : KindChoice::Rule::EditorSettings;
    }
    return choice;
}

}  // namespace zelct
