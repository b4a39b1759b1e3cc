#include "Understood.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <new>
#include <utility>

#include "Input.h"

namespace zelct {

namespace {

// Longer objects and arrays are summarised on a line; --json gives them whole.
constexpr size_t kLongestShownContainer = 72;

// Beyond this many candidate pairs, elements that differ simply pair by position.
constexpr size_t kPairingBudget = 250000;

Outcome unusableOutcome(std::string problem) {
    Outcome outcome;
    outcome.status = Outcome::Status::Unusable;
    outcome.problem = std::move(problem);
    return outcome;
}

// The copy of standard input has a name of its own, which means nothing to whoever typed "-".
void nameStandardInput(std::vector<LogLine>& log, const std::string& copy) {
    for (LogLine& line : log) {
        for (size_t at = line.text.find(copy); at != std::string::npos;
             at = line.text.find(copy, at + 1)) {
            line.text.replace(at, copy.size(), kStandardInput);
        }
    }
}

void loadAndCheck(const Kind& kind, const std::string& path, bool withFindings,
                  UnderstoodFile& file) {
    try {
        if (!loadFile(path, file.loaded, file.outcome)) {
            return;
        }
        const size_t keep = withFindings ? std::numeric_limits<size_t>::max() : kKeptFindings;
        file.outcome = checkLoaded(kind, file.loaded, withFindings, keep);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& e) {
        file.outcome = unusableOutcome(std::string("cannot be checked (") + e.what() + ")");
    }
}

class Pairing {
public:
    Pairing(const Json::Value& given, const Json::Value& written)
        : given_(given), sources_(written.size(), nullptr), taken_(given.size(), false) {
        const bool searched = static_cast<size_t>(given.size()) * written.size() <= kPairingBudget;
        pairWhere(
            written, [](Json::ArrayIndex i, Json::ArrayIndex j) { return i == j; }, true);
        if (searched) {
            pairWhere(
                written, [](Json::ArrayIndex, Json::ArrayIndex) { return true; }, true);
            pairMostAlike(written);
        }
        pairWhere(
            written, [](Json::ArrayIndex i, Json::ArrayIndex j) { return i == j; }, false);
    }

    std::vector<const Json::Value*> take() { return std::move(sources_); }

private:
    template <typename Allowed>
    void pairWhere(const Json::Value& written, Allowed allowed, bool equalOnly) {
        for (Json::ArrayIndex j = 0; j < written.size(); ++j) {
            for (Json::ArrayIndex i = 0; sources_[j] == nullptr && i < given_.size(); ++i) {
                if (!taken_[i] && allowed(i, j) &&
                    (!equalOnly || sameValue(given_[i], written[j]))) {
                    pair(i, j);
                }
            }
        }
    }

    void pairMostAlike(const Json::Value& written) {
        for (Json::ArrayIndex j = 0; j < written.size(); ++j) {
            size_t best = 0;
            Json::ArrayIndex bestAt = 0;
            for (Json::ArrayIndex i = 0; sources_[j] == nullptr && i < given_.size(); ++i) {
                const size_t alike = taken_[i] ? 0 : likeness(given_[i], written[j]);
                if (alike > best || (alike == best && alike > 0 && i == j)) {
                    best = alike;
                    bestAt = i;
                }
            }
            if (best > 0) {
                pair(bestAt, j);
            }
        }
    }

    void pair(Json::ArrayIndex i, Json::ArrayIndex j) {
        sources_[j] = &given_[i];
        taken_[i] = true;
    }

    const Json::Value& given_;
    std::vector<const Json::Value*> sources_;
    std::vector<bool> taken_;
};

// A step of a path compared with another at the same depth.
int compareSteps(const PathStep& a, const PathStep& b) {
    if (a.isIndex != b.isIndex) {
        return a.isIndex ? -1 : 1;
    }
    if (a.isIndex) {
        return a.index < b.index ? -1 : (a.index > b.index ? 1 : 0);
    }
    return a.key.compare(b.key);
}

}  // namespace

UnderstoodFile understandFile(const Kind& kind, const std::string& name, bool withFindings) {
    UnderstoodFile file;
    if (name != kStandardInput) {
        loadAndCheck(kind, name, withFindings, file);
        return file;
    }
    StandardInputFile input;
    std::string error;
    if (!input.copy(error)) {
        file.outcome = unusableOutcome(error);
        return file;
    }
    loadAndCheck(kind, input.path(), withFindings, file);
    nameStandardInput(file.outcome.log, input.path());
    return file;
}

Problem unusableProblem(const std::string& file, const Outcome& outcome) {
    return {file, outcome.line, outcome.column, outcome.problem, exitCodeOf(outcome.status)};
}

Json::Value heldDocument(const Kind& kind, const Outcome& outcome) {
    return normalizedDocument(kind, outcome.understood);
}

std::string shownValue(const Json::Value& value) {
    const bool container = value.isObject() || value.isArray();
    // Each element takes two characters at least, so a container this long is summarised
    // without writing out its text, which may be most of a large file.
    const std::string text =
        container && value.size() > kLongestShownContainer / 2 ? std::string() : compactJson(value);
    if (!container || (!text.empty() && text.size() <= kLongestShownContainer)) {
        return text;
    }
    const std::string count = std::to_string(value.size());
    const char* plural = value.size() == 1 ? "" : "s";
    return value.isObject() ? "{...} (" + count + " member" + plural + ")"
                            : "[...] (" + count + " element" + plural + ")";
}

std::vector<const Json::Value*> elementSources(const Json::Value& given,
                                               const Json::Value& written) {
    if (!given.isArray() || !written.isArray()) {
        return std::vector<const Json::Value*>(written.isArray() ? written.size() : 0, nullptr);
    }
    return Pairing(given, written).take();
}

// The element of `given` that element `index` of `written` was read from: the one in its place
// when they are equal, as they mostly are, else the one the pairing gives.
const Json::Value* elementSource(const Json::Value& given, const Json::Value& written,
                                 Json::ArrayIndex index) {
    if (given.isArray() && index < given.size() && sameValue(given[index], written[index])) {
        return &given[index];
    }
    return elementSources(given, written)[index];
}

SourceNode sourceNode(const Json::Value& given, const Json::Value& written, const JsonPath& path) {
    static const Json::Value kNone;
    SourceNode at{&given, false, true};
    const Json::Value* held = &written;
    for (const PathStep& step : path) {
        const Json::Value* next = nullptr;
        if (step.isIndex && held->isArray() && step.index < held->size()) {
            next = elementSource(*at.node, *held, step.index);
            held = &(*held)[step.index];
        } else if (!step.isIndex && at.node->isObject()) {
            next = at.node->find(step.key.data(), step.key.data() + step.key.size());
            const Json::Value* member =
                held->isObject() ? held->find(step.key.data(), step.key.data() + step.key.size())
                                 : nullptr;
            held = member != nullptr ? member : &kNone;
        }
        if (next == nullptr) {
            at.whole = false;
            return at;
        }
        at = {next, !step.isIndex, true};
    }
    return at;
}

Position placeOf(const SourceText* source, const Json::Value& node, bool member) {
    return source != nullptr ? source->positionOf(node, member) : Position();
}

bool writtenBefore(const JsonPath& a, const JsonPath& b) {
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        const int order = compareSteps(a[i], b[i]);
        if (order != 0) {
            return order < 0;
        }
    }
    return a.size() < b.size();
}

}  // namespace zelct
