#include "VideoFormat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "FileUtil.h"
#include "LogCapture.h"

namespace {

using VF = VideoFormat;
using Lines = std::vector<LogCapture::Line>;

const LogCapture::Line kUnknownLine = logLine(Logger::logError, "ERR::Unknown video format");
const LogCapture::Line kUnsupportedLine =
    logLine(Logger::logError, "ERR::Unsupported video format");

VF::video_format_t fmt(int number) {
    return static_cast<VF::video_format_t>(number);
}
VF::video_field_rate_t rate(int value) {
    return static_cast<VF::video_field_rate_t>(value);
}

constexpr int kError = -8;

struct Expected {
    int number;
    const char* text;
    int fieldRate;
    unsigned int width;
    unsigned int height;
    bool interlaced;
    int framerate;
    bool fractional;
    int totalPixelsPerLine;  // kError: the lookup fails
    int totalLines;
    unsigned int pixelsPerFrame;
    int clocksPerFrame;
    int videoStd;
    int quadFormat;
    const char* exactFramerate;
};

// The catalogue as the device documents it, one row per format.
// clang-format off
const Expected kCatalogue[] = {
    {1,  "1080P60",     60, 1920, 1080, false, 60, false, 2200, 1125, 2475000,  2475000, 3, 26, "60"},
    {2,  "1080P59",     59, 1920, 1080, false, 59, true,  2200, 1125, 2475000,  2475000, 3, 29, "60000/1001"},
    {3,  "1080I50",     50, 1920, 1080, true,  25, false, 2640, 1125, 2970000,  5940000, 1, 0,  "25"},
    {4,  "1080P30",     30, 1920, 1080, false, 30, false, 2200, 1125, 2475000,  4950000, 1, 24, "30"},
    {5,  "1080P29",     29, 1920, 1080, false, 29, true,  2200, 1125, 2475000,  4950000, 1, 28, "30000/1001"},
    {6,  "720P60",      60, 1280, 720,  false, 60, false, 1650, 750,  1237500,  2475000, 1, 0,  "60"},
    {7,  "720P59",      59, 1280, 720,  false, 59, true,  1650, 750,  1237500,  2475000, 1, 0,  "60000/1001"},
    {8,  "1080I60",     60, 1920, 1080, true,  30, false, 2200, 1125, 2475000,  4950000, 1, 0,  "30"},
    {9,  "1080I59",     59, 1920, 1080, true,  29, true,  2200, 1125, 2475000,  4950000, 1, 0,  "30000/1001"},
    {10, "1080P50",     50, 1920, 1080, false, 50, false, 2640, 1125, 2970000,  2970000, 3, 27, "50"},
    {11, "1080P25",     25, 1920, 1080, false, 25, false, 2640, 1125, 2970000,  5940000, 1, 25, "25"},
    {12, "1080P24",     24, 1920, 1080, false, 24, false, 2750, 1125, 3093750,  6187500, 1, 0,  "24"},
    {13, "1080P23",     23, 1920, 1080, false, 23, true,  2750, 1125, 3093750,  6187500, 1, 0,  "24000/1001"},
    {14, "720P50",      50, 1280, 720,  false, 50, false, 1980, 750,  1485000,  2970000, 1, 0,  "50"},
    {15, "720P30",      30, 1280, 720,  false, 30, false, 3300, 750,  2475000,  4950000, 1, 0,  "30"},
    {16, "720P29",      29, 1280, 720,  false, 29, true,  3300, 750,  2475000,  4950000, 1, 0,  "30000/1001"},
    {17, "720P25",      25, 1280, 720,  false, 25, false, 3960, 750,  2970000,  5940000, 1, 0,  "25"},
    {18, "720P24",      24, 1280, 720,  false, 24, false, 4125, 750,  3093750,  6187500, 1, 0,  "24"},
    {19, "720P23",      23, 1280, 720,  false, 23, true,  4125, 750,  3093750,  6187500, 1, 0,  "24000/1001"},
    {20, "1080I50_295", 50, 1920, 1080, true,  25, false, 2640, 1125, 2970000,  kError,  1, 0,  "25"},
    {21, "1080I30",     30, 1920, 1080, true,  15, false, 2200, 1125, 2475000,  2475000, 1, 0,  "15"},
    {22, "480I59",      59, 720,  483,  true,  29, true,  858,  525,  450450,   4950000, 0, 0,  "30000/1001"},
    {23, "576I50",      50, 720,  576,  true,  25, false, 864,  625,  540000,   5940000, 0, 0,  "25"},
    {24, "2160P30",     30, 3840, 2160, false, 30, false, 4400, 2250, 9900000,  4950000, 4, 0,  "30"},
    {25, "2160P25",     25, 3840, 2160, false, 25, false, 5280, 2250, 11880000, 5940000, 4, 0,  "25"},
    {26, "2160P60",     60, 3840, 2160, false, 60, false, 4400, 2250, 9900000,  2475000, 5, 0,  "60"},
    {27, "2160P50",     50, 3840, 2160, false, 50, false, 5280, 2250, 11880000, 2970000, 5, 0,  "50"},
    {28, "2160P29",     29, 3840, 2160, false, 29, true,  4400, 2250, 9900000,  4950000, 4, 0,  "30000/1001"},
    {29, "2160P59",     59, 3840, 2160, false, 59, true,  4400, 2250, 9900000,  2475000, 5, 0,  "60000/1001"},
};
// clang-format on

// Numbers outside the catalogue: 0 and a few that no format has.
const int kUnknownNumbers[] = {0, 30, 35, -1};

struct Details {
    VF::video_field_rate_t fieldRate = rate(-100);
    unsigned int width = 7777;
    unsigned int height = 8888;
    bool interlace = true;
};

Details detailsOf(const VF& format, int* result) {
    Details d;
    *result = format.getVideoDetails(d.fieldRate, d.width, d.height, d.interlace);
    return d;
}

// The derivation by details: (field rate, width, height, interlaced) -> number.
const std::map<std::tuple<int, unsigned int, unsigned int, bool>, int> kDerivable = {
    {{60, 1920, 1080, false}, 1},  {{60, 1920, 1080, true}, 8},   {{60, 1280, 720, false}, 6},
    {{60, 3840, 2160, false}, 26}, {{59, 1920, 1080, false}, 2},  {{59, 1920, 1080, true}, 9},
    {{59, 1280, 720, false}, 7},   {{59, 3840, 2160, false}, 29}, {{59, 720, 483, true}, 22},
    {{50, 1920, 1080, false}, 10}, {{50, 1920, 1080, true}, 3},   {{50, 1280, 720, false}, 14},
    {{50, 3840, 2160, false}, 27}, {{50, 720, 576, true}, 23},    {{30, 1920, 1080, false}, 4},
    {{30, 1280, 720, false}, 15},  {{30, 3840, 2160, false}, 24}, {{29, 1920, 1080, false}, 5},
    {{29, 1280, 720, false}, 16},  {{29, 3840, 2160, false}, 28}, {{25, 1920, 1080, false}, 11},
    {{25, 1280, 720, false}, 17},  {{25, 3840, 2160, false}, 25}, {{24, 1920, 1080, false}, 12},
    {{24, 1280, 720, false}, 18},  {{23, 1920, 1080, false}, 13}, {{23, 1280, 720, false}, 19},
};

struct Target {
    int fieldRate;
    unsigned int width;
    unsigned int height;
    bool interlace;
};

using Step = std::function<void(VF&, const Target&)>;

const Step kSetRate = [](VF& f, const Target& t) {
    EXPECT_EQ(f.setVideoFieldRate(rate(t.fieldRate)), 0);
};
const Step kSetWidth = [](VF& f, const Target& t) { EXPECT_EQ(f.setVideoWidth(t.width), 0); };
const Step kSetHeight = [](VF& f, const Target& t) { EXPECT_EQ(f.setVideoHeight(t.height), 0); };
const Step kSetInterlace = [](VF& f, const Target& t) {
    EXPECT_EQ(f.setVideoInterlace(t.interlace), 0);
};

// Applies the four setters in the order given by the permutation of 0..3.
void applyInOrder(VF& f, const Target& t, const std::array<int, 4>& order) {
    const Step steps[] = {kSetRate, kSetWidth, kSetHeight, kSetInterlace};
    for (int index : order) {
        steps[index](f, t);
    }
}

}  // namespace

