// SARIF 2.1.0 for code-review pages: one log of one run, a rule for each kind of finding and
// one for files that cannot be used, a result for each finding with the file, line and column
// it concerns, its JSON path and the value the device reads. Commands other than check have
// no findings; they write their JSON form as the json format does.
//
// Columns count characters, as the text format's FILE:LINE:COLUMN does, which the run
// declares so that viewers do not take them for UTF-16 units. A result whose place is unknown
// points at the file's first line, since viewers drop results without a region.
#include <cctype>
#include <utility>

#include "FindingKinds.h"
#include "JsonText.h"
#include "Printer.h"
#include "Report.h"
#include "SafeText.h"

namespace zelct {

std::unique_ptr<Printer> makeJsonPrinter(std::ostream& out, std::ostream& err);

namespace {

// The rules, in the order of their ruleIndex: one for each kind of finding, at the kind's
// severity (a file that was read, which the library made something else of: exit 1), then one
// for files that cannot be used, an error (exit 2).
const char* const kUnusableId = "unusable";
// Where the tool's documentation lives, beside its schemas.
const char* const kInformationUri = "https://zel.invalid/zelCommonTypes/";

int findingRules() {
    return static_cast<int>(findingKinds().size());
}

int ruleIndexOf(Finding::Type type) {
    for (int i = 0; i < findingRules(); ++i) {
        if (findingKinds()[static_cast<size_t>(i)].type == type) {
            return i;
        }
    }
    return findingRules();
}

Json::Value ruleJson(const char* id, const char* name, const char* text, const char* level) {
    Json::Value json(Json::objectValue);
    json["id"] = id;
    json["name"] = name;
    json["shortDescription"]["text"] = text;
    // Each kind has its section, headed by its id, in the reference of what check reports.
    json["helpUri"] = std::string(kInformationUri) + "docs/findings.md#" + id;
    json["defaultConfiguration"]["level"] = level;
    return json;
}

Json::Value rulesJson() {
    Json::Value rules(Json::arrayValue);
    for (const FindingKind& kind : findingKinds()) {
        rules.append(ruleJson(kind.id, kind.ruleName, kind.description, kind.severity));
    }
    rules.append(ruleJson(kUnusableId, "FileNotUsable",
                          "A file the library cannot load or read as the kind.", "error"));
    return rules;
}

// A file name as a URI reference: unreserved characters and "/" as they are, every other
// byte percent-encoded; an absolute name becomes a file: URI.
std::string uriOf(const std::string& file) {
    static const char* const kHex = "0123456789ABCDEF";
    std::string uri = !file.empty() && file[0] == '/' ? "file://" : "";
    for (char c : file) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0 || c == '-' || c == '.' || c == '_' || c == '~' || c == '/') {
            uri += c;
        } else {
            uri += '%';
            uri += kHex[byte >> 4];
            uri += kHex[byte & 0xF];
        }
    }
    return uri;
}

Json::Value driverJson() {
    Json::Value driver(Json::objectValue);
    driver["name"] = "zelct";
    driver["version"] = ZELCT_VERSION;
    driver["semanticVersion"] = ZELCT_VERSION;
    driver["informationUri"] = kInformationUri;
    driver["rules"] = rulesJson();
    return driver;
}

Json::Value locationJson(const std::string& file, int line, int column, const std::string& path,
                         bool hasPath) {
    Json::Value location(Json::objectValue);
    Json::Value& physical = location["physicalLocation"];
    physical["artifactLocation"]["uri"] = uriOf(file);
    physical["region"]["startLine"] = line > 0 ? line : 1;
    if (line > 0) {
        physical["region"]["startColumn"] = column > 0 ? column : 1;
    }
    if (hasPath) {
        Json::Value logical(Json::objectValue);
        logical["fullyQualifiedName"] = path;
        logical["kind"] = "member";
        location["logicalLocations"].append(logical);
    }
    return location;
}

Json::Value resultJson(int ruleIndex, const std::string& message) {
    Json::Value result(Json::objectValue);
    const bool unusable = ruleIndex == findingRules();
    const FindingKind* kind = unusable ? nullptr : &findingKinds()[static_cast<size_t>(ruleIndex)];
    result["ruleId"] = unusable ? kUnusableId : kind->id;
    result["ruleIndex"] = ruleIndex;
    result["level"] = unusable ? "error" : kind->severity;
    result["message"]["text"] = message;
    return result;
}

Json::Value findingResult(const std::string& file, const Kind& kind, const Finding& finding) {
    const std::string path = pointerText(finding.path);
    Json::Value result = resultJson(ruleIndexOf(finding.type), findingText(finding));
    result["locations"].append(locationJson(file, finding.line, finding.column, path, true));
    Json::Value& properties = result["properties"];
    properties["kind"] = kind.name;
    properties["path"] = path;
    if (finding.type != Finding::Type::Added) {
        properties["original"] = finding.original;
    }
    if (!finding.understood.isNull() || finding.type == Finding::Type::Changed) {
        properties["understood"] = finding.understood;  // what the device reads
    }
    return result;
}

