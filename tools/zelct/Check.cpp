#include "Check.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <new>
#include <set>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "DaifType.h"
#include "FileMgr.h"
#include "HiddenState.h"
#include "ReadingScan.h"

namespace zelct {

namespace {

// Longer objects and arrays are summarised in a finding line; --json gives them whole.
constexpr size_t kLongestQuotedContainer = 72;

std::string quoted(const Json::Value& value) {
    const bool container = value.isObject() || value.isArray();
    // Each element takes a character and a comma at least, so a container this long is
    // summarised without writing out its text, which may be most of a large file.
    std::string text = container && value.size() > kLongestQuotedContainer / 2 ? std::string()
                                                                               : compactJson(value);
    if (!container || (!text.empty() && text.size() <= kLongestQuotedContainer)) {
        return text;
    }
    const std::string count = std::to_string(value.size());
    const char* plural = value.size() == 1 ? "" : "s";
    return value.isObject() ? "{...} (" + count + " member" + plural + ")"
                            : "[...] (" + count + " element" + plural + ")";
}

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

// The children of a node, for the search of a rejected one. Their addresses stay valid while
// the node gains or loses no child.
struct Children {
    std::vector<Json::Value*> values;
    std::vector<std::string> names;  // for an object
};

Children childrenOf(Json::Value& node) {
    Children children;
    if (node.isObject()) {
        children.names = node.getMemberNames();
        for (const std::string& name : children.names) {
            children.values.push_back(&node[name]);
        }
    } else if (node.isArray()) {
        for (Json::ArrayIndex i = 0; i < node.size(); ++i) {
            children.values.push_back(&node[i]);
        }
    }
    return children;
}

PathStep stepTo(const Children& children, size_t i) {
    return children.names.empty() ? PathStep::element(static_cast<Json::ArrayIndex>(i))
                                  : PathStep::member(children.names[i]);
}

// Whether the reading succeeds with the children from `first` on set to null. They are
// swapped out and back, so the document is never copied for a question but by the reading.
bool readsWithNullsFrom(const Kind& kind, const Json::Value& work, const Children& children,
                        size_t first) {
    std::vector<Json::Value> saved(children.values.size() - first);
    for (size_t i = first; i < children.values.size(); ++i) {
        children.values[i]->swap(saved[i - first]);
    }
    const bool reads = !readAs(kind, work).failed;
    for (size_t i = first; i < children.values.size(); ++i) {
        children.values[i]->swap(saved[i - first]);
    }
    return reads;
}

const char* fileMgrMeaning(int code) {
    switch (code) {
        case FileMgr::kErrOpenRead:
            return "the file cannot be opened or is refused";
        case FileMgr::kErrParse:
            return "not valid JSON";
        default:
            return "unexpected code";
    }
}

// FileMgr only says that it refused the file; opening it the same way tells why.
std::string loadFailureCause(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return std::strerror(errno);
    }
    std::string cause = fileMgrMeaning(FileMgr::kErrOpenRead);
    struct stat info {};
    if (::fstat(fd, &info) == 0) {
        if (S_ISDIR(info.st_mode)) {
            cause = "a directory, not a regular file";
        } else if (!S_ISREG(info.st_mode)) {
            cause = "not a regular file";
        } else if (info.st_size > FileMgr::kMaxFileSize) {
            cause = "larger than 100 MiB";
        } else {
            // A regular file of a size it takes: the store counted the values in its text.
            cause = "more than " + std::to_string(FileMgr::kMaxValues) +
                    " JSON values, the most the device loads";
        }
    }
    ::close(fd);
    return cause;
}

// A parse failure quotes jsoncpp's first message, as FileMgr logged it between quotes: "* Line
// 2, Column 14\n  Syntax error: ..." (the position is the outcome's own), or a bare text such
// as "Exceeded stackLimit in readValue()." for nesting past the parser's limit. The message
// may hold quotes of its own ("Missing '}' or object member name"). A file with a NUL byte
// is parsed only up to it, which is why a document whole on disk can fail: that is said too.
void describeParseError(Outcome& failure, const SourceText* source) {
    static const std::string logged = "ERR::Error: '";
    static const std::string placed = "* Line ";
    static const std::string indent = "\n  ";
    for (const LogLine& line : failure.log) {
        if (line.text.compare(0, logged.size(), logged) != 0) {
            continue;
        }
        std::string message = line.text.substr(logged.size());
        if (message.compare(0, placed.size(), placed) == 0) {
            const size_t start = message.find(indent);
            if (start == std::string::npos) {
                continue;
            }
            message = message.substr(start + indent.size());
        }
        if (!message.empty() && message.back() == '\'') {
            message.pop_back();
        }
        message = message.substr(0, message.find('\n'));
        failure.problem = "not valid JSON: " + message;
        if (source != nullptr && source->deviceLength < source->bytes.size()) {
            const Position nul = source->lines.at(source->deviceLength);
            failure.problem += "; the device loads the file only up to the NUL byte at " +
                               std::to_string(nul.line) + ":" + std::to_string(nul.column);
        }
        failure.problem += " (FileMgr code " + std::to_string(failure.fileMgrCode) + ")";
        return;
    }
}

// FileMgr takes whatever its parser throws for a malformed text, running out of memory
// included; its log line then quotes std::bad_alloc's own text.
bool parserRanOutOfMemory(const std::vector<LogLine>& log) {
    static const std::string logged = std::string("ERR::Error: '") + std::bad_alloc().what() + "'";
    return std::any_of(log.begin(), log.end(),
                       [](const LogLine& line) { return line.text == logged; });
}

Outcome unusable(std::string problem) {
    Outcome outcome;
    outcome.status = Outcome::Status::Unusable;
    outcome.problem = std::move(problem);
    return outcome;
}

// A JSON text cut out of the file, as the device's parser reads it; null when it is none.
Json::Value parsedSlice(const std::string& bytes, size_t begin, size_t end) {
    Json::Value value;
    if (begin >= end || end > bytes.size()) {
        return value;
    }
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    std::string errors;
    if (!reader->parse(bytes.data() + begin, bytes.data() + end, &value, &errors)) {
        return Json::Value();
    }
    return value;
}

// What the device's writer makes of a string: jsoncpp's styled text without its line break.
std::string writtenBack(const Json::Value& text) {
    std::string written = text.toStyledString();
    while (!written.empty() && written.back() == '\n') {
        written.pop_back();
    }
    return written;
}

// Whether a text found at the path is the member's name rather than its value.
bool isNameOf(const JsonPath& path, const Json::Value& text) {
    return !path.empty() && !path.back().isIndex && text.isString() &&
           path.back().key == text.asString();
}

// The finding each reading trap is reported as.
struct TrapFinding {
    ReadingTrap::Type trap;
    Finding::Type finding;
};

// clang-format off
constexpr TrapFinding kTrapFindings[] = {
    {ReadingTrap::Type::DuplicateMember, Finding::Type::DuplicateMember},
    {ReadingTrap::Type::TrailingText,    Finding::Type::TrailingText},
    {ReadingTrap::Type::Comment,         Finding::Type::Comment},
    {ReadingTrap::Type::TrailingComma,   Finding::Type::TrailingComma},
    {ReadingTrap::Type::AfterNul,        Finding::Type::AfterNul},
    {ReadingTrap::Type::NotUtf8,         Finding::Type::NotUtf8},
    {ReadingTrap::Type::ControlInString, Finding::Type::ControlInString},
    {ReadingTrap::Type::ByteOrderMark,   Finding::Type::ByteOrderMark},
    {ReadingTrap::Type::NumberText,      Finding::Type::NumberText},
    {ReadingTrap::Type::NulInString,     Finding::Type::NulInString},
};
// clang-format on

Finding::Type findingTypeOf(ReadingTrap::Type type) {
    const auto row = std::find_if(std::begin(kTrapFindings), std::end(kTrapFindings),
                                  [type](const TrapFinding& r) { return r.trap == type; });
    return row != std::end(kTrapFindings) ? row->finding : Finding::Type::Comment;
}

Finding findingOfTrap(const ReadingTrap& trap, const SourceText& source) {
    Finding finding{findingTypeOf(trap.type), trap.path, Json::Value(), Json::Value()};
    switch (trap.type) {
        case ReadingTrap::Type::DuplicateMember:
            finding.original = parsedSlice(source.bytes, trap.valueStart, trap.valueEnd);
            break;
        case ReadingTrap::Type::AfterNul:
            finding.original = Json::Value(static_cast<Json::LargestUInt>(trap.count));
            break;
        case ReadingTrap::Type::NotUtf8:
        case ReadingTrap::Type::ControlInString:
            finding.original = parsedSlice(source.bytes, trap.valueStart, trap.valueEnd);
            finding.understood = writtenBack(finding.original);
            break;
        case ReadingTrap::Type::NumberText:
            finding.original =
                source.bytes.substr(trap.valueStart, trap.valueEnd - trap.valueStart);
            finding.understood = parsedSlice(source.bytes, trap.valueStart, trap.valueEnd);
            break;
        case ReadingTrap::Type::NulInString: {
            finding.original = parsedSlice(source.bytes, trap.valueStart, trap.valueEnd);
            finding.understood = std::string(finding.original.asCString());
            break;
        }
        case ReadingTrap::Type::TrailingText:
        case ReadingTrap::Type::Comment:
        case ReadingTrap::Type::TrailingComma:
        case ReadingTrap::Type::ByteOrderMark:
            break;
    }
    const Position position = source.lines.at(trap.offset);
    finding.line = position.line;
    finding.column = position.column;
    return finding;
}

// Findings of the text itself, before any class reads it: what the device's parser accepts
// and reads otherwise than a strict reader would.
void addReadingFindings(const SourceText& source, const Json::Value& document, KeptFindings& kept) {
    size_t more = 0;
    for (const ReadingTrap& trap :
         scanReadingTraps(source.bytes, source.deviceLength, kept.room(), &more)) {
        kept.findings.push_back(findingOfTrap(trap, source));
        if (trap.type == ReadingTrap::Type::DuplicateMember) {
            if (const Json::Value* value = nodeAt(document, trap.path)) {
                kept.findings.back().understood = *value;
            }
        }
    }
    kept.omitted += more;
}

// Where a finding is: the node itself, the name of a member, or for an added node the object
// or array it was added to.
Position positionOfPath(const SourceText& source, const Json::Value& document, JsonPath path,
                        bool added) {
    if (added && !path.empty()) {
        path.pop_back();
    }
    const Json::Value* node = nodeAt(document, path);
    if (node == nullptr) {
        return Position();
    }
    return source.positionOf(*node, !path.empty() && !path.back().isIndex);
}

void placeFindings(std::vector<Finding>& findings, size_t first, const SourceText& source,
                   const Json::Value& document) {
    for (size_t i = first; i < findings.size(); ++i) {
        Finding& finding = findings[i];
        const Position position =
            positionOfPath(source, document, finding.path, finding.type == Finding::Type::Added);
        finding.line = position.line;
        finding.column = position.column;
    }
}

void placeOutcome(Outcome& outcome, Position position) {
    outcome.line = position.line;
    outcome.column = position.column;
}

// A reading that throws: the first node it rejects, quoted as the file has it. `work` is the
// caller's and is changed by the search.
Outcome unreadable(const Kind& kind, Json::Value& work, const Reading& reading,
                   const SourceText* source) {
    const FailurePlace place = locateFailureInPlace(kind, work);
    if (!place.found) {
        Outcome outcome = unusable("the library cannot read it (" + reading.error + ")");
        return outcome;
    }
    // The node itself is as it was; members the reading added to it have no place in the
    // text, so the file's own text of it is quoted when there is one.
    const Json::Value& node = *nodeAt(work, place.path);
    Json::Value asWritten = node;
    if (source != nullptr && node.getOffsetLimit() > node.getOffsetStart()) {
        const Json::Value slice =
            parsedSlice(source->bytes, source->startOf(node), source->limitOf(node));
        if (!slice.isNull()) {
            asWritten = slice;
        }
    }
    const std::string& error = place.error.empty() ? reading.error : place.error;
    Outcome outcome = unusable(pointerText(place.path) + ": the library cannot read " +
                               quoted(asWritten) + " here (" + error + ")");
    outcome.problemPlace = place;
    if (source != nullptr) {
        placeOutcome(outcome, source->positionOf(node, !place.path.back().isIndex));
    }
    return outcome;
}

// jsoncpp's error text starts with "* Line L, Column C" (C counting bytes).
// How deep jsoncpp's reader, with its default settings (stackLimit), nests values: the
// top-level value is the first, and an empty innermost container is one like any other.
constexpr size_t kParserNestingLimit = 1000;

// Where the text nests deeper than the parser's limit, or no position when it does not.
Position nestingPosition(const SourceText& source) {
    const size_t deep =
        nestingPastLimit(source.bytes.substr(0, source.deviceLength), kParserNestingLimit);
    return deep < source.deviceLength ? source.lines.at(deep) : Position();
}

Position parseErrorPosition(const SourceText& source) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value ignored;
    std::string errors;
    try {
        if (reader->parse(source.bytes.data(), source.bytes.data() + source.deviceLength, &ignored,
                          &errors)) {
            return Position();
        }
    } catch (const std::exception&) {
        // Only nesting past the parser's limit throws here: the bracket that goes too deep.
        return nestingPosition(source);
    }
    int line = 0;
    int column = 0;
    if (std::sscanf(errors.c_str(), "* Line %d, Column %d", &line, &column) != 2) {
        return Position();
    }
    return source.lines.at(source.offsetOfParserPlace(line, column));
}

