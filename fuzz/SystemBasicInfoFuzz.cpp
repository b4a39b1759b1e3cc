// The whole-board system information document.
#include "FuzzHarness.h"
#include "SystemBasicInfo.h"

ZELCT_FUZZ_READERS(SystemBasicInfo)
