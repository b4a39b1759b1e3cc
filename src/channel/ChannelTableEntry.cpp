#include "ChannelTableEntry.h"

ChannelTableEntry::ChannelTableEntry() : id(0), blocked(false) {}

void ChannelTableEntry::Serialize(Json::Value& root) const {
    root["id"] = Json::Value(id);
    root["name-input"] = Json::Value(nameInput.c_str());
    root["name"] = Json::Value(nameOutput.c_str());
    root["name-output"] = Json::Value(nameOutput.c_str());
    root["blocked"] = Json::Value(blocked);
    input.Serialize(root["input"]);
    output.Serialize(root["output"]);
    mediaType.Serialize(root["media-type"]);
    capabilities.Serialize(root["capabilities"]);
}

void ChannelTableEntry::Deserialize(Json::Value& root) {
    id = root.get("id", -1).asInt();
    nameInput = root.get("name-input", "").asString();
    nameOutput = root.get("name-output", "").asString();
    blocked = root.get("blocked", false).asBool();
    input.Deserialize(root["input"]);
    output.Deserialize(root["output"]);
    mediaType.Deserialize(root["media-type"]);
    capabilities.Deserialize(root["capabilities"]);
}

namespace {

struct UsageText {
    ChannelInfo::ChannelUsage_en code;
    const char* text;
};

// Text of each usage code.
constexpr UsageText kUsageTexts[] = {
    {ChannelInfo::CHANNEL_USAGE_FREE, "free"},
    {ChannelInfo::CHANNEL_USAGE_USED, "used"},
    {ChannelInfo::CHANNEL_USAGE_BLOCKED, "blocked"},
};

// A code missing from the table is taken as blocked: any number may be stored.
const char* usageText(ChannelInfo::ChannelUsage_en code) {
    for (const UsageText& row : kUsageTexts) {
        if (row.code == code) {
            return row.text;
        }
    }
    return usageText(ChannelInfo::CHANNEL_USAGE_BLOCKED);
}

}  // namespace

// number and the usage codes are the holder's to set; see the class comment.
ChannelInfo::ChannelInfo() : inputName("NA"), outputName("NA"), reference(0), enabled(true) {}

// Members go in reverse order of declaration: the session maps (output first) before the
// descriptors and names.
ChannelInfo::~ChannelInfo() = default;

std::string ChannelInfo::usageToString(ChannelDirection_en direction) const {
    return usageText(direction == CHANNEL_DIRECTION_INPUT ? inputUsage : outputUsage);
}