// The whole file, as it lies on disk, for positions and for what follows a NUL byte.
std::unique_ptr<SourceText> readSource(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return nullptr;
    }
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return std::make_unique<SourceText>(std::move(bytes));
}

// Whether the reading succeeds with the list cut to its first `count` elements. The list is
// swapped with the shorter one and back, so only the kept elements are copied.
bool readsWithFirst(const Kind& kind, const Json::Value& work, Json::Value& list, size_t count) {
    Json::Value shorter(Json::arrayValue);
    for (Json::ArrayIndex i = 0; i < count; ++i) {
        shorter.append(list[i]);
    }
    list.swap(shorter);
    const bool reads = !readAs(kind, work).failed;
    list.swap(shorter);
    return reads;
}

// Cuts a list to its first `count` elements; building the shorter list is cheaper than
// erasing the others one by one from jsoncpp's map.
void keepFirst(Json::Value& list, size_t count) {
    Json::Value shorter(Json::arrayValue);
    for (Json::ArrayIndex i = 0; i < count; ++i) {
        shorter.append(Json::Value());
        shorter[i].swap(list[i]);
    }
    shorter.swap(list);
}

// The first element of a list that the reading rejects: the lengths tried grow from the
// front by doubling and are then halved, so a list rejected early costs what its head costs.
bool firstRejectedElement(const Kind& kind, const Json::Value& work, Json::Value& list,
                          size_t& first) {
    if (list.empty() || !readsWithFirst(kind, work, list, 0)) {
        return false;
    }
    size_t reads = 0;            // reading succeeds with the first `reads` elements
    size_t fails = list.size();  // reading fails with the first `fails` elements
    for (size_t count = 1; count < fails; count *= 2) {
        if (!readsWithFirst(kind, work, list, count)) {
            fails = count;
            break;
        }
        reads = count;
    }
    while (fails - reads > 1) {
        const size_t middle = reads + (fails - reads) / 2;
        (readsWithFirst(kind, work, list, middle) ? reads : fails) = middle;
    }
    first = reads;
    return true;
}

