#include "PacketTimeOptions.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <list>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"

namespace {

using PTO = PacketTimeOptions;
using Lines = std::vector<LogCapture::Line>;

constexpr int kNotInTable = -8;
constexpr int kOutOfRange = -9;

PTO::samplesPerPkt_e spp(int value) {
    return static_cast<PTO::samplesPerPkt_e>(value);
}
PTO::channelFreq_e freq(int value) {
    return static_cast<PTO::channelFreq_e>(value);
}

const int kSamplesPerPacket[] = {0, 6, 12, 24, 48, 96, 192};
const int kFrequencies[] = {44100, 48000, 88200, 96000};

struct FrequencyRow {
    int freq;
    unsigned int range;
    int nominal[7];  // for 0, 6, 12, 24, 48, 96, 192 samples per packet
};

// Nominal packet time (microseconds) of every samples-per-packet value at every frequency,
// and the deviation allowed either side.
const FrequencyRow kPacketTimes[] = {
    {44100, 11, {0, 136, 272, 544, 1088, 2176, 4353}},
    {48000, 10, {0, 125, 250, 500, 1000, 2000, 4000}},
    {88200, 5, {0, 68, 136, 272, 544, 1088, 2176}},
    {96000, 5, {0, 62, 125, 250, 500, 1000, 2000}},
};

// Samples-per-packet values each frequency allows, in the order they are tried.
const std::map<int, std::vector<int>> kAllowed = {
    {44100, {6, 12, 48, 192}},
    {48000, {6, 12, 48, 192}},
    {88200, {12, 24, 96}},
    {96000, {12, 24, 96}},
};

std::string rangeText(const char* prefix, const char* where, unsigned int ptime, unsigned int low,
                      unsigned int high, int samples, int frequency) {
    char text[256];
    std::snprintf(text, sizeof text,
                  "%sPacket time [%u us] is %s of allowable range [%u us]-[%u us] for {samples "
                  "per packet = %d, sampling frequency = %d Hz}",
                  prefix, ptime, where, low, high, samples, frequency);
    return text;
}

LogCapture::Line rejected(unsigned int ptime, unsigned int low, unsigned int high, int samples,
                          int frequency) {
    return logLine(Logger::logVerbose,
                   rangeText("VBS::", "outside", ptime, low, high, samples, frequency));
}

LogCapture::Line accepted(unsigned int ptime, unsigned int low, unsigned int high, int samples,
                          int frequency) {
    return logLine(Logger::logDebug,
                   rangeText("DBG::", "inside", ptime, low, high, samples, frequency));
}

int nominalOf(int frequency, int samples) {
    for (const FrequencyRow& row : kPacketTimes) {
        if (row.freq != frequency) {
            continue;
        }
        for (int i = 0; i < 7; ++i) {
            if (kSamplesPerPacket[i] == samples) {
                return row.nominal[i];
            }
        }
    }
    ADD_FAILURE() << "no nominal time for " << samples << " at " << frequency;
    return 0;
}

unsigned int rangeOf(int frequency) {
    for (const FrequencyRow& row : kPacketTimes) {
        if (row.freq == frequency) {
            return row.range;
        }
    }
    ADD_FAILURE() << "no range for " << frequency;
    return 0;
}

}  // namespace

// ---- nominal times and ranges ---------------------------------------------------------------

TEST(PacketTimeOptions, NominalPacketTimeOfEverySamplesPerPacketAtEveryFrequency) {
    for (const FrequencyRow& row : kPacketTimes) {
        for (int i = 0; i < 7; ++i) {
            EXPECT_EQ(PTO::calculatePacketTimeUs(spp(kSamplesPerPacket[i]), freq(row.freq)),
                      row.nominal[i])
                << kSamplesPerPacket[i] << " at " << row.freq;
        }
    }
}

TEST(PacketTimeOptions, AllowedRangeIsHalfASamplePeriodRoundedDown) {
    for (const FrequencyRow& row : kPacketTimes) {
        EXPECT_EQ(PTO::getAllowedPtimeRange(freq(row.freq)), row.range) << row.freq;
    }
}

