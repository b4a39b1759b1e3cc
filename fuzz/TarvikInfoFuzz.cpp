// The hardware component records, each read on its own.
#include "FuzzHarness.h"
#include "TarvikInfo.h"

ZELCT_FUZZ_READERS(SystemTemperature, FanSpeed, DaughterBoard, TarvikInfo, CpuLoadAverage,
                   SystemError)
