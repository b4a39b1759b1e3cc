// What zelct explain prints: a line a member in columns, or the members as JSON.
#include <algorithm>
#include <string>

#include "Explain.h"
#include "SafeText.h"
#include "Understood.h"

namespace zelct {

namespace {

// Columns wider than these are not padded to: one long pointer or value would push every
// other line off the screen.
constexpr size_t kWidestPointerColumn = 48;
constexpr size_t kWidestValueColumn = 32;

std::string placeWords(int line, int column) {
    return line > 0 ? std::to_string(line) + ":" + std::to_string(column) : std::string();
}

std::string atPlace(int line, int column) {
    return line > 0 ? " at " + placeWords(line, column) : std::string();
}

std::string pointerCell(const ExplainedMember& member) {
    return member.path.empty() ? std::string("(whole document)") : pointerText(member.path);
}

std::string valueCell(const ExplainedMember& member) {
    return member.held() ? "= " + shownValue(member.value) : std::string("(not held)");
}

std::string fromPlace(const ExplainedMember& member) {
    return member.line > 0 ? "from " + placeWords(member.line, member.column)
                           : std::string("from the file");
}

std::string originText(const ExplainedMember& member) {
    const std::string there = atPlace(member.line, member.column);
    switch (member.origin) {
        case Origin::File:
            return fromPlace(member);
        case Origin::Default:
            if (member.unread) {
                return "default, the file's " + shownValue(member.from) + there + " is never read";
            }
            return "default, absent from the file" +
                   (member.line > 0 ? " (its object" + there + ")" : std::string());
        case Origin::Changed:
            return "changed, the file has " + shownValue(member.from) + there;
        case Origin::HiddenState:
            return fromPlace(member) + "; " + member.hidden;
        case Origin::Dropped:
            return "dropped, the file has " + shownValue(member.from) + there + "; never read";
        case Origin::NotWrittenBack:
            return "not written back, the file has " + shownValue(member.from) + there +
                   "; read, never written";
    }
    return std::string();
}

std::string padded(const std::string& text, size_t width) {
    return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

std::vector<const ExplainedMember*> shown(const std::vector<ExplainedMember>& members,
                                          bool compact) {
    std::vector<const ExplainedMember*> chosen;
    for (const ExplainedMember& member : members) {
        if (!compact || differsFromFile(member)) {
            chosen.push_back(&member);
        }
    }
    return chosen;
}

Json::Value noteJson(const MemberNote& note) {
    Json::Value json(Json::objectValue);
    json["finding"] = findingTypeName(note.type);
    json["text"] = note.text;
    if (note.line > 0) {
        json["line"] = note.line;
        json["column"] = note.column;
    }
    return json;
}

Json::Value memberJson(const ExplainedMember& member) {
    Json::Value json(Json::objectValue);
    json["pointer"] = pointerText(member.path);
    json["origin"] = originName(member.origin);
    if (member.held()) {
        json["value"] = member.value;
    }
    if (member.line > 0) {
        json["line"] = member.line;
        json["column"] = member.column;
    }
    if (!member.held() || member.origin == Origin::Changed || member.unread) {
        json["from"] = member.from;
    }
    if (member.origin == Origin::HiddenState) {
        json["kept"] = member.kept;
        json["hidden"] = member.hidden;
    }
    if (!member.notes.empty()) {
        json["notes"] = Json::Value(Json::arrayValue);
        for (const MemberNote& note : member.notes) {
            json["notes"].append(noteJson(note));
        }
    }
    return json;
}

}  // namespace

std::string explanationText(const std::vector<ExplainedMember>& members, bool compact) {
    const std::vector<const ExplainedMember*> chosen = shown(members, compact);
    if (chosen.empty()) {
        return compact ? "every value the device holds is as the file has it\n" : std::string();
    }
    size_t pointerWidth = 0;
    size_t valueWidth = 0;
    for (const ExplainedMember* member : chosen) {
        pointerWidth = std::max(pointerWidth, pointerCell(*member).size());
        valueWidth = std::max(valueWidth, valueCell(*member).size());
    }
    pointerWidth = std::min(pointerWidth, kWidestPointerColumn);
    valueWidth = std::min(valueWidth, kWidestValueColumn);
    std::string text;
    for (const ExplainedMember* member : chosen) {
        text += safeLine(padded(pointerCell(*member), pointerWidth) + "  " +
                         padded(valueCell(*member), valueWidth) + "  " + originText(*member)) +
                '\n';
        for (const MemberNote& note : member->notes) {
            const std::string place = placeWords(note.line, note.column);
            text +=
                safeLine("    " + (place.empty() ? note.text : place + ": " + note.text)) + '\n';
        }
    }
    return text;
}

Json::Value explanationJson(const std::vector<ExplainedMember>& members, bool compact) {
    Json::Value json(Json::arrayValue);
    for (const ExplainedMember* member : shown(members, compact)) {
        json.append(memberJson(*member));
    }
    return json;
}

int explainFile(const Kind& kind, const std::string& file, bool compact, Printer& printer) {
    const UnderstoodFile understood = understandFile(kind, file, true);
    printer.libraryLog(understood.outcome.log);
    if (understood.outcome.status == Outcome::Status::Unusable) {
        printer.problem(unusableProblem(file, understood.outcome));
        return exitCodeOf(Outcome::Status::Unusable);
    }
    const std::vector<ExplainedMember> members = explainMembers(
        kind, understood.loaded.document, understood.loaded.source.get(), understood.outcome);
    printer.result(explanationJson(members, compact), explanationText(members, compact));
    return 0;
}

}  // namespace zelct