TEST(PacketTimeOptions, NominalPacketTimeIsTakenIn32BitsAndTruncated) {
    // 4296 * 1000000 wraps to 1032704.
    EXPECT_EQ(PTO::calculatePacketTimeUs(spp(4296), PTO::FREQ_48000), 21);
    // 2148 * 1000000 wraps to -2146967296; the division truncates toward zero.
    EXPECT_EQ(PTO::calculatePacketTimeUs(spp(2148), PTO::FREQ_48000), -44728);
    // Truncation of a positive quotient: 192 * 1000000 / 44100 = 4353.7...
    EXPECT_EQ(PTO::calculatePacketTimeUs(PTO::SPP_192, PTO::FREQ_44100), 4353);
}

TEST(PacketTimeOptions, AllowedRangeOfOtherFrequencies) {
    EXPECT_EQ(PTO::getAllowedPtimeRange(freq(32000)), 15u);   // 31 / 2
    EXPECT_EQ(PTO::getAllowedPtimeRange(freq(192000)), 2u);   // 5 / 2
    EXPECT_EQ(PTO::getAllowedPtimeRange(freq(2000000)), 0u);  // 0 / 2
    EXPECT_EQ(PTO::getAllowedPtimeRange(freq(1)), 500000u);   // 1000000 / 2
}

// ---- checking a packet time -------------------------------------------------------------------

TEST(PacketTimeOptions, OneMillisecondAt48SamplesAnd48kHzIsInsideWithInclusiveBounds) {
    LogCapture log;
    EXPECT_EQ(PTO::checkPacketTimeValid(1000, PTO::SPP_48, PTO::FREQ_48000), 0);
    EXPECT_EQ(PTO::checkPacketTimeValid(990, PTO::SPP_48, PTO::FREQ_48000), 0);
    EXPECT_EQ(PTO::checkPacketTimeValid(1010, PTO::SPP_48, PTO::FREQ_48000), 0);
    EXPECT_EQ(PTO::checkPacketTimeValid(989, PTO::SPP_48, PTO::FREQ_48000), kOutOfRange);
    EXPECT_EQ(PTO::checkPacketTimeValid(1011, PTO::SPP_48, PTO::FREQ_48000), kOutOfRange);
    const Lines expected = {
        logLine(Logger::logDebug,
                "DBG::Packet time [1000 us] is inside of allowable range [990 us]-[1010 us] for "
                "{samples per packet = 48, sampling frequency = 48000 Hz}"),
        logLine(Logger::logDebug,
                "DBG::Packet time [990 us] is inside of allowable range [990 us]-[1010 us] for "
                "{samples per packet = 48, sampling frequency = 48000 Hz}"),
        logLine(Logger::logDebug,
                "DBG::Packet time [1010 us] is inside of allowable range [990 us]-[1010 us] for "
                "{samples per packet = 48, sampling frequency = 48000 Hz}"),
        logLine(Logger::logVerbose,
                "VBS::Packet time [989 us] is outside of allowable range [990 us]-[1010 us] for "
                "{samples per packet = 48, sampling frequency = 48000 Hz}"),
        logLine(Logger::logVerbose,
                "VBS::Packet time [1011 us] is outside of allowable range [990 us]-[1010 us] for "
                "{samples per packet = 48, sampling frequency = 48000 Hz}"),
    };
    EXPECT_EQ(log.lines(), expected);
}

TEST(PacketTimeOptions, BoundsOfEveryNonZeroSamplesPerPacketAtEveryFrequency) {
    for (int frequency : kFrequencies) {
        for (int samples : kSamplesPerPacket) {
            if (samples == 0) {
                continue;
            }
            SCOPED_TRACE(std::to_string(samples) + " at " + std::to_string(frequency));
            const unsigned int nominal = static_cast<unsigned int>(nominalOf(frequency, samples));
            const unsigned int low = nominal - rangeOf(frequency);
            const unsigned int high = nominal + rangeOf(frequency);
            LogCapture log;
            EXPECT_EQ(PTO::checkPacketTimeValid(low, spp(samples), freq(frequency)), 0);
            EXPECT_EQ(PTO::checkPacketTimeValid(nominal, spp(samples), freq(frequency)), 0);
            EXPECT_EQ(PTO::checkPacketTimeValid(high, spp(samples), freq(frequency)), 0);
            EXPECT_EQ(PTO::checkPacketTimeValid(low - 1, spp(samples), freq(frequency)),
                      kOutOfRange);
            EXPECT_EQ(PTO::checkPacketTimeValid(high + 1, spp(samples), freq(frequency)),
                      kOutOfRange);
            const Lines expected = {
                accepted(low, low, high, samples, frequency),
                accepted(nominal, low, high, samples, frequency),
                accepted(high, low, high, samples, frequency),
                rejected(low - 1, low, high, samples, frequency),
                rejected(high + 1, low, high, samples, frequency),
            };
            EXPECT_EQ(log.lines(), expected);
        }
    }
}

