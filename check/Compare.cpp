// The comparison of a document with what the library understood from it, and the questions
// that find out whether a class reads a node.
#include "Check.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace zelct {

namespace {

bool isEmptyValue(const Json::Value& value) {
    return value.isNull() || ((value.isArray() || value.isObject()) && value.empty());
}

// What the library writes when it holds nothing is no value at all; it stands for an empty
// document of the kind's own shape.
Json::Value understoodAsShaped(const Json::Value& understood, const Json::Value& original) {
    if (understood.isNull() && (original.isArray() || original.isObject())) {
        return Json::Value(original.type());
    }
    return understood;
}

// How alike two elements are: the number of members they share with equal values.
size_t likeness(const Json::Value& a, const Json::Value& b) {
    if (!a.isObject() || !b.isObject()) {
        return 0;
    }
    size_t shared = 0;
    for (auto it = a.begin(); it != a.end(); ++it) {
        const std::string name = it.name();
        const Json::Value* other = b.find(name.data(), name.data() + name.size());
        if (other != nullptr && sameValue(*it, *other)) {
            ++shared;
        }
    }
    return shared;
}

// Whether two objects differ in one member at most.
bool nearlyEqual(const Json::Value& a, const Json::Value& b) {
    if (!a.isObject() || !b.isObject()) {
        return false;
    }
    int differences = 0;
    for (auto it = a.begin(); it != a.end() && differences <= 1; ++it) {
        const std::string name = it.name();
        const Json::Value* other = b.find(name.data(), name.data() + name.size());
        if (other == nullptr || !sameValue(*it, *other)) {
            ++differences;
        }
    }
    for (auto it = b.begin(); it != b.end() && differences <= 1; ++it) {
        const std::string name = it.name();
        if (a.find(name.data(), name.data() + name.size()) == nullptr) {
            ++differences;
        }
    }
    return differences <= 1;
}

// Beyond this many candidate pairs, elements that differ simply pair by position.
constexpr size_t kPairingBudget = 250000;

// Pairs the elements of an original array with those of the understood one. Equal elements
// pair first, by position and then anywhere; then the most alike pairs, a pair in the same
// position winning a tie; what is left pairs by position. Only by position for long arrays.
class ElementPairing {
public:
    ElementPairing(const Json::Value& original, const Json::Value& understood)
        : original_(original),
          understood_(understood),
          partner_(original.size(), -1),
          taken_(understood.size(), false) {
        pairInPlace();
        if (static_cast<size_t>(original.size()) * understood.size() <= kPairingBudget) {
            pairEqualElsewhere();
            pairMostAlike();
        }
        pairByPosition();
    }

    // For each original element, the index of the understood element it pairs with, or -1.
    const std::vector<int>& partners() const { return partner_; }

private:
    struct Candidate {
        size_t alike;
        bool samePosition;
        Json::ArrayIndex i;
        Json::ArrayIndex j;
    };

    void pair(Json::ArrayIndex i, Json::ArrayIndex j) {
        partner_[i] = static_cast<int>(j);
        taken_[j] = true;
    }

    // An element equal to the one in its place, or an object that differs from it by one
    // member at most (a value the library changed, a member it dropped or added), is that
    // element, whatever a search across the list would find; rows of a long table mostly pair
    // here, cheaply.
    void pairInPlace() {
        for (Json::ArrayIndex i = 0; i < original_.size() && i < understood_.size(); ++i) {
            const Json::Value& a = original_[i];
            const Json::Value& b = understood_[i];
            if (a.isObject() && b.isObject() ? nearlyEqual(a, b) : sameValue(a, b)) {
                pair(i, i);
            }
        }
    }

    void pairEqualElsewhere() {
        for (Json::ArrayIndex i = 0; i < original_.size(); ++i) {
            for (Json::ArrayIndex j = 0; partner_[i] < 0 && j < understood_.size(); ++j) {
                if (!taken_[j] && sameValue(original_[i], understood_[j])) {
                    pair(i, j);
                }
            }
        }
    }

