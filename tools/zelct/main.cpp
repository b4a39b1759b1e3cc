// zelct: shows what the device's library understands from a JSON document, and its
// catalogues. Results go to standard output, the library's log lines to standard error.
//
// Exit codes: 0 done (a document understood exactly); 1 the library changed or refused
// something (findings, an unknown format, a packet time that fits nothing); 2 a file or an
// argument that cannot be used, or standard output that cannot be written.
#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstring>
#include <exception>
#include <functional>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "Catalogues.h"
#include "Check.h"
#include "CheckCommand.h"
#include "ExplainCommands.h"
#include "FindingKinds.h"
#include "Input.h"
#include "Kinds.h"
#include "OptionChecks.h"
#include "Output.h"
#include "Printer.h"
#include "Report.h"
#include "SafeText.h"
#include "Schema.h"
#include "ShownLog.h"

namespace {

using namespace zelct;

constexpr int kUnusable = 2;

struct Arguments {
    int verbosity = 0;
    Format format = Format::Text;
    std::string kind;
    KindAndFiles explained;  // explain and diff
    std::vector<std::string> files;
    CheckOptions check;
    std::string input;
    std::string output;
    bool hasOutput = false;
    bool durable = false;
    std::string file;
    std::string videoFormat;
    PtimeRequest ptime;
};

// -v shows the library's debug lines, -vv its verbose ones; errors always show.
Logger::logDebugLevel_t shownLevelFor(int verbosity) {
    if (verbosity >= 2) {
        return Logger::logVerbose;
    }
    return verbosity == 1 ? Logger::logDebug : Logger::logError;
}

std::string didYouMean(const std::string& typed, const std::vector<std::string>& names) {
    const std::string closest = closestName(typed, names);
    return closest.empty() ? std::string() : "did you mean '" + closest + "'? ";
}

const Kind* kindOrComplain(const std::string& name, Printer& printer) {
    const Kind* kind = findKind(name);
    if (kind == nullptr) {
        printer.problem({"", 0, 0,
                         "unknown kind '" + name + "' (" + didYouMean(name, kindNames()) +
                             "zelct kinds lists them)",
                         kUnusable});
    }
    return kind;
}

int runKinds(const Arguments&, Printer& printer) {
    printer.result(kindsJson(), kindsText());
    return 0;
}

// check's words are KIND and FILE as CLI11 fills them; the first is a kind only when it names one.
std::vector<std::string> checkWords(const Arguments& args) {
    std::vector<std::string> words;
    if (!args.kind.empty()) {
        words.push_back(args.kind);
    }
    words.insert(words.end(), args.files.begin(), args.files.end());
    return words;
}

int runCheck(const Arguments& args, Printer& printer) {
    return runCheckCommand(checkWords(args), args.check, printer);
}

// Reads the input and writes what the library understood, to OUT or standard output.
int normalizeInto(const Kind& kind, const Arguments& args, Printer& printer) {
    const Outcome outcome = checkInput(kind, args.input, false);
    printer.libraryLog(outcome.log);
    if (outcome.status == Outcome::Status::Unusable) {
        printer.problem({args.input, outcome.line, outcome.column, outcome.problem, kUnusable});
        return kUnusable;
    }
    const Json::Value document = normalizedDocument(kind, outcome.understood);
    if (!args.hasOutput) {
        printer.document(document, document.toStyledString());
        return 0;
    }
    const Stored stored = storeDocument(args.output, document);
    printer.libraryLog(stored.log);
    if (stored.code != 0) {
        printer.problem({args.output, 0, 0,
                         "cannot store: " + stored.reason + " (FileMgr code " +
                             std::to_string(stored.code) + ")",
                         kUnusable});
        return kUnusable;
    }
    Json::Value result(Json::objectValue);
    result["output"] = args.output;
    result["exit"] = 0;
    printer.result(result, "");
    return 0;
}

int runNormalize(const Arguments& args, Printer& printer) {
    const Kind* kind = kindOrComplain(args.kind, printer);
    if (kind == nullptr) {
        return kUnusable;
    }
    if (args.hasOutput) {
        const std::string why = unusableOutput(args.output);
        if (!why.empty()) {
            printer.problem({args.output, 0, 0, why, kUnusable});
            return kUnusable;
        }
    }
    return withinMemory(printer, args.input, [&] { return normalizeInto(*kind, args, printer); });
}

int runExplain(const Arguments& args, Printer& printer) {
    return explainCommand(args.explained, &kindOrComplain, printer);
}

int runDiff(const Arguments& args, Printer& printer) {
    return diffCommand(args.explained, &kindOrComplain, printer);
}

int runTemplate(const Arguments& args, Printer& printer) {
    const Kind* kind = kindOrComplain(args.kind, printer);
    if (kind == nullptr) {
        return kUnusable;
    }
    Json::Value document;
    kind->make()->Serialize(document);
    printer.document(document, document.toStyledString());
    return 0;
}

int runSchema(const Arguments& args, Printer& printer) {
    const Kind* kind = kindOrComplain(args.kind, printer);
    if (kind == nullptr) {
        return kUnusable;
    }
    const Json::Value schema = schemaOf(*kind);
    printer.document(schema, indentedJson(schema));
    return 0;
}

int runVideo(const Arguments& args, Printer& printer) {
    return showVideo(args.videoFormat, printer);
}

int runPtime(const Arguments& args, Printer& printer) {
    return showPtime(args.ptime, printer);
}

int runAlarms(const Arguments& args, Printer& printer) {
    return showAlarms(args.file, printer);
}

using Command = int (*)(const Arguments&, Printer&);

struct CommandLine {
    CLI::App app{
        "zelct: shows what the device's library understands from a JSON document, and the "
        "library's catalogues (video formats, packet times, alarms).",
        "zelct"};
    Arguments args;
    std::vector<std::pair<CLI::App*, Command>> commands;
    CLI::Option* freq = nullptr;
    CLI::Option* spp = nullptr;
    CLI::Option* ptimeUs = nullptr;
    CLI::Option* output = nullptr;
};

// --format picks how results are written; --json is short for --format json.
void addFormatOptions(CLI::App* command, Arguments& args, bool forCheck) {
    std::string names;
    for (const std::string& name : formatNames(forCheck)) {
        names += (names.empty() ? "" : "|") + name;
    }
    command
        ->add_option_function<std::string>(
            "--format",
            [&args, forCheck](const std::string& name) {
                if (!formatNamed(name, args.format, forCheck)) {
                    throw CLI::ValidationError("--format", "unknown format '" + name + "'");
                }
            },
            "Output format: " + names + " (default text)")
        ->type_name("FORMAT");
    command->add_flag_callback(
        "--json", [&args] { args.format = Format::Json; },
        "Machine-readable JSON on standard output, errors included (--format json)");
}

// What check reports, from the table of finding kinds, after its options.
std::string findingKindsFooter() {
    std::string text = "Findings (docs/findings.md explains each and how to fix it):\n";
    for (const FindingKind& kind : findingKinds()) {
        const std::string id = kind.id;
        text += "  " + id + std::string(id.size() < 19 ? 19 - id.size() : 1, ' ') +
                kind.description + "\n";
    }
    return text;
}

CLI::App* addCommand(CommandLine& line, const char* name, const char* description, Command run) {
    CLI::App* command = line.app.add_subcommand(name, description);
    addFormatOptions(command, line.args, run == &runCheck);
    command->fallthrough();
    line.commands.emplace_back(command, run);
    return command;
}

void addCheckOptions(CLI::App* check, Arguments& args) {
    check->add_option("KIND", args.kind,
                      "Document kind of every FILE (see zelct kinds); without it, each file's "
                      "kind comes from its \"$schema\" or the nearest .zelct.json");
    check->add_option("FILE", args.files,
                      "JSON documents to check, or folders to check the *.json files of (- for "
                      "standard input)");
    check->callback([&args] {
        if (splitCheckWords(checkWords(args)).paths.empty()) {
            throw CLI::RequiredError("FILE");
        }
    });
    CheckOptions& options = args.check;
    check->add_option("--kind", options.kind, "Document kind of every file, folders walked")
        ->type_name("KIND");
    check->add_flag("--list-files", options.listFiles,
                    "Print each file, its kind and what chose it; check nothing");
    check
        ->add_option("--exclude", options.excludes,
                     "Leave out of folders what matches GLOB (a name, or a path with /; "
                     "repeatable)")
        ->type_name("GLOB")
        ->allow_extra_args(false);
    check->add_option("-j,--jobs", options.jobs, "Files checked at once (default: one a core)")
        ->type_name("N")
        ->check(atLeastOne());
    check->add_flag("--no-time", options.noTime, "Leave the time out of the summary");
    check->add_flag("--skip-unmapped", options.skipUnmapped,
                    "Leave out files that no rule gives a kind (a hook given every JSON file)");
}

// The commands that show the library's catalogues rather than a document.
void defineCatalogueCommands(CommandLine& line) {
    Arguments& args = line.args;
    CLI::App* video = addCommand(
        line, "video",
        "Print every figure the library derives for the 29 video formats; with FORMAT (text "
        "such as 1080P59, or number), that format's figures or the library's error",
        &runVideo);
    video->add_option("FORMAT", args.videoFormat, "Video format text or number")
        ->check(namesSomething());

    CLI::App* ptime = addCommand(
        line, "ptime",
        "Packet times of audio streams: with --freq and --spp, the nominal packet time, its "
        "allowed range and the link offsets; with --freq and --ptime-us, the samples per packet "
        "a measured packet time converts to; without options, every frequency and its allowed "
        "samples per packet",
        &runPtime);
    line.freq = ptime->add_option("--freq", args.ptime.freq, "Sampling frequency in Hz")
                    ->check(atLeastOne());
    line.spp = ptime->add_option("--spp", args.ptime.samplesPerPacket, "Samples per packet")
                   ->check(atLeastOne());
    line.ptimeUs =
        ptime->add_option("--ptime-us", args.ptime.ptimeUs, "Measured packet time in microseconds")
            ->check(atLeastOne());

    CLI::App* alarms = addCommand(
        line, "alarms",
        "Print the alarm catalogue (type, enumerator, severity, description); with FILE, what "
        "check alarms finds in it and the set of raised alarms the library reads from it",
        &runAlarms);
    alarms->add_option("FILE", args.file,
                       "An alarm set document (kind alarms; - for standard input)");
}

void defineCommands(CommandLine& line) {
    Arguments& args = line.args;
    line.app.set_version_flag("--version", std::string("zelct ") + ZELCT_VERSION);
    line.app.add_flag("-v,--verbose", args.verbosity,
                      "Show the library's debug log lines on standard error (-vv: also verbose "
                      "ones); error lines always show");

    addCommand(line, "kinds", "List the document kinds, one a line", &runKinds);

    CLI::App* check = addCommand(line, "check",
                                 "Read each FILE as KIND and report, one finding a line, what the "
                                 "library drops, changes or adds. Exit 0: understood exactly; 1: "
                                 "findings; 2: a file cannot be used",
                                 &runCheck);
    check->footer(findingKindsFooter());
    addCheckOptions(check, args);

    addKindAndFiles(addCommand(line, "explain", kExplainHelp, &runExplain), args.explained,
                    {"FILE"});
    addKindAndFiles(addCommand(line, "diff", kDiffHelp, &runDiff), args.explained, {"OLD", "NEW"});

    CLI::App* normalize = addCommand(
        line, "normalize", "Write what the library understands from IN, as it would store it",
        &runNormalize);
    normalize->add_option("KIND", args.kind, "Document kind (see zelct kinds)")->required();
    normalize->add_option("IN", args.input, "JSON document to read (- for standard input)")
        ->required();
    line.output = normalize->add_option(
        "-o,--output", args.output,
        "File to store the document in, with FileMgr::storeLocalCfgDurable: a temporary file "
        "synced and renamed over OUT, so that OUT (even when it is IN) is never left half "
        "written; standard output without it");
    normalize
        ->add_flag("--durable", args.durable,
                   "Accepted for scripts that pass it: -o always stores durably")
        ->needs("--output");

    CLI::App* templ = addCommand(
        line, "template", "Print the document that a default-constructed object of KIND writes",
        &runTemplate);
    templ->add_option("KIND", args.kind, "Document kind (see zelct kinds)")->required();

    CLI::App* schema = addCommand(
        line, "schema", "Print the JSON Schema of KIND: what the library reads from its documents",
        &runSchema);
    schema->add_option("KIND", args.kind, "Document kind (see zelct kinds)")->required();

    defineCatalogueCommands(line);
}

std::vector<std::string> commandNames(const CommandLine& line) {
    std::vector<std::string> names;
    for (const auto& command : line.commands) {
        names.push_back(command.first->get_name());
    }
    return names;
}

// The first word that is not an option, when it names no command. CLI11 would take it for
// an extra argument and only say that a command is required.
const char* unknownCommand(const CommandLine& line, int argc, char** argv) {
    const std::vector<std::string> names = commandNames(line);
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-') {
            continue;
        }
        return std::find(names.begin(), names.end(), argv[i]) == names.end() ? argv[i] : nullptr;
    }
    return nullptr;
}

