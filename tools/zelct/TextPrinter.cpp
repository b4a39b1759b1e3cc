// Text for people: one line a finding, named as compilers name places, every line escaped
// and kept within a screen.
#include <sstream>

#include "Printer.h"
#include "Report.h"
#include "SafeText.h"

namespace zelct {

namespace {

class TextPrinter : public Printer {
public:
    using Printer::Printer;

    void checked(const std::string& file, const Kind&, const Outcome& outcome) override {
        libraryLog(outcome.log);
        switch (outcome.status) {
            case Outcome::Status::Exact:
                out_ << safeLine(file + ": understood exactly") << '\n';
                break;
            case Outcome::Status::Findings:
                findings(file, outcome);
                break;
            case Outcome::Status::Unusable:
                findings(file, outcome);
                out_.flush();
                problem({file, outcome.line, outcome.column, outcome.problem, 2});
                break;
        }
        out_.flush();
    }

    void document(const Json::Value&, const std::string& styled) override { out_ << styled; }

    // Tables are wider than a screen by design; they are escaped but never cut.
    void result(const Json::Value&, const std::string& text) override {
        std::istringstream lines(text);
        std::string line;
        while (std::getline(lines, line)) {
            out_ << escapedForTerminal(line) << '\n';
        }
    }

private:
    void findings(const std::string& file, const Outcome& outcome) {
        for (const Finding& finding : outcome.findings) {
            out_ << safeLine(placeText(file, finding.line, finding.column) + ": " +
                             findingText(finding))
                 << '\n';
        }
        if (outcome.omitted > 0) {
            out_ << safeLine(file + ": " + omittedText(outcome.omitted)) << '\n';
        }
    }
};

}  // namespace

std::unique_ptr<Printer> makeTextPrinter(std::ostream& out, std::ostream& err) {
    return std::make_unique<TextPrinter>(out, err);
}

}  // namespace zelct
