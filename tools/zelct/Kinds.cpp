#include "Kinds.h"

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

}  // namespace

const std::vector<Kind>& allKinds() {
    // clang-format off
    static const std::vector<Kind> kinds = {
        {"system-info",         TopLevel::Object, "the board's identity and health document (SystemBasicInfo)", &make<SystemBasicInfo>},
        {"channel-tables",      TopLevel::Array,  "the channel tables of a device, one per interface type (ChannelTables)", &make<ChannelTables>},
        {"channel-table",       TopLevel::Object, "the rows of one interface type, an element of channel-tables (ChannelTable)", &make<ChannelTable>},
        {"channel-table-entry", TopLevel::Object, "one row of a channel table, an element of \"channels\" (ChannelTableEntry)", &make<ChannelTableEntry>},
        {"channel-list",        TopLevel::Array,  "the channels one user holds (ChannelList)", &make<ChannelList>},
        {"channel-id",          TopLevel::Object, "one channel on an interface, an element of channel-list (ChannelId)", &makeChannelId},
        {"session-streams",     TopLevel::Array,  "the network streams of media sessions (SessionStreamList)", &make<SessionStreamList>},
        {"session-stream",      TopLevel::Object, "one network stream, an element of session-streams (SessionStreamBasics)", &make<SessionStreamBasics>},
        {"alarms",              TopLevel::Object, "the set of raised alarms, {\"alarms\": [...]} (AlarmManager)", &make<AlarmManager>},
        {"alarm",               TopLevel::Object, "one alarm: severity, description, type (Alarm)", &make<Alarm>},
        {"eth",                 TopLevel::Object, "one Ethernet interface with its SFP module, an element of \"eth\" (EthBasicInfo)", &make<EthBasicInfo>},
        {"eth-bandwidth",       TopLevel::Object, "receive and transmit bandwidth of up to two interfaces (EthBandwidthInfo)", &make<EthBandwidthInfo>},
        {"sfp",                 TopLevel::Object, "an SFP module record, as under \"sfp\" (SfpInfo)", &make<SfpInfo>},
        {"video-format",        TopLevel::Object, "a video format, {\"format\": \"1080P59\"} (VideoFormat)", &make<VideoFormat>},
        {"device-capabilities", TopLevel::Object, "{\"deviceCapabilities\": {...}}: interfaces and stream counts (DeviceCapabilities)", &make<DeviceCapabilities>},
        {"process-info",        TopLevel::Object, "ports of a service process, as under \"rtsp\" (ProcessBasicInfo)", &make<ProcessBasicInfo>},
        {"product-info",        TopLevel::Object, "the main-board record, as under \"product-info\" (TarvikInfo)", &make<TarvikInfo>},
        {"daughter-board",      TopLevel::Object, "a daughter board, as under \"daughter-card\" (DaughterBoard)", &make<DaughterBoard>},
        {"temperature",         TopLevel::Object, "the FPGA temperature, as under \"temperature\" (SystemTemperature)", &make<SystemTemperature>},
        {"fan-speed",           TopLevel::Object, "the main fan speed, as under \"fan-speed\" (FanSpeed)", &make<FanSpeed>},
        {"cpu-load",            TopLevel::Object, "the CPU load averages, as under \"cpu-loadavg\" (CpuLoadAverage)", &make<CpuLoadAverage>},
        {"system-error",        TopLevel::Object, "one system error, an element of \"errors\" (SystemError)", &make<SystemError>},
    };
    // clang-format on
    return kinds;
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
