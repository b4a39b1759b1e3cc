#pragma once

// What the walk of a comparison shares with the questions it asks; not for the tool's commands.
#include <json/json.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "Check.h"

namespace zelct {

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

// Compares a document with what the library understood from it and keeps the findings; a
// finding that hangs on whether the class reads a node waits for the answer to its question.
class Comparison {
public:
    Comparison(const Kind& kind, Json::Value& document, const Reading& baseline, size_t exactWork,
               KeptFindings& kept);

    void run();

private:
    // The walk (Compare.cpp).
    void walk(const Json::Value& original, const Json::Value& understood, JsonPath& path);
    void walkMembers(const Json::Value& original, const Json::Value& understood, JsonPath& path);
    void walkElements(const Json::Value& original, const Json::Value& understood, JsonPath& path);
    void visit(const Json::Value* original, const Json::Value* understood, JsonPath& path);
    void missing(const Json::Value& original, const JsonPath& path);
    size_t addPending(Finding::Type type, const JsonPath& path, const Json::Value* understood);
    void ask(Question::Kind kind, const Json::Value& original, const JsonPath& path,
             Finding::Type ifRead, const Json::Value* understood);
    void flush();
    void takeKept();

    // The answers (CompareAnswers.cpp).
    void answerAll();
    bool readsAlone(Json::ArrayIndex index, const Json::Value& understood, Scope& scope);
    bool answerInScope(Scope& scope, const std::vector<size_t>& items);
    void answerProbed(Scope& scope, const std::vector<size_t>& items);
    void answerGroup(Scope& scope, std::vector<size_t> items);
    Json::Value copyOf(const Scope& scope) const;
    JsonPath scopedPath(const Scope& scope, const JsonPath& path) const;
    bool perturbedCopy(const Scope& scope, const std::vector<size_t>& items, Perturbation how,
                       Json::Value& perturbed);
    bool notices(Scope& scope, const std::vector<size_t>& items, Perturbation how);
    std::string patternOf(const Question& question) const;
    bool answeredFromPatterns(std::vector<size_t>& items);
    bool answerFromPattern(size_t i);
    void record(size_t i, bool answer);
    void settle(const Question& question);

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

}  // namespace zelct
