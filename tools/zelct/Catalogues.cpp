#include "Catalogues.h"

#include <json/json.h>

#include <list>
#include <vector>

#include "AlarmManager.h"
#include "Check.h"
#include "JsonText.h"
#include "Kinds.h"
#include "Log.h"
#include "TextTable.h"

namespace zelct {

namespace {

constexpr int kUnusable = 2;

// ---- alarms ----

struct AlarmLine {
    int type;
    std::string enumerator;
    std::string severity;
    std::string description;
};

AlarmLine alarmLine(const Alarm& alarm, const char* enumerator) {
    return {alarm.getType(), enumerator, alarm.getSeverity().getSeverityStr(),
            alarm.getDescription()};
}

// What the library applies when a component raises each kind of the catalogue.
std::vector<AlarmLine> catalogueLines() {
    std::vector<AlarmLine> lines;
    for (const Alarm::CatalogueRow& row : Alarm::catalogue()) {
        lines.push_back(alarmLine(Alarm(row.type), row.name));
    }
    return lines;
}

void printAlarmLines(const std::vector<AlarmLine>& lines, bool json, std::ostream& out) {
    if (json) {
        Json::Value array(Json::arrayValue);
        for (const AlarmLine& line : lines) {
            Json::Value item(Json::objectValue);
            item["type"] = line.type;
            item["enumerator"] = line.enumerator;
            item["severity"] = line.severity;
            item["description"] = line.description;
            array.append(item);
        }
        out << indentedJson(array);
        return;
    }
    TextTable table({TextTable::Right, TextTable::Left, TextTable::Left, TextTable::Left});
    table.add({"type", "enumerator", "severity", "description"});
    for (const AlarmLine& line : lines) {
        table.add({std::to_string(line.type), line.enumerator, line.severity, line.description});
    }
    table.print(out);
}

int showRaisedAlarms(const std::string& file, bool json, std::ostream& out, std::ostream& err) {
    const Kind& kind = *findKind("alarms");
    Json::Value document;
    Outcome outcome;
    if (loadDocument(file, document, outcome)) {
        outcome = checkDocument(kind, document, false);
    }
    if (outcome.status == Outcome::Status::Unusable) {
        err << file << ": " << outcome.problem << '\n';
        return kUnusable;
    }
    AlarmManager manager;
    {
        LogRecorder quiet;  // checkDocument has shown what this reading logs
        manager.Deserialize(document);
    }
    std::vector<AlarmLine> lines;
    for (const Alarm& alarm : manager.getAlarmList()) {
        lines.push_back(alarmLine(alarm, Alarm::typeName(alarm.getType())));
    }
    if (lines.empty() && !json) {
        out << file << ": no alarm raised\n";
        return 0;
    }
    printAlarmLines(lines, json, out);
    return 0;
}

}  // namespace

int showAlarms(const std::string& file, bool json, std::ostream& out, std::ostream& err) {
    if (!file.empty()) {
        return showRaisedAlarms(file, json, out, err);
    }
    printAlarmLines(catalogueLines(), json, out);
    return 0;
}

}  // namespace zelct
