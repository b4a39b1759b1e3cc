// The small descriptors embedded in channel and stream records, each read on its own.
#include "DaifType.h"
#include "FuzzHarness.h"

ZELCT_FUZZ_READERS(DaifType, DaifMediaType, DaifCapabilities, StreamType, State)
