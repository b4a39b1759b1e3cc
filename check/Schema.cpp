#include "Schema.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>
#include <set>
#include <utility>

#include "Alarm.h"
#include "Check.h"
#include "DaifType.h"
#include "HiddenState.h"
#include "JsonText.h"
#include "VideoFormat.h"

namespace zelct {

const char* const kSchemaBase = "https://zel.invalid/zelCommonTypes/schemas/";

namespace {

Json::Value mostUnsigned() {
    return Json::Value(std::numeric_limits<Json::UInt>::max());
}

Json::Value firstVideoFormatText() {
    return Json::Value(VideoFormat(VideoFormat::VIDEO_FORMAT_1080P60).toString());
}

// Members a kind's sample document needs before its class writes everything it can: counts
// that the reader clamps to what it holds, a value without which nothing is written.
struct SeedMember {
    const char* kind;
    const char* member;
    Json::Value (*value)();
};
Json::Value mainBoardProduct() {
    return Json::Value("TARVIK");
}

// clang-format off
const SeedMember kSeedMembers[] = {
    {"eth-bandwidth", "ethCount", &mostUnsigned},
    {"video-format",  "format",   &firstVideoFormatText},
    {"system-info",   "product",  &mainBoardProduct},  // the product whose main board is described
};
// clang-format on

// Arrays are probed up to this many elements for a limit on what the class keeps.
constexpr Json::ArrayIndex kLongestProbedArray = 8;

std::string patternText(const JsonPath& path) {
    std::string text;
    for (const PathStep& step : path) {
        text += step.isIndex ? "/*" : "/" + pointerText({step}).substr(1);
    }
    return text;
}

const Nesting* nestingAt(const Kind& kind, const std::string& pattern) {
    for (const Nesting& row : nestings()) {
        if (pattern == row.pattern && std::string(kind.name) == row.kind) {
            return &row;
        }
    }
    return nullptr;
}

// A document that makes the kind's class write every member it has: one element in each
// nested list, every nested record present.
Json::Value seedOf(const Kind& kind) {
    Json::Value seed(kind.topLevel == TopLevel::Array ? Json::arrayValue : Json::objectValue);
    for (const Nesting& row : nestings()) {
        if (std::string(kind.name) != row.kind) {
            continue;
        }
        const std::string pattern = row.pattern;
        const Json::Value child = seedOf(*findKind(row.child));
        if (pattern == "/*") {
            seed.append(child);
        } else if (pattern.size() > 2 && pattern.compare(pattern.size() - 2, 2, "/*") == 0) {
            seed[pattern.substr(1, pattern.size() - 3)].append(child);
        } else {
            seed[pattern.substr(1)] = child;
        }
    }
    for (const SeedMember& row : kSeedMembers) {
        if (std::string(kind.name) == row.kind) {
            seed[row.member] = row.value();
        }
    }
    return seed;
}

std::vector<std::string> namesOf(const char* (*nameOf)(int), int first, int last) {
    std::vector<std::string> names;
    for (int i = first; i <= last; ++i) {
        const std::string name = nameOf(i);
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    }
    return names;
}

const char* stateName(int state) {
    return State::nameOf(state);
}
const char* streamTypeName(int type) {
    return StreamType::nameOf(type);
}
const char* interfaceKindName(int kind) {
    return DaifType::nameOf(kind);
}
std::vector<std::string> interfaceKindNames() {
    return namesOf(&interfaceKindName, DaifType::DAIF_TDM, DaifType::DAIF_AUTO);
}
// The spellings DaifType's reader accepts that are no kind's own name.
std::vector<std::string> interfaceKindAliases() {
    const std::vector<std::string> names = interfaceKindNames();
    std::vector<std::string> aliases;
    for (std::size_t i = 0; DaifType::acceptedName(i) != nullptr; ++i) {
        const std::string spelling = DaifType::acceptedName(i);
        if (std::find(names.begin(), names.end(), spelling) == names.end()) {
            aliases.push_back(spelling);
        }
    }
    return aliases;
}

const char* severityName(int severity) {
    return AlarmSeverity::nameOf(severity);
}

std::vector<std::string> videoFormatTexts() {
    std::vector<std::string> texts;
    for (int number = VideoFormat::VIDEO_FORMAT_UNDEFINED;
         number <= VideoFormat::VIDEO_FORMAT_2160P59; ++number) {
        texts.push_back(VideoFormat(static_cast<VideoFormat::video_format_t>(number)).toString());
    }
    return texts;
}

std::string nothingToSay(const std::string&) {
    return std::string();
}

// "1920 x 1080, interlaced, 50 fields per second" from the format's catalogue details.
std::string videoFormatDetails(const std::string& text) {
    VideoFormat format;
    VideoFormat::video_field_rate_t fieldRate = VideoFormat::VIDEO_FIELD_RATE_NONE;
    unsigned int width = 0;
    unsigned int height = 0;
    bool interlace = false;
    if (format.fromString(text) != 0 ||
        format.getVideoDetails(fieldRate, width, height, interlace) != 0) {
        return std::string();
    }
    return std::to_string(width) + " x " + std::to_string(height) + ", " +
           (interlace ? "interlaced, " : "progressive, ") + std::to_string(fieldRate) +
           " fields per second";
}

// Every row of the alarm catalogue, for the member that holds an alarm's type.
Json::Value alarmTypeNotes() {
    Json::Value notes(Json::objectValue);
    std::string text =
        "The alarm's kind. Reading keeps any 32-bit number as it is and never consults the "
        "catalogue; a component that raises a kind takes severity and text from it:";
    for (const Alarm::CatalogueRow& row : Alarm::catalogue()) {
        text += "\n" + std::to_string(static_cast<int>(row.type)) + " " + row.name + " (" +
                AlarmSeverity::nameOf(row.severity) + "): " + row.description;
        notes["examples"].append(static_cast<int>(row.type));
    }
    notes["description"] = text;
    return notes;
}

// What the library's own catalogues say about a member, beyond what probing finds.
struct MemberNotes {
    const char* kind;
    const char* pattern;
    Json::Value (*notes)();
};
// clang-format off
const MemberNotes kMemberNotes[] = {
    {"alarm", "/type", &alarmTypeNotes},
};
// clang-format on

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

const char* jsonTypeName(const Json::Value& value) {
    switch (value.type()) {
        case Json::stringValue:
            return "string";
        case Json::booleanValue:
            return "boolean";
        case Json::intValue:
        case Json::uintValue:
            return "integer";
        case Json::realValue:
            return "number";
        case Json::arrayValue:
            return "array";
        case Json::objectValue:
            return "object";
        default:
            return "null";
    }
}

// Probes one kind's sample document and describes it. Every question is answered by reading
// a changed copy of the sample into a fresh object of the kind.
class SchemaBuilder {
public:
    explicit SchemaBuilder(const Kind& kind)
        : kind_(kind),
          sample_(readAs(kind, seedOf(kind)).understood),
          baseline_(readAs(kind, sample_)) {}