// ---- catalogue ----------------------------------------------------------------------------

TEST(VideoFormat, EveryCatalogueFormatAnswersEveryColumn) {
    for (const Expected& row : kCatalogue) {
        SCOPED_TRACE(row.text);
        LogCapture log;
        VF f(fmt(row.number));
        EXPECT_EQ(f.getFormat(), row.number);
        EXPECT_EQ(f.getFieldrate(), row.fieldRate);
        EXPECT_EQ(f.isInterlace(), row.interlaced);

        int result = 0;
        const Details d = detailsOf(f, &result);
        EXPECT_EQ(result, 0);
        EXPECT_EQ(d.fieldRate, row.fieldRate);
        EXPECT_EQ(d.width, row.width);
        EXPECT_EQ(d.height, row.height);
        EXPECT_EQ(d.interlace, row.interlaced);

        EXPECT_EQ(f.toString(), row.text);
        EXPECT_EQ(f.getFramerate(), row.framerate);
        EXPECT_EQ(f.isFractional(), row.fractional);

        unsigned short totalPixels = 1;
        unsigned short totalLines = 1;
        EXPECT_EQ(f.getVideoFormatFullDimensions(totalPixels, totalLines), 0);
        EXPECT_EQ(totalPixels, row.totalPixelsPerLine);
        EXPECT_EQ(totalLines, row.totalLines);
        EXPECT_EQ(f.getPixelsPerFrame(), row.pixelsPerFrame);

        EXPECT_EQ(f.getClocksPerFrame(), row.clocksPerFrame);
        EXPECT_EQ(f.getVideoStd(), row.videoStd);
        EXPECT_EQ(f.getQuadFormat(), row.quadFormat);

        std::string exact = "untouched";
        EXPECT_EQ(f.getExactFramerateString(exact), 0);
        EXPECT_EQ(exact, row.exactFramerate);

        // Only the one format without a clock count complains.
        const Lines expectedLines =
            row.clocksPerFrame == kError ? Lines{kUnsupportedLine} : Lines{};
        EXPECT_EQ(log.lines(), expectedLines);
    }
}

