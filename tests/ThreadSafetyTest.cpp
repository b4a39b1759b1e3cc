// Calls that the device's daemons make from several threads at once: logging from every
// thread, and serializing objects that each thread owns. Meant to run under
// ThreadSanitizer (preset tsan), which reports any data race as a failure; without it the
// tests still check that nothing is lost or mixed up between threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "AlarmManager.h"
#include "ChannelList.h"
#include "ChannelTables.h"
#include "DaifType.h"
#include "LogCapture.h"
#include "Logger.h"
#include "PacketTimeOptions.h"
#include "SessionStreamList.h"
#include "SfpInfo.h"
#include "SystemBasicInfo.h"
#include "VideoFormat.h"

namespace {

constexpr int kThreads = 8;

// Starts kThreads threads, lets them begin work(index) at the same moment and waits for all.
void runTogether(const std::function<void(int)>& work) {
    std::atomic<int> ready{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int index = 0; index < kThreads; ++index) {
        threads.emplace_back([&, index] {
            ready.fetch_add(1);
            while (!go.load()) {
                std::this_thread::yield();
            }
            work(index);
        });
    }
    while (ready.load() < kThreads) {
        std::this_thread::yield();
    }
    go.store(true);
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// The results of work(index) for every index, computed by one thread after the other.
template <typename Result>
std::vector<Result> runOneAfterAnother(const std::function<Result(int)>& work) {
    std::vector<Result> results;
    for (int index = 0; index < kThreads; ++index) {
        results.push_back(work(index));
    }
    return results;
}

// The same work from all threads at once; each thread writes only its own slot.
template <typename Result>
std::vector<Result> runAtOnce(const std::function<Result(int)>& work) {
    std::vector<Result> results(kThreads);
    runTogether([&](int index) { results[static_cast<size_t>(index)] = work(index); });
    return results;
}

std::vector<std::string> sortedTexts(const std::vector<LogCapture::Line>& lines) {
    std::vector<std::string> texts;
    for (const auto& line : lines) {
        texts.push_back(std::to_string(line.first) + " " + line.second);
    }
    std::sort(texts.begin(), texts.end());
    return texts;
}

constexpr int kLinesPerThread = 300;

}  // namespace

TEST(ThreadSafety, LogFromEightThreadsDeliversEveryLineWholeAndOnce) {
    LogCapture log;
    runTogether([](int index) {
        for (int n = 0; n < kLinesPerThread; ++n) {
            Logger::log(n % 2 == 0 ? Logger::logError : Logger::logVerbose,
                        "%s::thread %d line %d of %s", n % 2 == 0 ? "ERR" : "VBS", index, n,
                        "a text long enough to be written in more than one piece");
        }
    });

    std::vector<LogCapture::Line> expected;
    for (int index = 0; index < kThreads; ++index) {
        for (int n = 0; n < kLinesPerThread; ++n) {
            const bool error = n % 2 == 0;
            expected.emplace_back(
                error ? Logger::logError : Logger::logVerbose,
                std::string(error ? "ERR" : "VBS") + "::thread " + std::to_string(index) +
                    " line " + std::to_string(n) +
                    " of a text long enough to be written in more than one piece");
        }
    }
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), expected.size());
    EXPECT_EQ(sortedTexts(lines), sortedTexts(expected));
}

TEST(ThreadSafety, LinesOfOneThreadKeepTheirOrder) {
    LogCapture log;
    runTogether([](int index) {
        for (int n = 0; n < kLinesPerThread; ++n) {
            Logger::log(Logger::logInfo, "INF::%d %d", index, n);
        }
    });
    std::vector<int> next(kThreads, 0);
    for (const auto& line : log.lines()) {
        int index = -1;
        int n = -1;
        ASSERT_EQ(std::sscanf(line.second.c_str(), "INF::%d %d", &index, &n), 2) << line.second;
        ASSERT_GE(index, 0);
        ASSERT_LT(index, kThreads);
        EXPECT_EQ(n, next[static_cast<size_t>(index)]++) << "thread " << index;
    }
    EXPECT_EQ(next, std::vector<int>(kThreads, kLinesPerThread));
}

// The line that capturing thread `index` logs as its n-th: every third one verbose, which the
// process's threshold of logInfo would drop.
Logger::Capture::Line capturedLine(int index, int n) {
    const bool verbose = n % 3 == 0;
    return {verbose ? Logger::logVerbose : Logger::logInfo,
            std::string(verbose ? "VBS" : "INF") + "::capture " + std::to_string(index) + " line " +
                std::to_string(n)};
}

