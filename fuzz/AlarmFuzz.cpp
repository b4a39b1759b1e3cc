// Alarm records and severities, as the alarm set carries them between processes.
#include "Alarm.h"
#include "FuzzHarness.h"

template <>
struct fuzz::Handling<Alarm> {
    static Alarm make() { return Alarm(); }
    static void exercise(Alarm& alarm) {
        // What the catalogue says about whatever type was read, and the raise-only rule.
        (void)Alarm::catalogueRow(alarm.getType());
        (void)Alarm::typeName(alarm.getType());
        alarm.setSeverity(AlarmSeverity::SEVERITY_WARNING);
        (void)alarm.getSeverity().getSeverityStr();
    }
};

ZELCT_FUZZ_READERS(AlarmSeverity, Alarm)
