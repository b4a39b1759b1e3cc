// The set of raised alarms, as a publisher sends it.
#include "AlarmManager.h"
#include "FuzzHarness.h"

template <>
struct fuzz::Handling<AlarmManager> {
    static AlarmManager make() { return AlarmManager(); }
    static void exercise(AlarmManager& manager) {
        // Clears and raises again every kind that was read, with the status lines logged.
        for (const Alarm& alarm : manager.getAlarmList()) {
            manager.setAlarm(alarm.getType(), Alarm::ALARM_OFF);
            manager.setAlarm(alarm.getType(), Alarm::ALARM_ON, AlarmSeverity::SEVERITY_CRITICAL);
            if (!manager.isAlarmOn(alarm.getType())) {
                __builtin_trap();
            }
        }
        (void)manager.didAlarmListChange();
    }
};

ZELCT_FUZZ_READERS(AlarmManager)