bool firstRejectedMember(const Kind& kind, const Json::Value& work, const Children& children,
                         size_t& first) {
    if (children.values.empty() || !readsWithNullsFrom(kind, work, children, 0)) {
        return false;
    }
    size_t reads = 0;                       // reading succeeds with children[reads..] null
    size_t fails = children.values.size();  // reading fails with children[fails..] null
    while (fails - reads > 1) {
        const size_t middle = reads + (fails - reads) / 2;
        (readsWithNullsFrom(kind, work, children, middle) ? reads : fails) = middle;
    }
    first = reads;
    return true;
}

}  // namespace

bool sameReading(const Reading& a, const Reading& b) {
    return a.failed == b.failed && a.error == b.error && a.understood == b.understood &&
           a.log == b.log;
}

// A value that every reader of the library rejects or reads differently: a conversion of
// an array to a scalar throws, and so does a member lookup in it.
Json::Value probeValue() {
    Json::Value probe(Json::arrayValue);
    probe.append(Json::Value(Json::arrayValue));
    return probe;
}

// Another value of the same JSON type, for readers that only look at whether a node is
// there; none for null, arrays and objects.
bool otherValueOfType(const Json::Value& value, Json::Value& other) {
    switch (value.type()) {
        case Json::stringValue:
            other = value.asString() + "~";
            return true;
        case Json::booleanValue:
            other = !value.asBool();
            return true;
        case Json::intValue:
            other = value.asLargestInt() == std::numeric_limits<Json::LargestInt>::max()
                        ? value.asLargestInt() - 1
                        : value.asLargestInt() + 1;
            return true;
        case Json::uintValue:
            other = value.asLargestUInt() == std::numeric_limits<Json::LargestUInt>::max()
                        ? value.asLargestUInt() - 1
                        : value.asLargestUInt() + 1;
            return true;
        case Json::realValue:
            other = value.asDouble() + 1.0;
            return true;
        default:
            return false;
    }
}

