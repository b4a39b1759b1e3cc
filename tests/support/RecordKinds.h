#pragma once

// Every record that reads and writes a JSON object of its own, each with the document a filled
// record writes (filled so that its conditional members are written) and a reader that reads
// a document into a fresh record and returns what that record writes.

#include <json/json.h>

#include <functional>
#include <vector>

#include "LogCapture.h"
#include "zelCommonTypes.h"

namespace zelct_test {

// Reads the document into a fresh record of one kind; returns what that record writes.
using Reader = std::function<Json::Value(Json::Value&)>;

struct Kind {
    const char* name;    // the class, as declared in its header
    const char* header;  // file name under include/
    Json::Value document;
    Reader read;
};

template <typename Record>
Reader readerOf(Record blank = Record()) {
    return [blank](Json::Value& document) {
        Record record(blank);
        record.Deserialize(document);
        Json::Value out(Json::objectValue);
        record.Serialize(out);
        return out;
    };
}

template <typename Record>
Json::Value written(const Record& record) {
    Json::Value document(Json::objectValue);
    record.Serialize(document);
    return document;
}

// The statistics are abstract: the monitoring processes supply the const writer.
class TpcStats : public ChannelTPCStats {
public:
    TpcStats() {
        channelId = 3;
        errorDetected = true;
        errorCount = 7;
    }
    void Serialize(Json::Value& root) const override {
        const_cast<TpcStats*>(this)->ChannelTPCStats::Serialize(root);
    }
};

inline SystemBasicInfo filledSystem() {
    SystemBasicInfo info;
    info.product = "TARVIK";  // the only product whose document carries "product-info"
    info.eth.emplace_back();
    info.errors.emplace_back();
    return info;
}

inline EthBandwidthInfo filledBandwidth() {
    EthBandwidthInfo info;
    info.ethCount = 2;  // with no interfaces the bandwidth arrays are neither written nor read
    return info;
}

inline ChannelTable filledTable() {
    ChannelTable table;
    table.entries.emplace_back();
    return table;
}

inline AlarmManager raisedAlarms() {
    LogCapture quiet;
    AlarmManager manager;
    manager.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON);
    return manager;
}

inline VideoFormat knownFormat() {
    VideoFormat format;
    format.setFormat(VideoFormat::VIDEO_FORMAT_1080P50);  // an undefined format writes nothing
    return format;
}

inline std::vector<Kind> kinds() {
    return {
        {"DaifType", "DaifType.h", written(DaifType()), readerOf<DaifType>()},
        {"DaifMediaType", "DaifType.h", written(DaifMediaType()), readerOf<DaifMediaType>()},
        {"DaifCapabilities", "DaifType.h", written(DaifCapabilities()),
         readerOf<DaifCapabilities>()},
        {"StreamType", "DaifType.h", written(StreamType()), readerOf<StreamType>()},
        {"State", "DaifType.h", written(State()), readerOf<State>()},
        {"ChannelId", "ChannelId.h", written(ChannelId(2, "madi", 1)), readerOf(ChannelId(0))},
        {"ChannelTableEntry", "ChannelTableEntry.h", written(ChannelTableEntry()),
         readerOf<ChannelTableEntry>()},
        {"ChannelTable", "ChannelTables.h", written(filledTable()), readerOf<ChannelTable>()},
        {"ChannelTPCStats", "ChannelTPCStats.h", written(TpcStats()), readerOf<TpcStats>()},
        {"AlarmSeverity", "Alarm.h", written(AlarmSeverity()), readerOf<AlarmSeverity>()},
        {"Alarm", "Alarm.h", written(Alarm(Alarm::LINK_DOWN)), readerOf<Alarm>()},
        {"AlarmManager", "AlarmManager.h", written(raisedAlarms()), readerOf<AlarmManager>()},
        {"SystemTemperature", "TarvikInfo.h", written(SystemTemperature()),
         readerOf<SystemTemperature>()},
        {"FanSpeed", "TarvikInfo.h", written(FanSpeed()), readerOf<FanSpeed>()},
        {"DaughterBoard", "TarvikInfo.h", written(DaughterBoard()), readerOf<DaughterBoard>()},
        {"TarvikInfo", "TarvikInfo.h", written(TarvikInfo()), readerOf<TarvikInfo>()},
        {"CpuLoadAverage", "TarvikInfo.h", written(CpuLoadAverage()), readerOf<CpuLoadAverage>()},
        {"SystemError", "TarvikInfo.h", written(SystemError()), readerOf<SystemError>()},
        {"DeviceCapabilities", "DeviceCapabilities.h", written(DeviceCapabilities()),
         readerOf<DeviceCapabilities>()},
        {"ProcessBasicInfo", "DeviceCapabilities.h", written(ProcessBasicInfo()),
         readerOf<ProcessBasicInfo>()},
        {"SystemBasicInfo", "SystemBasicInfo.h", written(filledSystem()),
         readerOf<SystemBasicInfo>()},
        {"EthBasicInfo", "EthBasicInfo.h", written(EthBasicInfo()), readerOf<EthBasicInfo>()},
        {"EthBandwidthInfo", "EthBasicInfo.h", written(filledBandwidth()),
         readerOf<EthBandwidthInfo>()},
        {"SessionStreamBasics", "SessionStreamList.h", written(SessionStreamBasics()),
         readerOf<SessionStreamBasics>()},
        {"SfpInfo", "SfpInfo.h", written(SfpInfo()), readerOf<SfpInfo>()},
        {"VideoFormat", "VideoFormat.h", written(knownFormat()), readerOf<VideoFormat>()},
    };
}

}  // namespace zelct_test
