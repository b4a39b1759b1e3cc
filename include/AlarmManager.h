#pragma once

#include <json/json.h>

#include <list>
#include <map>

#include "Alarm.h"
#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

/// The set of alarms currently raised, at most one per kind. Reporters call setAlarm as often
/// as they like; only real changes are logged and flagged, so a publisher can poll
/// didAlarmListChange and send the set when it moved. A raised alarm is present in the set,
/// a cleared one is absent: there is no stored off state.
///
/// JSON form: {"alarms": [\<Alarm\>, ...]} in ascending order of type; an empty set writes no
/// "alarms" member at all. Serialize writes over the leading elements of an "alarms" array
/// already in the target and leaves any further elements where they are.
///
/// Deserialize merges into the set and never removes: a kind already present keeps its entry.
/// A missing "alarms" reads as empty and is added to the caller's document as null.
/// "alarms" is walked by index: a scalar there reads as no alarms, an object with members
/// throws. Members that throw: "alarms".
///
/// Holds no lock: a caller that shares a manager between threads guards it itself.
class ZELCOMMONTYPES_API AlarmManager : public IJsonSerializable {
public:
    /// An empty set, change flag cleared.
    AlarmManager();

    /// A non-zero level raises the alarm, zero clears it; repeating the present state does
    /// nothing. Every insertion or removal is logged at info level and sets the change flag.
    void setAlarm(Alarm::AlarmType type, Alarm::AlarmLevel_e level);
    /// As above, then raises the stored alarm's severity to the given one if it is graver.
    /// The severity step is neither logged nor flagged.
    void setAlarm(Alarm::AlarmType type, Alarm::AlarmLevel_e level,
                  AlarmSeverity::AlarmSeverity_en severity);
    /// Whether an alarm of the kind is raised, that is present in the set.
    bool isAlarmOn(Alarm::AlarmType type) const;
    /// Whether the set changed since the last call; reading clears the flag.
    bool didAlarmListChange();
    /// Copies of the stored alarms in ascending order of type.
    std::list<Alarm> getAlarmList() const;

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

private:
    void raise(Alarm::AlarmType type, Alarm::AlarmLevel_e level);
    void clear(std::map<Alarm::AlarmType, Alarm>::iterator entry);

    std::map<Alarm::AlarmType, Alarm> alarms;
    bool changed;
};