Reading readAs(const Kind& kind, const Json::Value& document) {
    Json::Value copy = document;
    return readInPlace(kind, copy);
}

Reading readInPlace(const Kind& kind, Json::Value& document) {
    Reading reading;
    LogRecorder recorder;
    try {
        std::unique_ptr<IJsonSerializable> object = kind.make();
        object->Deserialize(document);
        object->Serialize(reading.understood);
    } catch (const std::bad_alloc&) {
        throw;  // the machine's limit, not the document's: no reading can be judged by it
    } catch (const std::exception& e) {
        reading.failed = true;
        reading.error = e.what();
        reading.understood = Json::Value();
    } catch (...) {
        reading.failed = true;
        reading.error = "unknown exception";
        reading.understood = Json::Value();
    }
    reading.log = recorder.take();
    return reading;
}

std::string findingText(const Finding& finding) {
    // The whole document has the empty pointer, which would leave a bare ": " in front.
    const std::string where = finding.path.empty() ? "" : pointerText(finding.path) + ": ";
    switch (finding.type) {
        case Finding::Type::Dropped:
            return where + "dropped (never read)";
        case Finding::Type::Changed:
            return where + quoted(finding.original) + " read as " + quoted(finding.understood);
        case Finding::Type::NotWrittenBack:
            return where + quoted(finding.original) + " read but not written back";
        case Finding::Type::Added:
            return where + "added with default " + quoted(finding.understood);
        case Finding::Type::DuplicateMember:
            return where + "member given again later in its object; the device keeps the last " +
                   "value, " + quoted(finding.understood) + ", and ignores this one, " +
                   quoted(finding.original);
        case Finding::Type::TrailingText:
            return where + "text after the document; the device never reads it";
        case Finding::Type::Comment:
            return where + "comment; the device skips it and never writes it back";
        case Finding::Type::TrailingComma:
            return where + "trailing comma; the device skips it";
        case Finding::Type::AfterNul:
            return where + "NUL byte; the device loads the file only up to here and ignores " +
                   "the " + std::to_string(finding.original.asLargestUInt()) + " bytes from here";
        case Finding::Type::NotUtf8:
            return where + "text not valid UTF-8; the device keeps its bytes and writes it back " +
                   "as " + finding.understood.asString();
        case Finding::Type::ControlInString:
            return where + "control character unescaped in a string, which strict JSON " +
                   "forbids; the device keeps it and writes it back escaped, as " +
                   finding.understood.asString();
        case Finding::Type::ByteOrderMark:
            return where + "byte-order mark; the device skips it and never writes it back, " +
                   "and strict JSON readers refuse the file";
        case Finding::Type::NumberText:
            return where + "`" + finding.original.asString() +
                   "` is not a JSON number; the device reads " + quoted(finding.understood);
        case Finding::Type::NulInString:
            return where + "\\u0000 in a " +
                   (isNameOf(finding.path, finding.original) ? "member name" : "string") +
                   "; the device keeps it, and whatever takes the text as a C string (log lines, " +
                   "name comparisons) sees only " + quoted(finding.understood);
        case Finding::Type::HiddenState:
            return where + quoted(finding.original) + " is no interface kind; the channel " +
                   "keeps kind " + DaifType::nameOf(finding.understood.asInt()) + " (" +
                   std::to_string(finding.understood.asInt()) + ") and writes the text back";
    }
    return where;
}

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

