#include "MoveAverage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "LogCapture.h"

namespace {

using Lines = std::vector<LogCapture::Line>;

// The single line dump() logs.
std::string dumpOf(MoveAverage& average) {
    LogCapture log;
    average.dump();
    const Lines lines = log.lines();
    if (lines.size() != 1) {
        ADD_FAILURE() << "dump logged " << lines.size() << " lines";
        return "";
    }
    EXPECT_EQ(lines[0].first, Logger::logDebug);
    return lines[0].second;
}

}  // namespace

TEST(MoveAverage, TwoSamplesInARingOfThreeReachTheMinimum) {
    MoveAverage average(3, 2);
    average.addSample(1.0f);
    EXPECT_FALSE(average.minSizeReached());
    average.addSample(2.0f);
    EXPECT_TRUE(average.minSizeReached());
    EXPECT_EQ(average.getAverage(), 1.5);

    LogCapture log;
    average.dump();
    EXPECT_EQ(log.lines(),
              Lines{logLine(Logger::logDebug,
                            "DBG::MoveAverage(size '3'): Average '1.50::' pos '2' size '2' (min "
                            "'2'):: Samples '[1.000000, 2.000000, ]'")});
}

TEST(MoveAverage, FourSamplesInARingOfThreeOverwriteTheOldest) {
    MoveAverage average(3, 2);
    for (float sample : {1.0f, 2.0f, 3.0f, 4.0f}) {
        average.addSample(sample);
    }
    EXPECT_EQ(average.getAverage(), 3.0);
    // Slots in storage order: 4 replaced 1; the next sample goes to slot 1.
    EXPECT_EQ(dumpOf(average),
              "DBG::MoveAverage(size '3'): Average '3.00::' pos '1' size '3' (min '2'):: Samples "
              "'[4.000000, 2.000000, 3.000000, ]'");
    average.addSample(10.0f);
    EXPECT_EQ(dumpOf(average),
              "DBG::MoveAverage(size '3'): Average '5.67::' pos '2' size '3' (min '2'):: Samples "
              "'[4.000000, 10.000000, 3.000000, ]'");
}

TEST(MoveAverage, PositionWrapsAfterTheLastSlot) {
    MoveAverage average(3, 1);
    average.addSample(1.0f);
    average.addSample(1.0f);
    average.addSample(1.0f);
    EXPECT_EQ(dumpOf(average),
              "DBG::MoveAverage(size '3'): Average '1.00::' pos '0' size '3' (min '1'):: Samples "
              "'[1.000000, 1.000000, 1.000000, ]'");
}

TEST(MoveAverage, ResetAfterUseGivesMeanZero) {
    MoveAverage average(4, 2);
    for (float sample : {5.0f, 6.0f, 7.0f}) {
        average.addSample(sample);
    }
    average.reset();
    EXPECT_EQ(average.getAverage(), 0.0);
    EXPECT_FALSE(average.minSizeReached());
    EXPECT_EQ(dumpOf(average),
              "DBG::MoveAverage(size '4'): Average '0.00::' pos '0' size '0' (min '2'):: Samples "
              "'[]'");

    // The ring keeps its size: five samples wrap to slot 0 again.
    for (float sample : {1.0f, 2.0f, 3.0f, 4.0f, 8.0f}) {
        average.addSample(sample);
    }
    EXPECT_TRUE(average.minSizeReached());
    EXPECT_EQ(average.getAverage(), 4.25);
    EXPECT_EQ(dumpOf(average),
              "DBG::MoveAverage(size '4'): Average '4.25::' pos '1' size '4' (min '2'):: Samples "
              "'[8.000000, 2.000000, 3.000000, 4.000000, ]'");
}

TEST(MoveAverage, FreshRingDumpsNoSamplesAndAveragesZero) {
    MoveAverage average(5, 3);
    EXPECT_EQ(average.getAverage(), 0.0);
    EXPECT_FALSE(average.minSizeReached());
    EXPECT_EQ(dumpOf(average),
              "DBG::MoveAverage(size '5'): Average '0.00::' pos '0' size '0' (min '3'):: Samples "
              "'[]'");
}

