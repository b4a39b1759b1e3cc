#include "ChannelTables.h"

#include "../common/JsonMember.h"

namespace {

constexpr char kChannels[] = "channels";

}  // namespace

void ChannelTable::Serialize(Json::Value& root) const {
    type.Serialize(root);
    // A table without rows writes no "channels" member; readers take its absence as no rows.
    zelcommon::writeListMember(entries, root, kChannels);
}

void ChannelTable::Deserialize(Json::Value& root) {
    type.Deserialize(root);
    zelcommon::appendList(root[kChannels], entries);
}

void ChannelTables::Serialize(Json::Value& root) const {
    zelcommon::writeElements(tables, root);
}

void ChannelTables::Deserialize(Json::Value& root) {
    zelcommon::appendList(root, tables);
}