FailurePlace locateFailure(const Kind& kind, const Json::Value& document) {
    Json::Value work = document;
    return locateFailureInPlace(kind, work);
}

FailurePlace locateFailureInPlace(const Kind& kind, Json::Value& work) {
    // Null reads as the defaults and a shorter list reads as fewer elements, so nulling more
    // members or cutting a list shorter never makes a reading fail. The first child that the
    // reading rejects is the last one that must stay for the reading to fail while every
    // child after it is null or cut off; with those gone, the search goes on inside it.
    FailurePlace place;
    Json::Value* node = &work;
    while (true) {
        size_t first = 0;
        if (node->isArray()) {
            if (!firstRejectedElement(kind, work, *node, first)) {
                break;
            }
            keepFirst(*node, first + 1);
            place.path.push_back(PathStep::element(static_cast<Json::ArrayIndex>(first)));
            node = &(*node)[static_cast<Json::ArrayIndex>(first)];
        } else {
            const Children children = childrenOf(*node);
            if (!firstRejectedMember(kind, work, children, first)) {
                break;
            }
            for (size_t i = first + 1; i < children.values.size(); ++i) {
                *children.values[i] = Json::Value();
            }
            place.path.push_back(stepTo(children, first));
            node = children.values[first];
        }
        place.found = true;
    }
    if (place.found) {
        place.error = readAs(kind, work).error;
    }
    return place;
}

