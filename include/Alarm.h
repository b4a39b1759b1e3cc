#pragma once

#include <json/json.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

/// Gravity of an alarm, written as its text alone: {"severity": "warning"}.
///
/// The numbers are ordered by gravity; setSeverity relies on that order to only ever raise.
/// Any number is stored as given: a value outside 0..3 reads and writes as "ok".
///
/// Reading never fails on content: an unknown, empty or missing text reads as ok (the names
/// are compared exactly, so "Error" is unknown).
/// Members that throw: "severity".
class ZELCOMMONTYPES_API AlarmSeverity : public IJsonSerializable {
public:
    /// Severity numbers, in ascending order of gravity.
    enum AlarmSeverity_en : std::int32_t {
        SEVERITY_OK = 0,       ///< Nothing wrong; written as "ok".
        SEVERITY_WARNING = 1,  ///< Written as "warning".
        SEVERITY_ERROR = 2,    ///< Written as "error".
        SEVERITY_CRITICAL = 3  ///< Written as "critical".
    };

    /// Severity ok.
    AlarmSeverity();
    /// Holds the given severity as it is, even outside 0..3.
    AlarmSeverity(AlarmSeverity_en severity);
    /// Copies the other side's severity.
    AlarmSeverity(const AlarmSeverity& other) = default;

    /// Stores the given value only when it is graver than the current one, so that several
    /// reporters of one alarm end with the gravest severity any of them gave. Always 0.
    int setSeverity(AlarmSeverity_en severity);
    /// The stored severity number.
    AlarmSeverity_en getSeverity() const;
    /// Text of the stored severity, as nameOf gives it.
    std::string getSeverityStr() const;

    /// Takes the other side's severity as it is, so unlike setSeverity it can lower it.
    AlarmSeverity& operator=(const AlarmSeverity& other);

    /// Text of a severity number; "ok" for any number outside 0..3.
    static const char* nameOf(int severity);

    void Serialize(Json::Value& root) const override;
    /// Assigns what it reads, so unlike setSeverity it can lower the severity.
    void Deserialize(Json::Value& root) override;

private:
    AlarmSeverity_en severity;
};

/// One alarm the device reports about itself or its streams: its kind, severity and text,
/// written into the object handed over as
///   {"severity": "warning", "description": "Link is down", "type": 7}.
///
/// Constructing from a kind takes severity and text from the alarm catalogue; kinds without
/// a row of their own (3, negatives, 29 and above) take the "Not defined" row. Reading from
/// JSON keeps exactly what the document carries and never consults the catalogue; missing
/// keys read as type 0, empty description, severity ok.
///
/// Members that throw: "description", "severity", "type".
class ZELCOMMONTYPES_API Alarm : public IJsonSerializable {
public:
    /// Kinds of alarm, numbered as written under "type"; the catalogue holds a row for each but
    /// UNASSIGNED_3.
    enum AlarmType : std::int32_t {
        NO_PACKETS_RECEIVED = 0,
        NETWORK_DELAY_TOO_LARGE = 1,
        NETWORK_DELAY_TOO_SMALL = 2,
        UNASSIGNED_3 = 3,
        SESSION_CONFIG_MISMATCH = 4,
        INTERFACE_CONFIG_MISMATCH = 5,
        SYSTEM_CLOCK_FAILURE = 6,
        LINK_DOWN = 7,
        REDUNDANT_LINK_DOWN = 8,
        STREAM_OUT_OF_SYNC_WITH_PTP = 9,
        STREAM_PAUSED_PTP_FAILURE = 10,
        SESSION_NAME_CONFLICT = 11,
        STREAMS_NOT_SOF_ALIGNED = 12,
        RTP_ALIGNMENT_FAILURE = 13,
        EXTERNAL_CLOCK_ATTEMPTING_SLAVE = 14,
        VIDEO_FORMAT_MISMATCH = 15,
        OUT_OF_ORDER_PACKETS = 16,
        STRAY_PACKETS = 17,
        PACKETS_DISCARDED_HIGH_BANDWIDTH = 18,
        BAD_LINK_OFFSET = 19,
        VIDEO_PAIR_MISSING = 20,
        MISSING_PACKET = 21,
        VIDEO_MISALIGNMENT = 22,
        ANCILLARY_FRAME_POINTER_OVERFLOW = 23,
        FRAME_DROP = 24,
        VIDEO_PAIR_MISMATCH = 25,
        GLOBAL_CHANNEL_COUNT_MISMATCH = 26,
        NMOS_MIXED_MODE_UNSUPPORTED = 27,
        REBOOT_REQUIRED = 28,
        ALARM_TYPE_UNDEFINED = 29
    };

    /// How a reporter raises or clears an alarm; never stored in an Alarm.
    enum AlarmLevel_e : std::int32_t { ALARM_OFF = 0, ALARM_ON = 1 };

    /// One row of the alarm catalogue.
    struct CatalogueRow {
        AlarmType type;                            ///< Kind the row describes.
        const char* name;                          ///< the enumerator's name, "LINK_DOWN"
        AlarmSeverity::AlarmSeverity_en severity;  ///< Severity an alarm of this kind starts with.
        const char* description;                   ///< Text an alarm of this kind starts with.
    };

    /// The rows of the catalogue in ascending order of type, "Not defined" (29) last.
    /// Type 3 is unassigned and has no row.
    struct CatalogueRows {
        const CatalogueRow* first;  ///< First row.
        const CatalogueRow* last;   ///< One past the last row.
        /// First row, for range-based for.
        const CatalogueRow* begin() const { return first; }
        /// One past the last row, for range-based for.
        const CatalogueRow* end() const { return last; }
        /// Number of rows.
        std::size_t size() const { return static_cast<std::size_t>(last - first); }
    };

    /// A blank for Deserialize to fill: type 29, severity ok, empty description.
    Alarm();
    /// Takes severity and description from the catalogue row that applies to the type
    /// (catalogueRow).
    Alarm(AlarmType type);

    /// The alarm's kind, as stored.
    AlarmType getType() const;
    /// Changes the type alone; severity and description stay as they are.
    void setType(AlarmType type);
    /// A copy of the alarm's severity.
    AlarmSeverity getSeverity() const;
    /// Only raises, as AlarmSeverity::setSeverity does.
    void setSeverity(AlarmSeverity::AlarmSeverity_en severity);
    /// The alarm's text.
    const std::string& getDescription() const;
    /// Replaces the alarm's text; type and severity stay.
    void setDescription(const std::string& text);

    /// Every row of the alarm catalogue, for tools that list the kinds.
    static CatalogueRows catalogue();
    /// The row that applies to a type: its own, or the "Not defined" row (type 29) for 3,
    /// negatives and 29 and above.
    static const CatalogueRow& catalogueRow(AlarmType type);
    /// Enumerator name of the row that applies to the type: "LINK_DOWN" for 7,
    /// "ALARM_TYPE_UNDEFINED" for every type that takes the "Not defined" row, 3 included.
    static const char* typeName(AlarmType type);

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

private:
    AlarmType type;
    AlarmSeverity severity;
    std::string description;
};
