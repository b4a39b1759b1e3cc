// The session stream list a device publishes: 64 records on a typical board, 4096 as the
// large case; 64, 256 and 1024 for the scaling check.

#include "DocumentHarness.h"
#include "SessionRecords.h"
#include "SessionStreamList.h"

namespace {

SessionStreamList buildStreams(const bench::DocumentSize& size) {
    SessionStreamList list;
    for (int i = 0; i < size.elements; ++i) {
        list.add(bench::sessionRecord(i));
    }
    return list;
}

const bool registered = [] {
    bench::registerKind<SessionStreamList>("SessionStreamList",
                                           {
                                               {"64", 64, 1, false},
                                               {"256", 256, 4, false},
                                               {"1024", 1024, 16, false},
                                               {"4096", 4096, 0, true},
                                           },
                                           buildStreams);
    return true;
}();

}  // namespace