// Each capturing thread logs these lines of its own inside a capture nested in the first.
constexpr int kFirstNested = kLinesPerThread / 3;
constexpr int kAfterNested = 2 * kLinesPerThread / 3;

TEST(ThreadSafety, EightThreadsCaptureTheirOwnLinesWhileAnotherReachesTheSink) {
    LogCapture log;
    Logger::setThreshold(Logger::logInfo);
    std::atomic<int> finished{0};
    int freeLines = 0;
    // Logs to the process's sink from before the first capture starts until the last one ends.
    std::thread other([&] {
        while (finished.load() < kThreads || freeLines < kLinesPerThread) {
            Logger::log(Logger::logInfo, "INF::free line %d", freeLines);
            Logger::log(Logger::logVerbose, "VBS::free line %d dropped", freeLines);
            ++freeLines;
        }
    });

    struct Taken {
        std::vector<Logger::Capture::Line> outer;
        std::vector<Logger::Capture::Line> inner;
    };
    std::vector<Taken> taken(kThreads);
    runTogether([&](int index) {
        Taken& mine = taken[static_cast<size_t>(index)];
        {
            Logger::Capture outer;
            std::optional<Logger::Capture> inner;
            for (int n = 0; n < kLinesPerThread; ++n) {
                if (n == kFirstNested) {
                    inner.emplace();
                } else if (n == kAfterNested) {
                    mine.inner = inner->take();
                    inner.reset();
                }
                const Logger::Capture::Line line = capturedLine(index, n);
                Logger::log(line.level, "%s", line.text.c_str());
            }
            mine.outer = outer.take();
        }
        finished.fetch_add(1);
    });
    other.join();

    for (int index = 0; index < kThreads; ++index) {
        std::vector<Logger::Capture::Line> outer;
        std::vector<Logger::Capture::Line> inner;
        for (int n = 0; n < kLinesPerThread; ++n) {
            const bool nested = n >= kFirstNested && n < kAfterNested;
            (nested ? inner : outer).push_back(capturedLine(index, n));
        }
        EXPECT_EQ(taken[static_cast<size_t>(index)].outer, outer) << "thread " << index;
        EXPECT_EQ(taken[static_cast<size_t>(index)].inner, inner) << "thread " << index;
    }
    std::vector<LogCapture::Line> expected;
    for (int n = 0; n < freeLines; ++n) {
        expected.emplace_back(Logger::logInfo, "INF::free line " + std::to_string(n));
    }
    EXPECT_GE(freeLines, kLinesPerThread);
    EXPECT_EQ(log.lines(), expected);
    EXPECT_EQ(Logger::getThreshold(), Logger::logInfo);
}

TEST(ThreadSafety, ThresholdChangesWhileEightThreadsLog) {
    LogCapture log;
    std::atomic<bool> done{false};
    std::thread switcher([&] {
        while (!done.load()) {
            Logger::setThreshold(Logger::logInfo);
            Logger::setThreshold(Logger::logVerbose);
        }
    });
    runTogether([](int index) {
        for (int n = 0; n < kLinesPerThread; ++n) {
            Logger::log(Logger::logError, "ERR::%d %d", index, n);
            Logger::log(Logger::logVerbose, "VBS::%d %d", index, n);
        }
    });
    done.store(true);
    switcher.join();

    // Error lines pass at either threshold; verbose lines only at one of them.
    const auto lines = log.lines();
    const auto errors = std::count_if(lines.begin(), lines.end(), [](const LogCapture::Line& l) {
        return l.first == Logger::logError;
    });
    EXPECT_EQ(errors, kThreads * kLinesPerThread);
    EXPECT_LE(lines.size(), static_cast<size_t>(2 * kThreads * kLinesPerThread));
}

namespace {

constexpr int kRounds = 200;

// Fills, writes and reads back SfpInfo and DaifType records of one thread's own.
std::string serializeFoundationRecords(int index) {
    std::string texts;
    for (int round = 0; round < kRounds; ++round) {
        SfpInfo sfp;
        sfp.present = round % 2 == 0;
        sfp.vendorName = "vendor " + std::to_string(index);
        sfp.serialNumber = "SN" + std::to_string(index * 1000 + round);
        sfp.wavelength = 850 + round;
        sfp.temperature = 20.5 + index;
        Json::Value doc;
        sfp.Serialize(doc["sfp"]);

        DaifType kind;
        kind.setNameAndResolve((round + index) % 3 == 0 ? "AES10" : DaifType::nameOf(round % 14));
        kind.Serialize(doc["kind"]);

        SfpInfo sfpBack;
        sfpBack.Deserialize(doc["sfp"]);
        DaifType kindBack;
        kindBack.Deserialize(doc["kind"]);
        Json::Value again;
        sfpBack.Serialize(again["sfp"]);
        kindBack.Serialize(again["kind"]);
        texts += again.toStyledString();
    }
    return texts;
}

}  // namespace

