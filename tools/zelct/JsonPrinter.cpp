// JSON for programs: one document on standard output whatever happens, valid UTF-8 (a byte
// that is not is written as the text \xNN).
#include <utility>

#include "JsonText.h"
#include "Printer.h"
#include "Report.h"
#include "SafeText.h"

namespace zelct {

namespace {

class JsonPrinter : public Printer {
public:
    using Printer::Printer;

    void checked(const std::string& file, const Kind& kind, const Outcome& outcome) override {
        libraryLog(outcome.log);
        if (outcome.status == Outcome::Status::Unusable) {
            Printer::problem({file, outcome.line, outcome.column, outcome.problem, 2});
        }
        files_.append(outcomeJson(file, kind, outcome));
    }

    void result(const Json::Value& json, const std::string&) override {
        result_ = json;
        hasResult_ = true;
    }

    void document(const Json::Value& json, const std::string&) override {
        result_ = json;
        hasResult_ = true;
    }

    void problem(const Problem& problem) override {
        Printer::problem(problem);
        error_ = Json::Value(Json::objectValue);
        error_["error"] = problem.message;
        if (!problem.file.empty()) {
            error_["file"] = problem.file;
        }
        if (problem.line > 0) {
            error_["line"] = problem.line;
            error_["column"] = problem.column;
        }
    }

    // A problem of the command itself outweighs the files and results gathered before it.
    int finish(int exit) override {
        Json::Value document = std::move(files_);  // written once, and may be most of a file
        if (!error_.isNull()) {
            document = error_;
            document["exit"] = exit;
        } else if (hasResult_) {
            document = result_;
        }
        out_ << indentedJson(withValidUtf8(document));
        return Printer::finish(exit);
    }

private:
    Json::Value files_{Json::arrayValue};
    Json::Value result_;
    bool hasResult_ = false;
    Json::Value error_;
};

}  // namespace

std::unique_ptr<Printer> makeJsonPrinter(std::ostream& out, std::ostream& err) {
    return std::make_unique<JsonPrinter>(out, err);
}

}  // namespace zelct