// The format asked for, found before the command line is parsed, so that a command line
// that cannot be parsed is reported in that format too.
Format requestedFormat(int argc, char** argv) {
    Format format = Format::Text;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--json") {
            format = Format::Json;
        } else if (word == "--format" && i + 1 < argc) {
            formatNamed(argv[i + 1], format, true);
        } else if (word.compare(0, 9, "--format=") == 0) {
            formatNamed(word.substr(9), format, true);
        }
    }
    return format;
}

int commandLineProblem(int argc, char** argv, const std::string& message) {
    const std::unique_ptr<Printer> printer =
        makePrinter(requestedFormat(argc, argv), std::cout, std::cerr);
    printer->problem({"", 0, 0, message, kUnusable});
    return printer->finish(kUnusable);
}

// --help and --version are results like any other, so that --json gets a JSON document too.
int helpOrVersion(int argc, char** argv, CommandLine& line, const CLI::Success& success) {
    std::ostringstream text;
    const int exit = line.app.exit(success, text, text);
    Json::Value json(Json::objectValue);
    if (success.get_name() == "CallForVersion") {
        json["version"] = ZELCT_VERSION;
    } else {
        json["help"] = text.str();
    }
    const std::unique_ptr<Printer> printer =
        makePrinter(requestedFormat(argc, argv), std::cout, std::cerr);
    printer->result(json, text.str());
    return printer->finish(exit);
}