    void pairMostAlike() {
        std::vector<Candidate> candidates;
        for (Json::ArrayIndex i = 0; i < original_.size(); ++i) {
            for (Json::ArrayIndex j = 0; partner_[i] < 0 && j < understood_.size(); ++j) {
                const size_t alike = taken_[j] ? 0 : likeness(original_[i], understood_[j]);
                if (alike > 0) {
                    candidates.push_back({alike, i == j, i, j});
                }
            }
        }
        std::stable_sort(
            candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
                return a.alike != b.alike ? a.alike > b.alike : a.samePosition && !b.samePosition;
            });
        for (const Candidate& candidate : candidates) {
            if (partner_[candidate.i] < 0 && !taken_[candidate.j]) {
                pair(candidate.i, candidate.j);
            }
        }
    }

    void pairByPosition() {
        for (Json::ArrayIndex i = 0; i < original_.size() && i < understood_.size(); ++i) {
            if (partner_[i] < 0 && !taken_[i]) {
                pair(i, i);
            }
        }
    }

    const Json::Value& original_;
    const Json::Value& understood_;
    std::vector<int> partner_;
    std::vector<bool> taken_;
};

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

// How a node is changed to see whether the reading notices.
enum class Perturbation { Probe, Remove, Other };

// A node whose reading is in question, and the finding that waits for the answer.
struct Question {
    enum class Kind {
        Read,   // does the class read it? (findings Changed/NotWrittenBack or Dropped)
        Empty,  // does removing an empty member change the reading? (no finding if not)
    };
    Kind kind;
    JsonPath path;
    const Json::Value* original;
    size_t finding;      // index of the waiting finding
    bool answer;         // read, or (Empty) noticed when removed
    bool probed = true;  // Empty, not noticed when removed: noticed when replaced by a probe
};

// A finding until it is known to be kept: the values it quotes stay where they are, in the
// document and in what was understood, so that the findings past the kept ones never cost a
// copy of what they quote.
struct Pending {
    Finding::Type type;
    JsonPath path;
    const Json::Value* understood;  // for Changed and Added
    bool ignorable = false;         // an empty member whose removal the reading never notices
};

// Findings wait for their answers in batches of this many, so that what a comparison holds
// beside the document stays the same however many findings it has.
constexpr size_t kPendingBatch = 65536;

// Where questions are answered: the whole document, or one element of a top-level array read
// alone as a list of one, with its own baseline. Lists whose elements read alone as they read
// among the others (each element appended on its own) are answered element by element, so a
// question costs the reading of its element, not of the whole document.
struct Scope {
    bool local = false;
    Json::ArrayIndex element = 0;  // of a local scope
    Reading alone;                 // the reading of the element alone, for a local scope
    bool assumed = false;          // `alone` taken from the whole reading, not yet read
    bool notLocal = false;         // the element turned out to read otherwise alone
    const Reading* baseline = nullptr;
    size_t nodes = 0;
};

class Comparison {
public:
    Comparison(const Kind& kind, Json::Value& document, const Reading& baseline, size_t exactWork,
               KeptFindings& kept)
        : kind_(kind),
          document_(document),
          baseline_(baseline),
          empty_(understoodAsShaped(Json::Value(), document)),
          understood_(baseline.understood.isNull() ? empty_ : baseline.understood),
          kept_(kept),
          room_(kept.room()),
          exactWork_(exactWork) {}

    void run() {
        JsonPath path;
        walk(document_, understood_, path);
        flush();
        takeKept();
    }

private:
    void walk(const Json::Value& original, const Json::Value& understood, JsonPath& path) {
        if (sameValue(original, understood)) {
            return;
        }
        if (original.isObject() && understood.isObject()) {
            walkMembers(original, understood, path);
        } else if (original.isArray() && understood.isArray()) {
            walkElements(original, understood, path);
        } else {
            ask(Question::Kind::Read, original, path, Finding::Type::Changed, &understood);
        }
    }