TEST(ThreadSafety, IndependentFoundationRecordsSerializeInParallelAsAlone) {
    const auto alone = runOneAfterAnother<std::string>(serializeFoundationRecords);
    const auto together = runAtOnce<std::string>(serializeFoundationRecords);
    EXPECT_EQ(together, alone);
    EXPECT_NE(alone[0], alone[1]);
    EXPECT_NE(alone[0].find("\"serial-number\" : \"SN199\""), std::string::npos);
    EXPECT_NE(alone[3].find("\"string\" : \"madi\""), std::string::npos);
}

namespace {

using PTO = PacketTimeOptions;

struct PacketTimeRun {
    std::vector<int> results;
    std::vector<LogCapture::Line> lines;
};

// Every packet-time operation over a spread of packet times and frequencies, one unknown
// frequency among them, with a line of the caller's own logged between them. Returns the
// results in call order; the log lines are collected by the caller's capture.
std::vector<int> askPacketTimeRules(int index) {
    static const unsigned int frequencies[] = {44100, 48000, 88200, 96000, 32000};
    std::vector<int> results;
    for (unsigned int ptime = 50; ptime <= 4400; ptime += 37) {
        for (unsigned int number : frequencies) {
            PTO::channelFreq_e freq = PTO::FREQ_48000;
            results.push_back(PTO::toChannelFreqEnum(number, freq));
            results.push_back(PTO::isValidChannelFreqOption(number));
            const auto given = static_cast<PTO::channelFreq_e>(number);
            PTO::samplesPerPkt_e samples = PTO::SPP_0;
            results.push_back(PTO::convertPtimeToSamplesPerPacket(ptime, given, samples));
            results.push_back(samples);
            if (results[results.size() - 4] == PTO::kOk) {
                results.push_back(PTO::checkPacketTimeValid(ptime, PTO::SPP_48, freq));
                results.push_back(PTO::calculatePacketTimeUs(PTO::SPP_192, freq));
                results.push_back(static_cast<int>(PTO::getAllowedPtimeRange(freq)));
            }
        }
        PTO::samplesPerPkt_e samples = PTO::SPP_0;
        results.push_back(PTO::toSamplesPerPacketEnum(ptime % 200, samples));
        results.push_back(static_cast<int>(PTO::getLinkOffsetDefault(ptime)));
        results.push_back(static_cast<int>(PTO::getLinkOffsetMinimum(ptime)));
        Logger::log(Logger::logInfo, "INF::thread %d asked about %u us", index, ptime);
    }
    return results;
}

PacketTimeRun runPacketTimeRulesAlone(int index) {
    LogCapture log;
    PacketTimeRun run;
    run.results = askPacketTimeRules(index);
    run.lines = log.lines();
    return run;
}

}  // namespace

TEST(ThreadSafety, PacketTimeRulesAndLoggingFromEightThreadsMatchASerialRun) {
    const auto alone = runOneAfterAnother<PacketTimeRun>(runPacketTimeRulesAlone);

    LogCapture log;
    const auto together = runAtOnce<std::vector<int>>(askPacketTimeRules);

    std::vector<LogCapture::Line> expectedLines;
    for (int index = 0; index < kThreads; ++index) {
        EXPECT_EQ(together[static_cast<size_t>(index)], alone[static_cast<size_t>(index)].results)
            << "thread " << index;
        const auto& lines = alone[static_cast<size_t>(index)].lines;
        expectedLines.insert(expectedLines.end(), lines.begin(), lines.end());
    }
    EXPECT_EQ(sortedTexts(log.lines()), sortedTexts(expectedLines));

    // The serial run itself holds the documented answers.
    const auto& first = alone[0];
    const auto accepted =
        std::count_if(first.lines.begin(), first.lines.end(),
                      [](const LogCapture::Line& line) { return line.first == Logger::logDebug; });
    EXPECT_GT(accepted, 0);
    EXPECT_NE(std::find(first.lines.begin(), first.lines.end(),
                        logLine(Logger::logError,
                                "ERR::'132:' Function called with invalid channel_freq parameter "
                                "'32000'. The channel_freq must be validated before this function "
                                "is used")),
              first.lines.end());
    EXPECT_NE(std::find(first.lines.begin(), first.lines.end(),
                        logLine(Logger::logInfo, "INF::thread 0 asked about 1012 us")),
              first.lines.end());
}

