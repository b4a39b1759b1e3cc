#pragma once

#include <json/json.h>

#include <string>

#include "DaifType.h"
#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

/// One audio channel on a physical interface: a channel number, the interface kind and the
/// channel's position on the interface.
///
/// JSON form: {"id": 3, "type": "madi", "position": 2}. Only the kind's name is written; the
/// reader derives the number from it again. A bare number is also accepted on reading and
/// taken as the channel number alone (kind "auto", position 255).
///
/// Reading never fails on missing keys: "id" defaults to -1, "type" to "auto", "position" to
/// 255 (stored in 8 bits, so 256 becomes 0); an unknown kind name keeps the previous number
/// with the unknown text as name. A value handed over that is not an object is converted as the
/// bare number, so text or an array there throws.
/// Members that throw: "id", "position", "type".
class ZELCOMMONTYPES_API ChannelId : public IJsonSerializable {
public:
    /// Kind "auto", position 0.
    explicit ChannelId(int id);
    /// The kind is resolved from its name by the interface-kind name rules; a channel number
    /// of -1 ignores the name and stays "auto".
    ChannelId(int id, std::string typeName, unsigned char position);
    /// Only the kind number of the given type is used; the name is rebuilt from the number.
    ChannelId(int id, DaifType kind, unsigned char position);
    /// Id 0, kind "auto", position 0, then read from root.
    explicit ChannelId(Json::Value& root);

    /// The channel number.
    int getId() const { return id; }
    /// Replaces the channel number; kind and position stay.
    void setId(int newId) { id = newId; }
    /// The channel's position on the interface.
    unsigned char getPosition() const { return position; }
    /// Replaces the position; number and kind stay.
    void setPosition(unsigned char newPosition) { position = newPosition; }
    /// A copy of the interface kind.
    DaifType getType() const { return type; }

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

private:
    int id;
    DaifType type;
    unsigned char position;
};
