// What changes on the device between two documents: what it holds from each, compared.
#include "Diff.h"

#include <algorithm>
#include <map>
#include <utility>

#include "DaifType.h"
#include "HiddenState.h"
#include "SafeText.h"
#include "Understood.h"

namespace zelct {

namespace {

using KeptTexts = std::map<std::string, const HiddenStateRule*>;

// The pointers of the members whose text decides what their record keeps apart from it.
void addKeptTexts(const Kind& kind, const Json::Value& held, KeptTexts& texts) {
    forEachRecord(kind, held,
                  [&texts](const Kind& record, const Json::Value& node, const JsonPath& path) {
                      if (!node.isObject()) {
                          return;
                      }
                      for (const HiddenStateRule& rule : hiddenStateRules()) {
                          if (std::string(record.name) == rule.kind && node.isMember(rule.member)) {
                              JsonPath where = path;
                              where.push_back(PathStep::member(rule.member));
                              texts[pointerText(where)] = &rule;
                          }
                      }
                  });
}

// The interface kind a channel keeps from its text: the one the text names in any letter
// case, or for a text that names none the kind the rule says stays.
Json::Value keptFrom(const HiddenStateRule& rule, const Json::Value& text) {
    Json::Value kept;
    if (rule.hides(text, kept)) {
        return kept;
    }
    DaifType named;
    named.setNameAndResolve(text.asString());
    return named.getValue();
}

class HeldComparison {
public:
    HeldComparison(KeptTexts texts, std::vector<Change>& changes)
        : texts_(std::move(texts)), changes_(changes) {}

    void compare(const Json::Value* before, const Json::Value* after, JsonPath& path) {
        if (before == nullptr || after == nullptr) {
            add(before == nullptr ? Change::Type::Added : Change::Type::Removed, before, after,
                path);
        } else if (before->isObject() && after->isObject()) {
            members(*before, *after, path);
        } else if (before->isArray() && after->isArray()) {
            elements(*before, *after, path);
        } else if (before->isString() && after->isString() && texts_.count(pointerText(path))) {
            keptTexts(*before, *after, path);
        } else if (!sameValue(*before, *after)) {
            add(Change::Type::Changed, before, after, path);
        }
    }

private:
    static const Json::Value* memberOf(const Json::Value& object, const std::string& name) {
        return object.find(name.data(), name.data() + name.size());
    }

    // jsoncpp keeps members ordered by name, so both objects are walked side by side.
    void members(const Json::Value& before, const Json::Value& after, JsonPath& path) {
        std::vector<std::string> names = before.getMemberNames();
        const std::vector<std::string> added = after.getMemberNames();
        names.insert(names.end(), added.begin(), added.end());
        std::sort(names.begin(), names.end());
        names.erase(std::unique(names.begin(), names.end()), names.end());
        for (const std::string& name : names) {
            path.push_back(PathStep::member(name));
            compare(memberOf(before, name), memberOf(after, name), path);
            path.pop_back();
        }
    }

    // By position: the device holds a list in the order it reads or sorts it.
    void elements(const Json::Value& before, const Json::Value& after, JsonPath& path) {
        const Json::ArrayIndex count = std::max(before.size(), after.size());
        for (Json::ArrayIndex i = 0; i < count; ++i) {
            path.push_back(PathStep::element(i));
            compare(i < before.size() ? &before[i] : nullptr,
                    i < after.size() ? &after[i] : nullptr, path);
            path.pop_back();
        }
    }

    void keptTexts(const Json::Value& before, const Json::Value& after, const JsonPath& path) {
        const HiddenStateRule& rule = *texts_.at(pointerText(path));
        const Json::Value beforeKept = keptFrom(rule, before);
        const Json::Value afterKept = keptFrom(rule, after);
        if (!sameValue(beforeKept, afterKept)) {
            add(Change::Type::Changed, &before, &after, path);
            changes_.back().beforeKept = beforeKept;
            changes_.back().afterKept = afterKept;
        }
    }

    void add(Change::Type type, const Json::Value* before, const Json::Value* after,
             const JsonPath& path) {
        Change change;
        change.type = type;
        change.path = path;
        change.before = before != nullptr ? *before : Json::Value();
        change.after = after != nullptr ? *after : Json::Value();
        changes_.push_back(std::move(change));
    }

