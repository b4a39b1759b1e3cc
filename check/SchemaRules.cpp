// What a text keeps and refuses (names, spellings, addresses), and rules between siblings.
#include "SchemaSteps.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "HiddenState.h"

namespace zelct {

namespace {

std::string upper(std::string text) {
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

// "Madi": the first letter in capitals, the rest as it is.
std::string capitalized(std::string text) {
    if (!text.empty()) {
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    }
    return text;
}

// Matches the text in any case: "madi" -> "^[mM][aA][dD][iI]$".
std::string anyCasePattern(const std::string& text) {
    std::string pattern = "^";
    for (char c : text) {
        const unsigned char u = static_cast<unsigned char>(c);
        if (std::isalpha(u) != 0) {
            pattern += std::string("[") + static_cast<char>(std::tolower(u)) +
                       static_cast<char>(std::toupper(u)) + "]";
        } else if (std::isalnum(u) != 0 || c == '-' || c == '_') {
            pattern += c;
        } else {
            pattern += std::string("\\") + c;
        }
    }
    return pattern + "$";
}

// A dotted quad of numbers 0 to 255.
const char* const kAddressPattern =
    "^((25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])\\.){3}"
    "(25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])$";

bool looksLikeAddress(const std::string& text) {
    int dots = 0;
    for (char c : text) {
        if (c == '.') {
            ++dots;
        } else if (std::isdigit(static_cast<unsigned char>(c)) == 0) {
            return false;
        }
    }
    return dots == 3;
}

}  // namespace

// A member the class writes only while a sibling holds one value: in a document whose
// sibling holds another (or none), the member is read but never written back.
void SchemaBuilder::writtenOnlyWhen(Json::Value& schema, const Json::Value& value, JsonPath& path) {
    for (const std::string& source : value.getMemberNames()) {
        Json::Value other;
        if (!otherValueOfType(value[source], other)) {
            continue;
        }
        path.push_back(PathStep::member(source));
        const Reading reading = readAs(kind_, replacedAt(sample_, path, other));
        path.pop_back();
        Json::Value understood = reading.understood;
        const Json::Value* written = nodeAt(understood, path);
        if (reading.failed || written == nullptr || !written->isObject()) {
            continue;
        }
        for (const std::string& name : value.getMemberNames()) {
            if (name == source || written->isMember(name)) {
                continue;
            }
            Json::Value rule(Json::objectValue);
            rule["if"]["not"]["properties"][source]["const"] = value[source];
            rule["if"]["not"]["required"].append(source);
            rule["then"]["properties"][name] = false;
            schema["allOf"].append(rule);
            schema["properties"][name]["description"] =
                "Written only when \"" + source + "\" is " + compactJson(value[source]) +
                "; read whatever it is, but dropped when the document is stored";
        }
    }
}

// A never-read member written as a copy of a sibling takes what the sibling reads as when
// the sibling is missing; the two cannot be compared otherwise.
void SchemaBuilder::copies(Json::Value& schema, const Json::Value& value, JsonPath& path) {
    for (const std::string& name : value.getMemberNames()) {
        const Json::Value& property = schema["properties"][name];
        if (!property.isMember("readOnly") || property.isMember("const")) {
            continue;
        }
        for (const std::string& source : value.getMemberNames()) {
            Json::Value absent;
            if (source != name && isCopyOf(name, source, path, absent)) {
                Json::Value rule(Json::objectValue);
                // Strict validators want every required member defined beside the list.
                rule["if"]["not"]["properties"][source] = true;
                rule["if"]["not"]["required"].append(source);
                rule["then"]["properties"][name]["const"] = absent;
                schema["allOf"].append(rule);
                schema["properties"][name]["description"] =
                    "Written by the library as a copy of \"" + source + "\", never read";
            }
        }
    }
}

// Whether the member is written with the value the sibling is written with, whatever the
// sibling holds; `absent` is that value when the sibling is missing.
bool SchemaBuilder::isCopyOf(const std::string& name, const std::string& source, JsonPath& path,
                             Json::Value& absent) {
    path.push_back(PathStep::member(source));
    const JsonPath sourcePath = path;
    path.back() = PathStep::member(name);
    const JsonPath namePath = path;
    path.pop_back();
    Json::Value copy = sample_;
    std::vector<Json::Value> documents = {removedAt(sample_, sourcePath)};
    for (const Json::Value& other : alternativesTo(*nodeAt(copy, sourcePath))) {
        documents.push_back(replacedAt(sample_, sourcePath, other));
        if (documents.size() > 3) {
            break;
        }
    }
    for (const Json::Value& document : documents) {
        const Reading reading = readAs(kind_, document);
        Json::Value understood = reading.understood;
        const Json::Value* written = nodeAt(understood, namePath);
        const Json::Value* copied = nodeAt(understood, sourcePath);
        if (reading.failed || written == nullptr || copied == nullptr ||
            !sameValue(*written, *copied)) {
            return false;
        }
        if (absent.isNull()) {
            absent = *written;
        }
    }
    return true;
}

Json::Value SchemaBuilder::text(const std::string& value, const JsonPath& path) {
    Json::Value schema(Json::objectValue);
    schema["type"] = "string";
    if (keeps(path, Json::Value(value + "~"))) {
        freeText(schema, path);
        hiddenState(schema, path);
        return schema;
    }
    if (looksLikeAddress(value) && keeps(path, Json::Value("192.0.2.1"))) {
        schema["pattern"] = kAddressPattern;
        schema["description"] =
            "An IPv4 address in dotted-quad form; any other text reads as 0.0.0.0";
        return schema;
    }
    names(schema, path);
    return schema;
}

// Text kept as it came, except catalogue names and their other spellings that the reader
// writes in another form. A catalogue with such names is the one the reader compares the
// text against; its names that are kept are offered as examples.
void SchemaBuilder::freeText(Json::Value& schema, const JsonPath& path) {
    Json::Value refused(Json::arrayValue);
    Json::Value examples(Json::arrayValue);
    std::string from;
    for (const NameCatalogue& catalogue : nameCatalogues()) {
        Json::Value kept(Json::arrayValue);
        bool compared = false;
        std::vector<std::string> spellings = catalogue.names;
        spellings.insert(spellings.end(), catalogue.aliases.begin(), catalogue.aliases.end());
        for (const std::string& spelling : spellings) {
            const Json::Value rule = refusal(path, spelling);
            if (!rule.isNull()) {
                refused.append(rule);
                compared = true;
            }
            const bool isName = std::find(catalogue.names.begin(), catalogue.names.end(),
                                          spelling) != catalogue.names.end();
            if (isName && keeps(path, Json::Value(spelling))) {
                kept.append(spelling);
            }
        }
        if (compared) {
            from += std::string(from.empty() ? "" : ", ") + catalogue.title;
            for (const Json::Value& name : kept) {
                examples.append(name);
            }
        }
    }
    if (!refused.empty()) {
        schema["not"]["anyOf"] = refused;
        schema["examples"] = examples;
        schema["description"] = "Compared against the " + from +
                                "; other text is kept as it came. The names refused here "
                                "are written back in another form";
    }
}

// A text written back as it came whose meaning the class keeps unwritten: only the texts
// that decide it, in any letter case, say what the device holds.
void SchemaBuilder::hiddenState(Json::Value& schema, const JsonPath& path) {
    const HiddenStateRule* rule = hiddenStateRuleAt(kind_, patternText(path));
    if (rule == nullptr) {
        return;
    }
    Json::Value accepted(Json::arrayValue);
    for (const std::string& spelling : rule->accepted()) {
        Json::Value pattern(Json::objectValue);
        pattern["pattern"] = anyCasePattern(spelling);
        accepted.append(pattern);
    }
    schema["anyOf"] = accepted;
    schema["description"] = std::string("Compared against the ") + rule->catalogue +
                            " in any letter case; the names refused here are written back "
                            "in another form, and " +
                            rule->note;
}

// The texts of one spelling that the reader writes in another form, as a schema they
// match; null when it keeps them all. The case of a spelling is probed in capitals and
// capitalised: where both come back otherwise, the reader compares without regard to
// case, and every case of it is refused but the one kept as it is.
Json::Value SchemaBuilder::refusal(const JsonPath& path, const std::string& spelling) {
    const std::string variants[] = {spelling, upper(spelling), capitalized(spelling)};
    bool kept[3] = {};
    for (int i = 0; i < 3; ++i) {
        kept[i] = keeps(path, Json::Value(variants[i]));
    }
    Json::Value rule;
    if (!kept[1] && !kept[2]) {
        rule["pattern"] = anyCasePattern(spelling);
        if (kept[0]) {
            rule["not"]["const"] = spelling;
        }
        return rule;
    }
    Json::Value texts(Json::arrayValue);
    for (int i = 0; i < 3; ++i) {
        if (!kept[i] && !contains(texts, variants[i])) {
            texts.append(variants[i]);
        }
    }
    if (!texts.empty()) {
        rule["enum"] = texts;
    }
    return rule;
}

// A text member that keeps only the catalogue names it knows.
void SchemaBuilder::names(Json::Value& schema, const JsonPath& path) {
    Json::Value exact(Json::arrayValue);
    Json::Value anyCase(Json::arrayValue);
    std::string explained;  // one line a name the catalogue says something about
    std::string from;
    for (const NameCatalogue& catalogue : nameCatalogues()) {
        bool used = false;
        for (const std::string& name : catalogue.names) {
            if (contains(exact, name) || !keeps(path, Json::Value(name))) {
                continue;
            }
            used = true;
            exact.append(name);
            const std::string said = catalogue.describe(name);
            explained += said.empty() ? std::string() : "\n" + name + ": " + said;
            if (upper(name) != name && keeps(path, Json::Value(upper(name)))) {
                Json::Value pattern(Json::objectValue);
                pattern["pattern"] = anyCasePattern(name);
                anyCase.append(pattern);
            }
        }
        if (used) {
            from += std::string(from.empty() ? "" : ", ") + catalogue.title;
        }
    }
    if (anyCase.empty()) {
        schema["enum"] = exact;
    } else {
        Json::Value listed(Json::objectValue);
        listed["enum"] = exact;
        anyCase.append(listed);
        schema["anyOf"] = anyCase;
    }
    // Strict validators refuse keywords of no vocabulary, such as an editor's list of
    // descriptions beside the names, so what the catalogue says goes into the description.
    schema["description"] =
        (from.empty() ? std::string("The library keeps no text here")
                      : "One of the " + from + "; any other text is read as another value") +
        explained;
}

}  // namespace zelct
