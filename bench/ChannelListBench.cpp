// A channel list as a stream's user holds it: MADI and AES3 channels with their positions.
// 64 entries typical, 4096 as the large case; 64, 256 and 1024 for the scaling check.

#include "ChannelList.h"
#include "DocumentHarness.h"

namespace {

ChannelList buildChannels(const bench::DocumentSize& size) {
    ChannelList list;
    DaifType madi;
    madi.setValueAndName(DaifType::DAIF_MADI);
    DaifType aes3;
    aes3.setValueAndName(DaifType::DAIF_AES3);
    for (int i = 0; i < size.elements; ++i) {
        // Positions stay below 255, which a reader takes as "no position".
        const auto position = static_cast<unsigned char>(i % 64);
        list.addChannel(ChannelId(i, i % 4 == 3 ? aes3 : madi, position));
    }
    return list;
}

const bool registered = [] {
    bench::registerKind<ChannelList>("ChannelList",
                                     {
                                         {"64", 64, 1, false},
                                         {"256", 256, 4, false},
                                         {"1024", 1024, 16, false},
                                         {"4096", 4096, 0, true},
                                     },
                                     buildChannels);
    return true;
}();

}  // namespace