int exitCodeOf(Outcome::Status status) {
    switch (status) {
        case Outcome::Status::Exact:
            return 0;
        case Outcome::Status::Findings:
            return 1;
        case Outcome::Status::Unusable:
            return 2;
    }
    return 2;
}

namespace {

Outcome wrongTopLevel(const Kind& kind, const Json::Value& document, const SourceText* source) {
    Outcome outcome = unusable(std::string("the top-level value is ") + jsonTypeText(document) +
                               ", expected " + topLevelText(kind.topLevel) + " for " + kind.name);
    if (source != nullptr) {
        placeOutcome(outcome, source->positionOf(document, false));
    }
    return outcome;
}

// A top-level "$schema" names the schema an editor checks the document against. The library
// never reads it, as intended, so it is no finding.
bool isSchemaReference(Finding::Type type, const JsonPath& path) {
    return type == Finding::Type::Dropped && path.size() == 1 && !path[0].isIndex &&
           path[0].key == "$schema";
}

// The verdict on a document that was read without failing. The document is the check's own:
// the kept findings take what they quote out of it.
Outcome judged(const Kind& kind, Json::Value& document, Reading& reading, bool withFindings,
               const SourceText* source, size_t keep) {
    Outcome outcome;
    if (withFindings) {
        KeptFindings kept(keep);
        kept.noFinding = &isSchemaReference;
        if (source != nullptr) {
            addReadingFindings(*source, document, kept);
        }
        const size_t differences = kept.findings.size();
        addHiddenStateFindings(kind, document, kept);
        findDifferencesTaking(kind, document, reading, kept);
        if (source != nullptr) {
            placeFindings(kept.findings, differences, *source, document);
        }
        outcome.findings = std::move(kept.findings);
        outcome.omitted = kept.omitted;
        outcome.status = outcome.findings.empty() && outcome.omitted == 0
                             ? Outcome::Status::Exact
                             : Outcome::Status::Findings;
    }
    outcome.understood = std::move(reading.understood);
    outcome.log = std::move(reading.log);
    return outcome;
}

// The document of a file as the device's parser gives it.
bool parsedAgain(const SourceText& source, Json::Value& document) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    std::string errors;
    return reader->parse(source.bytes.data(), source.bytes.data() + source.deviceLength, &document,
                         &errors);
}

// A document the library refuses keeps the findings of its text: the parser took it, and
// what it skipped or read otherwise is so whatever the classes then make of it. `document`
// is the text's document as the parser gave it, unread.
void addTextFindings(Outcome& outcome, const SourceText& source, const Json::Value& document,
                     size_t keep) {
    KeptFindings kept(keep);
    addReadingFindings(source, document, kept);
    outcome.findings = std::move(kept.findings);
    outcome.omitted = kept.omitted;
}

// The same for a file whose document the reading has changed: it is parsed again.
void addTextFindings(Outcome& outcome, const SourceText& source, size_t keep) {
    Json::Value document;
    if (parsedAgain(source, document)) {
        addTextFindings(outcome, source, document, keep);
    }
}

