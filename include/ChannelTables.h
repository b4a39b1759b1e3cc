#pragma once

#include <json/json.h>

#include <list>

#include "ChannelTableEntry.h"
#include "DaifType.h"
#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

/// The rows of a channel table that belong to one physical interface type.
///
/// JSON form: {"type": 3, "string": "madi", "channels": [entry, ...]}. A table without rows
/// writes no "channels" member at all. The holders add and read rows through `entries`.
///
/// Reading takes the interface type as DaifType does (a non-empty "string" decides, otherwise
/// "type", default 12) and appends one row per element of "channels": the rows already held
/// stay, so reading the same document twice holds every row twice. A missing "string" or
/// "channels" is added to the caller's document as a null member. "channels" is walked by
/// index: a scalar there reads as no rows, an object with members throws; the rows read
/// before a throw stay appended.
/// Members that throw: "channels", "string", "type".
class ZELCOMMONTYPES_API ChannelTable : public IJsonSerializable {
public:
    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    std::list<ChannelTableEntry> entries;  ///< The rows, in the order they were added ("channels").
    DaifType type;  ///< Interface type the rows belong to ("type", "string").
};

/// The channel tables a device holds, in the order they were added; written as a bare JSON
/// array of tables. An empty set writes nothing: a null value stays null.
///
/// Reading appends one table per element of the array and keeps the tables already held.
/// The array is walked by index: a scalar reads as no tables, an object with members throws,
/// and the tables read before a throw stay appended.
class ZELCOMMONTYPES_API ChannelTables : public IJsonSerializable {
public:
    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

    std::list<ChannelTable> tables;  ///< The tables, in the order they were added.
};
