// Channel error statistics, through a concrete class as a monitoring process derives one.
#include "ChannelTPCStats.h"
#include "FuzzHarness.h"

namespace {

class MonitoredChannel : public ChannelTPCStats {
public:
    MonitoredChannel() {
        channelId = 0;
        errorDetected = false;
        errorCount = 0;
    }

    // Writes the statistics in their documented form, through the direct Serialize.
    void Serialize(Json::Value& root) const override {
        MonitoredChannel copy(*this);
        static_cast<ChannelTPCStats&>(copy).Serialize(root);
    }
};

}  // namespace

ZELCT_FUZZ_READERS(MonitoredChannel)
