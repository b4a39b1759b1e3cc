#include "Alarm.h"

#include <iterator>

#include "../common/JsonMember.h"

namespace {

// Indexed by the severity number.
constexpr zelcommon::Named<AlarmSeverity::AlarmSeverity_en> kSeverities[] = {
    {AlarmSeverity::SEVERITY_OK, "ok"},
    {AlarmSeverity::SEVERITY_WARNING, "warning"},
    {AlarmSeverity::SEVERITY_ERROR, "error"},
    {AlarmSeverity::SEVERITY_CRITICAL, "critical"},
};

constexpr int kSeverityCount = static_cast<int>(std::size(kSeverities));

using Row = Alarm::CatalogueRow;
constexpr AlarmSeverity::AlarmSeverity_en kOk = AlarmSeverity::SEVERITY_OK;
constexpr AlarmSeverity::AlarmSeverity_en kWarning = AlarmSeverity::SEVERITY_WARNING;
constexpr AlarmSeverity::AlarmSeverity_en kError = AlarmSeverity::SEVERITY_ERROR;

// Every alarm kind a component can raise, with the severity and text it starts with.
// 3 is left unassigned on purpose; the last row answers for every type without a row.
// clang-format off
constexpr Row kCatalogue[] = {
    {Alarm::NO_PACKETS_RECEIVED, "NO_PACKETS_RECEIVED", kWarning, "No packets being received"},
    {Alarm::NETWORK_DELAY_TOO_LARGE, "NETWORK_DELAY_TOO_LARGE", kError, "Network Delay is greater than the link offset. Packets arriving too late to be played."},
    {Alarm::NETWORK_DELAY_TOO_SMALL, "NETWORK_DELAY_TOO_SMALL", kError, "Network Delay is smaller than the minimum we can handle."},
    {Alarm::SESSION_CONFIG_MISMATCH, "SESSION_CONFIG_MISMATCH", kError, "Session paused due to configuration mismatch between session and global config"},
    {Alarm::INTERFACE_CONFIG_MISMATCH, "INTERFACE_CONFIG_MISMATCH", kError, "Configuration mismatch between current config and input on physical interface"},
    {Alarm::SYSTEM_CLOCK_FAILURE, "SYSTEM_CLOCK_FAILURE", kError, "System clock is in failure"},
    {Alarm::LINK_DOWN, "LINK_DOWN", kWarning, "Link is down"},
    {Alarm::REDUNDANT_LINK_DOWN, "REDUNDANT_LINK_DOWN", kWarning, "Link is down on redundant interface."},
    {Alarm::STREAM_OUT_OF_SYNC_WITH_PTP, "STREAM_OUT_OF_SYNC_WITH_PTP", kError, "Detected that the stream is out of sync with PTP time"},
    {Alarm::STREAM_PAUSED_PTP_FAILURE, "STREAM_PAUSED_PTP_FAILURE", kError, "Stream is paused because PTP is on a failure state"},
    {Alarm::SESSION_NAME_CONFLICT, "SESSION_NAME_CONFLICT", kError, "Session advertisement has failed because of a conflicting Session name"},
    {Alarm::STREAMS_NOT_SOF_ALIGNED, "STREAMS_NOT_SOF_ALIGNED", kError, "One or more streams in this session are not SOF aligned"},
    {Alarm::RTP_ALIGNMENT_FAILURE, "RTP_ALIGNMENT_FAILURE", kError, "RTP alignment failure"},
    {Alarm::EXTERNAL_CLOCK_ATTEMPTING_SLAVE, "EXTERNAL_CLOCK_ATTEMPTING_SLAVE", kError, "External System clock attempting Slave"},
    {Alarm::VIDEO_FORMAT_MISMATCH, "VIDEO_FORMAT_MISMATCH", kError, "Video Format Mismatch"},
    {Alarm::OUT_OF_ORDER_PACKETS, "OUT_OF_ORDER_PACKETS", kWarning, "Out of order packets"},
    {Alarm::STRAY_PACKETS, "STRAY_PACKETS", kWarning, "Stray packets"},
    {Alarm::PACKETS_DISCARDED_HIGH_BANDWIDTH, "PACKETS_DISCARDED_HIGH_BANDWIDTH", kError, "Packets discarded due to high bandwidth usage"},
    {Alarm::BAD_LINK_OFFSET, "BAD_LINK_OFFSET", kError, "Bad link offset"},
    {Alarm::VIDEO_PAIR_MISSING, "VIDEO_PAIR_MISSING", kWarning, "Video pair missing"},
    {Alarm::MISSING_PACKET, "MISSING_PACKET", kError, "Missing packet"},
    {Alarm::VIDEO_MISALIGNMENT, "VIDEO_MISALIGNMENT", kError, "Video misalignment"},
    {Alarm::ANCILLARY_FRAME_POINTER_OVERFLOW, "ANCILLARY_FRAME_POINTER_OVERFLOW", kWarning, "Ancillary packets discarded due to frame pointer overflow"},
    {Alarm::FRAME_DROP, "FRAME_DROP", kError, "Frame drop"},
    {Alarm::VIDEO_PAIR_MISMATCH, "VIDEO_PAIR_MISMATCH", kWarning, "Video pair mismatch"},
    {Alarm::GLOBAL_CHANNEL_COUNT_MISMATCH, "GLOBAL_CHANNEL_COUNT_MISMATCH", kWarning, "Global Channel Count Mismatch."},
    {Alarm::NMOS_MIXED_MODE_UNSUPPORTED, "NMOS_MIXED_MODE_UNSUPPORTED", kError, "Mixed mode is not supported by NMOS ISO 5. Using Mixed-Mode while NMOS is enabled will default NMOS to 8 channels per stream."},
    {Alarm::REBOOT_REQUIRED, "REBOOT_REQUIRED", kWarning, "Board Needs to be rebooted for settings to apply"},
    {Alarm::ALARM_TYPE_UNDEFINED, "ALARM_TYPE_UNDEFINED", kOk, "Not defined"},
};
// clang-format on

constexpr const Row& kFallback = kCatalogue[std::size(kCatalogue) - 1];

constexpr bool severitiesAreIndexedByNumber() {
    for (int i = 0; i < kSeverityCount; ++i) {
        if (kSeverities[i].value != i) {
            return false;
        }
    }
    return true;
}
static_assert(severitiesAreIndexedByNumber(), "severity rows must be indexed by their number");

constexpr bool catalogueAscendsToFallback() {
    for (std::size_t i = 1; i < std::size(kCatalogue); ++i) {
        if (kCatalogue[i - 1].type >= kCatalogue[i].type) {
            return false;
        }
    }
    return kFallback.type == Alarm::ALARM_TYPE_UNDEFINED;
}
static_assert(catalogueAscendsToFallback(), "catalogue rows must ascend and end with the fallback");

}  // namespace

