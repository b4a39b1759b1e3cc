#include "Check.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <regex>

#include "FileMgr.h"

namespace zelct {

namespace {

// Longer objects and arrays are summarised in a finding line; --json gives them whole.
constexpr size_t kLongestQuotedContainer = 72;

std::string quoted(const Json::Value& value) {
    std::string text = compactJson(value);
    if (text.size() <= kLongestQuotedContainer || !(value.isObject() || value.isArray())) {
        return text;
    }
    const std::string count = std::to_string(value.size());
    const char* plural = value.size() == 1 ? "" : "s";
    return value.isObject() ? "{...} (" + count + " member" + plural + ")"
                            : "[...] (" + count + " element" + plural + ")";
}

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
        pairEqualInPlace();
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

    void pairEqualInPlace() {
        for (Json::ArrayIndex i = 0; i < original_.size() && i < understood_.size(); ++i) {
            if (sameValue(original_[i], understood_[i])) {
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

class Comparison {
public:
    Comparison(const Kind& kind, const Json::Value& document, const Reading& baseline,
               size_t exactWork)
        : kind_(kind),
          document_(document),
          baseline_(baseline),
          exactWork_(exactWork),
          nodes_(nodeCount(document)) {}

    std::vector<Finding> run() {
        JsonPath path;
        walk(document_, understoodAsShaped(baseline_.understood, document_), path);
        return std::move(findings_);
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
            differs(original, understood, path);
        }
    }

    void walkMembers(const Json::Value& original, const Json::Value& understood, JsonPath& path) {
        std::set<std::string> names;
        for (const std::string& name : original.getMemberNames()) {
            names.insert(name);
        }
        for (const std::string& name : understood.getMemberNames()) {
            names.insert(name);
        }
        for (const std::string& name : names) {
            const Json::Value* inOriginal = original.find(name.data(), name.data() + name.size());
            const Json::Value* inUnderstood =
                understood.find(name.data(), name.data() + name.size());
            path.push_back(PathStep::member(name));
            visit(inOriginal, inUnderstood, path);
            path.pop_back();
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
                findings_.push_back({Finding::Type::Added, path, Json::Value(), understood[j]});
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
            findings_.push_back({Finding::Type::Added, path, Json::Value(), *understood});
        }
    }

    void differs(const Json::Value& original, const Json::Value& understood, const JsonPath& path) {
        if (isRead(original, path)) {
            findings_.push_back({Finding::Type::Changed, path, original, understood});
        } else {
            findings_.push_back({Finding::Type::Dropped, path, original, Json::Value()});
        }
    }

    void missing(const Json::Value& original, const JsonPath& path) {
        // An empty member that the class does not write back says nothing the reading
        // would miss, as long as the reading is the same without it.
        if (isEmptyValue(original) &&
            decide("empty", path, [&] { return !changesReading(removedAt(document_, path)); })) {
            return;
        }
        const Finding::Type type =
            isRead(original, path) ? Finding::Type::NotWrittenBack : Finding::Type::Dropped;
        findings_.push_back({type, path, original, Json::Value()});
    }

    bool isRead(const Json::Value& original, const JsonPath& path) {
        return decide(jsonTypeText(original), path, [&] { return probeRead(original, path); });
    }

    // Each decision reads the whole document again, so a long list whose elements all differ
    // alike would cost the square of its length. Past a budget of work, once the same
    // question about the same member of every element (the path with its indices left out)
    // has had the same answer a few times, that answer holds for the other elements. Small
    // documents are always decided node by node.
    template <class Compute>
    bool decide(const char* question, const JsonPath& path, Compute compute) {
        Verdict& verdict = verdicts_[std::string(question) + " " + patternText(path)];
        if (rereads_ * nodes_ > exactWork_ && verdict.seen >= kTrustedAfter && verdict.agreed) {
            return verdict.answer;
        }
        const bool answer = compute();
        if (verdict.seen > 0 && answer != verdict.answer) {
            verdict.agreed = false;
        }
        verdict.answer = answer;
        ++verdict.seen;
        return answer;
    }

    bool probeRead(const Json::Value& original, const JsonPath& path) {
        if (changesReading(replacedAt(document_, path, probeValue())) ||
            changesReading(removedAt(document_, path))) {
            return true;
        }
        Json::Value other;
        return otherValueOfType(original, other) &&
               changesReading(replacedAt(document_, path, other));
    }

    bool changesReading(const Json::Value& perturbed) {
        ++rereads_;
        return !sameReading(readAs(kind_, perturbed), baseline_);
    }

    struct Verdict {
        int seen = 0;
        bool agreed = true;
        bool answer = false;
    };
    static constexpr int kTrustedAfter = 3;

    const Kind& kind_;
    const Json::Value& document_;
    const Reading& baseline_;
    std::vector<Finding> findings_;
    std::map<std::string, Verdict> verdicts_;
    size_t exactWork_;  // nodes read again, all readings together
    size_t rereads_ = 0;
    size_t nodes_;
};

std::vector<JsonPath> childPaths(const Json::Value& node, const JsonPath& path) {
    std::vector<JsonPath> children;
    if (node.isObject()) {
        for (const std::string& name : node.getMemberNames()) {
            children.push_back(path);
            children.back().push_back(PathStep::member(name));
        }
    } else if (node.isArray()) {
        for (Json::ArrayIndex i = 0; i < node.size(); ++i) {
            children.push_back(path);
            children.back().push_back(PathStep::element(i));
        }
    }
    return children;
}

// The document with the children from `first` on replaced by null.
Json::Value withNullsFrom(const Json::Value& document, const std::vector<JsonPath>& children,
                          size_t first) {
    Json::Value copy = document;
    for (size_t i = first; i < children.size(); ++i) {
        *nodeAt(copy, children[i]) = Json::Value();
    }
    return copy;
}

bool readsWithNullsFrom(const Kind& kind, const Json::Value& document,
                        const std::vector<JsonPath>& children, size_t first) {
    return !readAs(kind, withNullsFrom(document, children, first)).failed;
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
        }
    }
    ::close(fd);
    return cause;
}

// jsoncpp's first error as FileMgr logged it: "* Line 2, Column 14\n  Syntax error: ...".
bool parseErrorOf(const std::vector<LogLine>& log, int& line, int& column, std::string& message) {
    static const std::regex error(R"(^ERR::Error: '\* Line (\d+), Column (\d+)\n  ([^\n]*))");
    for (const LogLine& logged : log) {
        std::smatch match;
        if (std::regex_search(logged.text, match, error)) {
            line = std::stoi(match[1]);
            column = std::stoi(match[2]);
            message = match[3];
            return true;
        }
    }
    return false;
}

Outcome unusable(std::string problem) {
    Outcome outcome;
    outcome.status = Outcome::Status::Unusable;
    outcome.problem = std::move(problem);
    return outcome;
}

Outcome unreadable(const Kind& kind, const Json::Value& document, const Reading& reading) {
    const FailurePlace place = locateFailure(kind, document);
    Outcome outcome;
    if (place.found) {
        Json::Value copy = document;
        const std::string& error = place.error.empty() ? reading.error : place.error;
        outcome = unusable(pointerText(place.path) + ": the library cannot read " +
                           quoted(*nodeAt(copy, place.path)) + " here (" + error + ")");
    } else {
        outcome = unusable("the library cannot read it (" + reading.error + ")");
    }
    outcome.problemPlace = place;
    return outcome;
}

}  // namespace

Reading readAs(const Kind& kind, const Json::Value& document) {
    Reading reading;
    LogRecorder recorder;
    try {
        Json::Value copy = document;
        std::unique_ptr<IJsonSerializable> object = kind.make();
        object->Deserialize(copy);
        object->Serialize(reading.understood);
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

const char* findingTypeName(Finding::Type type) {
    switch (type) {
        case Finding::Type::Dropped:
            return "dropped";
        case Finding::Type::Changed:
            return "changed";
        case Finding::Type::NotWrittenBack:
            return "not-written-back";
        case Finding::Type::Added:
            return "added";
    }
    return "";
}

std::string findingText(const Finding& finding) {
    const std::string where = pointerText(finding.path) + ": ";
    switch (finding.type) {
        case Finding::Type::Dropped:
            return where + "dropped (never read)";
        case Finding::Type::Changed:
            return where + quoted(finding.original) + " read as " + quoted(finding.understood);
        case Finding::Type::NotWrittenBack:
            return where + quoted(finding.original) + " read but not written back";
        case Finding::Type::Added:
            return where + "added with default " + quoted(finding.understood);
    }
    return where;
}

std::vector<Finding> findDifferences(const Kind& kind, const Json::Value& document,
                                     const Reading& baseline, size_t exactWork) {
    return Comparison(kind, document, baseline, exactWork).run();
}

FailurePlace locateFailure(const Kind& kind, const Json::Value& document) {
    // Null reads as the defaults, so nulling more children never makes a reading fail. The
    // first child that the reading rejects is the last one that must keep its value for the
    // reading to fail while every child after it is null; with those nulled, the search goes
    // on inside it. Bisection keeps long arrays cheap.
    FailurePlace place;
    Json::Value work = document;
    JsonPath path;
    while (true) {
        const std::vector<JsonPath> children = childPaths(*nodeAt(work, path), path);
        if (children.empty() || !readsWithNullsFrom(kind, work, children, 0)) {
            break;
        }
        size_t reads = 0;                // reading succeeds with children[reads..] null
        size_t fails = children.size();  // reading fails with children[fails..] null
        while (fails - reads > 1) {
            const size_t middle = reads + (fails - reads) / 2;
            if (readsWithNullsFrom(kind, work, children, middle)) {
                reads = middle;
            } else {
                fails = middle;
            }
        }
        work = withNullsFrom(work, children, reads + 1);
        path = children[reads];
        place.found = true;
        place.path = path;
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

Outcome checkDocument(const Kind& kind, const Json::Value& document, bool withFindings) {
    if (!hasTopLevel(kind, document)) {
        return unusable(std::string("the top-level value is ") + jsonTypeText(document) +
                        ", expected " + topLevelText(kind.topLevel) + " for " + kind.name);
    }
    const Reading reading = readAs(kind, document);
    if (reading.failed) {
        Outcome outcome = unreadable(kind, document, reading);
        outcome.log = reading.log;
        return outcome;
    }
    Outcome outcome;
    outcome.log = reading.log;
    outcome.understood = reading.understood;
    if (withFindings) {
        outcome.findings = findDifferences(kind, document, reading);
        outcome.status =
            outcome.findings.empty() ? Outcome::Status::Exact : Outcome::Status::Findings;
    }
    return outcome;
}

bool loadDocument(const std::string& path, Json::Value& document, Outcome& failure) {
    FileMgr files;
    const int code = files.loadLocalCfg(path, document);
    if (code != 0) {
        const std::string cause =
            code == FileMgr::kErrOpenRead ? loadFailureCause(path) : fileMgrMeaning(code);
        failure =
            unusable("cannot load: " + cause + " (FileMgr code " + std::to_string(code) + ")");
        failure.fileMgrCode = code;
        return false;
    }
    return true;
}

Outcome checkFile(const Kind& kind, const std::string& path, bool withFindings) {
    Json::Value document;
    Outcome failure;
    std::vector<LogLine> loadLog;
    {
        LogRecorder recorder;
        const bool loaded = loadDocument(path, document, failure);
        loadLog = recorder.take();
        if (!loaded) {
            std::string message;
            if (failure.fileMgrCode == FileMgr::kErrParse &&
                parseErrorOf(loadLog, failure.line, failure.column, message)) {
                failure.problem = "not valid JSON: " + message + " (FileMgr code " +
                                  std::to_string(failure.fileMgrCode) + ")";
            }
            failure.log = std::move(loadLog);
            return failure;
        }
    }
    Outcome outcome = checkDocument(kind, document, withFindings);
    outcome.log.insert(outcome.log.begin(), loadLog.begin(), loadLog.end());
    return outcome;
}

}  // namespace zelct
