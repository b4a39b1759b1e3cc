#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <set>

#include "zelCommonTypesExport.h"

/// Packet-time rules of audio streams: which samples-per-packet values and sampling
/// frequencies the device accepts, which samples-per-packet values each frequency allows, how
/// long a packet lasts and how far a measured packet time may stray from it, and the link
/// offsets that follow from a packet time.
///
/// Static operations only, over constant tables built while the library loads and never
/// changed afterwards, so every operation may be called from any thread at once.
///
/// Results: 0 success, -8 a number that is not in a table, -9 a packet time that is not
/// acceptable or a frequency without allowed samples-per-packet values. Nothing is thrown.
/// The frequency passed to calculatePacketTimeUs, getAllowedPtimeRange and
/// checkPacketTimeValid must not be 0: callers validate it with isValidChannelFreqOption.
class ZELCOMMONTYPES_API PacketTimeOptions {
public:
    /// Samples per packet per channel.
    enum samplesPerPkt_e : std::int32_t {
        SPP_0 = 0,
        SPP_6 = 6,
        SPP_12 = 12,
        SPP_24 = 24,
        SPP_48 = 48,
        SPP_96 = 96,
        SPP_192 = 192
    };

    /// Sampling frequency in hertz.
    enum channelFreq_e : std::int32_t {
        FREQ_44100 = 44100,
        FREQ_48000 = 48000,
        FREQ_88200 = 88200,
        FREQ_96000 = 96000
    };

    /// Samples-per-packet values, in table order.
    using SamplesPerPacketList = std::list<samplesPerPkt_e>;
    /// Samples-per-packet values allowed for each sampling frequency.
    using SamplesPerPacketMap = std::map<channelFreq_e, SamplesPerPacketList>;

    static constexpr int kOk = 0;              ///< Success.
    static constexpr int kErrNotInTable = -8;  ///< A number that is not in a table.
    /// A packet time that is not acceptable, or a frequency without allowed values.
    static constexpr int kErrOutOfRange = -9;

    /// Not constructible: every operation is static.
    PacketTimeOptions() = delete;

    /// Nominal packet time in microseconds: samples * 1000000 / frequency, truncated.
    static int calculatePacketTimeUs(samplesPerPkt_e samplesPerPacket, channelFreq_e freq);
    /// Allowed deviation either side of the nominal time, in microseconds: half a sample
    /// period, rounded down.
    static unsigned int getAllowedPtimeRange(channelFreq_e freq);
    /// 0 when ptimeUs lies within nominal +/- range (bounds included), else -9. Logs the
    /// decision (debug when accepted, verbose when rejected). The low bound is unsigned and
    /// wraps when the range exceeds the nominal time, so 0 samples per packet never fits.
    static int checkPacketTimeValid(unsigned int ptimeUs, samplesPerPkt_e samplesPerPacket,
                                    channelFreq_e freq);
    /// Tries the frequency's allowed values in table order and writes the first that fits.
    /// -9 with out untouched when none fits or the frequency is not in the table (logged).
    static int convertPtimeToSamplesPerPacket(unsigned int ptimeUs, channelFreq_e freq,
                                              samplesPerPkt_e& out);

    /// Membership tests; the number is compared as a signed 32-bit value. 0 or -8.
    static int isValidSamplesPerPacketOption(unsigned int samplesPerPacket);
    /// As isValidSamplesPerPacketOption, for a sampling frequency.
    static int isValidChannelFreqOption(unsigned int freq);
    /// 0 and out set when the number is a member, else -8 with out untouched.
    static int toSamplesPerPacketEnum(unsigned int samplesPerPacket, samplesPerPkt_e& out);
    /// As toSamplesPerPacketEnum, for a sampling frequency.
    static int toChannelFreqEnum(unsigned int freq, channelFreq_e& out);

    /// Link offsets in the unit of the packet time given: 16 packet times by default, 2 at
    /// the least. The product wraps at 32 bits.
    static unsigned int getLinkOffsetDefault(unsigned int ptime);
    /// The least link offset: 2 packet times, as above.
    static unsigned int getLinkOffsetMinimum(unsigned int ptime);

    /// The tables themselves, read-only, for tools that list what the device accepts.
    static const std::set<samplesPerPkt_e>& getSamplesPerPacketOptions();
    /// The sampling frequencies the device accepts.
    static const std::set<channelFreq_e>& getChannelFreqOptions();
    /// The samples-per-packet values each frequency allows, in the order
    /// convertPtimeToSamplesPerPacket tries them.
    static const SamplesPerPacketMap& getSamplesPerPacketByChannelFreq();
};
