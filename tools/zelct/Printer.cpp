#include "Printer.h"

#include <cerrno>
#include <cstring>

#include "SafeText.h"
#include "ShownLog.h"

namespace zelct {

std::unique_ptr<Printer> makeTextPrinter(std::ostream& out, std::ostream& err);
std::unique_ptr<Printer> makeJsonPrinter(std::ostream& out, std::ostream& err);
std::unique_ptr<Printer> makeSarifPrinter(std::ostream& out, std::ostream& err);
std::unique_ptr<Printer> makeGithubPrinter(std::ostream& out, std::ostream& err);

namespace {

struct FormatRow {
    const char* name;
    Format format;
    std::unique_ptr<Printer> (*make)(std::ostream& out, std::ostream& err);
};

// clang-format off
const FormatRow kFormats[] = {
    {"text",   Format::Text,   &makeTextPrinter},
    {"json",   Format::Json,   &makeJsonPrinter},
    {"sarif",  Format::Sarif,  &makeSarifPrinter},
    {"github", Format::Github, &makeGithubPrinter},
};
// clang-format on

}  // namespace

const std::vector<std::string>& formatNames() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (const FormatRow& row : kFormats) {
            all.emplace_back(row.name);
        }
        return all;
    }();
    return names;
}

bool formatNamed(const std::string& name, Format& format) {
    for (const FormatRow& row : kFormats) {
        if (name == row.name) {
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
