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

    void unchecked(const std::string& file, const Problem& problem) override {
        Printer::unchecked(file, problem);
        Json::Value json(Json::objectValue);
        json["file"] = file;
        json["kind"] = Json::Value();
        json["result"] = "unusable";
        json["exit"] = problem.exit;
        json["error"] = problem.message;
        if (problem.line > 0) {
            json["line"] = problem.line;
            json["column"] = problem.column;
        }
        files_.append(json);
    }

    // A check of a repository writes {"files": [...], "summary": {...}}; the check of files of
    // one kind named on the command line keeps the plain array that scripts already read.
    void summary(const CheckSummary& summary, bool line) override {
        Printer::summary(summary, line);
        summary_ = summaryJson(summary);
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
        } else if (!summary_.isNull()) {
            Json::Value files = std::move(document);
            document = Json::Value(Json::objectValue);
            document["files"] = std::move(files);
            document["summary"] = summary_;
        }
        out_ << indentedJson(withValidUtf8(document));
        return Printer::finish(exit);
    }

private:
    Json::Value files_{Json::arrayValue};
    Json::Value result_;
    bool hasResult_ = false;
    Json::Value error_;
    Json::Value summary_;
};

}  // namespace

std::unique_ptr<Printer> makeJsonPrinter(std::ostream& out, std::ostream& err) {
    return std::make_unique<JsonPrinter>(out, err);
}

}  // namespace zelct
