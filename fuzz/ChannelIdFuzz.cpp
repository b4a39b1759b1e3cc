// Channel identifiers, as an object or as a bare channel number.
#include "ChannelId.h"
#include "FuzzHarness.h"

template <>
struct fuzz::Handling<ChannelId> {
    static ChannelId make() { return ChannelId(0); }
    static void exercise(ChannelId& channel) {
        // The constructors that resolve a kind by name or by number, from what was read.
        const DaifType kind = channel.getType();
        ChannelId byName(channel.getId(), kind.getName(), channel.getPosition());
        ChannelId byKind(channel.getId(), kind, channel.getPosition());
        Json::Value written;
        byName.Serialize(written);
        byKind.Serialize(written);
    }
};

// The constructor that reads a document, beside the reader itself.
struct ChannelIdFromDocument {
    static void read(Json::Value document) {
        try {
            ChannelId channel(document);
            Json::Value written;
            channel.Serialize(written);
        } catch (const Json::Exception&) {
        }
    }
};

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::quietLogger();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Json::Value root;
    if (fuzz::parse(data, size, root)) {
        ChannelIdFromDocument::read(root);
    }
    return fuzz::readEach<ChannelId>(data, size);
}