    // jsoncpp keeps an object's members ordered by name, byte by byte, so both objects are
    // walked side by side in that order without looking names up.
    void walkMembers(const Json::Value& original, const Json::Value& understood, JsonPath& path) {
        auto inOriginal = original.begin();
        auto inUnderstood = understood.begin();
        while (inOriginal != original.end() || inUnderstood != understood.end()) {
            const bool originalLeft = inOriginal != original.end();
            const bool understoodLeft = inUnderstood != understood.end();
            const std::string originalName = originalLeft ? inOriginal.name() : std::string();
            const std::string understoodName = understoodLeft ? inUnderstood.name() : std::string();
            const bool takeOriginal =
                originalLeft && (!understoodLeft || originalName <= understoodName);
            const bool takeUnderstood =
                understoodLeft && (!originalLeft || understoodName <= originalName);
            path.push_back(PathStep::member(takeOriginal ? originalName : understoodName));
            visit(takeOriginal ? &*inOriginal : nullptr, takeUnderstood ? &*inUnderstood : nullptr,
                  path);
            path.pop_back();
            if (takeOriginal) {
                ++inOriginal;
            }
            if (takeUnderstood) {
                ++inUnderstood;
            }
        }
    }

    // Elements are paired by position, except where the library reorders (a set written in
    // its own order): an element equal to one elsewhere pairs with it, and an element that
    // differs pairs with the one that shares most of its members.
    void walkElements(const Json::Value& original, const Json::Value& understood, JsonPath& path) {
        const std::vector<int> partner = ElementPairing(original, understood).partners();
        std::vector<bool> paired(understood.size(), false);
        for (Json::ArrayIndex i = 0; i < original.size(); ++i) {
            path.push_back(PathStep::element(i));
            if (partner[i] >= 0) {
                paired[static_cast<size_t>(partner[i])] = true;
                walk(original[i], understood[static_cast<Json::ArrayIndex>(partner[i])], path);
            } else {
                missing(original[i], path);
            }
            path.pop_back();
        }
        for (Json::ArrayIndex j = 0; j < understood.size(); ++j) {
            if (!paired[j]) {
                path.push_back(PathStep::element(j));
                addPending(Finding::Type::Added, path, &understood[j]);
                path.pop_back();
            }
        }
    }

    void visit(const Json::Value* original, const Json::Value* understood, JsonPath& path) {
        if (original != nullptr && understood != nullptr) {
            walk(*original, *understood, path);
        } else if (original != nullptr) {
            missing(*original, path);
        } else {
            addPending(Finding::Type::Added, path, understood);
        }
    }

    // An empty member that the class does not write back says nothing the reading would miss,
    // as long as the reading is the same without it; else it is read or dropped.
    void missing(const Json::Value& original, const JsonPath& path) {
        ask(isEmptyValue(original) ? Question::Kind::Empty : Question::Kind::Read, original, path,
            Finding::Type::NotWrittenBack, nullptr);
    }

    size_t addPending(Finding::Type type, const JsonPath& path, const Json::Value* understood) {
        if (pending_.size() >= kPendingBatch) {
            flush();
        }
        pending_.push_back({type, path, understood});
        return pending_.size() - 1;
    }

    void ask(Question::Kind kind, const Json::Value& original, const JsonPath& path,
             Finding::Type ifRead, const Json::Value* understood) {
        const size_t finding = addPending(ifRead, path, understood);
        questions_.push_back({kind, path, &original, finding, false});
    }

    // Answers the questions of the waiting findings, then keeps or counts those findings in
    // the order they were found.
    void flush() {
        answerAll();
        for (Pending& pending : pending_) {
            if (pending.ignorable ||
                (kept_.noFinding != nullptr && kept_.noFinding(pending.type, pending.path))) {
                continue;
            }
            if (taken_.size() < room_) {
                taken_.push_back(std::move(pending));
            } else {
                ++kept_.omitted;
            }
        }
        pending_.clear();
        questions_.clear();
    }

    // The kept findings with what they quote. The originals are moved out of the document,
    // which is not read again: a finding may quote most of a large file.
    void takeKept() {
        for (Pending& pending : taken_) {
            Finding finding{pending.type, std::move(pending.path), Json::Value(), Json::Value()};
            if (finding.type != Finding::Type::Added) {
                if (Json::Value* node = nodeAt(document_, finding.path)) {
                    finding.original.swapPayload(*node);
                }
            }
            if (finding.type == Finding::Type::Changed || finding.type == Finding::Type::Added) {
                finding.understood = *pending.understood;
            }
            kept_.findings.push_back(std::move(finding));
        }
        taken_.clear();
    }

    // ---- answers ----

