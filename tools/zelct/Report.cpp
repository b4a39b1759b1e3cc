#include "Report.h"

#include "FindingKinds.h"

#include <algorithm>
#include <cstring>

namespace zelct {

namespace {

const char* resultName(Outcome::Status status) {
    switch (status) {
        case Outcome::Status::Exact:
            return "exact";
        case Outcome::Status::Findings:
            return "findings";
        case Outcome::Status::Unusable:
            return "unusable";
    }
    return "";
}

void addPlace(Json::Value& json, int line, int column) {
    if (line > 0) {
        json["line"] = line;
        json["column"] = column;
    }
}

Json::Value findingJson(const Finding& finding) {
    Json::Value json(Json::objectValue);
    json["path"] = pointerText(finding.path);
    addPlace(json, finding.line, finding.column);
    json["finding"] = findingTypeName(finding.type);
    if (finding.type != Finding::Type::Added) {
        json["original"] = finding.original;
    }
    if (findingKind(finding.type).showsUnderstood) {
        json["understood"] = finding.understood;
    }
    json["text"] = findingText(finding);
    return json;
}

}  // namespace

Json::Value outcomeJson(const std::string& file, const Kind& kind, const Outcome& outcome) {
    Json::Value json(Json::objectValue);
    json["file"] = file;
    json["kind"] = kind.name;
    json["result"] = resultName(outcome.status);
    json["exit"] = exitCodeOf(outcome.status);
    if (outcome.status == Outcome::Status::Unusable) {
        json["error"] = outcome.problem;
        addPlace(json, outcome.line, outcome.column);
        if (outcome.fileMgrCode != 0) {
            json["filemgr-code"] = outcome.fileMgrCode;
        }
        if (outcome.problemPlace.found) {
            json["path"] = pointerText(outcome.problemPlace.path);
        }
        if (outcome.findings.empty() && outcome.omitted == 0) {
            return json;
        }
    }
    json["findings"] = Json::Value(Json::arrayValue);
    for (const Finding& finding : outcome.findings) {
        json["findings"].append(findingJson(finding));
    }
    if (outcome.omitted > 0) {
        json["omitted"] = static_cast<Json::LargestUInt>(outcome.omitted);
    }
    return json;
}

std::string omittedText(size_t omitted) {
    // Grouped by thousands: the count may run to millions, and is read at a glance.
    std::string digits = std::to_string(omitted);
    for (size_t at = digits.size(); at > 3; at -= 3) {
        digits.insert(at - 3, ",");
    }
    return "... and " + digits + (omitted == 1 ? " more finding" : " more findings") +
           " like these";
}

std::string kindsText() {
    size_t width = 0;
    for (const Kind& kind : allKinds()) {
        width = std::max(width, std::strlen(kind.name));
    }
    std::string text;
    for (const Kind& kind : allKinds()) {
        const char* shape = kind.topLevel == TopLevel::Array ? "array " : "object";
        text += kind.name + std::string(width + 2 - std::strlen(kind.name), ' ') + shape + "  " +
                describedKind(kind) + '\n';
    }
    return text;
}

Json::Value kindsJson() {
    Json::Value array(Json::arrayValue);
    for (const Kind& kind : allKinds()) {
        Json::Value item(Json::objectValue);
        item["name"] = kind.name;
        item["top-level"] = kind.topLevel == TopLevel::Array ? "array" : "object";
        item["description"] = describedKind(kind);
        array.append(item);
    }
    return array;
}

}  // namespace zelct
