// SFP module records, as the network daemon reads them from another process.
#include "FuzzHarness.h"
#include "SfpInfo.h"

ZELCT_FUZZ_READERS(SfpInfo)
