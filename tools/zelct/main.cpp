// zelct: shows what the device's library understands from a JSON document, and its
// catalogues. Results go to standard output, the library's log lines to standard error.
//
// Exit codes: 0 done (a document understood exactly); 1 the library changed or refused
// something (findings, an unknown format, a packet time that fits nothing); 2 a file or an
// argument that cannot be used.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "Catalogues.h"
#include "Check.h"
#include "FileMgr.h"
#include "Kinds.h"
#include "Log.h"
#include "Report.h"
#include "Schema.h"

namespace {

using namespace zelct;

constexpr int kUnusable = 2;

struct Arguments {
    int verbosity = 0;
    bool json = false;
    std::string kind;
    std::vector<std::string> files;
    std::string input;
    std::string output;
    bool durable = false;
    std::string file;
    std::string format;
    PtimeRequest ptime;
};

// -v shows the library's debug lines, -vv its verbose ones; errors always show.
Logger::logDebugLevel_t shownLevelFor(int verbosity) {
    if (verbosity >= 2) {
        return Logger::logVerbose;
    }
    return verbosity == 1 ? Logger::logDebug : Logger::logError;
}

const Kind* kindOrComplain(const std::string& name) {
    const Kind* kind = findKind(name);
    if (kind == nullptr) {
        std::cerr << "zelct: unknown kind '" << name << "' (zelct kinds lists them)\n";
    }
    return kind;
}

int runKinds() {
    printKinds(std::cout);
    return 0;
}

int runCheck(const Arguments& args) {
    const Kind* kind = kindOrComplain(args.kind);
    if (kind == nullptr) {
        return kUnusable;
    }
    int worst = 0;
    Json::Value report(Json::arrayValue);
    for (const std::string& file : args.files) {
        const Outcome outcome = checkFile(*kind, file, true);
        worst = std::max(worst, exitCodeOf(outcome.status));
        if (args.json) {
            report.append(outcomeJson(file, *kind, outcome));
            if (outcome.status == Outcome::Status::Unusable) {
                std::cerr << file << ": " << outcome.problem << '\n';
            }
        } else {
            printOutcome(file, outcome, std::cout, std::cerr);
            std::cout.flush();  // keeps the library's lines about the next file after these
        }
    }
    if (args.json) {
        std::cout << indentedJson(report);
    }
    return worst;
}

int runNormalize(const Arguments& args) {
    const Kind* kind = kindOrComplain(args.kind);
    if (kind == nullptr) {
        return kUnusable;
    }
    const Outcome outcome = checkFile(*kind, args.input, false);
    if (outcome.status == Outcome::Status::Unusable) {
        std::cerr << args.input << ": " << outcome.problem << '\n';
        return kUnusable;
    }
    if (args.output.empty()) {
        std::cout << outcome.understood.toStyledString();
        return 0;
    }
    FileMgr files;
    const int code = args.durable ? files.storeLocalCfgDurable(args.output, outcome.understood)
                                  : files.storeLocalCfg(args.output, outcome.understood);
    if (code != 0) {
        std::cerr << args.output << ": cannot store (FileMgr code " << code << ")\n";
        return kUnusable;
    }
    return 0;
}

int runTemplate(const Arguments& args) {
    const Kind* kind = kindOrComplain(args.kind);
    if (kind == nullptr) {
        return kUnusable;
    }
    Json::Value document;
    kind->make()->Serialize(document);
    std::cout << document.toStyledString();
    return 0;
}

int runSchema(const Arguments& args) {
    const Kind* kind = kindOrComplain(args.kind);
    if (kind == nullptr) {
        return kUnusable;
    }
    std::cout << indentedJson(schemaOf(*kind));
    return 0;
}

// The first word that is not an option, when it names no command. CLI11 would take it for
// an extra argument and only say that a command is required.
const char* unknownCommand(CLI::App& app, int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-') {
            continue;
        }
        for (const CLI::App* command : app.get_subcommands({})) {
            if (command->get_name() == argv[i]) {
                return nullptr;
            }
        }
        return argv[i];
    }
    return nullptr;
}

void addJsonFlag(CLI::App* command, Arguments& args) {
    command->add_flag("--json", args.json, "Machine-readable JSON on standard output");
}