namespace {

// Builds, writes, reads back and writes again documents of every family, each thread with
// objects of its own; returns the texts written.
std::string serializeDocuments(int index) {
    std::string texts;
    for (int round = 0; round < 20; ++round) {
        const int n = index * 100 + round;

        SystemBasicInfo system;
        system.product = round % 2 == 0 ? "TARVIK" : "other";
        system.serialNumber = "SN" + std::to_string(n);
        EthBasicInfo eth;
        eth.ethName = "eth" + std::to_string(index);
        eth.ipv4 = 0x0A000000u + static_cast<unsigned>(n);
        eth.networkMask = 0xFFFFFF00u;
        system.eth.push_back(eth);
        SystemError error;
        error.code = n;
        error.description = "error " + std::to_string(n);
        system.errors.push_back(error);

        ChannelTables tables;
        ChannelTable table;
        table.type.setValueAndName(round % 13);
        ChannelTableEntry entry;
        entry.id = n;
        entry.nameInput = "in " + std::to_string(n);
        entry.input.remoteSid = 18446744073709551615ull - static_cast<unsigned>(n);
        entry.input.state.setName("Enabled");
        table.entries.push_back(entry);
        tables.tables.push_back(table);

        ChannelList channels;
        channels.addChannel(ChannelId(n, "aes10", static_cast<unsigned char>(round)));
        channels.addChannel(ChannelId(n + 1, "sdi-audio", static_cast<unsigned char>(round)));
        ChannelId removed(n, "madi", 0);
        channels.removeLocalChannel(removed);

        AlarmManager alarms;
        alarms.setAlarm(static_cast<Alarm::AlarmType>(round % 30), Alarm::ALARM_ON);
        alarms.setAlarm(Alarm::LINK_DOWN, Alarm::ALARM_ON, AlarmSeverity::SEVERITY_CRITICAL);

        SessionStreamList streams;
        streams.add(entry.input);

        VideoFormat format(static_cast<VideoFormat::video_format_t>(1 + (n % 29)));

        Json::Value doc;
        system.Serialize(doc["system"]);
        tables.Serialize(doc["tables"]);
        channels.Serialize(doc["channels"]);
        alarms.Serialize(doc["alarms"]);
        streams.Serialize(doc["streams"]);
        format.Serialize(doc["video"]);

        SystemBasicInfo systemBack;
        systemBack.Deserialize(doc["system"]);
        ChannelTables tablesBack;
        tablesBack.Deserialize(doc["tables"]);
        ChannelList channelsBack;
        channelsBack.Deserialize(doc["channels"]);
        AlarmManager alarmsBack;
        alarmsBack.Deserialize(doc["alarms"]);
        SessionStreamList streamsBack;
        streamsBack.Deserialize(doc["streams"]);
        VideoFormat formatBack;
        formatBack.Deserialize(doc["video"]);

        Json::Value again;
        systemBack.Serialize(again["system"]);
        tablesBack.Serialize(again["tables"]);
        channelsBack.Serialize(again["channels"]);
        alarmsBack.Serialize(again["alarms"]);
        streamsBack.Serialize(again["streams"]);
        formatBack.Serialize(again["video"]);
        texts += again.toStyledString();
    }
    return texts;
}

}  // namespace

TEST(ThreadSafety, IndependentDocumentsOfEveryFamilySerializeInParallelAsAlone) {
    LogCapture log;  // the alarm status lines, kept off the test output
    const auto alone = runOneAfterAnother<std::string>(serializeDocuments);
    const auto together = runAtOnce<std::string>(serializeDocuments);
    EXPECT_EQ(together, alone);
    EXPECT_NE(alone[0], alone[1]);
    EXPECT_NE(alone[2].find("\"ipv4\" : \"10.0.0.219\""), std::string::npos);
    EXPECT_NE(alone[1].find("\"remote-sid-str\" : \"18446744073709551515\""), std::string::npos);
    EXPECT_NE(alone[0].find("\"format\" : \"1080P60\""), std::string::npos);
}
