// Session stream records and their list.
#include "FuzzHarness.h"
#include "SessionStreamList.h"

ZELCT_FUZZ_READERS(SessionStreamBasics, SessionStreamList)
