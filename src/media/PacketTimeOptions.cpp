#include "PacketTimeOptions.h"

#include <cstdint>
#include <stdexcept>

#include "Logger.h"

namespace {

using PTO = PacketTimeOptions;

// Built in this order while the library loads, read-only afterwards. 0 is an accepted
// samples-per-packet option even though no packet time ever fits it.
const std::set<PTO::samplesPerPkt_e> samplesPerPacketOptions = {
    PTO::SPP_0, PTO::SPP_6, PTO::SPP_12, PTO::SPP_24, PTO::SPP_48, PTO::SPP_96, PTO::SPP_192,
};

const std::set<PTO::channelFreq_e> channelFreqOptions = {
    PTO::FREQ_44100,
    PTO::FREQ_48000,
    PTO::FREQ_88200,
    PTO::FREQ_96000,
};

// Each list is in the order candidates are tried: 24 and 96 only at the double rates, 48 and
// 192 only at the single rates.
const PTO::SamplesPerPacketMap samplesPerPacketByChannelFreq = {
    {PTO::FREQ_44100, {PTO::SPP_6, PTO::SPP_12, PTO::SPP_48, PTO::SPP_192}},
    {PTO::FREQ_48000, {PTO::SPP_6, PTO::SPP_12, PTO::SPP_48, PTO::SPP_192}},
    {PTO::FREQ_88200, {PTO::SPP_12, PTO::SPP_24, PTO::SPP_96}},
    {PTO::FREQ_96000, {PTO::SPP_12, PTO::SPP_24, PTO::SPP_96}},
};

constexpr std::uint32_t kMicrosecondsPerSecond = 1000000u;
constexpr unsigned int kLinkOffsetDefaultPackets = 16u;
constexpr unsigned int kLinkOffsetMinimumPackets = 2u;

// Number the unknown-frequency report carries in front of its text, kept for log readers.
constexpr int kInvalidFreqReportLine = 132;

std::int32_t asSigned(unsigned int number) {
    return static_cast<std::int32_t>(number);
}

// Sets out to the option the number names, where the table holds it.
template <typename Options, typename Option>
int toOption(const Options& options, unsigned int number, Option& out) {
    const Option wanted = static_cast<Option>(asSigned(number));
    if (options.count(wanted) == 0) {
        return PacketTimeOptions::kErrNotInTable;
    }
    out = wanted;
    return PacketTimeOptions::kOk;
}

}  // namespace

int PacketTimeOptions::calculatePacketTimeUs(samplesPerPkt_e samplesPerPacket, channelFreq_e freq) {
    // The product is taken in 32 bits and wraps; the signed division truncates toward zero.
    const std::int32_t product = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(samplesPerPacket) * kMicrosecondsPerSecond);
    return product / static_cast<std::int32_t>(freq);
}

unsigned int PacketTimeOptions::getAllowedPtimeRange(channelFreq_e freq) {
    const std::int32_t samplePeriodUs =
        static_cast<std::int32_t>(kMicrosecondsPerSecond) / static_cast<std::int32_t>(freq);
    return static_cast<unsigned int>(samplePeriodUs >> 1);
}

int PacketTimeOptions::checkPacketTimeValid(unsigned int ptimeUs, samplesPerPkt_e samplesPerPacket,
                                            channelFreq_e freq) {
    const unsigned int nominal =
        static_cast<unsigned int>(calculatePacketTimeUs(samplesPerPacket, freq));
    const unsigned int range = getAllowedPtimeRange(freq);
    const unsigned int low = nominal - range;
    const unsigned int high = nominal + range;
    if (high < ptimeUs || low > ptimeUs) {
        Logger::log(Logger::logVerbose,
                    "VBS::Packet time [%u us] is outside of allowable range [%u us]-[%u us] for "
                    "{samples per packet = %d, sampling frequency = %d Hz}",
                    ptimeUs, low, high, static_cast<int>(samplesPerPacket), static_cast<int>(freq));
        return kErrOutOfRange;
    }
    Logger::log(Logger::logDebug,
                "DBG::Packet time [%u us] is inside of allowable range [%u us]-[%u us] for "
                "{samples per packet = %d, sampling frequency = %d Hz}",
                ptimeUs, low, high, static_cast<int>(samplesPerPacket), static_cast<int>(freq));
    return kOk;
}

int PacketTimeOptions::convertPtimeToSamplesPerPacket(unsigned int ptimeUs, channelFreq_e freq,
                                                      samplesPerPkt_e& out) {
    const SamplesPerPacketList* candidates = nullptr;
    try {
        candidates = &samplesPerPacketByChannelFreq.at(freq);
    } catch (const std::out_of_range&) {
        Logger::log(Logger::logError,
                    "ERR::'%d:' Function called with invalid channel_freq parameter '%d'. The "
                    "channel_freq must be validated before this function is used",
                    kInvalidFreqReportLine, static_cast<int>(freq));
        return kErrOutOfRange;
    }
    if (candidates->empty()) {
        return kErrOutOfRange;
    }
    // The ranges of one frequency do not overlap, so the first fit is the only one.
    for (samplesPerPkt_e candidate : *candidates) {
        if (checkPacketTimeValid(ptimeUs, candidate, freq) == kOk) {
            out = candidate;
            return kOk;
        }
    }
    return kErrOutOfRange;
}

int PacketTimeOptions::isValidSamplesPerPacketOption(unsigned int samplesPerPacket) {
    samplesPerPkt_e ignored;
    return toSamplesPerPacketEnum(samplesPerPacket, ignored);
}

int PacketTimeOptions::isValidChannelFreqOption(unsigned int freq) {
    channelFreq_e ignored;
    return toChannelFreqEnum(freq, ignored);
}

int PacketTimeOptions::toSamplesPerPacketEnum(unsigned int samplesPerPacket, samplesPerPkt_e& out) {
    return toOption(samplesPerPacketOptions, samplesPerPacket, out);
}

int PacketTimeOptions::toChannelFreqEnum(unsigned int freq, channelFreq_e& out) {
    return toOption(channelFreqOptions, freq, out);
}

unsigned int PacketTimeOptions::getLinkOffsetDefault(unsigned int ptime) {
    return kLinkOffsetDefaultPackets * ptime;
}

unsigned int PacketTimeOptions::getLinkOffsetMinimum(unsigned int ptime) {
    return kLinkOffsetMinimumPackets * ptime;
}

const std::set<PacketTimeOptions::samplesPerPkt_e>&
PacketTimeOptions::getSamplesPerPacketOptions() {
    return samplesPerPacketOptions;
}

const std::set<PacketTimeOptions::channelFreq_e>& PacketTimeOptions::getChannelFreqOptions() {
    return channelFreqOptions;
}

const PacketTimeOptions::SamplesPerPacketMap&
PacketTimeOptions::getSamplesPerPacketByChannelFreq() {
    return samplesPerPacketByChannelFreq;
}