TEST(MoveAverage, PartlyFilledRingDividesBySamplesAdded) {
    MoveAverage average(4, 1);
    average.addSample(3.0f);
    average.addSample(5.0f);
    EXPECT_EQ(average.getAverage(), 4.0);
}

TEST(MoveAverage, MinimumReachedWhenCountEqualsIt) {
    MoveAverage zero(2, 0);
    EXPECT_TRUE(zero.minSizeReached());

    MoveAverage three(3, 3);
    three.addSample(1.0f);
    three.addSample(1.0f);
    EXPECT_FALSE(three.minSizeReached());
    three.addSample(1.0f);
    EXPECT_TRUE(three.minSizeReached());
    three.addSample(1.0f);  // count stops at the ring size
    EXPECT_TRUE(three.minSizeReached());

    // A minimum above the ring size is never reached.
    MoveAverage never(2, 3);
    for (int i = 0; i < 10; ++i) {
        never.addSample(1.0f);
    }
    EXPECT_FALSE(never.minSizeReached());
}

TEST(MoveAverage, SumIsTakenInFloatInSlotOrder) {
    MoveAverage average(3, 1);
    // Slots end as [1, 1e8, -1e8]. In slot order and float, 1 + 1e8 rounds to 1e8 and the sum
    // is 0; in arrival order (1e8, -1e8, 1) or in double it would be 1.
    for (float sample : {7.0f, 1e8f, -1e8f, 1.0f}) {
        average.addSample(sample);
    }
    EXPECT_EQ(average.getAverage(), 0.0);
}

TEST(MoveAverage, DivisionIsInFloatWidenedToDouble) {
    MoveAverage average(2, 1);
    average.addSample(0.1f);
    average.addSample(0.2f);
    // (0.1f + 0.2f) / 2 in float is 0.15000000596046448; in double it would be
    // 0.15000000223517418.
    EXPECT_EQ(average.getAverage(), 0.15000000596046448);
}

TEST(MoveAverage, DumpPrintsSixDecimalsAndRoundsTheAverage) {
    MoveAverage average(3, 2);
    average.addSample(-1.5f);
    average.addSample(0.25f);
    average.addSample(1234567.0f);
    EXPECT_EQ(dumpOf(average),
              "DBG::MoveAverage(size '3'): Average '411521.91::' pos '0' size '3' (min '2'):: "
              "Samples '[-1.500000, 0.250000, 1234567.000000, ]'");
}

TEST(MoveAverage, RingOfOneKeepsTheLastSample) {
    MoveAverage average(1, 1);
    average.addSample(2.0f);
    average.addSample(9.0f);
    EXPECT_EQ(average.getAverage(), 9.0);
    EXPECT_EQ(dumpOf(average),
              "DBG::MoveAverage(size '1'): Average '9.00::' pos '0' size '1' (min '1'):: Samples "
              "'[9.000000, ]'");
}

TEST(MoveAverage, RingOfSizeZeroIgnoresSamples) {
    MoveAverage average(0, 1);
    average.addSample(1.0f);
    average.addSample(2.0f);
    EXPECT_FALSE(average.minSizeReached());
    // 0 divided by 0 in float.
    EXPECT_TRUE(std::isnan(average.getAverage()));

    const std::string line = dumpOf(average);
    const std::string head = "DBG::MoveAverage(size '0'): Average '";
    const std::string tail = "nan::' pos '0' size '0' (min '1'):: Samples '[]'";
    EXPECT_TRUE(line == head + tail || line == head + "-" + tail) << line;

    average.reset();
    EXPECT_FALSE(average.minSizeReached());
    EXPECT_TRUE(std::isnan(average.getAverage()));

    MoveAverage noMinimum(0, 0);
    noMinimum.addSample(5.0f);
    EXPECT_TRUE(noMinimum.minSizeReached());
}

TEST(MoveAverage, DumpIsDroppedBelowTheDebugThreshold) {
    std::vector<std::string> seen;
    Logger::setSink(
        [&seen](Logger::logDebugLevel_t, const std::string& line) { seen.push_back(line); });
    Logger::setThreshold(Logger::logInfo);
    MoveAverage average(2, 1);
    average.addSample(1.0f);
    average.dump();
    Logger::setSink(nullptr);
    EXPECT_TRUE(seen.empty());
}
