#pragma once

#include <json/json.h>

#include <string>

// One row of a channel table as a board writes it: the library reads it back exactly.
inline Json::Value channelTableRow(int id) {
    Json::Value stream(Json::objectValue);
    stream["session"] = 1001;
    stream["stream"] = 1;
    stream["stream-hw-id"] = 0;
    stream["name"] = "Studio A";
    stream["stream-name"] = "Studio A mix";
    stream["remote-sid"] = Json::UInt64(1000 + id);
    stream["remote-sid-str"] = std::to_string(1000 + id);
    stream["redundant-type"] = "none";
    stream["type"] = "audio";
    stream["state"] = "Enabled";
    Json::Value row(Json::objectValue);
    row["id"] = id;
    row["name-input"] = "MADI " + std::to_string(id);
    row["name"] = "Channel " + std::to_string(id);
    row["name-output"] = "Channel " + std::to_string(id);
    row["blocked"] = false;
    row["input"] = stream;
    row["output"] = stream;
    row["media-type"]["media-type"] = 0;
    row["media-type"]["string"] = "audio";
    row["capabilities"]["capability"] = 0;
    row["capabilities"]["string"] = "inout";
    return row;
}
