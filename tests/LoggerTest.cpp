#include "Logger.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"

TEST(Logger, SinkReceivesFormattedLineWithLevel) {
    LogCapture capture;
    Logger::log(Logger::logError, "ERR::path '%s' error %d", "/x", 17);
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0], logLine(Logger::logError, "ERR::path '/x' error 17"));
}

TEST(Logger, LinesAboveThresholdAreDropped) {
    LogCapture capture;
    Logger::setThreshold(Logger::logInfo);
    Logger::log(Logger::logDebug, "DBG::dropped");
    Logger::log(Logger::logVerbose, "VBS::dropped");
    Logger::log(Logger::logInfo, "INF::kept");
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0].second, "INF::kept");
    EXPECT_EQ(Logger::getThreshold(), Logger::logInfo);
}

TEST(Logger, LongLinesAreNotShortened) {
    LogCapture capture;
    const std::string big(5000, 'a');
    Logger::log(Logger::logError, "ERR::'%s'", big.c_str());
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0].second, "ERR::'" + big + "'");
}

TEST(Logger, NullSinkRestoresDefaultWhichWritesToStderr) {
    Logger::setSink(nullptr);
    testing::internal::CaptureStderr();
    Logger::log(Logger::logError, "ERR::to stderr %d", 5);
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err, "ERR::to stderr 5\n");
}

TEST(Logger, ManyThreadsLogEveryLineWhole) {
    LogCapture capture;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([t]() {
            for (int i = 0; i < 200; ++i) {
                Logger::log(Logger::logInfo, "INF::thread %d line %d", t, i);
            }
        });
    }
    for (auto& th : threads) {
        th.join();
    }
    const auto lines = capture.lines();
    ASSERT_EQ(lines.size(), 1600u);
    std::vector<int> perThread(8, 0);
    for (const auto& line : lines) {
        int t = -1;
        int i = -1;
        ASSERT_EQ(std::sscanf(line.second.c_str(), "INF::thread %d line %d", &t, &i), 2);
        ASSERT_GE(t, 0);
        ASSERT_LT(t, 8);
        EXPECT_EQ(i, perThread[t]);  // each thread's lines arrive in its own order
        ++perThread[t];
    }
}