    void answerAll() {
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

    bool readsAlone(Json::ArrayIndex index, const Json::Value& understood, Scope& scope) {
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
    bool answerInScope(Scope& scope, const std::vector<size_t>& items) {
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
    void answerProbed(Scope& scope, const std::vector<size_t>& items) {
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
    void answerGroup(Scope& scope, std::vector<size_t> items) {
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
    Json::Value copyOf(const Scope& scope) const {
        if (!scope.local) {
            return document_;
        }
        Json::Value list(Json::arrayValue);
        list.append(document_[scope.element]);
        return list;
    }

    JsonPath scopedPath(const Scope& scope, const JsonPath& path) const {
        JsonPath scoped = path;
        if (scope.local) {
            scoped[0] = PathStep::element(0);
        }
        return scoped;
    }

    // A fresh copy of the scope's document with the items' nodes perturbed. The nodes are
    // swapped out of the document while it is copied and then back, so a large node in
    // question (a long list under a member nothing reads) is never copied to be perturbed.
    bool perturbedCopy(const Scope& scope, const std::vector<size_t>& items, Perturbation how,
                       Json::Value& perturbed) {
        std::vector<Json::Value> values(items.size());
        std::vector<Json::Value*> nodes(items.size(), nullptr);
        bool changed = how == Perturbation::Remove;
        for (size_t k = 0; k < items.size(); ++k) {
            const Question& question = questions_[items[k]];
            if (how == Perturbation::Probe) {
                values[k] = probeValue();
            } else if (how == Perturbation::Other &&
                       !otherValueOfType(*question.original, values[k])) {
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

    bool notices(Scope& scope, const std::vector<size_t>& items, Perturbation how) {
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

    std::string patternOf(const Question& question) const {
        return (question.kind == Question::Kind::Read
                    ? std::string(jsonTypeText(*question.original))
                    : std::string("empty")) +
               " " + patternText(question.path);
    }

    // Past the budget of exact work, takes the answers that patterns give; true when no
    // question is left.
    bool answeredFromPatterns(std::vector<size_t>& items) {
        if (work_ > exactWork_) {
            items.erase(std::remove_if(items.begin(), items.end(),
                                       [&](size_t i) { return answerFromPattern(i); }),
                        items.end());
        }
        return items.empty();
    }

    bool answerFromPattern(size_t i) {
        const auto found = verdicts_.find(patternOf(questions_[i]));
        if (found == verdicts_.end() || found->second.seen < kTrustedAfter ||
            !found->second.agreed) {
            return false;
        }
        questions_[i].answer = found->second.answer;
        return true;
    }

    void record(size_t i, bool answer) {
        Question& question = questions_[i];
        question.answer = answer;
        Verdict& verdict = verdicts_[patternOf(question)];
        if (verdict.seen > 0 && answer != verdict.answer) {
            verdict.agreed = false;
        }
        verdict.answer = answer;
        ++verdict.seen;
    }

    void settle(const Question& question) {
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

    struct Verdict {
        int seen = 0;
        bool agreed = true;
        bool answer = false;
    };
    static constexpr int kTrustedAfter = 3;

    const Kind& kind_;
    Json::Value& document_;
    const Reading& baseline_;
    const Json::Value empty_;        // what an empty understanding stands for
    const Json::Value& understood_;  // the baseline's understanding, or empty_
    KeptFindings& kept_;
    size_t room_;                   // findings the caller still keeps
    std::vector<Pending> taken_;    // the kept ones, until the comparison ends
    std::vector<Pending> pending_;  // waiting for the answers to their questions
    std::vector<Question> questions_;
    std::map<std::string, Verdict> verdicts_;
    size_t exactWork_;  // nodes read again, all readings together
    size_t work_ = 0;
};

}  // namespace

std::vector<Finding> findDifferences(const Kind& kind, const Json::Value& document,
                                     const Reading& baseline, size_t exactWork) {
    Json::Value work = document;
    KeptFindings kept(std::numeric_limits<size_t>::max());
    findDifferencesTaking(kind, work, baseline, kept, exactWork);
    return std::move(kept.findings);
}

void findDifferencesTaking(const Kind& kind, Json::Value& document, const Reading& baseline,
                           KeptFindings& kept, size_t exactWork) {
    Comparison(kind, document, baseline, exactWork, kept).run();
}

}  // namespace zelct