TEST(PacketTimeOptions, ZeroSamplesPerPacketIsAnOptionButNoPacketTimeFitsIt) {
    EXPECT_EQ(PTO::isValidSamplesPerPacketOption(0), 0);
    LogCapture log;
    // The low bound 0 - 10 wraps to 4294967286, so every time fails one of the two tests.
    for (unsigned int ptime : {0u, 5u, 10u, 11u, 4294967286u, 4294967295u}) {
        EXPECT_EQ(PTO::checkPacketTimeValid(ptime, PTO::SPP_0, PTO::FREQ_48000), kOutOfRange)
            << ptime;
    }
    const Lines expected = {
        logLine(Logger::logVerbose,
                "VBS::Packet time [0 us] is outside of allowable range [4294967286 us]-[10 us] "
                "for {samples per packet = 0, sampling frequency = 48000 Hz}"),
        rejected(5, 4294967286u, 10, 0, 48000),
        rejected(10, 4294967286u, 10, 0, 48000),
        rejected(11, 4294967286u, 10, 0, 48000),
        rejected(4294967286u, 4294967286u, 10, 0, 48000),
        rejected(4294967295u, 4294967286u, 10, 0, 48000),
    };
    EXPECT_EQ(log.lines(), expected);
}

TEST(PacketTimeOptions, LowBoundWrapsWhenTheRangeExceedsTheNominalTime) {
    LogCapture log;
    // 0 samples at 44100 Hz: nominal 0, range 11, so the low bound is 2^32 - 11.
    EXPECT_EQ(PTO::checkPacketTimeValid(3, PTO::SPP_0, PTO::FREQ_44100), kOutOfRange);
    EXPECT_EQ(log.lines(), Lines{rejected(3, 4294967285u, 11, 0, 44100)});
}

// ---- converting a packet time ------------------------------------------------------------------

TEST(PacketTimeOptions, Convert125UsAt48kHzGives6AfterOneDebugLine) {
    LogCapture log;
    PTO::samplesPerPkt_e out = PTO::SPP_192;
    EXPECT_EQ(PTO::convertPtimeToSamplesPerPacket(125, PTO::FREQ_48000, out), 0);
    EXPECT_EQ(out, PTO::SPP_6);
    EXPECT_EQ(log.lines(),
              Lines{logLine(Logger::logDebug,
                            "DBG::Packet time [125 us] is inside of allowable range [115 us]-[135 "
                            "us] for {samples per packet = 6, sampling frequency = 48000 Hz}")});
}

TEST(PacketTimeOptions, Convert1000UsAt48kHzGives48AfterRejecting6And12) {
    LogCapture log;
    PTO::samplesPerPkt_e out = PTO::SPP_0;
    EXPECT_EQ(PTO::convertPtimeToSamplesPerPacket(1000, PTO::FREQ_48000, out), 0);
    EXPECT_EQ(out, PTO::SPP_48);
    const Lines expected = {
        logLine(Logger::logVerbose,
                "VBS::Packet time [1000 us] is outside of allowable range [115 us]-[135 us] for "
                "{samples per packet = 6, sampling frequency = 48000 Hz}"),
        logLine(Logger::logVerbose,
                "VBS::Packet time [1000 us] is outside of allowable range [240 us]-[260 us] for "
                "{samples per packet = 12, sampling frequency = 48000 Hz}"),
        logLine(Logger::logDebug,
                "DBG::Packet time [1000 us] is inside of allowable range [990 us]-[1010 us] for "
                "{samples per packet = 48, sampling frequency = 48000 Hz}"),
    };
    EXPECT_EQ(log.lines(), expected);
}

