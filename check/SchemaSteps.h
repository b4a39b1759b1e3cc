#pragma once

// What the parts of a kind's schema share with one another; not for the tool's commands.
#include <json/json.h>

#include <set>
#include <string>
#include <vector>

#include "Check.h"
#include "Kinds.h"
#include "Schema.h"

namespace zelct {

// The path with every array index written as "*", as the nesting tables spell their places.
std::string patternText(const JsonPath& path);

// Probes one kind's sample document and describes it. Every question is answered by reading
// a changed copy of the sample into a fresh object of the kind.
class SchemaBuilder {
public:
    explicit SchemaBuilder(const Kind& kind);

    Json::Value build(std::set<std::string>& nested);

private:
    // The shape of a value and its numbers (SchemaValues.cpp).
    Json::Value node(const Json::Value& value, JsonPath& path, std::set<std::string>& nested);
    Json::Value object(const Json::Value& value, JsonPath& path, std::set<std::string>& nested);
    Json::Value array(const Json::Value& value, JsonPath& path, std::set<std::string>& nested);
    Json::ArrayIndex mostElements(const Json::Value& value, const JsonPath& path);
    static Json::Value distinctCopy(const Json::Value& element, Json::ArrayIndex offset);
    Json::Value scalar(const Json::Value& value, const JsonPath& path);
    Json::Value integer(const Json::Value& value, const JsonPath& path);
    void highest(Json::Value& schema, const Json::Value& value, const JsonPath& path);
    void lowest(Json::Value& schema, const Json::Value& value, const JsonPath& path);
    Json::Value neverRead(const Json::Value& value, const JsonPath& path);
    bool dependsOnOthers(const Json::Value& value, const JsonPath& path);
    static std::vector<Json::Value> alternativesTo(const Json::Value& value);

    // What texts keep, and the rules between members (SchemaRules.cpp).
    void writtenOnlyWhen(Json::Value& schema, const Json::Value& value, JsonPath& path);
    void copies(Json::Value& schema, const Json::Value& value, JsonPath& path);
    bool isCopyOf(const std::string& name, const std::string& source, JsonPath& path,
                  Json::Value& absent);
    Json::Value text(const std::string& value, const JsonPath& path);
    void freeText(Json::Value& schema, const JsonPath& path);
    void hiddenState(Json::Value& schema, const JsonPath& path);
    Json::Value refusal(const JsonPath& path, const std::string& spelling);
    void names(Json::Value& schema, const JsonPath& path);

    // The questions every part asks of the reading (SchemaValues.cpp).
    bool isRead(const Json::Value& value, const JsonPath& path);
    bool changesReading(const Json::Value& document);
    bool keeps(const JsonPath& path, const Json::Value& value);
    // The candidate becomes the number kept furthest out so far, or the first one refused.
    template <typename Number>
    void sortCandidate(const JsonPath& path, Number candidate, Number& kept, Number& refused) {
        (keeps(path, Json::Value(candidate)) ? kept : refused) = candidate;
    }
    static bool contains(const Json::Value& array, const std::string& text);

    const Kind& kind_;
    Json::Value sample_;
    Reading baseline_;
};

}  // namespace zelct
