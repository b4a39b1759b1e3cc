// Whether a class reads a node, found by reading perturbed copies within a budget of work.
#include "CompareSteps.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace zelct {

namespace {

size_t nodeCount(const Json::Value& value) {
    size_t count = 1;
    for (auto it = value.begin(); it != value.end(); ++it) {
        count += nodeCount(*it);
    }
    return count;
}

// The path with every array index written as "*": /0/channels/3/name -> /*/channels/*/name.
std::string patternText(const JsonPath& path) {
    std::string text;
    for (const PathStep& step : path) {
        text += step.isIndex ? "/*" : "/" + pointerText({step}).substr(1);
    }
    return text;
}

}  // namespace

void Comparison::answerAll() {
    const Json::Value& understood = understood_;
    if (questions_.empty()) {
        return;
    }
    // Questions grouped by the top-level element they are under, when the elements read
    // alone as they do in the list; all others are answered on the whole document.
    std::map<Json::ArrayIndex, std::vector<size_t>> byElement;
    std::vector<size_t> whole;
    for (size_t i = 0; i < questions_.size(); ++i) {
        const JsonPath& path = questions_[i].path;
        if (document_.isArray() && !path.empty() && path[0].isIndex) {
            byElement[path[0].index].push_back(i);
        } else {
            whole.push_back(i);
        }
    }
    for (auto& element : byElement) {
        if (answeredFromPatterns(element.second)) {
            continue;  // nothing left that needs the element read alone
        }
        Scope scope;
        if (!readsAlone(element.first, understood, scope) ||
            !answerInScope(scope, element.second)) {
            whole.insert(whole.end(), element.second.begin(), element.second.end());
        }
    }
    if (!whole.empty()) {
        std::sort(whole.begin(), whole.end());
        Scope scope;
        scope.baseline = &baseline_;
        scope.nodes = nodeCount(document_);
        answerInScope(scope, whole);
    }
    for (const Question& question : questions_) {
        settle(question);
    }
}

bool Comparison::readsAlone(Json::ArrayIndex index, const Json::Value& understood, Scope& scope) {
    if (!understood.isArray() || index >= understood.size()) {
        return false;
    }
    scope.local = true;
    scope.element = index;
    scope.nodes = nodeCount(document_[index]) + 1;
    if (baseline_.log.empty()) {
        // What the element reads as in the list, taken for what it reads as alone until a
        // perturbed reading differs from it; only then is it read alone to be sure.
        scope.alone.understood = Json::Value(Json::arrayValue);
        scope.alone.understood.append(understood[index]);
        scope.baseline = &scope.alone;
        scope.assumed = true;
        return true;
    }
    Json::Value copy = copyOf(scope);
    scope.alone = readInPlace(kind_, copy);
    scope.baseline = &scope.alone;
    work_ += scope.nodes;
    const Json::Value& alone = scope.alone.understood;
    return !scope.alone.failed && alone.isArray() && alone.size() == 1 &&
           sameValue(alone[0], understood[index]);
}

// False when the scope's element turned out not to read alone as in the list: its
// questions are then asked of the whole document.
bool Comparison::answerInScope(Scope& scope, const std::vector<size_t>& items) {
    std::vector<size_t> reads;
    std::vector<size_t> empties;
    for (size_t i : items) {
        (questions_[i].kind == Question::Kind::Read ? reads : empties).push_back(i);
    }
    answerGroup(scope, reads);
    answerGroup(scope, empties);
    // An empty member whose removal goes unnoticed may still be one the class reads (an
    // empty list read as none, as when it is absent), or one it never reads at all, which
    // the device drops like any other.
    std::vector<size_t> unnoticed;
    for (size_t i : empties) {
        if (!questions_[i].answer) {
            unnoticed.push_back(i);
        }
    }
    answerProbed(scope, unnoticed);
    return !scope.notLocal;
}

// Probes the group at once and splits it only when the reading notices. Past the budget of
// exact work, the rest are taken for read, which costs nothing and reports nothing.
void Comparison::answerProbed(Scope& scope, const std::vector<size_t>& items) {
    if (items.empty() || scope.notLocal) {
        return;
    }
    const bool noticed = work_ > exactWork_ || notices(scope, items, Perturbation::Probe);
    if (scope.notLocal) {
        return;
    }
    if (!noticed || items.size() == 1 || work_ > exactWork_) {
        for (size_t i : items) {
            questions_[i].probed = noticed;
        }
        return;
    }
    const auto middle = items.begin() + static_cast<std::ptrdiff_t>(items.size() / 2);
    answerProbed(scope, std::vector<size_t>(items.begin(), middle));
    answerProbed(scope, std::vector<size_t>(middle, items.end()));
}

