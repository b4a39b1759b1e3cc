// Channel lists, and the position bookkeeping that works on what was read.
#include "ChannelList.h"
#include "FuzzHarness.h"

template <>
struct fuzz::Handling<ChannelList> {
    static ChannelList make() { return ChannelList(); }
    static void exercise(ChannelList& list) {
        (void)list.isEmpty();
        (void)list.getStreamSideChannelCount();
        list.dump("fuzz");
        // Removes every other channel as a local one, which leaves dummies behind.
        std::list<ChannelId> copies = list.getList();
        bool take = true;
        for (ChannelId& channel : copies) {
            if (take) {
                (void)list.removeLocalChannel(channel);
            } else {
                (void)list.removeChannel(channel);
            }
            take = !take;
        }
        (void)list.getStreamSideChannelCount();
        (void)list.numChannelEntries();
    }
};

ZELCT_FUZZ_READERS(ChannelList)
