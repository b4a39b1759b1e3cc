#include "ChannelTableEntry.h"

#include "../common/JsonMember.h"

ChannelTableEntry::ChannelTableEntry() : id(0), blocked(false) {}

namespace {

constexpr char kId[] = "id";
constexpr char kNameInput[] = "name-input";
constexpr char kName[] = "name";
constexpr char kNameOutput[] = "name-output";
constexpr char kBlocked[] = "blocked";
constexpr char kInput[] = "input";
constexpr char kOutput[] = "output";
constexpr char kMediaType[] = "media-type";
constexpr char kCapabilities[] = "capabilities";

// Written and read in this order ("name" is never read). The media type and the capability
// write into objects already holding the keys they write.
const zelct::Shape<9>& entryShape() {
    static const zelct::Shape<9> shape = [] {
        zelct::Shape<9> entry({kId, kNameInput, kName, kNameOutput, kBlocked, kInput, kOutput,
                               kMediaType, kCapabilities});
        entry.nest(kMediaType, zelct::written(DaifMediaType()));
        entry.nest(kCapabilities, zelct::written(DaifCapabilities()));
        return entry;
    }();
    return shape;
}

}  // namespace

void ChannelTableEntry::Serialize(Json::Value& root) const {
    zelct::Writer out(root, entryShape());
    out[kId] = Json::Value(id);
    out[kNameInput] = Json::Value(nameInput.c_str());
    out[kName] = Json::Value(nameOutput.c_str());
    out[kNameOutput] = Json::Value(nameOutput.c_str());
    out[kBlocked] = Json::Value(blocked);
    input.Serialize(out[kInput]);
    output.Serialize(out[kOutput]);
    mediaType.Serialize(out[kMediaType]);
    capabilities.Serialize(out[kCapabilities]);
}

void ChannelTableEntry::Deserialize(Json::Value& root) {
    zelct::Reader in(root, entryShape());
    id = in.integer(kId, -1);
    nameInput = in.text(kNameInput, "");
    nameOutput = in.text(kNameOutput, "");
    blocked = in.flag(kBlocked, false);
    input.Deserialize(in.member(kInput));
    output.Deserialize(in.member(kOutput));
    mediaType.Deserialize(in.member(kMediaType));
    capabilities.Deserialize(in.member(kCapabilities));
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
