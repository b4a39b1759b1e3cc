#include "Logger.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <memory>
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

// What the default sink writes for one call.
std::string onStderr(const std::string& text) {
    Logger::setSink(nullptr);
    testing::internal::CaptureStderr();
    Logger::log(Logger::logError, "%s", text.c_str());
    return testing::internal::GetCapturedStderr();
}

// A file's text in a log line cannot pass for a line of its own, nor steer the terminal.
TEST(Logger, DefaultSinkWritesOneLinePerCallWithControlBytesEscaped) {
    EXPECT_EQ(onStderr("ERR::Error parsing Json '{\"a\":\nINFO::Configuration verified OK'"),
              "ERR::Error parsing Json '{\"a\":\\nINFO::Configuration verified OK'\n");
    EXPECT_EQ(onStderr("ERR::a\r\tb\x1b[31mc\x07"
                       "d\x7f"),
              "ERR::a\\r\\tb\\x1b[31mc\\x07d\\x7f\n");
    EXPECT_EQ(onStderr("ERR::caf\xc3\xa9 \\n"), "ERR::caf\xc3\xa9 \\n\n");
}

TEST(Logger, DefaultSinkCutsALongLineAndCountsWhatItLeftOut) {
    const std::string text = "ERR::" + std::string(50000, 'x');
    EXPECT_EQ(onStderr(text), text.substr(0, 4096) + " ... (45909 more bytes not shown)\n");
    // A cut that would fall inside a character falls before it.
    const std::string wide = std::string(4095, 'a') + "\xc3\xa9" + "zz";
    EXPECT_EQ(onStderr(wide), std::string(4095, 'a') + " ... (4 more bytes not shown)\n");
    const std::string exact(4096, 'b');
    EXPECT_EQ(onStderr(exact), exact + "\n");
}

TEST(Logger, ASinkReceivesTheLineAsLoggedWhateverItHolds) {
    LogCapture capture;
    const std::string text = "ERR::a\nb\x1b" + std::string(10000, 'c');
    Logger::log(Logger::logError, "%s", text.c_str());
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0].second, text);
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

TEST(LoggerCapture, TakesTheThreadsLinesInsteadOfTheSink) {
    LogCapture sink;
    {
        Logger::Capture capture;
        Logger::log(Logger::logError, "ERR::path '%s' error %d", "/x", 17);
        Logger::log(Logger::logInfo, "INF::alarm %d on", 4);
        ASSERT_EQ(capture.lines().size(), 2u);
        EXPECT_EQ(capture.lines()[0],
                  (Logger::Capture::Line{Logger::logError, "ERR::path '/x' error 17"}));
        EXPECT_EQ(capture.lines()[1], (Logger::Capture::Line{Logger::logInfo, "INF::alarm 4 on"}));
        EXPECT_TRUE(sink.lines().empty());
    }
    Logger::log(Logger::logError, "ERR::after %d", 1);
    ASSERT_EQ(sink.lines().size(), 1u);
    EXPECT_EQ(sink.lines()[0], logLine(Logger::logError, "ERR::after 1"));
}

TEST(LoggerCapture, RecordsVerboseLinesWhileTheThresholdStaysAtInfo) {
    LogCapture sink;
    Logger::setThreshold(Logger::logInfo);
    {
        Logger::Capture capture;
        EXPECT_EQ(Logger::getThreshold(), Logger::logInfo);
        Logger::log(Logger::logVerbose, "VBS::loaded %d bytes", 120);
        Logger::log(Logger::logDebug, "DBG::removed channel %d", 3);
        const std::vector<Logger::Capture::Line> expected = {
            {Logger::logVerbose, "VBS::loaded 120 bytes"},
            {Logger::logDebug, "DBG::removed channel 3"}};
        EXPECT_EQ(capture.lines(), expected);
    }
    EXPECT_EQ(Logger::getThreshold(), Logger::logInfo);
    // Outside the capture the threshold drops the same lines again.
    Logger::log(Logger::logVerbose, "VBS::loaded %d bytes", 120);
    Logger::log(Logger::logInfo, "INF::kept");
    ASSERT_EQ(sink.lines().size(), 1u);
    EXPECT_EQ(sink.lines()[0], logLine(Logger::logInfo, "INF::kept"));
}

TEST(LoggerCapture, LeavesTheThresholdAsTheProcessSetItEvenWhenItIsLowered) {
    LogCapture sink;
    Logger::setThreshold(Logger::logError);
    Logger::Capture capture;
    Logger::log(Logger::logInfo, "INF::one");
    Logger::setThreshold(Logger::logEmergency);
    Logger::log(Logger::logVerbose, "VBS::two");
    EXPECT_EQ(Logger::getThreshold(), Logger::logEmergency);
    const std::vector<Logger::Capture::Line> expected = {{Logger::logInfo, "INF::one"},
                                                         {Logger::logVerbose, "VBS::two"}};
    EXPECT_EQ(capture.lines(), expected);
    EXPECT_TRUE(sink.lines().empty());
}

