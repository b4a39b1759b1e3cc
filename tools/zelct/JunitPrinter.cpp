// JUnit XML for the test reports of Jenkins and GitLab: one test suite, a test case a file
// (its class the kind), a failure a finding, an error for a file that cannot be used or a
// problem of the command. Commands other than check write their JSON form.
//
// A file name or a document's text may hold anything, "]]>", "<", "&", quotes, NUL and other
// control characters included, and XML 1.0 cannot carry control characters even escaped: every
// text is first made visible as the text format shows it (\x00, \n), then escaped for XML, so
// the report stays well-formed and still says which byte was there.
#include <sstream>

#include "Printer.h"
#include "Report.h"
#include "SafeText.h"

namespace zelct {

std::unique_ptr<Printer> makeJsonPrinter(std::ostream& out, std::ostream& err);

namespace {

// U+FFFE and U+FFFF are no XML characters either, and escapedForTerminal keeps them.
bool isNonCharacter(const std::string& text, size_t at) {
    return text.compare(at, 2, "\xEF\xBF") == 0 && at + 2 < text.size() &&
           (text[at + 2] == '\xBE' || text[at + 2] == '\xBF');
}

std::string xmlText(const std::string& raw) {
    const std::string text = escapedForTerminal(raw);
    std::string xml;
    xml.reserve(text.size());
    for (size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (isNonCharacter(text, at)) {
            xml += text[at + 2] == '\xBE' ? "\\ufffe" : "\\uffff";
            at += 2;
            continue;
        }
        switch (c) {
            case '&':
                xml += "&amp;";
                break;
            case '<':
                xml += "&lt;";
                break;
            case '>':
                xml += "&gt;";
                break;
            case '"':
                xml += "&quot;";
                break;
            case '\'':
                xml += "&apos;";
                break;
            default:
                xml += c;
        }
    }
    return xml;
}

class JunitPrinter : public Printer {
public:
    JunitPrinter(std::ostream& out, std::ostream& err)
        : Printer(out, err), other_(makeJsonPrinter(out, err)) {}

    void checked(const std::string& file, const Kind& kind, const Outcome& outcome) override {
        libraryLog(outcome.log);
        std::string body;
        for (const Finding& finding : outcome.findings) {
            body += failure(findingTypeName(finding.type),
                            placeText(file, finding.line, finding.column), findingText(finding));
        }
        if (outcome.omitted > 0) {
            body += failure("omitted", file, omittedText(outcome.omitted));
        }
        if (outcome.status == Outcome::Status::Unusable) {
            Printer::problem({file, outcome.line, outcome.column, outcome.problem, 2});
            body += error(placeText(file, outcome.line, outcome.column), outcome.problem);
        }
        testCase(file, kind.name, body, outcome.status);
    }

    void unchecked(const std::string& file, const Problem& problem) override {
        Printer::unchecked(file, problem);
        testCase(file, "zelct",
                 error(placeText(file, problem.line, problem.column), problem.message),
                 Outcome::Status::Unusable);
    }

    void problem(const Problem& problem) override {
        Printer::problem(problem);
        const std::string name = problem.file.empty() ? std::string("zelct") : problem.file;
        testCase(name, "zelct",
                 error(placeText(name, problem.line, problem.column), problem.message),
                 Outcome::Status::Unusable);
    }

    void summary(const CheckSummary& summary, bool line) override {
        Printer::summary(summary, line);
        summary_ = summary;
    }

    void result(const Json::Value& json, const std::string& text) override {
        other_->result(json, text);
        hasOther_ = true;
    }

    void document(const Json::Value& json, const std::string& styled) override {
        other_->document(json, styled);
        hasOther_ = true;
    }

    int finish(int exit) override {
        if (hasOther_ && tests_ == 0) {
            return other_->finish(exit);
        }
        out_ << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
             << "<testsuites>\n"
             << "  <testsuite name=\"zelct check\" tests=\"" << tests_ << "\" failures=\""
             << failures_ << "\" errors=\"" << errors_ << "\" skipped=\"0\"";
        if (summary_.timed) {
            char seconds[32];
            std::snprintf(seconds, sizeof seconds, "%.3f", summary_.seconds);
            out_ << " time=\"" << seconds << "\"";
        }
        out_ << ">\n" << cases_.str() << "  </testsuite>\n</testsuites>\n";
        return Printer::finish(exit);
    }

private:
    static std::string failure(const std::string& type, const std::string& place,
                               const std::string& message) {
        return "      <failure type=\"" + xmlText(type) + "\" message=\"" + xmlText(message) +
               "\">" + xmlText(place + ": " + message) + "</failure>\n";
    }

    static std::string error(const std::string& place, const std::string& message) {
        return "      <error type=\"unusable\" message=\"" + xmlText(message) + "\">" +
               xmlText(place + ": " + message) + "</error>\n";
    }

    void testCase(const std::string& name, const std::string& classname, const std::string& body,
                  Outcome::Status status) {
        ++tests_;
        failures_ += status == Outcome::Status::Findings ? 1 : 0;
        errors_ += status == Outcome::Status::Unusable ? 1 : 0;
        cases_ << "    <testcase name=\"" << xmlText(name) << "\" classname=\""
               << xmlText(classname) << "\"";
        if (body.empty()) {
            cases_ << "/>\n";
        } else {
            cases_ << ">\n" << body << "    </testcase>\n";
        }
    }

    std::unique_ptr<Printer> other_;  // writes what commands other than check give
    bool hasOther_ = false;
    std::ostringstream cases_;
    size_t tests_ = 0;
    size_t failures_ = 0;
    size_t errors_ = 0;
    CheckSummary summary_;
};

}  // namespace

std::unique_ptr<Printer> makeJunitPrinter(std::ostream& out, std::ostream& err) {
    return std::make_unique<JunitPrinter>(out, err);
}

}  // namespace zelct
