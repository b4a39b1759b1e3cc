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