TEST(PacketTimeOptions, Convert1000UsAt96kHzGives96) {
    LogCapture log;
    PTO::samplesPerPkt_e out = PTO::SPP_0;
    EXPECT_EQ(PTO::convertPtimeToSamplesPerPacket(1000, PTO::FREQ_96000, out), 0);
    EXPECT_EQ(out, PTO::SPP_96);
    const Lines expected = {
        rejected(1000, 120, 130, 12, 96000),
        rejected(1000, 245, 255, 24, 96000),
        accepted(1000, 995, 1005, 96, 96000),
    };
    EXPECT_EQ(log.lines(), expected);
}

TEST(PacketTimeOptions, Convert1000UsAt44100HzFindsNothing) {
    LogCapture log;
    PTO::samplesPerPkt_e out = PTO::SPP_24;
    EXPECT_EQ(PTO::convertPtimeToSamplesPerPacket(1000, PTO::FREQ_44100, out), kOutOfRange);
    EXPECT_EQ(out, PTO::SPP_24);
    // 48 samples at 44100 Hz give 1088 +/- 11.
    const Lines expected = {
        rejected(1000, 125, 147, 6, 44100),
        rejected(1000, 261, 283, 12, 44100),
        rejected(1000, 1077, 1099, 48, 44100),
        rejected(1000, 4342, 4364, 192, 44100),
    };
    EXPECT_EQ(log.lines(), expected);
}

TEST(PacketTimeOptions, ConvertWithUnknownFrequencyLogsAndFails) {
    LogCapture log;
    PTO::samplesPerPkt_e out = PTO::SPP_12;
    EXPECT_EQ(PTO::convertPtimeToSamplesPerPacket(1000, freq(32000), out), kOutOfRange);
    EXPECT_EQ(out, PTO::SPP_12);
    EXPECT_EQ(log.lines(),
              Lines{logLine(Logger::logError,
                            "ERR::'132:' Function called with invalid channel_freq parameter "
                            "'32000'. The channel_freq must be validated before this function is "
                            "used")});
}

TEST(PacketTimeOptions, ConvertWithZeroOrNegativeFrequencyLogsAndFails) {
    for (int frequency : {0, -48000, 176400}) {
        LogCapture log;
        PTO::samplesPerPkt_e out = PTO::SPP_6;
        EXPECT_EQ(PTO::convertPtimeToSamplesPerPacket(125, freq(frequency), out), kOutOfRange);
        EXPECT_EQ(out, PTO::SPP_6);
        EXPECT_EQ(
            log.lines(),
            Lines{logLine(Logger::logError,
                          "ERR::'132:' Function called with invalid channel_freq parameter '" +
                              std::to_string(frequency) +
                              "'. The channel_freq must be validated before this function "
                              "is used")});
    }
}

TEST(PacketTimeOptions, ConvertFindsEveryAllowedValueAtItsNominalTimeAndBounds) {
    for (const auto& entry : kAllowed) {
        const int frequency = entry.first;
        const std::vector<int>& candidates = entry.second;
        for (size_t index = 0; index < candidates.size(); ++index) {
            const int samples = candidates[index];
            const unsigned int nominal = static_cast<unsigned int>(nominalOf(frequency, samples));
            const unsigned int range = rangeOf(frequency);
            for (unsigned int ptime : {nominal - range, nominal, nominal + range}) {
                SCOPED_TRACE(std::to_string(ptime) + " us at " + std::to_string(frequency));
                LogCapture log;
                PTO::samplesPerPkt_e out = PTO::SPP_0;
                EXPECT_EQ(PTO::convertPtimeToSamplesPerPacket(ptime, freq(frequency), out), 0);
                EXPECT_EQ(out, samples);
                // One rejection for each candidate tried before, then the acceptance.
                const Lines lines = log.lines();
                ASSERT_EQ(lines.size(), index + 1);
                for (size_t i = 0; i < index; ++i) {
                    EXPECT_EQ(lines[i].first, Logger::logVerbose);
                }
                EXPECT_EQ(lines[index],
                          accepted(ptime, nominal - range, nominal + range, samples, frequency));
            }
            for (unsigned int ptime : {nominal - range - 1, nominal + range + 1}) {
                LogCapture log;
                PTO::samplesPerPkt_e out = PTO::SPP_0;
                EXPECT_EQ(PTO::convertPtimeToSamplesPerPacket(ptime, freq(frequency), out),
                          kOutOfRange)
                    << ptime << " us at " << frequency;
                EXPECT_EQ(out, PTO::SPP_0);
                EXPECT_EQ(log.lines().size(), candidates.size());
            }
        }
    }
}