int run(int argc, char** argv) {
    Arguments args;
    CLI::App app{
        "zelct: shows what the device's library understands from a JSON document, and the "
        "library's catalogues (video formats, packet times, alarms).",
        "zelct"};
    app.require_subcommand(1);
    app.add_flag("-v,--verbose", args.verbosity,
                 "Show the library's debug log lines on standard error (-vv: also verbose "
                 "ones); error lines always show");

    CLI::App* kinds = app.add_subcommand("kinds", "List the document kinds, one a line");

    CLI::App* check = app.add_subcommand(
        "check",
        "Read each FILE as KIND and report, one finding a line, what the library drops, "
        "changes or adds. Exit 0: understood exactly; 1: findings; 2: a file cannot be used");
    check->add_option("KIND", args.kind, "Document kind (see zelct kinds)")->required();
    check->add_option("FILE", args.files, "JSON documents to check")->required();
    addJsonFlag(check, args);

    CLI::App* normalize = app.add_subcommand(
        "normalize", "Write what the library understands from IN, as it would store it");
    normalize->add_option("KIND", args.kind, "Document kind (see zelct kinds)")->required();
    normalize->add_option("IN", args.input, "JSON document to read")->required();
    normalize->add_option("-o,--output", args.output,
                          "File to store the document in (FileMgr::storeLocalCfg); "
                          "standard output without it");
    normalize
        ->add_flag("--durable", args.durable,
                   "Store with FileMgr::storeLocalCfgDurable: a temporary file synced and renamed "
                   "over OUT, so OUT is never left half written")
        ->needs("--output");

    CLI::App* templ = app.add_subcommand(
        "template", "Print the document that a default-constructed object of KIND writes");
    templ->add_option("KIND", args.kind, "Document kind (see zelct kinds)")->required();

    CLI::App* schema = app.add_subcommand(
        "schema", "Print the JSON Schema of KIND: what the library reads from its documents");
    schema->add_option("KIND", args.kind, "Document kind (see zelct kinds)")->required();

    CLI::App* video = app.add_subcommand(
        "video",
        "Print every figure the library derives for the 29 video formats; with FORMAT (text "
        "such as 1080P59, or number), that format's figures or the library's error");
    video->add_option("FORMAT", args.format, "Video format text or number");
    addJsonFlag(video, args);

    CLI::App* ptime = app.add_subcommand(
        "ptime",
        "Packet times of audio streams: with --freq and --spp, the nominal packet time, its "
        "allowed range and the link offsets; with --freq and --ptime-us, the samples per packet "
        "a measured packet time converts to; without options, every frequency and its allowed "
        "samples per packet");
    CLI::Option* freq = ptime->add_option("--freq", args.ptime.freq, "Sampling frequency in Hz");
    CLI::Option* spp =
        ptime->add_option("--spp", args.ptime.samplesPerPacket, "Samples per packet");
    CLI::Option* ptimeUs =
        ptime->add_option("--ptime-us", args.ptime.ptimeUs, "Measured packet time in microseconds");
    addJsonFlag(ptime, args);

    CLI::App* alarms = app.add_subcommand(
        "alarms",
        "Print the alarm catalogue (type, enumerator, severity, description); with FILE, the "
        "set of raised alarms the library reads from it");
    alarms->add_option("FILE", args.file, "An alarm set document (kind alarms)");
    addJsonFlag(alarms, args);

    for (CLI::App* command : app.get_subcommands({})) {
        command->fallthrough();
    }

    if (const char* command = unknownCommand(app, argc, argv)) {
        std::cerr << "zelct: unknown command '" << command << "' (zelct --help lists them)\n";
        return kUnusable;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        const int code = app.exit(e);
        return code == 0 ? 0 : kUnusable;
    }
    routeLibraryLog(shownLevelFor(args.verbosity));

    if (kinds->parsed()) {
        return runKinds();
    }
    if (check->parsed()) {
        return runCheck(args);
    }
    if (normalize->parsed()) {
        return runNormalize(args);
    }
    if (templ->parsed()) {
        return runTemplate(args);
    }
    if (schema->parsed()) {
        return runSchema(args);
    }
    if (video->parsed()) {
        return showVideo(args.format, args.json, std::cout, std::cerr);
    }
    if (ptime->parsed()) {
        args.ptime.hasFreq = freq->count() > 0;
        args.ptime.hasSamplesPerPacket = spp->count() > 0;
        args.ptime.hasPtime = ptimeUs->count() > 0;
        return showPtime(args.ptime, args.json, std::cout, std::cerr);
    }
    if (alarms->parsed()) {
        return showAlarms(args.file, args.json, std::cout, std::cerr);
    }
    return kUnusable;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& e) {
        std::cerr << "zelct: internal error: " << e.what() << '\n';
    } catch (...) {
        std::cerr << "zelct: internal error\n";
    }
    return kUnusable;
}
