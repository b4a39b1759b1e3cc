#pragma once

#include <json/json.h>

#include <cstdint>
#include <list>
#include <string>

#include "DaifType.h"
#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

/// One network stream of a media session.
///
/// JSON form (the stream type and state are written by name, into the record's own object):
/// ~~~
///   "stream"          uint64  stream id
///   "stream-hw-id"    uint32  hardware stream number
///   "session"         uint64  session id
///   "name"            string
///   "stream-name"     string
///   "remote-sid"      uint64  remote session id
///   "remote-sid-str"  string  the remote session id in decimal, for readers without 64-bit
///                             integers; written only, never read
///   "redundant-type"  string
///   "type"            string  "audio", "video", "ancillary", "test", otherwise "undefined"
///   "state"           string  "Disabled", "Enabled", "Paused", otherwise "Undefined"
/// ~~~
///
/// Reading takes 0 or "" for missing keys, except "redundant-type", which reads as "none"
/// (a fresh record holds ""). An unknown type text, "test" included, keeps the type; an
/// unknown state text gives Disabled. "stream-hw-id" keeps its low 32 bits. "remote-sid-str"
/// is never read, so it never throws.
/// Members that throw: "name", "redundant-type", "remote-sid", "session", "state", "stream",
/// "stream-hw-id", "stream-name", "type".
class ZELCOMMONTYPES_API SessionStreamBasics : public IJsonSerializable {
public:
    /// Ids and numbers 0, empty texts, type 0 ("undefined"), state Disabled.
    SessionStreamBasics();

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    uint64_t session;           ///< Session id ("session").
    uint64_t stream;            ///< Stream id ("stream").
    uint32_t streamHwId;        ///< Hardware stream number ("stream-hw-id").
    std::string name;           ///< "name"
    std::string streamName;     ///< "stream-name"
    State state;                ///< "state", by name
    uint64_t remoteSid;         ///< Remote session id ("remote-sid", "remote-sid-str").
    StreamType type;            ///< "type", by name
    std::string redundantType;  ///< "redundant-type"
};

/// Session stream records in the order they were added, written as a bare JSON array.
///
/// The records are read through getList() and added with add(). An empty list writes
/// nothing. Reading appends every element of the array to the list and never clears it:
/// reading the same array twice holds every record twice; start from a new list for a
/// fresh one.
///
/// The array is walked by index: a scalar reads as no elements, an object with members throws,
/// and the records read before a throw stay appended.
class ZELCOMMONTYPES_API SessionStreamList : public IJsonSerializable {
public:
    /// The records, in the order they were added.
    const std::list<SessionStreamBasics>& getList() const { return streams; }
    /// Appends a copy of the record.
    void add(const SessionStreamBasics& record) { streams.push_back(record); }

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

private:
    std::list<SessionStreamBasics> streams;
};