    KeptTexts texts_;
    std::vector<Change>& changes_;
};

std::string heldText(const Json::Value& value, const Json::Value& kept, bool held) {
    if (!held) {
        return "(absent)";
    }
    std::string text = shownValue(value);
    if (!kept.isNull()) {
        text += std::string(" (kind ") + DaifType::nameOf(kept.asInt()) + ", " +
                std::to_string(kept.asInt()) + ")";
    }
    return text;
}

std::string changesText(const std::string& newFile, const std::vector<Change>& changes) {
    std::string text;
    for (const Change& change : changes) {
        text +=
            safeLine(placeText(newFile, change.line, change.column) + ": " + changeText(change)) +
            '\n';
    }
    return text;
}

// The file as the device understands it, after its log lines and, when it cannot be used, the
// line check gives for it.
UnderstoodFile understoodAndSaid(const Kind& kind, const std::string& file, Printer& printer) {
    UnderstoodFile understood = understandFile(kind, file, false);
    printer.libraryLog(understood.outcome.log);
    if (understood.outcome.status == Outcome::Status::Unusable) {
        printer.problem(unusableProblem(file, understood.outcome));
    }
    return understood;
}

}  // namespace

const char* changeTypeName(Change::Type type) {
    switch (type) {
        case Change::Type::Changed:
            return "changed";
        case Change::Type::Added:
            return "added";
        case Change::Type::Removed:
            return "removed";
    }
    return "";
}

std::vector<Change> heldChanges(const Kind& kind, const Json::Value& before,
                                const Json::Value& after) {
    KeptTexts texts;
    addKeptTexts(kind, before, texts);
    addKeptTexts(kind, after, texts);
    std::vector<Change> changes;
    JsonPath path;
    HeldComparison(std::move(texts), changes).compare(&before, &after, path);
    return changes;
}

void placeChanges(std::vector<Change>& changes, const Json::Value& document,
                  const Json::Value& held, const SourceText* source) {
    for (Change& change : changes) {
        const SourceNode node = sourceNode(document, held, change.path);
        const Position place = placeOf(source, *node.node, node.member);
        change.line = place.line;
        change.column = place.column;
    }
}

std::string changeText(const Change& change) {
    const std::string where = change.path.empty() ? "" : pointerText(change.path) + ": ";
    return where + heldText(change.before, change.beforeKept, change.type != Change::Type::Added) +
           " -> " + heldText(change.after, change.afterKept, change.type != Change::Type::Removed);
}

Json::Value changesJson(const Kind& kind, const std::string& oldFile, const std::string& newFile,
                        const std::vector<Change>& changes) {
    Json::Value json(Json::objectValue);
    json["kind"] = kind.name;
    json["old"] = oldFile;
    json["new"] = newFile;
    json["exit"] = changes.empty() ? 0 : 1;
    json["changes"] = Json::Value(Json::arrayValue);
    for (const Change& change : changes) {
        Json::Value item(Json::objectValue);
        item["pointer"] = pointerText(change.path);
        item["change"] = changeTypeName(change.type);
        if (change.type != Change::Type::Added) {
            item["old"] = change.before;
        }
        if (change.type != Change::Type::Removed) {
            item["new"] = change.after;
        }
        if (change.line > 0) {
            item["line"] = change.line;
            item["column"] = change.column;
        }
        if (!change.beforeKept.isNull()) {
            item["old-kept"] = change.beforeKept;
            item["new-kept"] = change.afterKept;
        }
        item["text"] = changeText(change);
        json["changes"].append(item);
    }
    return json;
}

int diffFiles(const Kind& kind, const std::string& oldFile, const std::string& newFile,
              Printer& printer) {
    const UnderstoodFile before = understoodAndSaid(kind, oldFile, printer);
    const UnderstoodFile after = understoodAndSaid(kind, newFile, printer);
    if (before.outcome.status == Outcome::Status::Unusable ||
        after.outcome.status == Outcome::Status::Unusable) {
        return exitCodeOf(Outcome::Status::Unusable);
    }
    const Json::Value held = heldDocument(kind, after.outcome);
    std::vector<Change> changes = heldChanges(kind, heldDocument(kind, before.outcome), held);
    placeChanges(changes, after.loaded.document, held, after.loaded.source.get());
    printer.result(changesJson(kind, oldFile, newFile, changes), changesText(newFile, changes));
    return changes.empty() ? 0 : 1;
}

}  // namespace zelct
