#include "ChannelId.h"

namespace {

// Position read when the document gives none; the channel list replaces it.
constexpr unsigned int kNoPosition = 255;

}  // namespace

ChannelId::ChannelId(int id) : id(id), position(0) {}

ChannelId::ChannelId(int id, std::string typeName, unsigned char position)
    : id(id), position(position) {
    // A channel number of -1 marks a placeholder, whose kind is never taken from a name.
    if (id != -1) {
        type.setNameAndResolve(typeName);
    }
}

ChannelId::ChannelId(int id, DaifType kind, unsigned char position) : id(id), position(position) {
    type.setValueAndName(kind.getValue());
}

ChannelId::ChannelId(Json::Value& root) : id(0), position(0) {
    Deserialize(root);
}

void ChannelId::Serialize(Json::Value& root) const {
    root["id"] = Json::Value(id);
    root["type"] = Json::Value(type.getName());
    root["position"] = Json::Value(static_cast<int>(position));
}

void ChannelId::Deserialize(Json::Value& root) {
    if (!root.isObject()) {
        id = root.asInt();
        type.setValueAndName(DaifType::DAIF_AUTO);
        position = static_cast<unsigned char>(kNoPosition);
        return;
    }
    id = root.get("id", -1).asInt();
    type.setNameAndResolve(root.get("type", "auto").asString());
    position = static_cast<unsigned char>(root.get("position", kNoPosition).asUInt());
}