TEST(VideoFormat, EveryCatalogueTextRoundTripsThroughFromString) {
    for (const Expected& row : kCatalogue) {
        SCOPED_TRACE(row.text);
        LogCapture log;
        VF f;
        EXPECT_EQ(f.fromString(row.text), 0);
        EXPECT_EQ(f.getFormat(), row.number);
        EXPECT_EQ(f.getFieldrate(), row.fieldRate);
        EXPECT_EQ(f.isInterlace(), row.interlaced);
        EXPECT_EQ(f.toString(), row.text);
        EXPECT_EQ(f.checkVideoDetailConsistency(), row.number == 21 ? kError : 0);
        EXPECT_TRUE(log.lines().empty());
    }
}

TEST(VideoFormat, EveryCatalogueFormatSerializesAsItsTextAndReadsBack) {
    for (const Expected& row : kCatalogue) {
        SCOPED_TRACE(row.text);
        Json::Value out;
        VF(fmt(row.number)).Serialize(out);
        EXPECT_EQ(out, parseJson(std::string(R"({"format": ")") + row.text + "\"}"));

        VF back;
        back.Deserialize(out);
        EXPECT_EQ(back.getFormat(), row.number);
        EXPECT_EQ(back.getFieldrate(), row.fieldRate);
    }
}

TEST(VideoFormat, UnknownNumbersAnswerWithTheirFallbacksAndErrorLines) {
    for (int number : kUnknownNumbers) {
        SCOPED_TRACE(number);
        VF f;
        {
            LogCapture log;
            f.setFormat(fmt(number));
            // Only a non-zero number is looked up (and found missing) when stored.
            EXPECT_EQ(log.lines(), number == 0 ? Lines{} : Lines{kUnknownLine});
        }
        EXPECT_EQ(f.getFormat(), number);
        EXPECT_EQ(f.getFieldrate(), 0);
        EXPECT_FALSE(f.isInterlace());
        EXPECT_EQ(f.getFramerate(), 0);

        LogCapture log;
        int result = 0;
        const Details d = detailsOf(f, &result);
        EXPECT_EQ(result, kError);
        EXPECT_EQ(d.fieldRate, -100);
        EXPECT_EQ(d.width, 7777u);
        EXPECT_EQ(d.height, 8888u);
        EXPECT_TRUE(d.interlace);
        EXPECT_EQ(log.lines(), Lines{kUnknownLine});
        log.clear();

        EXPECT_EQ(f.toString(), "undefined");
        EXPECT_TRUE(f.isFractional());
        EXPECT_EQ(f.getVideoStd(), 0);
        EXPECT_EQ(f.getQuadFormat(), 0);
        EXPECT_TRUE(log.lines().empty());

        unsigned short totalPixels = 11;
        unsigned short totalLines = 22;
        EXPECT_EQ(f.getVideoFormatFullDimensions(totalPixels, totalLines), kError);
        EXPECT_EQ(totalPixels, 11);
        EXPECT_EQ(totalLines, 22);
        EXPECT_EQ(log.lines(), Lines{kUnknownLine});
        log.clear();

        EXPECT_EQ(f.getPixelsPerFrame(), 0u);
        EXPECT_EQ(log.lines(), Lines{kUnknownLine});
        log.clear();

        EXPECT_EQ(f.getClocksPerFrame(), kError);
        EXPECT_EQ(log.lines(), Lines{kUnsupportedLine});
        log.clear();

        // The stored field rate (0) has no frame rate either.
        std::string exact = "untouched";
        EXPECT_EQ(f.getExactFramerateString(exact), kError);
        EXPECT_EQ(exact, "untouched");
        EXPECT_EQ(log.lines(), Lines{kUnknownLine});
        log.clear();

        // The fallback text is not a format name.
        EXPECT_EQ(f.fromString(f.toString()), kError);
        EXPECT_EQ(f.getFormat(), 0);
        EXPECT_EQ(log.lines(),
                  Lines{logLine(Logger::logError, "ERR::Unknown video format 'undefined'")});
    }
}

