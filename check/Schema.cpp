// The schema of a kind as a whole: the sample it is probed with, the catalogues of names, $defs.
#include "Schema.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "Alarm.h"
#include "DaifType.h"
#include "SchemaSteps.h"
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

}  // namespace

SchemaBuilder::SchemaBuilder(const Kind& kind)
    : kind_(kind),
      sample_(readAs(kind, seedOf(kind)).understood),
      baseline_(readAs(kind, sample_)) {}

Json::Value SchemaBuilder::build(std::set<std::string>& nested) {
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
