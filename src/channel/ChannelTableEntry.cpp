#include "ChannelTableEntry.h"

#include "../common/JsonMember.h"

ChannelTableEntry::ChannelTableEntry() : id(0), blocked(false) {}

namespace {

// Written and read in this order ("name" is never read).
struct Key {
    enum : std::size_t {
        id,
        nameInput,
        name,
        nameOutput,
        blocked,
        input,
        output,
        mediaType,
        capabilities,
        count
    };
    static constexpr const char* names[] = {"id",          "name-input", "name",
                                            "name-output", "blocked",    "input",
                                            "output",      "media-type", "capabilities"};
};

}  // namespace

void ChannelTableEntry::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<Key>());
    out[Key::id] = Json::Value(id);
    out[Key::nameInput] = Json::Value(nameInput.c_str());
    out[Key::name] = Json::Value(nameOutput.c_str());
    out[Key::nameOutput] = Json::Value(nameOutput.c_str());
    out[Key::blocked] = Json::Value(blocked);
    input.Serialize(out[Key::input]);
    output.Serialize(out[Key::output]);
    mediaType.Serialize(out[Key::mediaType]);
    capabilities.Serialize(out[Key::capabilities]);
}

void ChannelTableEntry::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<Key>());
    id = in.integer(Key::id, -1);
    nameInput = in.text(Key::nameInput, "");
    nameOutput = in.text(Key::nameOutput, "");
    blocked = in.flag(Key::blocked, false);
    input.Deserialize(in.member(Key::input));
    output.Deserialize(in.member(Key::output));
    mediaType.Deserialize(in.member(Key::mediaType));
    capabilities.Deserialize(in.member(Key::capabilities));
}

namespace {

// Text of each usage code.
constexpr zelcommon::Named<ChannelInfo::ChannelUsage_en> kUsageTexts[] = {
    {ChannelInfo::CHANNEL_USAGE_FREE, "free"},
    {ChannelInfo::CHANNEL_USAGE_USED, "used"},
    {ChannelInfo::CHANNEL_USAGE_BLOCKED, "blocked"},
};

// A code missing from the table is taken as blocked: any number may be stored.
const char* usageText(ChannelInfo::ChannelUsage_en code) {
    for (const auto& row : kUsageTexts) {
        if (row.value == code) {
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