TEST(VideoFormat, UnknownNonZeroNumberSerializesAsUndefined) {
    for (int number : {30, 35, -1}) {
        LogCapture log;
        VF f(fmt(number));
        Json::Value out;
        f.Serialize(out);
        EXPECT_EQ(out, parseJson(R"({"format": "undefined"})")) << number;
    }
}

TEST(VideoFormat, FractionalCatchAllCoversEveryNumberOutsideTheCatalogue) {
    for (int number : {-1000, -1, 0, 30, 31, 100, 1000000}) {
        LogCapture log;
        EXPECT_TRUE(VF(fmt(number)).isFractional()) << number;
    }
}

TEST(VideoFormat, QuadFormatOfThe1080ProgressiveFormats) {
    const std::map<int, int> quads = {{4, 24}, {11, 25}, {1, 26}, {10, 27}, {5, 28}, {2, 29}};
    for (int number = -1; number <= 31; ++number) {
        LogCapture log;
        const auto it = quads.find(number);
        EXPECT_EQ(VF(fmt(number)).getQuadFormat(), it == quads.end() ? 0 : it->second) << number;
    }
}

TEST(VideoFormat, FormatWithoutClockCountIsOnly1080I50_295) {
    LogCapture log;
    VF f(VF::VIDEO_FORMAT_1080I50_295);
    EXPECT_EQ(f.getClocksPerFrame(), kError);
    EXPECT_EQ(log.lines(), Lines{kUnsupportedLine});
    EXPECT_EQ(VF(VF::VIDEO_FORMAT_1080I50).getClocksPerFrame(), 5940000);
    EXPECT_EQ(VF(VF::VIDEO_FORMAT_1080I30).getClocksPerFrame(), 2475000);
    EXPECT_EQ(VF(VF::VIDEO_FORMAT_1080I60).getClocksPerFrame(), 4950000);
}

// ---- construction, assignment and comparison -----------------------------------------------

TEST(VideoFormat, DefaultHasNoFormatAndNoDetails) {
    LogCapture log;
    VF f;
    EXPECT_EQ(f.getFormat(), VF::VIDEO_FORMAT_UNDEFINED);
    EXPECT_EQ(f.getFieldrate(), VF::VIDEO_FIELD_RATE_NONE);
    EXPECT_FALSE(f.isInterlace());
    EXPECT_EQ(f.getFramerate(), 0);
    EXPECT_EQ(f.checkVideoDetailConsistency(), kError);
    EXPECT_TRUE(log.lines().empty());
}

TEST(VideoFormat, ConstructingFromZeroGivesTheDefaults) {
    LogCapture log;
    VF f(VF::VIDEO_FORMAT_UNDEFINED);
    EXPECT_EQ(f.getFormat(), 0);
    EXPECT_EQ(f.getFieldrate(), 0);
    EXPECT_FALSE(f.isInterlace());
    // Width and height 0 too: adding 1080I50's rate and scan alone does not name a format.
    f.setVideoInterlace(true);
    f.setVideoFieldRate(VF::VIDEO_FIELD_RATE_50);
    EXPECT_EQ(f.getFormat(), 0);
    EXPECT_TRUE(log.lines().empty());
}

TEST(VideoFormat, AssignmentTakesTheNumberOnly) {
    VF source(VF::VIDEO_FORMAT_720P59);
    VF target;
    target.setVideoWidth(3840);
    target = source;
    EXPECT_EQ(target.getFormat(), VF::VIDEO_FORMAT_720P59);
    EXPECT_EQ(target.getFieldrate(), 59);
    EXPECT_EQ(target.checkVideoDetailConsistency(), 0);

    // A source without a number keeps the target's details: 1280 is not copied.
    VF detailsOnly;
    detailsOnly.setVideoWidth(1280);
    VF interlaced(VF::VIDEO_FORMAT_1080I50);
    interlaced = detailsOnly;
    EXPECT_EQ(interlaced.getFormat(), 0);
    EXPECT_EQ(interlaced.getFieldrate(), 50);
    EXPECT_TRUE(interlaced.isInterlace());
    EXPECT_EQ(interlaced.checkVideoDetailConsistency(), 0);
    EXPECT_EQ(interlaced.getFormat(), VF::VIDEO_FORMAT_1080I50);
}

