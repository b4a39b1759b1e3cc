// Stream capacities and the ports of a service process.
#include "DeviceCapabilities.h"
#include "FuzzHarness.h"

ZELCT_FUZZ_READERS(DeviceCapabilities, ProcessBasicInfo)
