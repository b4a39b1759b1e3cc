// Calls that the device's daemons make from several threads at once: logging from every
// thread, and serializing objects that each thread owns. Meant to run under
// ThreadSanitizer (preset tsan), which reports any data race as a failure; without it the
// tests still check that nothing is lost or mixed up between threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "DaifType.h"
#include "LogCapture.h"
#include "Logger.h"
#include "SfpInfo.h"

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
