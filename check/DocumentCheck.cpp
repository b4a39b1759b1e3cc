// The check engine behind the installed DocumentCheck API: the tool's own check, with its
// findings handed over as data.
#include "DocumentCheck.h"

#include <exception>
#include <utility>

#include "Check.h"
#include "FindingKinds.h"
#include "Kinds.h"

namespace {

using zelct::Outcome;

DocumentCheck::Report unusableReport(const std::string& name, const std::string& problem) {
    DocumentCheck::Report report;
    report.status = DocumentCheck::Unusable;
    report.name = name;
    report.problem = problem;
    return report;
}

// The finding's sentence without the pointer the tool puts before it.
std::string messageOf(const zelct::Finding& finding) {
    std::string text = zelct::findingText(finding);
    const std::string where = finding.path.empty() ? "" : zelct::pointerText(finding.path) + ": ";
    if (!where.empty() && text.compare(0, where.size(), where) == 0) {
        text.erase(0, where.size());
    }
    return text;
}

DocumentCheck::Finding findingOf(zelct::Finding& finding) {
    DocumentCheck::Finding data;
    data.kind = zelct::findingKind(finding.type).id;
    data.pointer = zelct::pointerText(finding.path);
    data.line = finding.line;
    data.column = finding.column;
    data.message = messageOf(finding);
    data.original = std::move(finding.original);
    data.understood = std::move(finding.understood);
    return data;
}

DocumentCheck::Status_en statusOf(Outcome::Status status) {
    switch (status) {
        case Outcome::Status::Exact:
            return DocumentCheck::Exact;
        case Outcome::Status::Findings:
            return DocumentCheck::Findings;
        case Outcome::Status::Unusable:
            break;
    }
    return DocumentCheck::Unusable;
}

DocumentCheck::Report reportOf(const std::string& name, Outcome&& outcome) {
    DocumentCheck::Report report;
    report.status = statusOf(outcome.status);
    report.name = name;
    report.findings.reserve(outcome.findings.size());
    for (zelct::Finding& finding : outcome.findings) {
        report.findings.push_back(findingOf(finding));
    }
    report.omitted = outcome.omitted;
    report.log = std::move(outcome.log);
    if (report.status == DocumentCheck::Unusable) {
        report.problem = outcome.problem;
        report.problemPointer =
            outcome.problemPlace.found ? zelct::pointerText(outcome.problemPlace.path) : "";
        report.problemLine = outcome.line;
        report.problemColumn = outcome.column;
    } else {
        report.understood = std::move(outcome.understood);
    }
    return report;
}

// Runs one check; whatever it throws, running out of memory included, is an Unusable report.
template <typename Check>
DocumentCheck::Report guarded(const std::string& kindName, const std::string& name, Check check) {
    try {
        const zelct::Kind* kind = zelct::findKind(kindName);
        if (kind == nullptr) {
            return unusableReport(name, "no document kind is named '" + kindName + "'");
        }
        return reportOf(name, check(*kind));
    } catch (const std::exception& e) {
        return unusableReport(name, std::string("the check gave up: ") + e.what());
    } catch (...) {
        return unusableReport(name, "the check gave up");
    }
}

}  // namespace

std::vector<std::string> DocumentCheck::kindNames() {
    try {
        return zelct::kindNames();
    } catch (...) {
        return {};
    }
}

bool DocumentCheck::hasKind(const std::string& kind) {
    try {
        return zelct::findKind(kind) != nullptr;
    } catch (...) {
        return false;
    }
}

DocumentCheck::Report DocumentCheck::checkFile(const std::string& kind, const std::string& path) {
    return guarded(kind, path, [&path](const zelct::Kind& found) {
        return zelct::checkFile(found, path, true);
    });
}

// The text is loaded by the very code, with the very limits and failure codes, that loads
// the device's files; what would be said about such a file is said about the text's name.
DocumentCheck::Report DocumentCheck::checkText(const std::string& kind, const std::string& text,
                                               const std::string& name) {
    return guarded(kind, name, [&text, &name](const zelct::Kind& found) {
        return zelct::checkText(found, name, text, true);
    });
}

DocumentCheck::Report DocumentCheck::checkValue(const std::string& kind,
                                                const Json::Value& document) {
    return guarded(kind, "", [&document](const zelct::Kind& found) {
        return zelct::checkDocument(found, document, true);
    });
}