TEST(PacketTimeOptions, ConvertNeverGivesValuesTheFrequencyDoesNotAllow) {
    // Nominal times of values that are options but not allowed at the frequency.
    const struct {
        int samples;
        int frequency;
    } disallowed[] = {{24, 44100}, {96, 44100},  {24, 48000}, {96, 48000}, {6, 88200},
                      {48, 88200}, {192, 88200}, {6, 96000},  {48, 96000}, {192, 96000}};
    for (const auto& c : disallowed) {
        LogCapture log;
        PTO::samplesPerPkt_e out = PTO::SPP_0;
        const unsigned int nominal = static_cast<unsigned int>(nominalOf(c.frequency, c.samples));
        EXPECT_EQ(PTO::convertPtimeToSamplesPerPacket(nominal, freq(c.frequency), out), kOutOfRange)
            << c.samples << " at " << c.frequency;
        EXPECT_EQ(out, PTO::SPP_0);
        for (const LogCapture::Line& line : log.lines()) {
            EXPECT_EQ(line.first, Logger::logVerbose);
        }
    }
}

TEST(PacketTimeOptions, ConvertStopsAtTheFirstFit) {
    LogCapture log;
    PTO::samplesPerPkt_e out = PTO::SPP_0;
    EXPECT_EQ(PTO::convertPtimeToSamplesPerPacket(250, PTO::FREQ_48000, out), 0);
    EXPECT_EQ(out, PTO::SPP_12);
    // 48 and 192 are not tried.
    const Lines expected = {
        rejected(250, 115, 135, 6, 48000),
        accepted(250, 240, 260, 12, 48000),
    };
    EXPECT_EQ(log.lines(), expected);
}

// ---- membership and conversion of numbers --------------------------------------------------