TEST(LoggerCapture, KeepsTheDefaultSinkSilentAndLeavesItInPlace) {
    Logger::setSink(nullptr);
    Logger::setThreshold(Logger::logInfo);
    testing::internal::CaptureStderr();
    {
        Logger::Capture capture;
        Logger::log(Logger::logError, "ERR::captured %d", 1);
        ASSERT_EQ(capture.lines().size(), 1u);
        EXPECT_EQ(capture.lines()[0].text, "ERR::captured 1");
    }
    Logger::log(Logger::logError, "ERR::shown %d", 2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERR::shown 2\n");
}

TEST(LoggerCapture, TheInnermostCaptureTakesTheLine) {
    LogCapture sink;
    Logger::Capture outer;
    Logger::log(Logger::logInfo, "INF::outer %d", 1);
    {
        Logger::Capture inner;
        Logger::log(Logger::logInfo, "INF::inner %d", 1);
        {
            Logger::Capture innermost;
            Logger::log(Logger::logVerbose, "VBS::innermost");
            ASSERT_EQ(innermost.lines().size(), 1u);
            EXPECT_EQ(innermost.lines()[0].text, "VBS::innermost");
        }
        Logger::log(Logger::logInfo, "INF::inner %d", 2);
        const std::vector<Logger::Capture::Line> expected = {{Logger::logInfo, "INF::inner 1"},
                                                             {Logger::logInfo, "INF::inner 2"}};
        EXPECT_EQ(inner.lines(), expected);
    }
    Logger::log(Logger::logInfo, "INF::outer %d", 2);
    const std::vector<Logger::Capture::Line> expected = {{Logger::logInfo, "INF::outer 1"},
                                                         {Logger::logInfo, "INF::outer 2"}};
    EXPECT_EQ(outer.lines(), expected);
    EXPECT_TRUE(sink.lines().empty());
}

TEST(LoggerCapture, AnOuterCaptureThatEndsFirstLeavesTheInnerOneTakingLines) {
    LogCapture sink;
    auto outer = std::make_unique<Logger::Capture>();
    Logger::Capture inner;
    outer.reset();
    Logger::log(Logger::logInfo, "INF::still inner");
    ASSERT_EQ(inner.lines().size(), 1u);
    EXPECT_EQ(inner.lines()[0].text, "INF::still inner");
    EXPECT_TRUE(sink.lines().empty());
}

TEST(LoggerCapture, ALowerMaximumDropsTheLinesAboveItWithoutFormattingThem) {
    LogCapture sink;
    Logger::Capture capture(Logger::logError);
    // A text that cannot be read: formatting it would crash the test.
    const char* unreadable = reinterpret_cast<const char*>(static_cast<std::uintptr_t>(8));
    Logger::log(Logger::logInfo, "INF::%s", unreadable);
    Logger::log(Logger::logVerbose, "VBS::%s", unreadable);
    Logger::log(Logger::logError, "ERR::kept %d", 3);
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0], (Logger::Capture::Line{Logger::logError, "ERR::kept 3"}));
    EXPECT_TRUE(sink.lines().empty());  // dropped, not handed on
}

TEST(LoggerCapture, TakeHandsOverTheLinesAndGoesOnFromNone) {
    Logger::Capture capture;
    Logger::log(Logger::logInfo, "INF::first");
    const std::vector<Logger::Capture::Line> taken = capture.take();
    ASSERT_EQ(taken.size(), 1u);
    EXPECT_EQ(taken[0].text, "INF::first");
    EXPECT_TRUE(capture.lines().empty());
    Logger::log(Logger::logDebug, "DBG::second");
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0], (Logger::Capture::Line{Logger::logDebug, "DBG::second"}));
}

TEST(LoggerCapture, LinesOfOtherThreadsStillReachTheSink) {
    LogCapture sink;
    Logger::setThreshold(Logger::logInfo);
    Logger::Capture capture;
    std::thread other([]() {
        Logger::log(Logger::logInfo, "INF::other %d", 1);
        Logger::log(Logger::logVerbose, "VBS::other dropped");
    });
    other.join();
    Logger::log(Logger::logInfo, "INF::mine");
    ASSERT_EQ(sink.lines().size(), 1u);
    EXPECT_EQ(sink.lines()[0], logLine(Logger::logInfo, "INF::other 1"));
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0].text, "INF::mine");
}