// ---- AlarmSeverity ----

AlarmSeverity::AlarmSeverity() : severity(SEVERITY_OK) {}

AlarmSeverity::AlarmSeverity(AlarmSeverity_en value) : severity(value) {}

int AlarmSeverity::setSeverity(AlarmSeverity_en value) {
    if (value > severity) {
        severity = value;
    }
    return 0;
}

AlarmSeverity::AlarmSeverity_en AlarmSeverity::getSeverity() const {
    return severity;
}

std::string AlarmSeverity::getSeverityStr() const {
    return nameOf(severity);
}

AlarmSeverity& AlarmSeverity::operator=(const AlarmSeverity& other) {
    severity = other.getSeverity();
    return *this;
}

const char* AlarmSeverity::nameOf(int value) {
    const bool known = value >= 0 && value < kSeverityCount;
    return known ? kSeverities[value].text : kSeverities[SEVERITY_OK].text;
}

namespace {

struct SeverityKey {
    enum : std::size_t { severity, count };
    static constexpr const char* names[] = {"severity"};
};

// Written in this order, after the severity, which writes its own key into the alarm's object.
struct AlarmKey {
    enum : std::size_t { description, type, count };
    static constexpr const char* names[] = {"description", "type"};
};

}  // namespace

void AlarmSeverity::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<SeverityKey>());
    out[SeverityKey::severity] = Json::Value(nameOf(severity));
}

// "ok" and every unknown text fall through to ok.
void AlarmSeverity::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<SeverityKey>());
    const std::string text = in.text(SeverityKey::severity, "");
    severity = SEVERITY_OK;
    for (const auto& row : kSeverities) {
        if (text == row.text) {
            severity = row.value;
            return;
        }
    }
}

// ---- Alarm ----

Alarm::Alarm() : type(ALARM_TYPE_UNDEFINED) {}

Alarm::Alarm(AlarmType value) : type(value) {
    const CatalogueRow& row = catalogueRow(value);
    severity = AlarmSeverity(row.severity);
    description = row.description;
}

Alarm::AlarmType Alarm::getType() const {
    return type;
}

void Alarm::setType(AlarmType value) {
    type = value;
}

AlarmSeverity Alarm::getSeverity() const {
    return severity;
}

void Alarm::setSeverity(AlarmSeverity::AlarmSeverity_en value) {
    severity.setSeverity(value);
}

const std::string& Alarm::getDescription() const {
    return description;
}

void Alarm::setDescription(const std::string& text) {
    description = text;
}

Alarm::CatalogueRows Alarm::catalogue() {
    return CatalogueRows{std::begin(kCatalogue), std::end(kCatalogue)};
}

const Alarm::CatalogueRow& Alarm::catalogueRow(AlarmType value) {
    for (const CatalogueRow& row : kCatalogue) {
        if (row.type == value) {
            return row;
        }
    }
    return kFallback;
}

const char* Alarm::typeName(AlarmType value) {
    return catalogueRow(value).name;
}

void Alarm::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<AlarmKey>());
    severity.Serialize(root);
    out[AlarmKey::description] = Json::Value(description);
    out[AlarmKey::type] = Json::Value(static_cast<int>(type));
}

void Alarm::Deserialize(Json::Value& root) {
    severity.Deserialize(root);
    zelcommon::Reader in(root, zelcommon::shapeOf<AlarmKey>());
    description = in.text(AlarmKey::description, "");
    type = static_cast<AlarmType>(in.integer(AlarmKey::type, 0));
}
