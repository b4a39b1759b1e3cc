#include "Catalogues.h"

#include <json/json.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <list>
#include <sstream>
#include <vector>

#include "AlarmManager.h"
#include "Check.h"
#include "Input.h"
#include "JsonText.h"
#include "Kinds.h"
#include "Log.h"
#include "PacketTimeOptions.h"
#include "Printer.h"
#include "Report.h"
#include "TextTable.h"
#include "VideoFormat.h"

namespace zelct {

namespace {

constexpr int kRefused = 1;
constexpr int kUnusable = 2;

// ---- video ----

// Names of the serial-interface classes that VideoFormat::getVideoStd returns.
struct InterfaceClass {
    int videoStd;
    const char* name;
};
constexpr InterfaceClass kInterfaceClasses[] = {
    {0, "SD"}, {1, "1.5G"}, {3, "3G"}, {4, "6G"}, {5, "12G"},
};

const char* interfaceClassName(int videoStd) {
    for (const InterfaceClass& row : kInterfaceClasses) {
        if (row.videoStd == videoStd) {
            return row.name;
        }
    }
    return "?";
}

// Every figure the library gives for one format; the results of operations that can fail
// are kept with their code.
struct VideoFigures {
    int number;
    std::string text;
    int fieldRate;
    unsigned int width;
    unsigned int height;
    bool interlace;
    int frameRate;
    int exactResult;
    std::string exactFrameRate;
    bool fractional;
    int dimensionsResult;
    unsigned short totalPixelsPerLine;
    unsigned short totalLines;
    unsigned int pixelsPerFrame;
    int clocksPerFrame;  // -8 when the library has no clock count for the format
    int videoStd;
    int quadFormat;
};

VideoFigures figuresOf(VideoFormat& format) {
    VideoFigures figures{};
    figures.number = format.getFormat();
    figures.text = format.toString();
    figures.fieldRate = format.getFieldrate();
    VideoFormat::video_field_rate_t fieldRate = VideoFormat::VIDEO_FIELD_RATE_NONE;
    format.getVideoDetails(fieldRate, figures.width, figures.height, figures.interlace);
    figures.frameRate = format.getFramerate();
    figures.exactResult = format.getExactFramerateString(figures.exactFrameRate);
    figures.fractional = format.isFractional();
    figures.dimensionsResult =
        format.getVideoFormatFullDimensions(figures.totalPixelsPerLine, figures.totalLines);
    figures.pixelsPerFrame = format.getPixelsPerFrame();
    figures.clocksPerFrame = format.getClocksPerFrame();
    figures.videoStd = format.getVideoStd();
    figures.quadFormat = format.getQuadFormat();
    return figures;
}

std::string formatText(int number) {
    return VideoFormat(static_cast<VideoFormat::video_format_t>(number)).toString();
}

std::string quadText(int quadFormat) {
    return quadFormat == 0 ? "-" : formatText(quadFormat);
}

std::string resultOr(int result, const std::string& value) {
    return result == 0 ? value : "error " + std::to_string(result);
}

Json::Value figuresJson(const VideoFigures& figures) {
    Json::Value json(Json::objectValue);
    json["number"] = figures.number;
    json["format"] = figures.text;
    json["field-rate"] = figures.fieldRate;
    json["width"] = figures.width;
    json["height"] = figures.height;
    json["interlaced"] = figures.interlace;
    json["frame-rate"] = figures.frameRate;
    json["exact-frame-rate"] =
        figures.exactResult == 0 ? Json::Value(figures.exactFrameRate) : Json::Value();
    json["fractional"] = figures.fractional;
    json["total-pixels-per-line"] = figures.totalPixelsPerLine;
    json["total-lines"] = figures.totalLines;
    json["pixels-per-frame"] = figures.pixelsPerFrame;
    json["clocks-per-frame"] = figures.clocksPerFrame;
    json["video-std"] = figures.videoStd;
    json["interface-class"] = interfaceClassName(figures.videoStd);
    json["quad-format"] =
        figures.quadFormat == 0 ? Json::Value() : Json::Value(quadText(figures.quadFormat));
    return json;
}

void printVideoTable(const std::vector<VideoFigures>& all, std::ostream& out) {
    using A = TextTable::Align;
    TextTable table({A::Right, A::Left, A::Right, A::Right, A::Left, A::Right, A::Left, A::Left,
                     A::Right, A::Right, A::Right, A::Left, A::Left});
    table.add({"no", "format", "field", "active", "scan", "frame", "exact", "1000/1001", "raster",
               "pixels/frame", "clocks/frame", "interface", "quad"});
    for (const VideoFigures& f : all) {
        table.add({std::to_string(f.number), f.text, std::to_string(f.fieldRate),
                   std::to_string(f.width) + "x" + std::to_string(f.height),
                   f.interlace ? "I" : "P", std::to_string(f.frameRate),
                   resultOr(f.exactResult, f.exactFrameRate), f.fractional ? "yes" : "no",
                   std::to_string(f.totalPixelsPerLine) + "x" + std::to_string(f.totalLines),
                   std::to_string(f.pixelsPerFrame),
                   resultOr(f.clocksPerFrame < 0 ? f.clocksPerFrame : 0,
                            std::to_string(f.clocksPerFrame)),
                   interfaceClassName(f.videoStd), quadText(f.quadFormat)});
    }
    table.print(out);
}

void printVideoFigures(const VideoFigures& f, std::ostream& out) {
    TextTable table({TextTable::Left, TextTable::Left});
    table.add({"format:", f.text + " (number " + std::to_string(f.number) + ")"});
    table.add({"field rate:", std::to_string(f.fieldRate)});
    table.add({"active:", std::to_string(f.width) + " x " + std::to_string(f.height) + ", " +
                              (f.interlace ? "interlaced" : "progressive")});
    table.add({"frame rate:", std::to_string(f.frameRate) + ", exactly " +
                                  resultOr(f.exactResult, f.exactFrameRate)});
    table.add({"1000/1001 rate:", f.fractional ? "yes" : "no"});
    table.add(
        {"raster totals:",
         resultOr(f.dimensionsResult, std::to_string(f.totalPixelsPerLine) + " pixels per line x " +
                                          std::to_string(f.totalLines) + " lines")});
    table.add({"pixels per frame:", std::to_string(f.pixelsPerFrame)});
    table.add({"clocks per frame:", f.clocksPerFrame < 0
                                        ? "error " + std::to_string(f.clocksPerFrame)
                                        : std::to_string(f.clocksPerFrame) + " at 148.5 MHz"});
    table.add({"interface class:", std::string(interfaceClassName(f.videoStd)) + " (video std " +
                                       std::to_string(f.videoStd) + ")"});
    table.add({"quad format:", f.quadFormat == 0 ? "none"
                                                 : quadText(f.quadFormat) + " (number " +
                                                       std::to_string(f.quadFormat) + ")"});
    table.print(out);
}

bool parseNumber(const std::string& text, long& number) {
    if (text.empty() || text.find_first_not_of("-0123456789") != std::string::npos) {
        return false;
    }
    char* end = nullptr;
    errno = 0;
    number = std::strtol(text.c_str(), &end, 10);
    return errno == 0 && end != nullptr && *end == '\0';
}

// The format that the argument names, through the library: a number is set with setFormat
// and checked with getVideoDetails, a text (or a number beyond 32 bits) goes through
// fromString. Each refusal logs one
// library line. Returns 0 or the library's code.
int formatFromArgument(const std::string& argument, VideoFormat& format, std::string& how) {
    long number = 0;
    if (!parseNumber(argument, number) || number < INT32_MIN || number > INT32_MAX) {
        how = "VideoFormat::fromString";
        return format.fromString(argument);
    }
    how = "VideoFormat::getVideoDetails";
    {
        LogRecorder quiet;  // getVideoDetails says the same below, for 0 too
        format.setFormat(static_cast<VideoFormat::video_format_t>(number));
    }
    VideoFormat::video_field_rate_t fieldRate;
    unsigned int width = 0;
    unsigned int height = 0;
    bool interlace = false;
    return format.getVideoDetails(fieldRate, width, height, interlace);
}

// ---- packet times ----

struct PtimeFigures {
    unsigned int freq;
    unsigned int samplesPerPacket;
    bool allowed;  // in the frequency's list of allowed samples per packet
    std::string allowedList;
    int packetTimeUs;
    unsigned int range;
    unsigned int low;
    unsigned int high;
    unsigned int linkOffsetDefault;
    unsigned int linkOffsetMinimum;
};

std::string joined(const PacketTimeOptions::SamplesPerPacketList& list) {
    std::string text;
    for (PacketTimeOptions::samplesPerPkt_e spp : list) {
        text += (text.empty() ? "" : ", ") + std::to_string(static_cast<int>(spp));
    }
    return text;
}

PtimeFigures ptimeFiguresOf(PacketTimeOptions::samplesPerPkt_e spp,
                            PacketTimeOptions::channelFreq_e freq) {
    using PTO = PacketTimeOptions;
    PtimeFigures figures{};
    figures.freq = static_cast<unsigned int>(freq);
    figures.samplesPerPacket = static_cast<unsigned int>(spp);
    const PTO::SamplesPerPacketMap& byFreq = PTO::getSamplesPerPacketByChannelFreq();
    const auto entry = byFreq.find(freq);
    if (entry != byFreq.end()) {
        figures.allowedList = joined(entry->second);
        for (PTO::samplesPerPkt_e allowed : entry->second) {
            figures.allowed = figures.allowed || allowed == spp;
        }
    }
    figures.packetTimeUs = PTO::calculatePacketTimeUs(spp, freq);
    figures.range = PTO::getAllowedPtimeRange(freq);
    // The bounds as the library's check takes them: unsigned, so the low one can wrap.
    figures.low = static_cast<unsigned int>(figures.packetTimeUs) - figures.range;
    figures.high = static_cast<unsigned int>(figures.packetTimeUs) + figures.range;
    figures.linkOffsetDefault =
        PTO::getLinkOffsetDefault(static_cast<unsigned int>(figures.packetTimeUs));
    figures.linkOffsetMinimum =
        PTO::getLinkOffsetMinimum(static_cast<unsigned int>(figures.packetTimeUs));
    return figures;
}

Json::Value ptimeJson(const PtimeFigures& f) {
    Json::Value json(Json::objectValue);
    json["frequency-hz"] = f.freq;
    json["samples-per-packet"] = f.samplesPerPacket;
    json["allowed-at-frequency"] = f.allowed;
    json["packet-time-us"] = f.packetTimeUs;
    json["allowed-deviation-us"] = f.range;
    json["allowed-min-us"] = f.low;
    json["allowed-max-us"] = f.high;
    json["link-offset-default-us"] = f.linkOffsetDefault;
    json["link-offset-minimum-us"] = f.linkOffsetMinimum;
    return json;
}

void printPtimeFigures(const PtimeFigures& f, std::ostream& out) {
    const std::string at = " at " + std::to_string(f.freq) + " Hz";
    TextTable table({TextTable::Left, TextTable::Left});
    table.add({"samples per packet:", std::to_string(f.samplesPerPacket) + at});
    table.add({"allowed" + at + ":",
               std::string(f.allowed ? "yes" : "no") + " (allowed: " + f.allowedList + ")"});
    table.add({"packet time:", std::to_string(f.packetTimeUs) + " us"});
    table.add({"allowed range:", std::to_string(f.low) + "-" + std::to_string(f.high) +
                                     " us (+/- " + std::to_string(f.range) + " us)"});
    table.add({"default link offset:", std::to_string(f.linkOffsetDefault) + " us"});
    table.add({"minimum link offset:", std::to_string(f.linkOffsetMinimum) + " us"});
    table.print(out);
}

void printPtimeTable(const std::vector<PtimeFigures>& all, std::ostream& out) {
    using A = TextTable::Align;
    TextTable table({A::Right, A::Right, A::Right, A::Right, A::Right, A::Right});
    table.add({"frequency", "samples/packet", "packet time", "allowed range", "default link offset",
               "minimum link offset"});
    for (const PtimeFigures& f : all) {
        table.add({std::to_string(f.freq) + " Hz", std::to_string(f.samplesPerPacket),
                   std::to_string(f.packetTimeUs) + " us",
                   std::to_string(f.low) + "-" + std::to_string(f.high) + " us",
                   std::to_string(f.linkOffsetDefault) + " us",
                   std::to_string(f.linkOffsetMinimum) + " us"});
    }
    table.print(out);
}

Json::Value ptimeTableJson(const std::vector<PtimeFigures>& all) {
    Json::Value array(Json::arrayValue);
    for (const PtimeFigures& f : all) {
        array.append(ptimeJson(f));
    }
    return array;
}

int showPtimeTable(Printer& printer) {
    std::vector<PtimeFigures> all;
    for (const auto& entry : PacketTimeOptions::getSamplesPerPacketByChannelFreq()) {
        for (PacketTimeOptions::samplesPerPkt_e spp : entry.second) {
            all.push_back(ptimeFiguresOf(spp, entry.first));
        }
    }
    std::ostringstream text;
    printPtimeTable(all, text);
    printer.result(ptimeTableJson(all), text.str());
    return 0;
}

void printPtimeResult(const PtimeFigures& figures, const PtimeRequest& request, Printer& printer) {
    Json::Value json = ptimeJson(figures);
    std::ostringstream text;
    if (request.hasPtime) {
        json["measured-packet-time-us"] = request.ptimeUs;
        text << request.ptimeUs << " us at " << request.freq << " Hz is "
             << figures.samplesPerPacket << " samples per packet\n";
    }
    printPtimeFigures(figures, text);
    printer.result(json, text.str());
}

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

int showVideo(const std::string& format, Printer& printer) {
    if (format.empty()) {
        std::vector<VideoFigures> all;
        LogRecorder quiet;  // the table shows each refusal in its cell
        for (int number = VideoFormat::VIDEO_FORMAT_1080P60;
             number <= VideoFormat::VIDEO_FORMAT_2160P59; ++number) {
            VideoFormat video(static_cast<VideoFormat::video_format_t>(number));
            all.push_back(figuresOf(video));
        }
        Json::Value array(Json::arrayValue);
        for (const VideoFigures& figures : all) {
            array.append(figuresJson(figures));
        }
        std::ostringstream text;
        printVideoTable(all, text);
        printer.result(array, text.str());
        return 0;
    }
    VideoFormat video;
    std::string how;
    const int result = formatFromArgument(format, video, how);
    if (result != 0) {
        printer.problem(
            {"", 0, 0,
             "unknown video format '" + format + "' (" + how + ": " + std::to_string(result) + ")",
             kRefused});
        return kRefused;
    }
    const VideoFigures figures = figuresOf(video);
    std::ostringstream text;
    printVideoFigures(figures, text);
    printer.result(figuresJson(figures), text.str());
    return 0;
}

int showPtime(const PtimeRequest& request, Printer& printer) {
    using PTO = PacketTimeOptions;
    if (!request.hasFreq && !request.hasSamplesPerPacket && !request.hasPtime) {
        return showPtimeTable(printer);
    }
    if (!request.hasFreq || request.hasSamplesPerPacket == request.hasPtime) {
        printer.problem(
            {"", 0, 0, "ptime needs --freq with either --spp or --ptime-us", kUnusable});
        return kUnusable;
    }
    PTO::channelFreq_e freq = PTO::FREQ_48000;
    const int freqResult = PTO::toChannelFreqEnum(request.freq, freq);
    if (freqResult != 0) {
        printer.problem({"", 0, 0,
                         std::to_string(request.freq) +
                             " Hz is not a sampling frequency of the device "
                             "(PacketTimeOptions::toChannelFreqEnum: " +
                             std::to_string(freqResult) + ")",
                         kRefused});
        return kRefused;
    }
    PTO::samplesPerPkt_e spp = PTO::SPP_0;
    if (request.hasSamplesPerPacket) {
        const int sppResult = PTO::toSamplesPerPacketEnum(request.samplesPerPacket, spp);
        if (sppResult != 0) {
            printer.problem({"", 0, 0,
                             std::to_string(request.samplesPerPacket) +
                                 " is not a samples-per-packet value of the device "
                                 "(PacketTimeOptions::toSamplesPerPacketEnum: " +
                                 std::to_string(sppResult) + ")",
                             kRefused});
            return kRefused;
        }
    } else {
        const int convertResult = PTO::convertPtimeToSamplesPerPacket(request.ptimeUs, freq, spp);
        if (convertResult != 0) {
            printer.problem({"", 0, 0,
                             "a packet time of " + std::to_string(request.ptimeUs) + " us at " +
                                 std::to_string(request.freq) +
                                 " Hz fits no allowed samples per packet "
                                 "(PacketTimeOptions::convertPtimeToSamplesPerPacket: " +
                                 std::to_string(convertResult) + ")",
                             kRefused});
            return kRefused;
        }
    }
    const PtimeFigures figures = ptimeFiguresOf(spp, freq);
    printPtimeResult(figures, request, printer);
    return figures.allowed ? 0 : kRefused;
}

int showAlarms(const std::string& file, Printer& printer) {
    if (!file.empty()) {
        return showRaisedAlarms(file, printer);
    }
    const std::vector<AlarmLine> lines = catalogueLines();
    printer.result(alarmLinesJson(lines), alarmLinesText(lines));
    return 0;
}

}  // namespace zelct