TEST(VideoFormat, AssignmentFromNumberSetsTheFormat) {
    VF f(VF::VIDEO_FORMAT_1080P60);
    VF& same = (f = VF::VIDEO_FORMAT_576I50);
    EXPECT_EQ(&same, &f);
    EXPECT_EQ(f.getFormat(), VF::VIDEO_FORMAT_576I50);
    EXPECT_EQ(f.getFieldrate(), 50);
    EXPECT_TRUE(f.isInterlace());

    // Assigning 0 keeps the details.
    f = VF::VIDEO_FORMAT_UNDEFINED;
    EXPECT_EQ(f.getFormat(), 0);
    EXPECT_EQ(f.getFieldrate(), 50);
    EXPECT_TRUE(f.isInterlace());
}

TEST(VideoFormat, CopyConstructionCopiesEverything) {
    VF source(VF::VIDEO_FORMAT_1080I50);
    source.setFormat(VF::VIDEO_FORMAT_UNDEFINED);
    const VF copy(source);
    EXPECT_EQ(copy.getFormat(), 0);
    EXPECT_EQ(copy.getFieldrate(), 50);
    EXPECT_TRUE(copy.isInterlace());
}

TEST(VideoFormat, EqualityComparesNumbersOnly) {
    VF a;
    VF b;
    b.setVideoWidth(1920);
    b.setVideoFieldRate(VF::VIDEO_FIELD_RATE_60);
    EXPECT_TRUE(a == b);
    b.setVideoHeight(1080);
    EXPECT_EQ(b.getFormat(), VF::VIDEO_FORMAT_1080P60);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(b == VF(VF::VIDEO_FORMAT_1080P60));

    EXPECT_TRUE(b == VF::VIDEO_FORMAT_1080P60);
    EXPECT_FALSE(b == VF::VIDEO_FORMAT_1080P59);
    EXPECT_FALSE(b != VF::VIDEO_FORMAT_1080P60);
    EXPECT_TRUE(b != VF::VIDEO_FORMAT_1080P59);
}

// ---- deriving the number from the details ------------------------------------------------

TEST(VideoFormat, EveryDerivableCombinationGivesItsFormatInAnyOrderOfSetters) {
    const std::array<std::array<int, 4>, 4> orders = {{
        {0, 1, 2, 3},  // rate, width, height, interlace
        {3, 2, 1, 0},  // interlace, height, width, rate
        {1, 3, 0, 2},  // width, interlace, rate, height
        {2, 0, 3, 1},  // height, rate, interlace, width
    }};
    for (const auto& entry : kDerivable) {
        const Target t{std::get<0>(entry.first), std::get<1>(entry.first), std::get<2>(entry.first),
                       std::get<3>(entry.first)};
        for (const auto& order : orders) {
            // Start from a format that differs in every detail.
            for (VF::video_format_t start :
                 {VF::VIDEO_FORMAT_UNDEFINED, VF::VIDEO_FORMAT_576I50, VF::VIDEO_FORMAT_2160P59}) {
                LogCapture log;
                VF f(start);
                applyInOrder(f, t, order);
                EXPECT_EQ(f.getFormat(), entry.second)
                    << t.fieldRate << " " << t.width << "x" << t.height << " " << t.interlace;
                EXPECT_EQ(f.getFieldrate(), t.fieldRate);
                EXPECT_EQ(f.isInterlace(), t.interlace);
                EXPECT_TRUE(log.lines().empty());
            }
        }
    }
}

TEST(VideoFormat, EveryOtherCombinationGivesZeroAndKeepsTheDetails) {
    const int rates[] = {0, 23, 24, 25, 29, 30, 47, 48, 50, 59, 60, 26, 120};
    const std::pair<unsigned int, unsigned int> sizes[] = {
        {1920, 1080}, {1280, 720}, {3840, 2160}, {720, 483}, {720, 576},
        {720, 480},   {720, 486},  {1920, 720},  {0, 0},     {1280, 1080},
    };
    int checked = 0;
    for (int r : rates) {
        for (const auto& size : sizes) {
            for (bool interlace : {false, true}) {
                const auto key = std::make_tuple(r, size.first, size.second, interlace);
                const auto it = kDerivable.find(key);
                const Target t{r, size.first, size.second, interlace};
                VF f(VF::VIDEO_FORMAT_1080P60);
                applyInOrder(f, t, {0, 1, 2, 3});
                const int expected = it == kDerivable.end() ? 0 : it->second;
                EXPECT_EQ(f.getFormat(), expected)
                    << r << " " << size.first << "x" << size.second << " " << interlace;
                EXPECT_EQ(f.getFieldrate(), r);
                EXPECT_EQ(f.isInterlace(), interlace);
                if (expected == 0) {
                    ++checked;
                }
            }
        }
    }
    // 13 rates x 10 sizes x 2 scans, less the 27 derivable combinations.
    EXPECT_EQ(checked, 13 * 10 * 2 - 27);
}

