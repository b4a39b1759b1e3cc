#include "ExplainCommands.h"

#include <cstddef>
#include <filesystem>

#include "Diff.h"
#include "Explain.h"
#include "FileKinds.h"
#include "Input.h"

namespace zelct {

const char* const kExplainHelp =
    "Show what the device holds from FILE read as KIND, one value a line, and where each comes "
    "from: the file (line:column), a default, a value the reading changed, hidden state; members "
    "never read are listed as not held. Exit 0: explained; 2: the file cannot be used";

const char* const kDiffHelp =
    "Show what changes on the device between OLD and NEW read as KIND, as the device understands "
    "them, one line a value placed in NEW. Exit 0: no change; 1: changes; 2: a file cannot be "
    "used";

namespace {

constexpr int kUnusable = 2;

const char* fileHelp(const std::string& name) {
    if (name == "OLD") {
        return "The document before (- for standard input)";
    }
    if (name == "NEW") {
        return "The document after (- for standard input)";
    }
    return "JSON document to explain (- for standard input)";
}

// Without a kind on the command line, the files give it as check's files do. A first word
// that names a kind and no file is a kind given without its files.
bool kindFromFiles(const KindAndFiles& args, size_t count) {
    if (args.kindOption || args.words.size() != count) {
        return false;
    }
    std::error_code error;
    return findKind(args.words[0]) == nullptr || std::filesystem::exists(args.words[0], error);
}

// The kind of the last file that is not standard input (NEW for diff), by its "$schema" or the
// nearest project mapping; nullptr once the printer was told that none gives one.
const Kind* kindOfFiles(const std::vector<std::string>& files, Printer& printer) {
    std::string path = files.back();
    if (path == kStandardInput) {
        path = files.front();
    }
    KindChooser chooser(nullptr, KindChoice::Rule::None);
    const KindChoice choice = chooser.choose(path);
    if (choice.kind == nullptr) {
        printer.problem({path, 0, 0,
                         path == kStandardInput
                             ? "standard input: no kind: give one as KIND or --kind"
                             : noKindText(choice),
                         kUnusable});
    }
    return choice.kind;
}

// The kind, and `files` filled with the `count` words after it; nullptr once the printer was
// told what is wrong. `names` is what the files are called in the usage: "FILE", "OLD NEW".
const Kind* kindAndFiles(const KindAndFiles& args, size_t count, const std::string& names,
                         KindLookup lookup, std::vector<std::string>& files, Printer& printer) {
    if (kindFromFiles(args, count)) {
        files = args.words;
        return kindOfFiles(files, printer);
    }
    if (args.words.size() != count + (args.kindOption ? 0 : 1)) {
        printer.problem({"", 0, 0,
                         "expected KIND " + names + ", or --kind KIND and " + names +
                             " (zelct kinds lists the kinds)",
                         kUnusable});
        return nullptr;
    }
    files.assign(args.words.end() - static_cast<std::ptrdiff_t>(count), args.words.end());
    return lookup(args.kindOption ? args.kind : args.words[0], printer);
}

}  // namespace

void addKindAndFiles(CLI::App* command, KindAndFiles& args, const std::vector<const char*>& files) {
    const auto word = [&args](const std::string& text) { args.words.push_back(text); };
    command->add_option("KIND")
        ->description(
            "Document kind (see zelct kinds), unless --kind gives it; without either, "
            "the kind comes from the file's \"$schema\" or the nearest .zelct.json")
        ->each(word);
    for (const char* file : files) {
        command->add_option(file)->description(fileHelp(file))->each(word);
    }
    command
        ->add_option_function<std::string>(
            "--kind",
            [&args](const std::string& kind) {
                args.kind = kind;
                args.kindOption = true;
            },
            "Document kind, when it is not the first word")
        ->type_name("KIND");
    if (files.size() == 1) {
        command->add_flag("--compact", args.compact,
                          "Only the values that do not come from the file as written, and the "
                          "members the device does not hold");
    }
}

int explainCommand(const KindAndFiles& args, KindLookup lookup, Printer& printer) {
    std::vector<std::string> files;
    const Kind* kind = kindAndFiles(args, 1, "FILE", lookup, files, printer);
    if (kind == nullptr) {
        return kUnusable;
    }
    return withinMemory(printer, files[0],
                        [&] { return explainFile(*kind, files[0], args.compact, printer); });
}

int diffCommand(const KindAndFiles& args, KindLookup lookup, Printer& printer) {
    std::vector<std::string> files;
    const Kind* kind = kindAndFiles(args, 2, "OLD NEW", lookup, files, printer);
    if (kind == nullptr) {
        return kUnusable;
    }
    if (files[0] == kStandardInput && files[1] == kStandardInput) {
        printer.problem({"", 0, 0, "OLD and NEW cannot both be standard input", kUnusable});
        return kUnusable;
    }
    return withinMemory(printer, files[1],
                        [&] { return diffFiles(*kind, files[0], files[1], printer); });
}

}  // namespace zelct
