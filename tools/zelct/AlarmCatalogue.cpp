// `zelct alarms`: the alarm catalogue, and the alarms a file raises, after what check finds in it.
#include "Catalogues.h"

#include <json/json.h>

#include <list>
#include <sstream>
#include <string>
#include <vector>

#include "AlarmManager.h"
#include "Check.h"
#include "Input.h"
#include "Kinds.h"
#include "Log.h"
#include "Printer.h"
#include "Report.h"
#include "TextTable.h"

namespace zelct {

namespace {

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

Json::Value alarmLinesJson(const std::vector<AlarmLine>& lines) {
    Json::Value array(Json::arrayValue);
    for (const AlarmLine& line : lines) {
        Json::Value item(Json::objectValue);
        item["type"] = line.type;
        item["enumerator"] = line.enumerator;
        item["severity"] = line.severity;
        item["description"] = line.description;
        array.append(item);
    }
    return array;
}

std::string alarmLinesText(const std::vector<AlarmLine>& lines) {
    TextTable table({TextTable::Right, TextTable::Left, TextTable::Left, TextTable::Left});
    table.add({"type", "enumerator", "severity", "description"});
    for (const AlarmLine& line : lines) {
        table.add({std::to_string(line.type), line.enumerator, line.severity, line.description});
    }
    std::ostringstream text;
    table.print(text);
    return text.str();
}

// The raised alarms are only worth listing for a document that check would pass: what the
// library drops or changes in it is told first, with check's exit code.
int showRaisedAlarms(const std::string& file, Printer& printer) {
    const Kind& kind = *findKind("alarms");
    const Outcome outcome = checkInput(kind, file, true);
    const int exit = exitCodeOf(outcome.status);
    printer.libraryLog(outcome.log);
    if (outcome.status == Outcome::Status::Unusable) {
        printer.problem({file, outcome.line, outcome.column, outcome.problem, exit});
        return exit;
    }
    AlarmManager manager;
    {
        LogRecorder quiet;  // the check has kept what this reading logs
        Json::Value document = outcome.understood;
        manager.Deserialize(document);
    }
    std::vector<AlarmLine> lines;
    for (const Alarm& alarm : manager.getAlarmList()) {
        lines.push_back(alarmLine(alarm, Alarm::typeName(alarm.getType())));
    }
    Json::Value json(Json::objectValue);
    json["file"] = file;
    json["exit"] = exit;
    json["check"] = outcomeJson(file, kind, outcome);
    json["alarms"] = alarmLinesJson(lines);
    if (outcome.status == Outcome::Status::Findings) {
        Outcome findings = outcome;
        findings.log.clear();  // shown above
        printer.checked(file, kind, findings);
    }
    printer.result(json, lines.empty() ? file + ": no alarm raised\n" : alarmLinesText(lines));
    return exit;
}

}  // namespace

int showAlarms(const std::string& file, Printer& printer) {
    if (!file.empty()) {
        return showRaisedAlarms(file, printer);
    }
    const std::vector<AlarmLine> lines = catalogueLines();
    printer.result(alarmLinesJson(lines), alarmLinesText(lines));
    return 0;
}

}  // namespace zelct
