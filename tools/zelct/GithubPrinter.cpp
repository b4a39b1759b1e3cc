// GitHub Actions workflow commands: one annotation a finding, shown by the workflow's log and
// on the lines of the pull request it concerns. A finding is a warning; a file that cannot be
// used, or a problem of the command, is an error. Commands other than check print their text.
//
// The runner reads every line of the log as a possible command, so no file name or document
// text may start one: a name or text is written only escaped inside zelct's own command, and
// every other line is made inert before it is printed, on either stream.
#include <sstream>

#include "FindingKinds.h"
#include "Printer.h"
#include "Report.h"
#include "SafeText.h"
#include "ShownLog.h"

namespace zelct {

std::unique_ptr<Printer> makeTextPrinter(std::ostream& out, std::ostream& err);

namespace {

// The message of a workflow command: "%", CR and LF would end or corrupt the command.
std::string escapedData(const std::string& text) {
    std::string escaped;
    for (char c : text) {
        switch (c) {
            case '%':
                escaped += "%25";
                break;
            case '\r':
                escaped += "%0D";
                break;
            case '\n':
                escaped += "%0A";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

// A property of a workflow command: besides the message's escapes, ":" and "," end it.
std::string escapedProperty(const std::string& text) {
    std::string escaped;
    for (char c : escapedData(text)) {
        if (c == ':') {
            escaped += "%3A";
        } else if (c == ',') {
            escaped += "%2C";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

// UTF-8 forms of the characters besides ASCII space that .NET counts as white space and the
// runner trims before it looks for "::"; the control characters among them are escaped before.
// clang-format off
const char* const kWideSpaces[] = {
    "\xc2\xa0", "\xe1\x9a\x80", "\xe2\x80\x80", "\xe2\x80\x81", "\xe2\x80\x82", "\xe2\x80\x83",
    "\xe2\x80\x84", "\xe2\x80\x85", "\xe2\x80\x86", "\xe2\x80\x87", "\xe2\x80\x88",
    "\xe2\x80\x89", "\xe2\x80\x8a", "\xe2\x80\xa8", "\xe2\x80\xa9", "\xe2\x80\xaf",
    "\xe2\x81\x9f", "\xe3\x80\x80",
};
// clang-format on

// Bytes of white space at the start of the text, as the runner trims it.
size_t leadingSpace(const std::string& text) {
    size_t at = 0;
    for (bool more = true; more;) {
        more = false;
        if (at < text.size() && text[at] == ' ') {
            at += 1;
            more = true;
            continue;
        }
        for (const char* space : kWideSpaces) {
            const std::string wide(space);
            if (text.compare(at, wide.size(), wide) == 0) {
                at += wide.size();
                more = true;
                break;
            }
        }
    }
    return at;
}

// An escaped line that the runner cannot take for a command: "::" at its start, after white
// space, and the older "##[" anywhere in it, which the runner still obeys, have their
// colon and bracket written as the escapes \x3a and \x5b.
std::string inert(const std::string& text) {
    std::string line = text;
    const size_t start = leadingSpace(line);
    if (line.compare(start, 2, "::") == 0) {
        line.replace(start, 1, "\\x3a");
    }
    for (size_t at = line.find("##["); at != std::string::npos; at = line.find("##[", at)) {
        line.replace(at + 2, 1, "\\x5b");
    }
    return line;
}

// A line of a JSON document made inert: "##[" can only stand in a string there, where "[" is
// written as the JSON escape \u005b so that the document still reads the same; no line of
// an indented document starts with "::".
std::string inertJson(const std::string& text) {
    std::string line = text;
    for (size_t at = line.find("##["); at != std::string::npos; at = line.find("##[", at)) {
        line.replace(at + 2, 1, "\\u005b");
    }
    return line;
}

// "::warning file=F,line=L,col=C,title=T::message", the place left out where it is unknown.
// Control characters and broken bytes are escaped as the text format escapes them.
std::string annotation(const char* command, const std::string& file, int line, int column,
                       const std::string& title, const std::string& message) {
    std::string properties;
    if (!file.empty()) {
        properties += "file=" + escapedProperty(escapedForTerminal(file));
        if (line > 0) {
            properties += ",line=" + std::to_string(line) + ",col=" + std::to_string(column);
        }
        properties += ",";
    }
    properties += "title=" + escapedProperty(title);
    return std::string("::") + command + " " + properties +
           "::" + escapedData(escapedForTerminal(message));
}

class GithubPrinter : public Printer {
public:
    // The library's lines quote documents; while this printer lives they go out as inert as
    // the tool's own, whichever way they reach standard error.
    GithubPrinter(std::ostream& out, std::ostream& err)
        : Printer(out, err), text_(makeTextPrinter(textOut_, err)) {
        setShownLineFilter(&inert);
    }
    ~GithubPrinter() override { setShownLineFilter(nullptr); }
    GithubPrinter(const GithubPrinter&) = delete;
    GithubPrinter& operator=(const GithubPrinter&) = delete;

    void checked(const std::string& file, const Kind& kind, const Outcome& outcome) override {
        libraryLog(outcome.log);
        switch (outcome.status) {
            case Outcome::Status::Exact:
                out_ << inert(safeLine(file + ": understood exactly")) << '\n';
                break;
            case Outcome::Status::Findings:
                findings(file, kind, outcome);
                break;
            case Outcome::Status::Unusable:
                findings(file, kind, outcome);
                err_ << inert(problemLine({file, outcome.line, outcome.column, outcome.problem}))
                     << '\n';
                out_ << annotation("error", file, outcome.line, outcome.column,
                                   std::string("zelct ") + kind.name + ": unusable",
                                   outcome.problem)
                     << '\n';
                break;
        }
        out_.flush();
    }

    void unchecked(const std::string& file, const Problem& problem) override {
        err_ << inert(problemLine(problem)) << '\n';
        out_ << annotation("error", file, problem.line, problem.column, "zelct: unusable",
                           problem.message)
             << '\n';
        out_.flush();
    }

    void summary(const CheckSummary& summary, bool line) override {
        if (line) {
            out_.flush();
            err_ << inert(summaryText(summary)) << '\n';
        }
    }

    void result(const Json::Value& json, const std::string& text) override {
        text_->result(json, text);
        passText(&inert);
    }

    void document(const Json::Value& json, const std::string& styled) override {
        text_->document(json, styled);
        passText(&inertJson);
    }

    void problem(const Problem& problem) override {
        err_ << inert(problemLine(problem)) << '\n';
        out_ << annotation("error", problem.file, problem.line, problem.column, "zelct",
                           problem.message)
             << '\n';
    }

private:
    void findings(const std::string& file, const Kind& kind, const Outcome& outcome) {
        for (const Finding& finding : outcome.findings) {
            out_ << annotation(
                        findingKind(finding.type).severity, file, finding.line, finding.column,
                        std::string("zelct ") + kind.name + ": " + findingTypeName(finding.type),
                        findingText(finding))
                 << '\n';
        }
        if (outcome.omitted > 0) {
            out_ << annotation("warning", file, 0, 0,
                               std::string("zelct ") + kind.name + ": omitted",
                               omittedText(outcome.omitted))
                 << '\n';
        }
    }

    // Writes what the text printer wrote, already escaped, line by line through the filter.
    void passText(std::string (*filter)(const std::string&)) {
        std::istringstream lines(textOut_.str());
        textOut_.str("");
        std::string line;
        while (std::getline(lines, line)) {
            out_ << filter(line) << '\n';
        }
    }

    std::ostringstream textOut_;
    std::unique_ptr<Printer> text_;  // writes what commands other than check give
};

}  // namespace

std::unique_ptr<Printer> makeGithubPrinter(std::ostream& out, std::ostream& err) {
    return std::make_unique<GithubPrinter>(out, err);
}

}  // namespace zelct