int run(int argc, char** argv) {
    CommandLine line;
    defineCommands(line);
    if (argc <= 1) {
        // Nothing asked: how to ask, where errors go, as a usage error.
        std::cerr << line.app.help();
        return kUnusable;
    }
    if (const char* command = unknownCommand(line, argc, argv)) {
        return commandLineProblem(argc, argv,
                                  std::string("unknown command '") + command + "' (" +
                                      didYouMean(command, commandNames(line)) +
                                      "zelct --help lists them)");
    }
    line.app.require_subcommand(1);
    try {
        line.app.parse(argc, argv);
    } catch (const CLI::Success& e) {
        return helpOrVersion(argc, argv, line, e);
    } catch (const CLI::ParseError& e) {
        if (requestedFormat(argc, argv) == Format::Text) {
            // CLI11's own form, escaped: its messages quote the arguments as typed.
            std::cerr << safeLine(e.what()) << "\nRun with --help for more information.\n";
            return kUnusable;
        }
        return commandLineProblem(argc, argv, e.what());
    }
    routeLibraryLog(shownLevelFor(line.args.verbosity));
    line.args.hasOutput = line.output->count() > 0;
    line.args.ptime.hasFreq = line.freq->count() > 0;
    line.args.ptime.hasSamplesPerPacket = line.spp->count() > 0;
    line.args.ptime.hasPtime = line.ptimeUs->count() > 0;

    const std::unique_ptr<Printer> printer = makePrinter(line.args.format, std::cout, std::cerr);
    for (const auto& command : line.commands) {
        if (command.first->parsed()) {
            return printer->finish(
                withinMemory(*printer, "", [&] { return command.second(line.args, *printer); }));
        }
    }
    return kUnusable;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        std::cerr << "zelct: out of memory\n";
    } catch (const std::exception& e) {
        std::cerr << "zelct: internal error: " << e.what() << '\n';
    } catch (...) {
        std::cerr << "zelct: internal error\n";
    }
    return kUnusable;
}