// Perturbs the whole group at once: when the reading does not notice, no node of it
// matters; when it does, each half is asked again, so only groups holding a node that
// matters are split. Past the budget of exact work, questions whose pattern (the path
// without its indices) has had the same answer a few times take that answer.
void Comparison::answerGroup(Scope& scope, std::vector<size_t> items) {
    if (scope.notLocal || answeredFromPatterns(items)) {
        return;
    }
    const bool noticed = questions_[items[0]].kind == Question::Kind::Empty
                             ? notices(scope, items, Perturbation::Remove)
                             : notices(scope, items, Perturbation::Probe) ||
                                   notices(scope, items, Perturbation::Remove) ||
                                   notices(scope, items, Perturbation::Other);
    if (scope.notLocal) {
        // The element reads otherwise alone: what was noticed says nothing about these
        // nodes, and recorded it would teach the patterns a wrong answer.
        return;
    }
    if (!noticed || items.size() == 1) {
        for (size_t i : items) {
            record(i, noticed);
        }
        return;
    }
    const auto middle = items.begin() + static_cast<std::ptrdiff_t>(items.size() / 2);
    answerGroup(scope, std::vector<size_t>(items.begin(), middle));
    answerGroup(scope, std::vector<size_t>(middle, items.end()));
}

// The document a scope's questions perturb, fresh: the element alone as a list of one, or
// the whole document.
Json::Value Comparison::copyOf(const Scope& scope) const {
    if (!scope.local) {
        return document_;
    }
    Json::Value list(Json::arrayValue);
    list.append(document_[scope.element]);
    return list;
}

JsonPath Comparison::scopedPath(const Scope& scope, const JsonPath& path) const {
    JsonPath scoped = path;
    if (scope.local) {
        scoped[0] = PathStep::element(0);
    }
    return scoped;
}

// A fresh copy of the scope's document with the items' nodes perturbed. The nodes are
// swapped out of the document while it is copied and then back, so a large node in
// question (a long list under a member nothing reads) is never copied to be perturbed.
bool Comparison::perturbedCopy(const Scope& scope, const std::vector<size_t>& items,
                               Perturbation how, Json::Value& perturbed) {
    std::vector<Json::Value> values(items.size());
    std::vector<Json::Value*> nodes(items.size(), nullptr);
    bool changed = how == Perturbation::Remove;
    for (size_t k = 0; k < items.size(); ++k) {
        const Question& question = questions_[items[k]];
        if (how == Perturbation::Probe) {
            values[k] = probeValue();
        } else if (how == Perturbation::Other && !otherValueOfType(*question.original, values[k])) {
            continue;
        }
        nodes[k] = nodeAt(document_, question.path);
        if (nodes[k] != nullptr) {
            nodes[k]->swap(values[k]);
            changed = true;
        }
    }
    if (changed) {
        perturbed = copyOf(scope);
    }
    for (size_t k = 0; k < items.size(); ++k) {
        if (nodes[k] != nullptr) {
            nodes[k]->swap(values[k]);
        }
    }
    if (how == Perturbation::Remove) {
        // From the last node back, so that cutting off the last elements of an array
        // leaves the indices of the earlier ones as they are.
        for (auto it = items.rbegin(); it != items.rend(); ++it) {
            removeAt(perturbed, scopedPath(scope, questions_[*it].path));
        }
    }
    return changed;
}

bool Comparison::notices(Scope& scope, const std::vector<size_t>& items, Perturbation how) {
    Json::Value perturbed;
    if (!perturbedCopy(scope, items, how, perturbed)) {
        return false;
    }
    work_ += scope.nodes;
    if (sameReading(readInPlace(kind_, perturbed), *scope.baseline)) {
        return false;
    }
    if (scope.assumed) {
        scope.assumed = false;
        Json::Value copy = copyOf(scope);
        work_ += scope.nodes;
        scope.notLocal = !sameReading(readInPlace(kind_, copy), scope.alone);
    }
    return true;
}

std::string Comparison::patternOf(const Question& question) const {
    return (question.kind == Question::Kind::Read ? std::string(jsonTypeText(*question.original))
                                                  : std::string("empty")) +
           " " + patternText(question.path);
}

// Past the budget of exact work, takes the answers that patterns give; true when no
// question is left.
bool Comparison::answeredFromPatterns(std::vector<size_t>& items) {
    if (work_ > exactWork_) {
        items.erase(std::remove_if(items.begin(), items.end(),
                                   [&](size_t i) { return answerFromPattern(i); }),
                    items.end());
    }
    return items.empty();
}

bool Comparison::answerFromPattern(size_t i) {
    const auto found = verdicts_.find(patternOf(questions_[i]));
    if (found == verdicts_.end() || found->second.seen < kTrustedAfter || !found->second.agreed) {
        return false;
    }
    questions_[i].answer = found->second.answer;
    return true;
}

void Comparison::record(size_t i, bool answer) {
    Question& question = questions_[i];
    question.answer = answer;
    Verdict& verdict = verdicts_[patternOf(question)];
    if (verdict.seen > 0 && answer != verdict.answer) {
        verdict.agreed = false;
    }
    verdict.answer = answer;
    ++verdict.seen;
}

void Comparison::settle(const Question& question) {
    Pending& finding = pending_[question.finding];
    if (question.kind == Question::Kind::Empty) {
        // Removing it changes the reading, so it is read and not written back; else it
        // says nothing the reading would miss when the class reads it, and is dropped
        // when it does not.
        if (!question.answer && !question.probed) {
            finding.type = Finding::Type::Dropped;
            finding.understood = nullptr;
            return;
        }
        finding.ignorable = !question.answer;
        return;
    }
    if (!question.answer) {
        finding.type = Finding::Type::Dropped;
        finding.understood = nullptr;
    }
}

}  // namespace zelct
