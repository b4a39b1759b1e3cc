#include "CheckCommand.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <thread>

#include "FileKinds.h"
#include "InOrder.h"
#include "Input.h"
#include "SafeText.h"
#include "Walk.h"

namespace zelct {

namespace {

constexpr int kUnusable = 2;

bool spelledLikeKind(const std::string& word) {
    if (word.empty()) {
        return false;
    }
    for (char c : word) {
        if (!((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-')) {
            return false;
        }
    }
    struct stat info {};
    return ::lstat(word.c_str(), &info) != 0;
}

std::string unknownKindText(const std::string& name) {
    const std::string closest = closestName(name, kindNames());
    return "unknown kind '" + name + "' (" +
           (closest.empty() ? std::string() : "did you mean '" + closest + "'? ") +
           "zelct kinds lists them)";
}

// One path's turn: how its kind was chosen and what the check found, or why it was not checked.
struct Checked {
    KindChoice choice;
    Outcome outcome;
    bool checked = false;
    bool outOfMemory = false;
    bool skipped = false;  // no rule gives it a kind, and it was asked to be left out
    Problem problem;       // when not checked
};

// Reading standard input twice at once would split it between the two.
std::mutex standardInput;

// Whether a file without a kind is one that no rule maps, rather than one that cannot be read or
// whose project file cannot be used, which are problems whatever is asked.
bool unmapped(const KindChoice& choice) {
    if (choice.project != nullptr) {
        return choice.project->problem.message.empty();
    }
    return choice.readError.empty();
}

// Standard input has no path a project maps: its kind is the command line's or its "$schema".
Checked checkStandardInput(const KindChooser& chooser) {
    Checked item;
    const std::lock_guard<std::mutex> lock(standardInput);
    StandardInputFile input;
    std::string error;
    if (!input.copy(error)) {
        item.problem = {kStandardInput, 0, 0, error, kUnusable};
        return item;
    }
    item.choice = chooser.bySchema(input.path());
    if (item.choice.kind == nullptr) {
        item.problem = {kStandardInput, 0, 0,
                        "no kind: name it (zelct check KIND -, or --kind KIND) or give the "
                        "document a \"$schema\" naming a kind's schema",
                        kUnusable};
        return item;
    }
    item.outcome = checkCopiedInput(*item.choice.kind, input, true);
    item.checked = true;
    return item;
}

Checked checkOne(const FoundPath& found, KindChooser& chooser, bool skipUnmapped) {
    Checked item;
    if (!found.problem.empty()) {
        item.problem = {found.path, 0, 0, found.problem, kUnusable};
        return item;
    }
    try {
        if (found.path == kStandardInput && !chooser.givesKind()) {
            return checkStandardInput(chooser);
        }
        item.choice = chooser.choose(found.path);
        if (item.choice.kind == nullptr) {
            item.skipped = skipUnmapped && unmapped(item.choice);
            const bool unread = item.choice.project == nullptr && !item.choice.readError.empty();
            item.problem = {
                found.path, 0, 0,
                unread ? "cannot be read: " + item.choice.readError : noKindText(item.choice),
                kUnusable};
            return item;
        }
        std::unique_lock<std::mutex> lock(standardInput, std::defer_lock);
        if (found.path == kStandardInput) {
            lock.lock();
        }
        item.outcome = checkInput(*item.choice.kind, found.path, true);
        item.checked = true;
    } catch (const std::bad_alloc&) {
        item = Checked();
        item.outOfMemory = true;
    }
    return item;
}

// Prints the turns in order and adds them up.
class Tally {
public:
    explicit Tally(Printer& printer) : printer_(printer) {}

    void print(const std::string& path, Checked& item) {
        reportProject(item.choice);
        if (item.skipped) {
            return;
        }
        if (item.outOfMemory) {
            printer_.problem({path, 0, 0, "out of memory", kUnusable});
            add(Outcome::Status::Unusable);
        } else if (item.checked) {
            printer_.checked(path, *item.choice.kind, item.outcome);
            add(item.outcome.status);
        } else {
            printer_.unchecked(path, item.problem);
            add(Outcome::Status::Unusable);
        }
    }

    int worst() const { return worst_; }
    CheckSummary summary() const { return summary_; }

private:
    // A project file that cannot be used is a problem of its own, said once, before the
    // first file it leaves without a kind; the totals count documents only.
    void reportProject(const KindChoice& choice) {
        if (choice.project == nullptr || choice.project->problem.message.empty() ||
            !reported_.insert(choice.project->file).second) {
            return;
        }
        printer_.unchecked(choice.project->file, choice.project->problem);
        worst_ = kUnusable;  // not counted: the files it leaves without a kind are
    }

    void add(Outcome::Status status) {
        ++summary_.files;
        summary_.exact += status == Outcome::Status::Exact ? 1 : 0;
        summary_.findings += status == Outcome::Status::Findings ? 1 : 0;
        summary_.unusable += status == Outcome::Status::Unusable ? 1 : 0;
        worst_ = std::max(worst_, exitCodeOf(status));
    }

    Printer& printer_;
    std::set<std::string> reported_;
    CheckSummary summary_;
    int worst_ = 0;
};

Json::Value choiceJson(const std::string& path, const KindChoice& choice) {
    Json::Value json(Json::objectValue);
    json["file"] = path;
    json["kind"] = choice.kind != nullptr ? Json::Value(choice.kind->name) : Json::Value();
    json["rule"] = ruleName(choice.rule);
    if (choice.rule == KindChoice::Rule::SchemaMember) {
        json["schema"] = choice.schema;
    }
    if (choice.pattern != nullptr) {
        json["source"] = choice.project->file;
        json["line"] = choice.pattern->line;
        json["column"] = choice.pattern->column;
        json["pattern"] = choice.pattern->pattern;
    }
    return json;
}

// One line of the list, escaped before it is split into lines: a newline in a file name
// must not start a line of its own.
std::string listLine(const std::string& text) {
    return escapedForTerminal(text) + '\n';
}

KindChoice standardInputKind(const KindChooser& chooser) {
    StandardInputFile input;
    std::string error;
    return input.copy(error) ? chooser.bySchema(input.path()) : KindChoice();
}

// A project file that cannot be used, listed once before the first file it leaves without a
// kind.
void listProject(const KindChoice& choice, std::set<std::string>& listed, Json::Value& json,
                 std::string& text) {
    if (choice.project == nullptr || choice.project->problem.message.empty() ||
        !listed.insert(choice.project->file).second) {
        return;
    }
    const Problem& problem = choice.project->problem;
    Json::Value item(Json::objectValue);
    item["file"] = problem.file;
    item["error"] = problem.message;
    if (problem.line > 0) {
        item["line"] = problem.line;
        item["column"] = problem.column;
    }
    json.append(item);
    text +=
        listLine(placeText(problem.file, problem.line, problem.column) + ": " + problem.message);
}

// --list-files: each file, its kind and what chose it; nothing is checked.
int listFiles(const std::vector<FoundPath>& found, KindChooser& chooser, Printer& printer) {
    Json::Value json(Json::arrayValue);
    std::string text;
    std::set<std::string> listed;
    int exit = 0;
    for (const FoundPath& path : found) {
        if (!path.problem.empty()) {
            Json::Value item(Json::objectValue);
            item["file"] = path.path;
            item["error"] = path.problem;
            json.append(item);
            text += listLine(path.path + ": " + path.problem);
            exit = kUnusable;
            continue;
        }
        const KindChoice choice = path.path == kStandardInput && !chooser.givesKind()
                                      ? standardInputKind(chooser)
                                      : chooser.choose(path.path);
        listProject(choice, listed, json, text);
        json.append(choiceJson(path.path, choice));
        if (choice.kind == nullptr) {
            text += listLine(path.path + ": " + noKindText(choice));
            exit = kUnusable;
        } else {
            text += listLine(path.path + ": " + choice.kind->name + " (" + ruleText(choice) + ")");
        }
    }
    printer.result(json, text);
    return exit;
}

}  // namespace

CheckWords splitCheckWords(const std::vector<std::string>& words) {
    CheckWords split;
    const bool kindFirst = !words.empty() && (findKind(words[0]) != nullptr ||
                                              (words.size() > 1 && spelledLikeKind(words[0])));
    split.hasKind = kindFirst;
    if (kindFirst) {
        split.kind = words[0];
    }
    split.paths.assign(words.begin() + (kindFirst ? 1 : 0), words.end());
    return split;
}

int runCheckCommand(const std::vector<std::string>& words, const CheckOptions& options,
                    Printer& printer) {
    const auto start = std::chrono::steady_clock::now();
    const CheckWords split = splitCheckWords(words);
    if (split.hasKind && !options.kind.empty()) {
        printer.problem({"", 0, 0,
                         "a kind given twice: '" + split.kind + "' and --kind " + options.kind,
                         kUnusable});
        return kUnusable;
    }
    const std::string kindName = split.hasKind ? split.kind : options.kind;
    const Kind* kind = kindName.empty() ? nullptr : findKind(kindName);
    if (!kindName.empty() && kind == nullptr) {
        printer.problem({"", 0, 0, unknownKindText(kindName), kUnusable});
        return kUnusable;
    }
    // The kind as the first word is the form scripts have always used: each path one file of
    // it, their output as it always was.
    const bool repository = !split.hasKind;
    Walked walked;
    if (repository) {
        walked = walkPaths(split.paths, WalkOptions{options.excludes});
    } else {
        for (const std::string& path : split.paths) {
            walked.paths.push_back({path, ""});
        }
    }
    KindChooser chooser(kind,
                        repository ? KindChoice::Rule::KindOption : KindChoice::Rule::CommandLine);
    if (options.listFiles) {
        return listFiles(walked.paths, chooser, printer);
    }
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    Tally tally(printer);
    runInOrder<Checked>(
        walked.paths.size(), options.jobs == 0 ? cores : options.jobs,
        [&](size_t i) { return checkOne(walked.paths[i], chooser, options.skipUnmapped); },
        [&](size_t i, Checked& item) { tally.print(walked.paths[i].path, item); });
    if (repository) {
        CheckSummary summary = tally.summary();
        summary.timed = !options.noTime;
        summary.seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        printer.summary(summary, summary.files > 1 || walked.anyFolder);
    }
    return tally.worst();
}

}  // namespace zelct
