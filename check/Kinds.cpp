#include "Kinds.h"

#include <algorithm>
#include <map>

#include "zelCommonTypes.h"

namespace zelct {

namespace {

template <class T>
std::unique_ptr<IJsonSerializable> make() {
    return std::make_unique<T>();
}

// A channel identifier has no default constructor; reading starts from the state that its
// reading constructor starts from (id 0, "auto", position 0).
std::unique_ptr<IJsonSerializable> makeChannelId() {
    return std::make_unique<ChannelId>(0);
}

// Levenshtein distance: insertions, deletions and substitutions of one byte each.
size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

}  // namespace

std::string closestName(const std::string& typed, const std::vector<std::string>& names) {
    // A third of the name may be off, at least one letter and at most three: more than that
    // suggests names that have nothing to do with what was typed.
    const size_t allowed = std::min<size_t>(3, std::max<size_t>(1, typed.size() / 3));
    std::string best;
    size_t bestDistance = allowed + 1;
    for (const std::string& name : names) {
        const size_t distance = editDistance(typed, name);
        if (distance < bestDistance) {
            best = name;
            bestDistance = distance;
        }
    }
    return best;
}

std::string describedKind(const Kind& kind) {
    return std::string(kind.description) + " (" + kind.className + ")";
}

std::vector<std::string> kindNames() {
    std::vector<std::string> names;
    for (const Kind& kind : allKinds()) {
        names.emplace_back(kind.name);
    }
    return names;
}

Json::Value normalizedDocument(const Kind& kind, const Json::Value& understood) {
    if (!understood.isNull()) {
        return understood;
    }
    return Json::Value(kind.topLevel == TopLevel::Array ? Json::arrayValue : Json::objectValue);
}

const std::vector<Kind>& allKinds() {
    // clang-format off
    static const std::vector<Kind> kinds = {
        {"system-info",         TopLevel::Object, "SystemBasicInfo",     "SystemBasicInfo.h",     "the board's identity and health document", &make<SystemBasicInfo>},
        {"channel-tables",      TopLevel::Array,  "ChannelTables",       "ChannelTables.h",       "the channel tables of a device, one per interface type", &make<ChannelTables>},
        {"channel-table",       TopLevel::Object, "ChannelTable",        "ChannelTables.h",       "the rows of one interface type, an element of channel-tables", &make<ChannelTable>},
        {"channel-table-entry", TopLevel::Object, "ChannelTableEntry",   "ChannelTableEntry.h",   "one row of a channel table, an element of \"channels\"", &make<ChannelTableEntry>},
        {"channel-list",        TopLevel::Array,  "ChannelList",         "ChannelList.h",         "the channels one user holds", &make<ChannelList>},
        {"channel-id",          TopLevel::Object, "ChannelId",           "ChannelId.h",           "one channel on an interface, an element of channel-list", &makeChannelId},
        {"session-streams",     TopLevel::Array,  "SessionStreamList",   "SessionStreamList.h",   "the network streams of media sessions", &make<SessionStreamList>},
        {"session-stream",      TopLevel::Object, "SessionStreamBasics", "SessionStreamList.h",   "one network stream, an element of session-streams", &make<SessionStreamBasics>},
        {"alarms",              TopLevel::Object, "AlarmManager",        "AlarmManager.h",        "the set of raised alarms, {\"alarms\": [...]}", &make<AlarmManager>},
        {"alarm",               TopLevel::Object, "Alarm",               "Alarm.h",               "one alarm: severity, description, type", &make<Alarm>},
        {"eth",                 TopLevel::Object, "EthBasicInfo",        "EthBasicInfo.h",        "one Ethernet interface with its SFP module, an element of \"eth\"", &make<EthBasicInfo>},
        {"eth-bandwidth",       TopLevel::Object, "EthBandwidthInfo",    "EthBasicInfo.h",        "receive and transmit bandwidth of up to two interfaces", &make<EthBandwidthInfo>},
        {"sfp",                 TopLevel::Object, "SfpInfo",             "SfpInfo.h",             "an SFP module record, as under \"sfp\"", &make<SfpInfo>},
        {"video-format",        TopLevel::Object, "VideoFormat",         "VideoFormat.h",         "a video format, {\"format\": \"1080P59\"}", &make<VideoFormat>},
        {"device-capabilities", TopLevel::Object, "DeviceCapabilities",  "DeviceCapabilities.h",  "{\"deviceCapabilities\": {...}}: interfaces and stream counts", &make<DeviceCapabilities>},
        {"process-info",        TopLevel::Object, "ProcessBasicInfo",    "DeviceCapabilities.h",  "ports of a service process, as under \"rtsp\"", &make<ProcessBasicInfo>},
        {"product-info",        TopLevel::Object, "TarvikInfo",          "TarvikInfo.h",          "the main-board record, as under \"product-info\"", &make<TarvikInfo>},
        {"daughter-board",      TopLevel::Object, "DaughterBoard",       "TarvikInfo.h",          "a daughter board, as under \"daughter-card\"", &make<DaughterBoard>},
        {"temperature",         TopLevel::Object, "SystemTemperature",   "TarvikInfo.h",          "the FPGA temperature, as under \"temperature\"", &make<SystemTemperature>},
        {"fan-speed",           TopLevel::Object, "FanSpeed",            "TarvikInfo.h",          "the main fan speed, as under \"fan-speed\"", &make<FanSpeed>},
        {"cpu-load",            TopLevel::Object, "CpuLoadAverage",      "TarvikInfo.h",          "the CPU load averages, as under \"cpu-loadavg\"", &make<CpuLoadAverage>},
        {"system-error",        TopLevel::Object, "SystemError",         "TarvikInfo.h",          "one system error, an element of \"errors\"", &make<SystemError>},
    };
    // clang-format on
    return kinds;
}

const std::vector<Nesting>& nestings() {
    // Where a kind's document holds a record of another kind. The nested record is read by that
    // kind's own class, so its schema is the other kind's, shared through "$defs". "*" stands for
    // every element of an array.
    // clang-format off
    static const std::vector<Nesting> rows = {
        {"system-info",         "/eth/*",           "eth"},
        {"system-info",         "/errors/*",        "system-error"},
        {"system-info",         "/product-info",    "product-info"},
        {"system-info",         "/rtsp",            "process-info"},
        {"system-info",         "/advertisement",   "process-info"},
        {"system-info",         "/temperature",     "temperature"},
        {"system-info",         "/fan-speed",       "fan-speed"},
        {"system-info",         "/cpu-loadavg",     "cpu-load"},
        {"channel-tables",      "/*",               "channel-table"},
        {"channel-table",       "/channels/*",      "channel-table-entry"},
        {"channel-table-entry", "/input",           "session-stream"},
        {"channel-table-entry", "/output",          "session-stream"},
        {"channel-list",        "/*",               "channel-id"},
        {"session-streams",     "/*",               "session-stream"},
        {"alarms",              "/alarms/*",        "alarm"},
        {"eth",                 "/sfp",             "sfp"},
        {"product-info",        "/daughter-card",   "daughter-board"},
    };
    // clang-format on
    return rows;
}

namespace {

// The pattern's steps ("/eth/*" -> "eth", "*"); a name's "~1" and "~0" are not used.
std::vector<std::string> patternSteps(const std::string& pattern) {
    std::vector<std::string> steps;
    size_t at = 0;
    while (at < pattern.size()) {
        const size_t next = pattern.find('/', at + 1);
        steps.push_back(
            pattern.substr(at + 1, next == std::string::npos ? std::string::npos : next - at - 1));
        at = next == std::string::npos ? pattern.size() : next;
    }
    return steps;
}

using RecordVisit = std::function<void(const Kind&, const Json::Value&, const JsonPath&)>;

void visitRecords(const Kind& kind, const Json::Value& node, JsonPath& path,
                  const RecordVisit& visit);

// The nodes a pattern's remaining steps lead to, each visited as the child kind.
void followPattern(const std::vector<std::string>& steps, size_t step, const Kind& child,
                   const Json::Value& node, JsonPath& path, const RecordVisit& visit) {
    if (step == steps.size()) {
        visitRecords(child, node, path, visit);
        return;
    }
    if (steps[step] == "*") {
        if (!node.isArray()) {
            return;
        }
        for (Json::ArrayIndex i = 0; i < node.size(); ++i) {
            path.push_back(PathStep::element(i));
            followPattern(steps, step + 1, child, node[i], path, visit);
            path.pop_back();
        }
        return;
    }
    const Json::Value* member =
        node.isObject() ? node.find(steps[step].data(), steps[step].data() + steps[step].size())
                        : nullptr;
    if (member != nullptr) {
        path.push_back(PathStep::member(steps[step]));
        followPattern(steps, step + 1, child, *member, path, visit);
        path.pop_back();
    }
}

// The nestings of each kind with their patterns split, worked out once: a document may hold
// thousands of records.
struct SplitNesting {
    std::vector<std::string> steps;
    const Kind* child;
};
const std::vector<SplitNesting>& nestingsOf(const Kind& kind) {
    static const std::map<std::string, std::vector<SplitNesting>> byKind = [] {
        std::map<std::string, std::vector<SplitNesting>> split;
        for (const Nesting& row : nestings()) {
            split[row.kind].push_back({patternSteps(row.pattern), findKind(row.child)});
        }
        return split;
    }();
    static const std::vector<SplitNesting> none;
    const auto found = byKind.find(kind.name);
    return found != byKind.end() ? found->second : none;
}

void visitRecords(const Kind& kind, const Json::Value& node, JsonPath& path,
                  const RecordVisit& visit) {
    visit(kind, node, path);
    for (const SplitNesting& row : nestingsOf(kind)) {
        followPattern(row.steps, 0, *row.child, node, path, visit);
    }
}

}  // namespace

void forEachRecord(const Kind& kind, const Json::Value& document, const RecordVisit& visit) {
    JsonPath path;
    visitRecords(kind, document, path, visit);
}

const Kind* findKind(const std::string& name) {
    for (const Kind& kind : allKinds()) {
        if (name == kind.name) {
            return &kind;
        }
    }
    return nullptr;
}

const char* topLevelText(TopLevel topLevel) {
    return topLevel == TopLevel::Array ? "an array" : "an object";
}

bool hasTopLevel(const Kind& kind, const Json::Value& document) {
    return kind.topLevel == TopLevel::Array ? document.isArray() : document.isObject();
}

}  // namespace zelct
