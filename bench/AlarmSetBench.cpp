// The alarm set a device publishes: every kind of the catalogue raised, a few of them made
// critical by their reporters. For the scaling check the set grows past the catalogue with
// kinds it does not know (stored as "Not defined"), which a reader accepts as they come.

#include "AlarmManager.h"
#include "DocumentHarness.h"

namespace {

constexpr int kCatalogueKinds = 28;  // 0..28 without the unassigned 3

AlarmManager buildAlarmSet(const bench::DocumentSize& size) {
    AlarmManager alarms;
    int raised = 0;
    for (int type = 0; raised < size.elements; ++type) {
        if (type == Alarm::UNASSIGNED_3) {
            continue;
        }
        const auto kind = static_cast<Alarm::AlarmType>(type);
        // Every fifth kind reported as critical by one of its reporters.
        const auto severity =
            type % 5 == 0 ? AlarmSeverity::SEVERITY_CRITICAL : AlarmSeverity::SEVERITY_OK;
        alarms.setAlarm(kind, Alarm::ALARM_ON, severity);
        ++raised;
    }
    return alarms;
}

const bool registered = [] {
    bench::registerKind<AlarmManager>("AlarmSet",
                                      {
                                          {"28", kCatalogueKinds, 1, true},
                                          {"112", 4 * kCatalogueKinds, 4, false},
                                          {"448", 16 * kCatalogueKinds, 16, false},
                                      },
                                      buildAlarmSet);
    return true;
}();

}  // namespace