TEST(VideoFormat, Interlaced1080At30InAnyOrderGivesZeroNever1080I30) {
    std::array<int, 4> order = {0, 1, 2, 3};
    int permutations = 0;
    do {
        LogCapture log;
        VF f;
        applyInOrder(f, Target{30, 1920, 1080, true}, order);
        EXPECT_EQ(f.getFormat(), 0);
        EXPECT_NE(f.getFormat(), VF::VIDEO_FORMAT_1080I30);
        EXPECT_EQ(f.getFieldrate(), 30);
        EXPECT_TRUE(f.isInterlace());
        EXPECT_EQ(f.getFramerate(), 15);
        EXPECT_TRUE(log.lines().empty());
        ++permutations;
    } while (std::next_permutation(order.begin(), order.end()));
    EXPECT_EQ(permutations, 24);
}

TEST(VideoFormat, Interlaced1080At50GivesThe1080I50NotThe295Variant) {
    VF f(VF::VIDEO_FORMAT_1080I50_295);
    EXPECT_EQ(f.getFormat(), VF::VIDEO_FORMAT_1080I50_295);
    f.setVideoInterlace(true);
    EXPECT_EQ(f.getFormat(), VF::VIDEO_FORMAT_1080I50);
}

TEST(VideoFormat, SdProgressive483AndFieldRates47And48NeverMatch) {
    VF sd;
    applyInOrder(sd, Target{59, 720, 483, false}, {0, 1, 2, 3});
    EXPECT_EQ(sd.getFormat(), 0);
    sd.setVideoInterlace(true);
    EXPECT_EQ(sd.getFormat(), VF::VIDEO_FORMAT_480I59);

    for (int r : {47, 48}) {
        for (bool interlace : {false, true}) {
            VF f;
            applyInOrder(f, Target{r, 1920, 1080, interlace}, {0, 1, 2, 3});
            EXPECT_EQ(f.getFormat(), 0) << r;
        }
    }
}

TEST(VideoFormat, UpdateFormatDerivesTheNumberOnRequest) {
    VF f(VF::VIDEO_FORMAT_1080I30);
    f.updateFormat();
    EXPECT_EQ(f.getFormat(), 0);
    EXPECT_EQ(f.getFieldrate(), 30);
    EXPECT_TRUE(f.isInterlace());

    VF g(VF::VIDEO_FORMAT_1080I50_295);
    g.updateFormat();
    EXPECT_EQ(g.getFormat(), VF::VIDEO_FORMAT_1080I50);
}

TEST(VideoFormat, ConsistencyCheckRederivesTheNumber) {
    VF i30(VF::VIDEO_FORMAT_1080I30);
    EXPECT_EQ(i30.checkVideoDetailConsistency(), kError);
    EXPECT_EQ(i30.getFormat(), 0);

    VF i295(VF::VIDEO_FORMAT_1080I50_295);
    EXPECT_EQ(i295.checkVideoDetailConsistency(), 0);
    EXPECT_EQ(i295.getFormat(), VF::VIDEO_FORMAT_1080I50);

    VF p59(VF::VIDEO_FORMAT_2160P59);
    EXPECT_EQ(p59.checkVideoDetailConsistency(), 0);
    EXPECT_EQ(p59.getFormat(), VF::VIDEO_FORMAT_2160P59);
}

// ---- frame rates ----------------------------------------------------------------------------

TEST(VideoFormat, FieldRateFromFrameRateTable) {
    // frame rate, progressive, interlaced
    const int table[][3] = {
        {23, 23, 47}, {24, 24, 48}, {25, 25, 50}, {29, 29, 59}, {30, 30, 60},
        {47, 47, 0},  {48, 48, 0},  {50, 50, 0},  {59, 59, 0},  {60, 60, 0},
    };
    for (const auto& row : table) {
        EXPECT_EQ(VF::getFieldRateFromFrameRate(row[0], false), row[1]) << row[0];
        EXPECT_EQ(VF::getFieldRateFromFrameRate(row[0], true), row[2]) << row[0];
    }
    for (int other : {-1, 0, 1, 15, 22, 26, 28, 31, 46, 49, 58, 61, 100, 120}) {
        EXPECT_EQ(VF::getFieldRateFromFrameRate(other, false), 0) << other;
        EXPECT_EQ(VF::getFieldRateFromFrameRate(other, true), 0) << other;
    }
}

TEST(VideoFormat, FrameRateFollowsTheInterlaceFlag) {
    VF interlaced;
    interlaced.setVideoInterlace(true);
    EXPECT_EQ(interlaced.setVideoFrameRate(25), 0);
    EXPECT_EQ(interlaced.getFieldrate(), 50);

    VF progressive;
    EXPECT_EQ(progressive.setVideoFrameRate(25), 0);
    EXPECT_EQ(progressive.getFieldrate(), 25);
}