    Json::Value build(std::set<std::string>& nested) {
        JsonPath path;
        Json::Value schema = node(sample_, path, nested);
        Json::Value defaults;
        kind_.make()->Serialize(defaults);
        if (defaults.isNull()) {
            Json::Value types(Json::arrayValue);
            types.append(schema["type"]);
            types.append("null");
            schema["type"] = types;
            schema["description"] =
                describedKind(kind_) + ". An object holding nothing is written as null";
        } else {
            schema["description"] = describedKind(kind_);
        }
        if (kind_.topLevel == TopLevel::Object) {
            Json::Value& self = schema["properties"]["$schema"];
            self["type"] = "string";
            self["description"] =
                "The schema an editor checks this document against; the library never reads it";
        }
        return schema;
    }

private:
    Json::Value node(const Json::Value& value, JsonPath& path, std::set<std::string>& nested) {
        if (const Nesting* row = nestingAt(kind_, patternText(path))) {
            nested.insert(row->child);
            Json::Value ref(Json::objectValue);
            ref["$ref"] = std::string("#/$defs/") + row->child;
            return ref;
        }
        Json::Value schema;
        switch (value.type()) {
            case Json::objectValue:
                schema = object(value, path, nested);
                break;
            case Json::arrayValue:
                schema = array(value, path, nested);
                break;
            default:
                schema = scalar(value, path);
                break;
        }
        for (const MemberNotes& row : kMemberNotes) {
            if (std::string(kind_.name) == row.kind && patternText(path) == row.pattern) {
                const Json::Value notes = row.notes();
                for (const std::string& name : notes.getMemberNames()) {
                    schema[name] = notes[name];
                }
            }
        }
        return schema;
    }