// Checks a loaded file reading its document in place, as the device does, so that a document
// the library cannot read is never copied. The comparison needs the document as the file
// has it, which the reading changed: it is parsed again from the text.
Outcome checkInPlace(const Kind& kind, LoadedFile& loaded, bool withFindings, size_t keep) {
    const SourceText& source = *loaded.source;
    if (!hasTopLevel(kind, loaded.document)) {
        Outcome outcome = wrongTopLevel(kind, loaded.document, &source);
        if (withFindings) {
            addTextFindings(outcome, source, loaded.document, keep);
        }
        return outcome;
    }
    Reading reading = readInPlace(kind, loaded.document);
    if (reading.failed) {
        Outcome outcome = unreadable(kind, loaded.document, reading, &source);
        outcome.log = std::move(reading.log);
        if (withFindings) {
            loaded.document = Json::Value();
            addTextFindings(outcome, source, keep);
        }
        return outcome;
    }
    if (!withFindings) {
        return judged(kind, loaded.document, reading, false, &source, keep);
    }
    loaded.document = Json::Value();
    Json::Value document;
    if (!parsedAgain(source, document)) {
        return unusable("the file changed while it was checked");
    }
    return judged(kind, document, reading, true, &source, keep);
}

}  // namespace

Outcome checkDocument(const Kind& kind, const Json::Value& document, bool withFindings,
                      const SourceText* source, size_t keep) {
    Outcome outcome;
    if (!hasTopLevel(kind, document)) {
        outcome = wrongTopLevel(kind, document, source);
    } else {
        Json::Value work = document;
        Reading reading = readInPlace(kind, work);
        if (!reading.failed) {
            work = document;
            return judged(kind, work, reading, withFindings, source, keep);
        }
        work = document;
        outcome = unreadable(kind, work, reading, source);
        outcome.log = std::move(reading.log);
    }
    if (withFindings && source != nullptr) {
        addTextFindings(outcome, *source, document, keep);
    }
    return outcome;
}

bool loadFile(const std::string& path, LoadedFile& loaded, Outcome& failure) {
    LogRecorder recorder;
    int code = 0;
    std::string thrown;
    try {
        code = FileMgr().loadLocalCfg(path, loaded.document);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& e) {
        thrown = e.what();
    } catch (...) {
        thrown = "unknown exception";
    }
    if (code == FileMgr::kErrParse && parserRanOutOfMemory(recorder.lines())) {
        throw std::bad_alloc();
    }
    if (code == 0 && thrown.empty()) {
        loaded.source = readSource(path);
        loaded.log = recorder.take();
        return true;
    }
    const std::unique_ptr<SourceText> source =
        code == FileMgr::kErrOpenRead ? nullptr : readSource(path);
    if (!thrown.empty()) {
        failure = unusable("cannot load (the parser gave up: " + thrown + ")");
        if (source != nullptr) {
            placeOutcome(failure, nestingPosition(*source));
        }
    } else {
        const std::string cause =
            code == FileMgr::kErrOpenRead ? loadFailureCause(path) : fileMgrMeaning(code);
        failure =
            unusable("cannot load: " + cause + " (FileMgr code " + std::to_string(code) + ")");
        failure.fileMgrCode = code;
        if (code == FileMgr::kErrParse && source != nullptr) {
            placeOutcome(failure, parseErrorPosition(*source));
        }
    }
    failure.log = recorder.take();
    if (code == FileMgr::kErrParse) {
        describeParseError(failure, source.get());
    }
    return false;
}

Outcome checkLoaded(const Kind& kind, const LoadedFile& loaded, bool withFindings, size_t keep) {
    Outcome outcome = checkDocument(kind, loaded.document, withFindings, loaded.source.get(), keep);
    outcome.log.insert(outcome.log.begin(), loaded.log.begin(), loaded.log.end());
    return outcome;
}

Outcome checkFile(const Kind& kind, const std::string& path, bool withFindings, size_t keep) {
    try {
        LoadedFile loaded;
        Outcome failure;
        if (!loadFile(path, loaded, failure)) {
            return failure;
        }
        if (loaded.source == nullptr) {
            return checkLoaded(kind, loaded, withFindings, keep);
        }
        Outcome outcome = checkInPlace(kind, loaded, withFindings, keep);
        outcome.log.insert(outcome.log.begin(), loaded.log.begin(), loaded.log.end());
        return outcome;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& e) {
        return unusable(std::string("cannot be checked (") + e.what() + ")");
    }
}

}  // namespace zelct
