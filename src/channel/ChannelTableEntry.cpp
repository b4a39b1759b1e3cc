#include "ChannelTableEntry.h"

#include "../common/JsonMember.h"

ChannelTableEntry::ChannelTableEntry() : id(0), blocked(false) {}

namespace {

// Written and read in this order ("name" is never read). The media type and the capability
// write themselves into objects already holding their two keys, as they cannot shape
// themselves.
const zelct::ObjectShape& entryShape() {
    static const zelct::ObjectShape shape = [] {
        zelct::ObjectShape entry{"id",    "name-input", "name",       "name-output", "blocked",
                                 "input", "output",     "media-type", "capabilities"};
        entry.nest("media-type", zelct::ObjectShape{"media-type", "string"});
        entry.nest("capabilities", zelct::ObjectShape{"capability", "string"});
        return entry;
    }();
    return shape;
}

}  // namespace

void ChannelTableEntry::Serialize(Json::Value& root) const {
    zelct::ShapedObject out(root, entryShape());
    out["id"] = Json::Value(id);
    out["name-input"] = Json::Value(nameInput.c_str());
    out["name"] = Json::Value(nameOutput.c_str());
    out["name-output"] = Json::Value(nameOutput.c_str());
    out["blocked"] = Json::Value(blocked);
    input.Serialize(out["input"]);
    output.Serialize(out["output"]);
    mediaType.Serialize(out["media-type"]);
    capabilities.Serialize(out["capabilities"]);
}

void ChannelTableEntry::Deserialize(Json::Value& root) {
    zelct::ShapedReader in(root, entryShape());
    id = zelct::intMember(in, "id", -1);
    nameInput = zelct::stringMember(in, "name-input", "");
    nameOutput = zelct::stringMember(in, "name-output", "");
    blocked = zelct::boolMember(in, "blocked", false);
    input.Deserialize(in.member("input"));
    output.Deserialize(in.member("output"));
    mediaType.Deserialize(in.member("media-type"));
    capabilities.Deserialize(in.member("capabilities"));
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
