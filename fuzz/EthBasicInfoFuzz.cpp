// Ethernet interfaces with their addresses and SFP modules, and bandwidth figures.
#include "EthBasicInfo.h"
#include "FuzzHarness.h"

ZELCT_FUZZ_READERS(EthBasicInfo, EthBandwidthInfo)
