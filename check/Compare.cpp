// The walk that pairs a document's nodes with what the library understood, and its findings.
#include "CompareSteps.h"

#include <algorithm>
#include <limits>
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

// Findings wait for their answers in batches of this many, so that what a comparison holds
// beside the document stays the same however many findings it has.
constexpr size_t kPendingBatch = 65536;

}  // namespace

Comparison::Comparison(const Kind& kind, Json::Value& document, const Reading& baseline,
                       size_t exactWork, KeptFindings& kept)
    : kind_(kind),
      document_(document),
      baseline_(baseline),
      empty_(understoodAsShaped(Json::Value(), document)),
      understood_(baseline.understood.isNull() ? empty_ : baseline.understood),
      kept_(kept),
      room_(kept.room()),
      exactWork_(exactWork) {}

void Comparison::run() {
    JsonPath path;
    walk(document_, understood_, path);
    flush();
    takeKept();
}

void Comparison::walk(const Json::Value& original, const Json::Value& understood, JsonPath& path) {
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
void Comparison::walkMembers(const Json::Value& original, const Json::Value& understood,
                             JsonPath& path) {
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
void Comparison::walkElements(const Json::Value& original, const Json::Value& understood,
                              JsonPath& path) {
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

void Comparison::visit(const Json::Value* original, const Json::Value* understood, JsonPath& path) {
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
void Comparison::missing(const Json::Value& original, const JsonPath& path) {
    ask(isEmptyValue(original) ? Question::Kind::Empty : Question::Kind::Read, original, path,
        Finding::Type::NotWrittenBack, nullptr);
}

size_t Comparison::addPending(Finding::Type type, const JsonPath& path,
                              const Json::Value* understood) {
    if (pending_.size() >= kPendingBatch) {
        flush();
    }
    pending_.push_back({type, path, understood});
    return pending_.size() - 1;
}

void Comparison::ask(Question::Kind kind, const Json::Value& original, const JsonPath& path,
                     Finding::Type ifRead, const Json::Value* understood) {
    const size_t finding = addPending(ifRead, path, understood);
    questions_.push_back({kind, path, &original, finding, false});
}

// Answers the questions of the waiting findings, then keeps or counts those findings in
// the order they were found.
void Comparison::flush() {
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
void Comparison::takeKept() {
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
