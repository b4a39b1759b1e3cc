#include "ExplainCommands.h"

#include <cstddef>

#include "Diff.h"
#include "Explain.h"
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

// The kind, and `files` filled with the `count` words after it; nullptr once the printer was
// told what is wrong. `names` is what the files are called in the usage: "FILE", "OLD NEW".
const Kind* kindAndFiles(const KindAndFiles& args, size_t count, const std::string& names,
                         KindLookup lookup, std::vector<std::string>& files, Printer& printer) {
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
        ->description("Document kind (see zelct kinds), unless --kind gives it")
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
