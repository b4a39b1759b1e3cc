// GitHub Actions workflow commands: one annotation a finding, shown by the workflow's log and
// on the lines of the pull request it concerns. A finding is a warning; a file that cannot be
// used, or a problem of the command, is an error. Commands other than check print their text.
#include "Printer.h"
#include "Report.h"
#include "SafeText.h"

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

// "::warning file=F,line=L,col=C,title=T::message", the place left out where it is unknown.
std::string annotation(const char* command, const std::string& file, int line, int column,
                       const std::string& title, const std::string& message) {
    std::string properties;
    if (!file.empty()) {
        properties += "file=" + escapedProperty(validUtf8(file));
        if (line > 0) {
            properties += ",line=" + std::to_string(line) + ",col=" + std::to_string(column);
        }
        properties += ",";
    }
    properties += "title=" + escapedProperty(title);
    return std::string("::") + command + " " + properties + "::" + escapedData(validUtf8(message));
}

class GithubPrinter : public Printer {
public:
    GithubPrinter(std::ostream& out, std::ostream& err)
        : Printer(out, err), text_(makeTextPrinter(out, err)) {}

    void checked(const std::string& file, const Kind& kind, const Outcome& outcome) override {
        libraryLog(outcome.log);
        switch (outcome.status) {
            case Outcome::Status::Exact:
                out_ << safeLine(file + ": understood exactly") << '\n';
                break;
            case Outcome::Status::Findings:
                for (const Finding& finding : outcome.findings) {
                    out_ << annotation("warning", file, finding.line, finding.column,
                                       std::string("zelct ") + kind.name + ": " +
                                           findingTypeName(finding.type),
                                       findingText(finding))
                         << '\n';
                }
                if (outcome.omitted > 0) {
                    out_ << annotation("warning", file, 0, 0,
                                       std::string("zelct ") + kind.name + ": omitted",
                                       omittedText(outcome.omitted))
                         << '\n';
                }
                break;
            case Outcome::Status::Unusable:
                Printer::problem({file, outcome.line, outcome.column, outcome.problem, 2});
                out_ << annotation("error", file, outcome.line, outcome.column,
                                   std::string("zelct ") + kind.name + ": unusable",
                                   outcome.problem)
                     << '\n';
                break;
        }
        out_.flush();
    }

    void result(const Json::Value& json, const std::string& text) override {
        text_->result(json, text);
    }

    void document(const Json::Value& json, const std::string& styled) override {
        text_->document(json, styled);
    }

    void problem(const Problem& problem) override {
        Printer::problem(problem);
        out_ << annotation("error", problem.file, problem.line, problem.column, "zelct",
                           problem.message)
             << '\n';
    }

private:
    std::unique_ptr<Printer> text_;  // writes what commands other than check give
};

}  // namespace

std::unique_ptr<Printer> makeGithubPrinter(std::ostream& out, std::ostream& err) {
    return std::make_unique<GithubPrinter>(out, err);
}

}  // namespace zelct