    Json::Value object(const Json::Value& value, JsonPath& path, std::set<std::string>& nested) {
        Json::Value schema(Json::objectValue);
        schema["type"] = "object";
        Json::Value& properties = schema["properties"] = Json::Value(Json::objectValue);
        for (const std::string& name : value.getMemberNames()) {
            path.push_back(PathStep::member(name));
            properties[name] = node(value[name], path, nested);
            path.pop_back();
        }
        // Records the class reads but does not write back.
        const std::string here = patternText(path);
        for (const Nesting& row : nestings()) {
            const std::string pattern = row.pattern;
            if (std::string(kind_.name) != row.kind || pattern.rfind(here + "/", 0) != 0) {
                continue;
            }
            const std::string name = pattern.substr(here.size() + 1);
            if (name.find('/') != std::string::npos || value.isMember(name)) {
                continue;
            }
            nested.insert(row.child);
            properties[name]["$ref"] = std::string("#/$defs/") + row.child;
            properties[name]["description"] = "Read, but not written back";
        }
        copies(schema, value, path);
        writtenOnlyWhen(schema, value, path);
        schema["additionalProperties"] = false;
        return schema;
    }

    // A member the class writes only while a sibling holds one value: in a document whose
    // sibling holds another (or none), the member is read but never written back.
    void writtenOnlyWhen(Json::Value& schema, const Json::Value& value, JsonPath& path) {
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
    void copies(Json::Value& schema, const Json::Value& value, JsonPath& path) {
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
    bool isCopyOf(const std::string& name, const std::string& source, JsonPath& path,
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

    Json::Value array(const Json::Value& value, JsonPath& path, std::set<std::string>& nested) {
        Json::Value schema(Json::objectValue);
        schema["type"] = "array";
        if (value.empty()) {
            return schema;
        }
        path.push_back(PathStep::element(0));
        schema["items"] = node(value[0], path, nested);
        path.pop_back();
        const Json::ArrayIndex most = mostElements(value, path);
        if (most > 0) {
            schema["maxItems"] = most;
        }
        return schema;
    }

    // The most elements the class keeps of a longer array, or 0 when it keeps all it was
    // probed with.
    Json::ArrayIndex mostElements(const Json::Value& value, const JsonPath& path) {
        Json::Value longer = value;
        while (longer.size() < kLongestProbedArray) {
            longer.append(distinctCopy(value[0], longer.size()));
            const Reading reading = readAs(kind_, replacedAt(sample_, path, longer));
            Json::Value understood = reading.understood;
            const Json::Value* written = nodeAt(understood, path);
            if (reading.failed || written == nullptr || !written->isArray()) {
                return 0;
            }
            if (written->size() < longer.size()) {
                return written->size();
            }
        }
        return 0;
    }

    // A copy of an element that a list kept as a set would not merge with the others: every
    // integer in it moved on by `offset`.
    static Json::Value distinctCopy(const Json::Value& element, Json::ArrayIndex offset) {
        if (element.isObject() || element.isArray()) {
            Json::Value copy = element;
            for (auto it = copy.begin(); it != copy.end(); ++it) {
                *it = distinctCopy(*it, offset);
            }
            return copy;
        }
        if (element.isUInt64() && !element.isInt64()) {
            return Json::Value(element.asUInt64() - offset);
        }
        return element.isIntegral() ? Json::Value(element.asInt64() + offset) : element;
    }

    Json::Value scalar(const Json::Value& value, const JsonPath& path) {
        if (!isRead(value, path)) {
            return neverRead(value, path);
        }
        switch (value.type()) {
            case Json::stringValue:
                return text(value.asString(), path);
            case Json::intValue:
            case Json::uintValue:
                return integer(value, path);
            default: {
                Json::Value schema(Json::objectValue);
                schema["type"] = jsonTypeName(value);
                return schema;
            }
        }
    }

    Json::Value text(const std::string& value, const JsonPath& path) {
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
    void freeText(Json::Value& schema, const JsonPath& path) {
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
    void hiddenState(Json::Value& schema, const JsonPath& path) {
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
    Json::Value refusal(const JsonPath& path, const std::string& spelling) {
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
    void names(Json::Value& schema, const JsonPath& path) {
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

    Json::Value integer(const Json::Value& value, const JsonPath& path) {
        Json::Value schema(Json::objectValue);
        schema["type"] = keeps(path, Json::Value(value.asDouble() + 0.5)) ? "number" : "integer";
        highest(schema, value, path);
        lowest(schema, value, path);
        return schema;
    }

    // The largest number kept unchanged, found between powers of two and then bisected.
    void highest(Json::Value& schema, const Json::Value& value, const JsonPath& path) {
        Json::UInt64 kept = 0;
        if (value.isUInt64()) {
            kept = value.asUInt64();
        } else if (!keeps(path, Json::Value(Json::UInt64(0)))) {
            return;
        }
        Json::UInt64 refused = 0;
        for (unsigned bits : {7U, 8U, 15U, 16U, 31U, 32U, 63U, 64U}) {
            const Json::UInt64 top = bits == 64 ? std::numeric_limits<Json::UInt64>::max()
                                                : (Json::UInt64(1) << bits) - 1;
            for (Json::UInt64 candidate : {top, top + 1}) {
                if (refused == 0 && candidate > kept && candidate != 0) {
                    if (keeps(path, Json::Value(candidate))) {
                        kept = candidate;
                    } else {
                        refused = candidate;
                    }
                }
            }
        }
        if (refused == 0) {
            return;
        }
        while (refused - kept > 1) {
            const Json::UInt64 middle = kept + (refused - kept) / 2;
            (keeps(path, Json::Value(middle)) ? kept : refused) = middle;
        }
        schema["maximum"] = kept;
    }

    void lowest(Json::Value& schema, const Json::Value& value, const JsonPath& path) {
        Json::Int64 kept = 0;
        if (value.isInt64() && value.asInt64() < 0) {
            kept = value.asInt64();
        } else if (!keeps(path, Json::Value(Json::Int64(0)))) {
            return;
        }
        Json::Int64 refused = 0;
        for (unsigned bits : {7U, 15U, 31U, 63U}) {
            const Json::Int64 bottom = -(Json::Int64(1) << (bits - 1)) * 2;
            for (Json::Int64 candidate : {Json::Int64(-1), bottom, bottom - (bits < 63 ? 1 : 0)}) {
                if (refused == 0 && candidate < kept) {
                    if (keeps(path, Json::Value(candidate))) {
                        kept = candidate;
                    } else {
                        refused = candidate;
                    }
                }
            }
        }
        if (refused == 0) {
            return;
        }
        while (kept - refused > 1) {
            const Json::Int64 middle = kept - (kept - refused) / 2;
            (keeps(path, Json::Value(middle)) ? kept : refused) = middle;
        }
        schema["minimum"] = kept;
    }

    // A member the class writes without reading it: fixed to what it writes unless another
    // member of the document changes that.
    Json::Value neverRead(const Json::Value& value, const JsonPath& path) {
        Json::Value schema(Json::objectValue);
        schema["readOnly"] = true;
        schema["deprecated"] = true;
        if (dependsOnOthers(value, path)) {
            schema["type"] = jsonTypeName(value);
            schema["description"] =
                "Written by the library from other members, never read: its value here is "
                "ignored";
        } else {
            schema["const"] = value;
            schema["description"] =
                "Written by the library, never read: any other value is dropped";
        }
        return schema;
    }

    bool dependsOnOthers(const Json::Value& value, const JsonPath& path) {
        JsonPath parentPath(path.begin(), path.end() - 1);
        Json::Value copy = sample_;
        const Json::Value& parent = *nodeAt(copy, parentPath);
        for (const std::string& name : parent.getMemberNames()) {
            if (name == path.back().key) {
                continue;
            }
            JsonPath sibling = parentPath;
            sibling.push_back(PathStep::member(name));
            for (const Json::Value& other : alternativesTo(parent[name])) {
                const Reading reading = readAs(kind_, replacedAt(sample_, sibling, other));
                Json::Value understood = reading.understood;
                const Json::Value* written = nodeAt(understood, path);
                if (!reading.failed && written != nullptr && !sameValue(*written, value)) {
                    return true;
                }
            }
        }
        return false;
    }

    // Other values of a member's type: the next one, and for texts every catalogue name.
    static std::vector<Json::Value> alternativesTo(const Json::Value& value) {
        std::vector<Json::Value> others;
        Json::Value other;
        if (otherValueOfType(value, other)) {
            others.push_back(other);
        }
        if (value.isString()) {
            for (const NameCatalogue& catalogue : nameCatalogues()) {
                for (const std::string& name : catalogue.names) {
                    others.emplace_back(name);
                }
            }
        }
        return others;
    }

    bool isRead(const Json::Value& value, const JsonPath& path) {
        if (changesReading(replacedAt(sample_, path, probeValue())) ||
            changesReading(removedAt(sample_, path))) {
            return true;
        }
        Json::Value other;
        return otherValueOfType(value, other) && changesReading(replacedAt(sample_, path, other));
    }

    bool changesReading(const Json::Value& document) {
        return !sameReading(readAs(kind_, document), baseline_);
    }

    // Whether the class writes the value back unchanged at the same place.
    bool keeps(const JsonPath& path, const Json::Value& value) {
        const Reading reading = readAs(kind_, replacedAt(sample_, path, value));
        if (reading.failed) {
            return false;
        }
        Json::Value understood = reading.understood;
        const Json::Value* written = nodeAt(understood, path);
        return written != nullptr && written->type() != Json::nullValue &&
               jsonTypeName(*written) == std::string(jsonTypeName(value)) &&
               sameValue(*written, value);
    }

    static bool contains(const Json::Value& array, const std::string& text) {
        for (const Json::Value& item : array) {
            if (item.asString() == text) {
                return true;
            }
        }
        return false;
    }

    const Kind& kind_;
    Json::Value sample_;
    Reading baseline_;
};

}  // namespace

std::string schemaFileName(const Kind& kind) {
    return std::string(kind.name) + ".schema.json";
}

const std::vector<NameCatalogue>& nameCatalogues() {
    // clang-format off
    static const std::vector<NameCatalogue> catalogues = {
        {"state names",      namesOf(&stateName, State::STATE_DISABLED, State::STATE_PAUSED + 1), &nothingToSay, {}},
        {"stream types",     namesOf(&streamTypeName, StreamType::STREAM_AUDIO, StreamType::STREAM_TEST + 1), &nothingToSay, {}},
        {"interface kinds",  interfaceKindNames(), &nothingToSay, interfaceKindAliases()},
        {"alarm severities", namesOf(&severityName, AlarmSeverity::SEVERITY_OK, AlarmSeverity::SEVERITY_CRITICAL), &nothingToSay, {}},
        {"video formats",    videoFormatTexts(), &videoFormatDetails, {}},
    };
    // clang-format on
    return catalogues;
}

Json::Value schemaOf(const Kind& kind) {
    Json::Value schema(Json::objectValue);
    schema["$schema"] = "https://json-schema.org/draft/2020-12/schema";
    schema["$id"] = kSchemaBase + schemaFileName(kind);
    schema["title"] = std::string("zelCommonTypes ") + kind.name;
    std::set<std::string> nested;
    const Json::Value body = SchemaBuilder(kind).build(nested);
    for (const std::string& member : body.getMemberNames()) {
        schema[member] = body[member];
    }
    std::set<std::string> done;
    while (nested.size() > done.size()) {
        for (const std::string& name : std::set<std::string>(nested)) {
            if (done.insert(name).second) {
                const Kind& child = *findKind(name);
                Json::Value definition = SchemaBuilder(child).build(nested);
                definition["properties"].removeMember("$schema");
                if (definition["properties"].empty()) {
                    definition.removeMember("properties");
                }
                definition["title"] = name;
                schema["$defs"][name] = definition;
            }
        }
    }
    return schema;
}

}  // namespace zelct
