// A channel table and the set of tables a device holds.
#include "ChannelTables.h"
#include "FuzzHarness.h"

ZELCT_FUZZ_READERS(ChannelTable, ChannelTables)
