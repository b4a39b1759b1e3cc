// One row of a channel table with its two session streams and descriptors.
#include "ChannelTableEntry.h"
#include "FuzzHarness.h"

ZELCT_FUZZ_READERS(ChannelTableEntry)
