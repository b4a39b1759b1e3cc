#include "ChannelId.h"

#include "../common/JsonMember.h"

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

namespace {

// Written and read in this order.
struct Key {
    enum : std::size_t { id, type, position, count };
    static constexpr const char* names[] = {"id", "type", "position"};
};

}  // namespace

void ChannelId::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<Key>());
    out[Key::id] = Json::Value(id);
    out[Key::type] = Json::Value(type.getName());
    out[Key::position] = Json::Value(static_cast<int>(position));
}

void ChannelId::Deserialize(Json::Value& root) {
    if (!root.isObject()) {
        id = root.asInt();
        type.setValueAndName(DaifType::DAIF_AUTO);
        position = static_cast<unsigned char>(kNoPosition);
        return;
    }
    zelcommon::Reader in(root, zelcommon::shapeOf<Key>());
    id = in.integer(Key::id, -1);
    type.setNameAndResolve(in.text(Key::type, "auto"));
    position = static_cast<unsigned char>(in.uinteger(Key::position, kNoPosition));
}
