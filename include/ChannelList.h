#pragma once

#include <json/json.h>

#include <list>
#include <string>

#include "ChannelId.h"
#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

/// The channels one user of the channel model holds, in the order they were added.
///
/// Removing a channel that is local to this device keeps its position occupied, by another
/// entry at that position or by a dummy entry (id -1, same kind, same position), so that the
/// count of positions on the stream side does not shrink.
///
/// JSON form: a bare array of channel identifiers, [{"id": 1, "type": "madi", "position": 0},
/// ...]; an empty list writes nothing. Reading appends to the list and never clears it; an
/// element without a position takes the number of entries held before it (in 8 bits).
///
/// The array is walked by index: a scalar reads as no elements, an object with members throws,
/// and the elements read before a throw stay appended. Writing a non-empty list into a value
/// that is neither null nor an array throws as well.
class ZELCOMMONTYPES_API ChannelList : public IJsonSerializable {
public:
    /// Appends a copy, duplicates included. Returns 0.
    int addChannel(const ChannelId& channel);
    /// Removes the first entry with the same id, position and kind number. 1 when removed,
    /// 0 otherwise.
    int removeChannel(ChannelId& channel);
    /// Removes the first entry with the same id and kind number, whatever its position, and
    /// keeps that position occupied. 1 when removed, 0 otherwise. Logs each step.
    int removeLocalChannel(ChannelId& channel);
    /// True when there are no entries or only dummies.
    bool isEmpty() const;
    /// Removes every entry, dummies included.
    void clearChannelList();
    /// Entries, dummies included.
    int numChannelEntries() const;
    /// The entries in the order they were added, dummies included.
    const std::list<ChannelId>& getList() const { return entries; }
    /// Distinct positions among all entries, dummies included.
    int getStreamSideChannelCount() const;
    /// Logs the label and every entry at the verbose level.
    void dump(std::string label);

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

private:
    std::list<ChannelId> entries;
};
