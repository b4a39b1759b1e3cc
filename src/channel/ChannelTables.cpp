#include "ChannelTables.h"

void ChannelTable::Serialize(Json::Value& root) const {
    type.Serialize(root);
    // A table without rows writes no "channels" member; readers take its absence as no rows.
    if (entries.empty()) {
        return;
    }
    Json::Value& channels = root["channels"];
    Json::ArrayIndex i = 0;
    for (const IJsonSerializable& entry : entries) {
        entry.Serialize(channels[i++]);
    }
}

void ChannelTable::Deserialize(Json::Value& root) {
    type.Deserialize(root);
    Json::Value& channels = root["channels"];
    for (Json::ArrayIndex i = 0; i < channels.size(); ++i) {
        ChannelTableEntry entry;
        entry.Deserialize(channels[i]);
        entries.push_back(entry);
    }
}

void ChannelTables::Serialize(Json::Value& root) const {
    Json::ArrayIndex i = 0;
    for (const IJsonSerializable& table : tables) {
        table.Serialize(root[i++]);
    }
}

void ChannelTables::Deserialize(Json::Value& root) {
    for (Json::ArrayIndex i = 0; i < root.size(); ++i) {
        ChannelTable table;
        table.Deserialize(root[i]);
        tables.push_back(table);
    }
}