TEST(PacketTimeOptions, SamplesPerPacketMembership) {
    LogCapture log;
    for (unsigned int samples : {0u, 6u, 12u, 24u, 48u, 96u, 192u}) {
        EXPECT_EQ(PTO::isValidSamplesPerPacketOption(samples), 0) << samples;
        PTO::samplesPerPkt_e out = spp(-5);
        EXPECT_EQ(PTO::toSamplesPerPacketEnum(samples, out), 0);
        EXPECT_EQ(out, static_cast<int>(samples));
    }
    for (unsigned int samples : {1u, 5u, 7u, 36u, 64u, 128u, 144u, 193u, 384u, 4294967295u}) {
        EXPECT_EQ(PTO::isValidSamplesPerPacketOption(samples), kNotInTable) << samples;
        PTO::samplesPerPkt_e out = PTO::SPP_96;
        EXPECT_EQ(PTO::toSamplesPerPacketEnum(samples, out), kNotInTable);
        EXPECT_EQ(out, PTO::SPP_96);
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST(PacketTimeOptions, ChannelFrequencyMembership) {
    LogCapture log;
    for (unsigned int frequency : {44100u, 48000u, 88200u, 96000u}) {
        EXPECT_EQ(PTO::isValidChannelFreqOption(frequency), 0) << frequency;
    }
    for (unsigned int frequency : {0u, 32000u, 44000u, 44101u, 176400u, 192000u, 4294967295u}) {
        EXPECT_EQ(PTO::isValidChannelFreqOption(frequency), kNotInTable) << frequency;
        PTO::channelFreq_e out = PTO::FREQ_88200;
        EXPECT_EQ(PTO::toChannelFreqEnum(frequency, out), kNotInTable);
        EXPECT_EQ(out, PTO::FREQ_88200);
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST(PacketTimeOptions, ToChannelFreqEnumOf44100And44000) {
    PTO::channelFreq_e out = PTO::FREQ_96000;
    EXPECT_EQ(PTO::toChannelFreqEnum(44100, out), 0);
    EXPECT_EQ(out, PTO::FREQ_44100);

    PTO::channelFreq_e kept = PTO::FREQ_48000;
    EXPECT_EQ(PTO::toChannelFreqEnum(44000, kept), kNotInTable);
    EXPECT_EQ(kept, PTO::FREQ_48000);
}

// ---- link offsets ------------------------------------------------------------------------------

TEST(PacketTimeOptions, LinkOffsetsAreSixteenAndTwoPacketTimes) {
    EXPECT_EQ(PTO::getLinkOffsetDefault(1000), 16000u);
    EXPECT_EQ(PTO::getLinkOffsetMinimum(1000), 2000u);
    EXPECT_EQ(PTO::getLinkOffsetDefault(125), 2000u);
    EXPECT_EQ(PTO::getLinkOffsetMinimum(125), 250u);
    EXPECT_EQ(PTO::getLinkOffsetDefault(0), 0u);
    EXPECT_EQ(PTO::getLinkOffsetMinimum(0), 0u);
}

TEST(PacketTimeOptions, LinkOffsetsWrapAt32Bits) {
    EXPECT_EQ(PTO::getLinkOffsetDefault(0x10000000u), 0u);
    EXPECT_EQ(PTO::getLinkOffsetDefault(0x10000001u), 16u);
    EXPECT_EQ(PTO::getLinkOffsetDefault(0xFFFFFFFFu), 0xFFFFFFF0u);
    EXPECT_EQ(PTO::getLinkOffsetMinimum(0x80000000u), 0u);
    EXPECT_EQ(PTO::getLinkOffsetMinimum(0x80000003u), 6u);
    EXPECT_EQ(PTO::getLinkOffsetMinimum(0xFFFFFFFFu), 0xFFFFFFFEu);
}

// ---- the tables --------------------------------------------------------------------------------

TEST(PacketTimeOptions, TablesListTheAcceptedValuesInOrder) {
    const std::set<PTO::samplesPerPkt_e> samples = {
        PTO::SPP_0, PTO::SPP_6, PTO::SPP_12, PTO::SPP_24, PTO::SPP_48, PTO::SPP_96, PTO::SPP_192};
    EXPECT_EQ(PTO::getSamplesPerPacketOptions(), samples);

    const std::set<PTO::channelFreq_e> frequencies = {PTO::FREQ_44100, PTO::FREQ_48000,
                                                      PTO::FREQ_88200, PTO::FREQ_96000};
    EXPECT_EQ(PTO::getChannelFreqOptions(), frequencies);

    const PTO::SamplesPerPacketMap& byFreq = PTO::getSamplesPerPacketByChannelFreq();
    ASSERT_EQ(byFreq.size(), kAllowed.size());
    for (const auto& entry : kAllowed) {
        const auto it = byFreq.find(freq(entry.first));
        ASSERT_NE(it, byFreq.end()) << entry.first;
        const std::vector<int> got(it->second.begin(), it->second.end());
        EXPECT_EQ(got, entry.second) << entry.first;
    }
}

TEST(PacketTimeOptions, OperationsGiveTheSameAnswersFromManyThreads) {
    // Debug and verbose lines are dropped by the default threshold, so only the tables are
    // shared between the threads.
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&wrong] {
            for (int round = 0; round < 200; ++round) {
                for (const auto& entry : kAllowed) {
                    for (int samples : entry.second) {
                        const unsigned int ptime =
                            static_cast<unsigned int>(nominalOf(entry.first, samples));
                        PTO::samplesPerPkt_e out = PTO::SPP_0;
                        if (PTO::convertPtimeToSamplesPerPacket(ptime, freq(entry.first), out) !=
                                0 ||
                            out != samples) {
                            ++wrong;
                        }
                    }
                }
                if (PTO::isValidChannelFreqOption(48000) != 0 ||
                    PTO::isValidSamplesPerPacketOption(7) != kNotInTable) {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong.load(), 0);
}