Json::Value unusableResult(const std::string& file, const Kind& kind, const Outcome& outcome) {
    Json::Value result = resultJson(findingRules(), outcome.problem);
    const bool hasPath = outcome.problemPlace.found;
    const std::string path = hasPath ? pointerText(outcome.problemPlace.path) : std::string();
    result["locations"].append(locationJson(file, outcome.line, outcome.column, path, hasPath));
    result["properties"]["kind"] = kind.name;
    if (hasPath) {
        result["properties"]["path"] = path;
    }
    if (outcome.fileMgrCode != 0) {
        result["properties"]["filemgr-code"] = outcome.fileMgrCode;
    }
    return result;
}

class SarifPrinter : public Printer {
public:
    SarifPrinter(std::ostream& out, std::ostream& err)
        : Printer(out, err), other_(makeJsonPrinter(out, err)) {}

    void checked(const std::string& file, const Kind& kind, const Outcome& outcome) override {
        libraryLog(outcome.log);
        checkedAny_ = true;
        for (const Finding& finding : outcome.findings) {
            results_.append(findingResult(file, kind, finding));
        }
        if (outcome.status == Outcome::Status::Unusable) {
            Printer::problem({file, outcome.line, outcome.column, outcome.problem, 2});
            results_.append(unusableResult(file, kind, outcome));
        }
        if (outcome.omitted > 0) {
            // Counted, not kept: the run says how many results each file lacks.
            Json::Value omitted(Json::objectValue);
            omitted["uri"] = uriOf(file);
            omitted["omitted"] = static_cast<Json::LargestUInt>(outcome.omitted);
            omitted["text"] = omittedText(outcome.omitted);
            omitted_.append(omitted);
        }
    }

    void unchecked(const std::string& file, const Problem& problem) override {
        Printer::unchecked(file, problem);
        checkedAny_ = true;
        Json::Value result = resultJson(findingRules(), problem.message);
        result["locations"].append(locationJson(file, problem.line, problem.column, "", false));
        results_.append(result);
    }

    void summary(const CheckSummary& summary, bool line) override {
        Printer::summary(summary, line);
        summary_ = summaryJson(summary);
    }

    void result(const Json::Value& json, const std::string& text) override {
        other_->result(json, text);
        hasOther_ = true;
    }

    void document(const Json::Value& json, const std::string& styled) override {
        other_->document(json, styled);
        hasOther_ = true;
    }

    // A problem of the command itself: a notification of the run, which did not succeed.
    void problem(const Problem& problem) override {
        Printer::problem(problem);
        Json::Value notification(Json::objectValue);
        notification["level"] = "error";
        notification["message"]["text"] = problem.message;
        if (!problem.file.empty()) {
            notification["locations"].append(
                locationJson(problem.file, problem.line, problem.column, "", false));
        }
        notifications_.append(notification);
    }

    int finish(int exit) override {
        if (hasOther_ && !checkedAny_ && notifications_.empty()) {
            return other_->finish(exit);
        }
        Json::Value log(Json::objectValue);
        log["$schema"] = "https://json.schemastore.org/sarif-2.1.0.json";
        log["version"] = "2.1.0";
        Json::Value run(Json::objectValue);
        run["tool"]["driver"] = driverJson();
        run["columnKind"] = "unicodeCodePoints";
        run["results"] = std::move(results_);  // written once, and may quote most of a file
        if (!omitted_.empty()) {
            run["properties"]["omittedResults"] = omitted_;
        }
        if (!summary_.isNull()) {
            run["properties"]["summary"] = summary_;
        }
        Json::Value invocation(Json::objectValue);
        invocation["executionSuccessful"] = notifications_.empty();
        invocation["exitCode"] = exit;
        if (!notifications_.empty()) {
            invocation["toolExecutionNotifications"] = notifications_;
        }
        run["invocations"].append(invocation);
        log["runs"].append(std::move(run));
        out_ << indentedJson(withValidUtf8(log));
        return Printer::finish(exit);
    }

private:
    std::unique_ptr<Printer> other_;  // writes what commands other than check give
    bool hasOther_ = false;
    bool checkedAny_ = false;
    Json::Value results_{Json::arrayValue};
    Json::Value omitted_{Json::arrayValue};
    Json::Value notifications_{Json::arrayValue};
    Json::Value summary_;
};

}  // namespace

std::unique_ptr<Printer> makeSarifPrinter(std::ostream& out, std::ostream& err) {
    return std::make_unique<SarifPrinter>(out, err);
}

}  // namespace zelct