TEST(VideoFormat, FrameRateWithoutInterlacedFieldRateFailsAndLeavesRateZero) {
    LogCapture log;
    VF f(VF::VIDEO_FORMAT_1080I50);
    EXPECT_EQ(f.setVideoFrameRate(50), kError);
    EXPECT_EQ(f.getFieldrate(), 0);
    // The number is not re-derived after a failure.
    EXPECT_EQ(f.getFormat(), VF::VIDEO_FORMAT_1080I50);
    EXPECT_TRUE(log.lines().empty());
}

TEST(VideoFormat, FrameRateSetterDerivesTheNumber) {
    VF f(VF::VIDEO_FORMAT_1080I60);
    EXPECT_EQ(f.setVideoFrameRate(25), 0);
    EXPECT_EQ(f.getFormat(), VF::VIDEO_FORMAT_1080I50);

    VF g(VF::VIDEO_FORMAT_720P60);
    EXPECT_EQ(g.setVideoFrameRate(59), 0);
    EXPECT_EQ(g.getFormat(), VF::VIDEO_FORMAT_720P59);

    EXPECT_EQ(g.setVideoFrameRate(33), kError);
    EXPECT_EQ(g.getFieldrate(), 0);
    EXPECT_EQ(g.getFormat(), VF::VIDEO_FORMAT_720P59);
}

TEST(VideoFormat, ExactFramerateOf480I59And1080I50_295) {
    std::string exact;
    EXPECT_EQ(VF(VF::VIDEO_FORMAT_480I59).getExactFramerateString(exact), 0);
    EXPECT_EQ(exact, "30000/1001");
    EXPECT_EQ(VF(VF::VIDEO_FORMAT_1080I50_295).getExactFramerateString(exact), 0);
    EXPECT_EQ(exact, "25");
}

TEST(VideoFormat, ExactFramerateOfRatesOutsideTheCatalogue) {
    struct Case {
        int frameRate;
        bool interlace;
        int fieldRate;
        const char* exact;
    };
    const Case cases[] = {
        {23, true, 47, "24000/1001"}, {47, false, 47, "48000/1001"}, {24, true, 48, "24"},
        {48, false, 48, "48"},        {30, true, 60, "30"},          {29, true, 59, "30000/1001"},
    };
    for (const Case& c : cases) {
        LogCapture log;
        VF f;
        f.setVideoInterlace(c.interlace);
        EXPECT_EQ(f.setVideoFrameRate(c.frameRate), 0);
        EXPECT_EQ(f.getFieldrate(), c.fieldRate);
        std::string exact;
        EXPECT_EQ(f.getExactFramerateString(exact), 0);
        EXPECT_EQ(exact, c.exact) << c.frameRate << " " << c.interlace;
        EXPECT_TRUE(log.lines().empty());
    }
}

TEST(VideoFormat, ExactFramerateHalvesWholeRatesWhenInterlaced) {
    const std::pair<int, const char*> interlaced[] = {{24, "12"}, {25, "12"}, {30, "15"},
                                                      {48, "24"}, {50, "25"}, {60, "30"}};
    for (const auto& c : interlaced) {
        VF f;
        f.setVideoInterlace(true);
        f.setVideoFieldRate(rate(c.first));
        std::string exact;
        EXPECT_EQ(f.getExactFramerateString(exact), 0);
        EXPECT_EQ(exact, c.second) << c.first;
    }
}

TEST(VideoFormat, ExactFramerateRefusesFieldRatesWithoutARate) {
    for (int r : {-1, 0, 1, 22, 26, 27, 28, 31, 40, 46, 49, 51, 55, 58, 61, 120}) {
        for (bool interlace : {false, true}) {
            VF f;
            f.setVideoInterlace(interlace);
            f.setVideoFieldRate(rate(r));
            LogCapture log;
            std::string exact = "untouched";
            EXPECT_EQ(f.getExactFramerateString(exact), kError) << r;
            EXPECT_EQ(exact, "untouched");
            EXPECT_EQ(log.lines(), Lines{kUnknownLine});
        }
    }
}

// ---- text and JSON --------------------------------------------------------------------------

TEST(VideoFormat, FromStringIsCaseSensitiveAndLogsTheText) {
    LogCapture log;
    VF f(VF::VIDEO_FORMAT_1080P59);
    EXPECT_EQ(f.fromString("1080p60"), kError);
    EXPECT_EQ(f.getFormat(), 0);
    // Storing 0 keeps the previous details.
    EXPECT_EQ(f.getFieldrate(), 59);
    EXPECT_EQ(log.lines(), Lines{logLine(Logger::logError, "ERR::Unknown video format '1080p60'")});
}

