// The schema of one value of a sample: its type, the numbers and elements kept, what is unread.
#include "SchemaSteps.h"

#include <limits>
#include <set>
#include <string>
#include <vector>

#include "Alarm.h"

namespace zelct {

std::string patternText(const JsonPath& path) {
    std::string text;
    for (const PathStep& step : path) {
        text += step.isIndex ? "/*" : "/" + pointerText({step}).substr(1);
    }
    return text;
}

namespace {

// Arrays are probed up to this many elements for a limit on what the class keeps.
constexpr Json::ArrayIndex kLongestProbedArray = 8;

const Nesting* nestingAt(const Kind& kind, const std::string& pattern) {
    for (const Nesting& row : nestings()) {
        if (pattern == row.pattern && std::string(kind.name) == row.kind) {
            return &row;
        }
    }
    return nullptr;
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

}  // namespace

Json::Value SchemaBuilder::node(const Json::Value& value, JsonPath& path,
                                std::set<std::string>& nested) {
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

Json::Value SchemaBuilder::object(const Json::Value& value, JsonPath& path,
                                  std::set<std::string>& nested) {
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

Json::Value SchemaBuilder::array(const Json::Value& value, JsonPath& path,
                                 std::set<std::string>& nested) {
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
Json::ArrayIndex SchemaBuilder::mostElements(const Json::Value& value, const JsonPath& path) {
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
Json::Value SchemaBuilder::distinctCopy(const Json::Value& element, Json::ArrayIndex offset) {
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

Json::Value SchemaBuilder::scalar(const Json::Value& value, const JsonPath& path) {
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

Json::Value SchemaBuilder::integer(const Json::Value& value, const JsonPath& path) {
    Json::Value schema(Json::objectValue);
    schema["type"] = keeps(path, Json::Value(value.asDouble() + 0.5)) ? "number" : "integer";
    highest(schema, value, path);
    lowest(schema, value, path);
    return schema;
}

// The largest number kept unchanged, found between powers of two and then bisected.
void SchemaBuilder::highest(Json::Value& schema, const Json::Value& value, const JsonPath& path) {
    Json::UInt64 kept = 0;
    if (value.isUInt64()) {
        kept = value.asUInt64();
    } else if (!keeps(path, Json::Value(Json::UInt64(0)))) {
        return;
    }
    Json::UInt64 refused = 0;
    for (unsigned bits : {7U, 8U, 15U, 16U, 31U, 32U, 63U, 64U}) {
        const Json::UInt64 top =
            bits == 64 ? std::numeric_limits<Json::UInt64>::max() : (Json::UInt64(1) << bits) - 1;
        for (Json::UInt64 candidate : {top, top + 1}) {
            if (refused == 0 && candidate > kept && candidate != 0) {
                sortCandidate(path, candidate, kept, refused);
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

void SchemaBuilder::lowest(Json::Value& schema, const Json::Value& value, const JsonPath& path) {
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
                sortCandidate(path, candidate, kept, refused);
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
Json::Value SchemaBuilder::neverRead(const Json::Value& value, const JsonPath& path) {
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
        schema["description"] = "Written by the library, never read: any other value is dropped";
    }
    return schema;
}

bool SchemaBuilder::dependsOnOthers(const Json::Value& value, const JsonPath& path) {
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
std::vector<Json::Value> SchemaBuilder::alternativesTo(const Json::Value& value) {
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

bool SchemaBuilder::isRead(const Json::Value& value, const JsonPath& path) {
    if (changesReading(replacedAt(sample_, path, probeValue())) ||
        changesReading(removedAt(sample_, path))) {
        return true;
    }
    Json::Value other;
    return otherValueOfType(value, other) && changesReading(replacedAt(sample_, path, other));
}

bool SchemaBuilder::changesReading(const Json::Value& document) {
    return !sameReading(readAs(kind_, document), baseline_);
}

// Whether the class writes the value back unchanged at the same place.
bool SchemaBuilder::keeps(const JsonPath& path, const Json::Value& value) {
    const Reading reading = readAs(kind_, replacedAt(sample_, path, value));
    if (reading.failed) {
        return false;
    }
    Json::Value understood = reading.understood;
    const Json::Value* written = nodeAt(understood, path);
    return written != nullptr && written->type() != Json::nullValue &&
           jsonTypeName(*written) == std::string(jsonTypeName(value)) && sameValue(*written, value);
}

bool SchemaBuilder::contains(const Json::Value& array, const std::string& text) {
    for (const Json::Value& item : array) {
        if (item.asString() == text) {
            return true;
        }
    }
    return false;
}

}  // namespace zelct
