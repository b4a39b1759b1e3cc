// `zelct ptime`: the packet times of the device's audio streams, as the library works them out.
#include "Catalogues.h"

#include <json/json.h>

#include <sstream>
#include <string>
#include <vector>

#include "PacketTimeOptions.h"
#include "Printer.h"
#include "TextTable.h"

namespace zelct {

namespace {

constexpr int kRefused = 1;
constexpr int kUnusable = 2;

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

}  // namespace

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

}  // namespace zelct
