#include "Printer.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "SafeText.h"
#include "ShownLog.h"

namespace zelct {

std::unique_ptr<Printer> makeTextPrinter(std::ostream& out, std::ostream& err);
std::unique_ptr<Printer> makeJsonPrinter(std::ostream& out, std::ostream& err);
std::unique_ptr<Printer> makeSarifPrinter(std::ostream& out, std::ostream& err);
std::unique_ptr<Printer> makeGithubPrinter(std::ostream& out, std::ostream& err);
std::unique_ptr<Printer> makeJunitPrinter(std::ostream& out, std::ostream& err);

namespace {

struct FormatRow {
    const char* name;
    Format format;
    std::unique_ptr<Printer> (*make)(std::ostream& out, std::ostream& err);
    bool checkOnly;
};

// clang-format off
const FormatRow kFormats[] = {
    {"text",   Format::Text,   &makeTextPrinter,   false},
    {"json",   Format::Json,   &makeJsonPrinter,   false},
    {"sarif",  Format::Sarif,  &makeSarifPrinter,  false},
    {"github", Format::Github, &makeGithubPrinter, false},
    {"junit",  Format::Junit,  &makeJunitPrinter,  true},
};
// clang-format on

}  // namespace

std::vector<std::string> formatNames(bool forCheck) {
    std::vector<std::string> names;
    for (const FormatRow& row : kFormats) {
        if (forCheck || !row.checkOnly) {
            names.emplace_back(row.name);
        }
    }
    return names;
}

bool formatNamed(const std::string& name, Format& format, bool forCheck) {
    for (const FormatRow& row : kFormats) {
        if (name == row.name && (forCheck || !row.checkOnly)) {
            format = row.format;
            return true;
        }
    }
    return false;
}

std::unique_ptr<Printer> makePrinter(Format format, std::ostream& out, std::ostream& err) {
    for (const FormatRow& row : kFormats) {
        if (row.format == format) {
            return row.make(out, err);
        }
    }
    return makeTextPrinter(out, err);
}

std::string placeText(const std::string& file, int line, int column) {
    if (line <= 0) {
        return file;
    }
    return file + ":" + std::to_string(line) + ":" + std::to_string(column);
}

std::string summaryText(const CheckSummary& summary) {
    std::string text =
        std::to_string(summary.files) + (summary.files == 1 ? " file: " : " files: ") +
        std::to_string(summary.exact) + " understood exactly, " + std::to_string(summary.findings) +
        " with findings, " + std::to_string(summary.unusable) + " unusable";
    if (summary.timed) {
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "; %.1f s", summary.seconds);
        text += seconds;
    }
    return text;
}

Json::Value summaryJson(const CheckSummary& summary) {
    Json::Value json(Json::objectValue);
    json["files"] = static_cast<Json::LargestUInt>(summary.files);
    json["exact"] = static_cast<Json::LargestUInt>(summary.exact);
    json["findings"] = static_cast<Json::LargestUInt>(summary.findings);
    json["unusable"] = static_cast<Json::LargestUInt>(summary.unusable);
    if (summary.timed) {
        json["seconds"] = summary.seconds;
    }
    return json;
}

void Printer::unchecked(const std::string& file, const Problem& problem) {
    Printer::problem({file, problem.line, problem.column, problem.message, problem.exit});
}

void Printer::summary(const CheckSummary& summary, bool line) {
    if (line) {
        out_.flush();
        err_ << summaryText(summary) << '\n';
    }
}

std::string Printer::problemLine(const Problem& problem) {
    const std::string subject = problem.file.empty() ? std::string("zelct") : problem.file;
    return safeLine(placeText(subject, problem.line, problem.column) + ": " + problem.message);
}

void Printer::problem(const Problem& problem) {
    err_ << problemLine(problem) << '\n';
}

int Printer::finish(int exit) {
    errno = 0;
    out_.flush();
    if (!out_) {
        // A full disk or a closed pipe: what was meant for standard output is lost, which is
        // no success whatever the command found.
        const int error = errno;
        err_ << "zelct: cannot write standard output"
             << (error != 0 ? std::string(" (") + std::strerror(error) + ")" : std::string())
             << '\n';
        return 2;
    }
    return exit;
}

void Printer::libraryLog(const std::vector<LogLine>& lines) {
    out_.flush();  // keeps these lines after what was printed about the files before
    showLog(lines);
}

}  // namespace zelct