TEST(VideoFormat, FromStringRejectsNearMisses) {
    for (const char* text : {"", " 1080P60", "1080P60 ", "1080I50_", "1080I50_295x", "2160P"}) {
        LogCapture log;
        VF f;
        EXPECT_EQ(f.fromString(text), kError) << text;
        EXPECT_EQ(log.lines(), Lines{logLine(Logger::logError, std::string("ERR::Unknown video "
                                                                           "format '") +
                                                                   text + "'")});
    }
}

TEST(VideoFormat, SetFormat35StoresItLogsAndKeepsTheDetails) {
    VF f(VF::VIDEO_FORMAT_720P50);
    LogCapture log;
    f.setFormat(fmt(35));
    EXPECT_EQ(f.getFormat(), 35);
    EXPECT_EQ(log.lines(), Lines{kUnknownLine});
    EXPECT_EQ(f.getFieldrate(), 50);
    EXPECT_FALSE(f.isInterlace());
    EXPECT_EQ(f.getFramerate(), 50);
    EXPECT_EQ(f.toString(), "undefined");
    EXPECT_TRUE(f.isFractional());
    // The kept details still name 720P50.
    EXPECT_EQ(f.checkVideoDetailConsistency(), 0);
    EXPECT_EQ(f.getFormat(), VF::VIDEO_FORMAT_720P50);
}

TEST(VideoFormat, PixelsPerFrameOfNumberZeroIsZero) {
    LogCapture log;
    VF f;
    EXPECT_EQ(f.getPixelsPerFrame(), 0u);
    EXPECT_EQ(log.lines(), Lines{kUnknownLine});
}

TEST(VideoFormat, DefaultObjectSerializesToNothing) {
    Json::Value out;
    VF().Serialize(out);
    EXPECT_TRUE(out.isNull());

    Json::Value object(Json::objectValue);
    VF().Serialize(object);
    EXPECT_FALSE(object.isMember("format"));
    EXPECT_EQ(object.size(), 0u);
}

TEST(VideoFormat, SerializeKeepsOtherKeys) {
    Json::Value out = parseJson(R"({"other": 1, "format": "old"})");
    VF(VF::VIDEO_FORMAT_2160P50).Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"other": 1, "format": "2160P50"})"));

    // Number 0 leaves a format already there alone.
    Json::Value kept = parseJson(R"({"format": "720P24"})");
    VF().Serialize(kept);
    EXPECT_EQ(kept, parseJson(R"({"format": "720P24"})"));
}

TEST(VideoFormat, DeserializeOfEmptyOrMissingFormatGivesZeroSilently) {
    for (const char* text : {R"({"format": ""})", "{}"}) {
        LogCapture log;
        VF f(VF::VIDEO_FORMAT_1080I59);
        Json::Value in = parseJson(text);
        f.Deserialize(in);
        EXPECT_EQ(f.getFormat(), 0) << text;
        EXPECT_EQ(f.getFieldrate(), 59);
        EXPECT_TRUE(f.isInterlace());
        EXPECT_TRUE(log.lines().empty());
    }
}

TEST(VideoFormat, DeserializeOfUnknownTextLogsAndGivesZero) {
    LogCapture log;
    VF f(VF::VIDEO_FORMAT_1080P24);
    Json::Value in = parseJson(R"({"format": "4320P60"})");
    f.Deserialize(in);
    EXPECT_EQ(f.getFormat(), 0);
    EXPECT_EQ(log.lines(), Lines{logLine(Logger::logError, "ERR::Unknown video format '4320P60'")});
}

TEST(VideoFormat, DeserializeReachesFormatsThatDetailsCannot) {
    for (const auto& c : {std::make_pair("1080I50_295", 20), std::make_pair("1080I30", 21)}) {
        Json::Value in;
        in["format"] = c.first;
        VF f;
        f.Deserialize(in);
        EXPECT_EQ(f.getFormat(), c.second);
    }
}

TEST(VideoFormat, DeserializeOfAScalarTakesItsText) {
    LogCapture log;
    VF f(VF::VIDEO_FORMAT_1080P60);
    Json::Value in = parseJson(R"({"format": 3})");
    f.Deserialize(in);
    EXPECT_EQ(f.getFormat(), 0);
    EXPECT_EQ(log.lines(), Lines{logLine(Logger::logError, "ERR::Unknown video format '3'")});
}

TEST(VideoFormat, DeserializeOfAnObjectFormatThrowsFromJsoncpp) {
    VF f;
    Json::Value in = parseJson(R"({"format": {"a": 1}})");
    EXPECT_THROW(f.Deserialize(in), Json::LogicError);
}
