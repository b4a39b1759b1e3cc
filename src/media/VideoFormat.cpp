#include "VideoFormat.h"

#include "../common/JsonMember.h"
#include "Logger.h"

namespace {

using VF = VideoFormat;

constexpr bool kI = true;   // interlaced
constexpr bool kP = false;  // progressive
constexpr bool kFrac = true;
constexpr bool kWhole = false;
constexpr bool kByDetails = true;    // updateFormat can reach it from its details
constexpr bool kNumberOnly = false;  // reachable only by number or by text
constexpr int kNoClock = -1;         // the format has no clock count

struct CatalogueRow {
    int number;
    const char* text;
    int fieldRate;
    unsigned int width;
    unsigned int height;
    bool interlace;
    unsigned short totalPixelsPerLine;
    unsigned short totalLines;
    int clocksPerFrame;  // ticks of 148.5 MHz per frame, or kNoClock
    int videoStd;
    int quadFormat;
    bool fractional;
    bool byDetails;
};

// The catalogue, row i holding number i + 1. Columns: number, text, field rate, active width,
// active height, interlace, total pixels per line, total lines, clocks per frame,
// serial-interface class, quad format, fractional rate, derivable from its details.
// 1080I50_295 shares everything with 1080I50 but has no clock count and is never derived from
// details; 1080I30 runs a 60 Hz clock period.
// clang-format off
constexpr CatalogueRow kCatalogue[] = {
    {1,  "1080P60",     60, 1920, 1080, kP, 2200, 1125, 2475000,  3, 26, kWhole, kByDetails},
    {2,  "1080P59",     59, 1920, 1080, kP, 2200, 1125, 2475000,  3, 29, kFrac,  kByDetails},
    {3,  "1080I50",     50, 1920, 1080, kI, 2640, 1125, 5940000,  1,  0, kWhole, kByDetails},
    {4,  "1080P30",     30, 1920, 1080, kP, 2200, 1125, 4950000,  1, 24, kWhole, kByDetails},
    {5,  "1080P29",     29, 1920, 1080, kP, 2200, 1125, 4950000,  1, 28, kFrac,  kByDetails},
    {6,  "720P60",      60, 1280,  720, kP, 1650,  750, 2475000,  1,  0, kWhole, kByDetails},
    {7,  "720P59",      59, 1280,  720, kP, 1650,  750, 2475000,  1,  0, kFrac,  kByDetails},
    {8,  "1080I60",     60, 1920, 1080, kI, 2200, 1125, 4950000,  1,  0, kWhole, kByDetails},
    {9,  "1080I59",     59, 1920, 1080, kI, 2200, 1125, 4950000,  1,  0, kFrac,  kByDetails},
    {10, "1080P50",     50, 1920, 1080, kP, 2640, 1125, 2970000,  3, 27, kWhole, kByDetails},
    {11, "1080P25",     25, 1920, 1080, kP, 2640, 1125, 5940000,  1, 25, kWhole, kByDetails},
    {12, "1080P24",     24, 1920, 1080, kP, 2750, 1125, 6187500,  1,  0, kWhole, kByDetails},
    {13, "1080P23",     23, 1920, 1080, kP, 2750, 1125, 6187500,  1,  0, kFrac,  kByDetails},
    {14, "720P50",      50, 1280,  720, kP, 1980,  750, 2970000,  1,  0, kWhole, kByDetails},
    {15, "720P30",      30, 1280,  720, kP, 3300,  750, 4950000,  1,  0, kWhole, kByDetails},
    {16, "720P29",      29, 1280,  720, kP, 3300,  750, 4950000,  1,  0, kFrac,  kByDetails},
    {17, "720P25",      25, 1280,  720, kP, 3960,  750, 5940000,  1,  0, kWhole, kByDetails},
    {18, "720P24",      24, 1280,  720, kP, 4125,  750, 6187500,  1,  0, kWhole, kByDetails},
    {19, "720P23",      23, 1280,  720, kP, 4125,  750, 6187500,  1,  0, kFrac,  kByDetails},
    {20, "1080I50_295", 50, 1920, 1080, kI, 2640, 1125, kNoClock, 1,  0, kWhole, kNumberOnly},
    {21, "1080I30",     30, 1920, 1080, kI, 2200, 1125, 2475000,  1,  0, kWhole, kNumberOnly},
    {22, "480I59",      59,  720,  483, kI,  858,  525, 4950000,  0,  0, kFrac,  kByDetails},
    {23, "576I50",      50,  720,  576, kI,  864,  625, 5940000,  0,  0, kWhole, kByDetails},
    {24, "2160P30",     30, 3840, 2160, kP, 4400, 2250, 4950000,  4,  0, kWhole, kByDetails},
    {25, "2160P25",     25, 3840, 2160, kP, 5280, 2250, 5940000,  4,  0, kWhole, kByDetails},
    {26, "2160P60",     60, 3840, 2160, kP, 4400, 2250, 2475000,  5,  0, kWhole, kByDetails},
    {27, "2160P50",     50, 3840, 2160, kP, 5280, 2250, 2970000,  5,  0, kWhole, kByDetails},
    {28, "2160P29",     29, 3840, 2160, kP, 4400, 2250, 4950000,  4,  0, kFrac,  kByDetails},
    {29, "2160P59",     59, 3840, 2160, kP, 4400, 2250, 2475000,  5,  0, kFrac,  kByDetails},
};
// clang-format on

constexpr int kCatalogueSize = static_cast<int>(sizeof kCatalogue / sizeof kCatalogue[0]);

constexpr bool catalogueIsNumberedInOrder() {
    for (int i = 0; i < kCatalogueSize; ++i) {
        if (kCatalogue[i].number != i + 1) {
            return false;
        }
    }
    return true;
}
static_assert(kCatalogueSize == 29, "the catalogue holds 29 formats");
static_assert(catalogueIsNumberedInOrder(), "catalogue row i must hold number i + 1");

struct FrameRateRow {
    int frameRate;
    int progressive;  // field rate when progressive
    int interlaced;   // field rate when interlaced; 0 when the rate cannot be interlaced
};

// Frame rates that have a field rate; any other gives 0.
constexpr FrameRateRow kFieldRateByFrameRate[] = {
    {23, 23, 47}, {24, 24, 48}, {25, 25, 50}, {29, 29, 59}, {30, 30, 60},
    {47, 47, 0},  {48, 48, 0},  {50, 50, 0},  {59, 59, 0},  {60, 60, 0},
};

// Field rates whose frame rate is a whole number: the field rate itself, halved (shifted)
// when interlaced.
constexpr int kWholeFieldRates[] = {24, 25, 30, 48, 50, 60};

struct FractionalRateRow {
    int fieldRate;
    int progressive;  // numerator over 1001 when progressive
    int interlaced;   // numerator over 1001 when interlaced
};

constexpr FractionalRateRow kFractionalFieldRates[] = {
    {23, 24000, 12000},
    {29, 30000, 15000},
    {47, 48000, 24000},
    {59, 60000, 30000},
};

constexpr int kLowestExactFieldRate = 23;
constexpr int kHighestExactFieldRate = 60;

const char* const kUnknownFormat = "ERR::Unknown video format";
const char* const kUnsupportedFormat = "ERR::Unsupported video format";

const CatalogueRow* findRow(VF::video_format_t number) {
    if (number < 1 || number > kCatalogueSize) {
        return nullptr;
    }
    return &kCatalogue[number - 1];
}

// Compared in the order field rate, width, height, interlace.
bool matchesDetails(const CatalogueRow& row, int fieldRate, unsigned int width, unsigned int height,
                    bool interlace) {
    return row.fieldRate == fieldRate && row.width == width && row.height == height &&
           row.interlace == interlace;
}

}  // namespace

VideoFormat::VideoFormat()
    : format(VIDEO_FORMAT_UNDEFINED),
      fieldRate(VIDEO_FIELD_RATE_NONE),
      width(0),
      height(0),
      interlace(false) {}

VideoFormat::VideoFormat(video_format_t number) : VideoFormat() {
    setFormat(number);
}

VideoFormat& VideoFormat::operator=(const VideoFormat& other) {
    setFormat(other.format);
    return *this;
}

VideoFormat& VideoFormat::operator=(const video_format_t& number) {
    setFormat(number);
    return *this;
}

bool VideoFormat::operator==(const VideoFormat& other) const {
    return format == other.format;
}

bool VideoFormat::operator==(const video_format_t& number) const {
    return format == number;
}

bool VideoFormat::operator!=(const video_format_t& number) const {
    return format != number;
}

VideoFormat::video_format_t VideoFormat::getFormat() const {
    return format;
}

VideoFormat::video_field_rate_t VideoFormat::getFieldrate() const {
    return fieldRate;
}

bool VideoFormat::isInterlace() const {
    return interlace;
}

int VideoFormat::getFramerate() const {
    return interlace ? fieldRate / 2 : fieldRate;
}

int VideoFormat::setVideoFieldRate(video_field_rate_t rate) {
    fieldRate = rate;
    updateFormat();
    return kOk;
}

int VideoFormat::setVideoWidth(unsigned int w) {
    width = w;
    updateFormat();
    return kOk;
}

int VideoFormat::setVideoHeight(unsigned int h) {
    height = h;
    updateFormat();
    return kOk;
}

int VideoFormat::setVideoInterlace(bool i) {
    interlace = i;
    updateFormat();
    return kOk;
}

int VideoFormat::setVideoFrameRate(int frameRate) {
    fieldRate = getFieldRateFromFrameRate(frameRate, interlace);
    if (fieldRate == VIDEO_FIELD_RATE_NONE) {
        return kErrUnknown;
    }
    updateFormat();
    return kOk;
}

void VideoFormat::setFormat(video_format_t number) {
    format = number;
    if (number != VIDEO_FORMAT_UNDEFINED) {
        getVideoDetails(fieldRate, width, height, interlace);
    }
}

void VideoFormat::updateFormat() {
    for (const CatalogueRow& row : kCatalogue) {
        if (row.byDetails && matchesDetails(row, fieldRate, width, height, interlace)) {
            setFormat(static_cast<video_format_t>(row.number));
            return;
        }
    }
    setFormat(VIDEO_FORMAT_UNDEFINED);
}

int VideoFormat::getVideoDetails(video_field_rate_t& rate, unsigned int& w, unsigned int& h,
                                 bool& i) const {
    const CatalogueRow* row = findRow(format);
    if (row == nullptr) {
        Logger::log(Logger::logError, "%s", kUnknownFormat);
        return kErrUnknown;
    }
    rate = static_cast<video_field_rate_t>(row->fieldRate);
    w = row->width;
    h = row->height;
    i = row->interlace;
    return kOk;
}

std::string VideoFormat::toString() const {
    const CatalogueRow* row = findRow(format);
    return row != nullptr ? row->text : "undefined";
}

int VideoFormat::fromString(const std::string& text) {
    for (const CatalogueRow& row : kCatalogue) {
        if (text == row.text) {
            setFormat(static_cast<video_format_t>(row.number));
            return kOk;
        }
    }
    setFormat(VIDEO_FORMAT_UNDEFINED);
    Logger::log(Logger::logError, "ERR::Unknown video format '%s'", text.c_str());
    return kErrUnknown;
}

int VideoFormat::checkVideoDetailConsistency() {
    updateFormat();
    return format != VIDEO_FORMAT_UNDEFINED ? kOk : kErrUnknown;
}

int VideoFormat::getVideoFormatFullDimensions(unsigned short& totalPixelsPerLine,
                                              unsigned short& totalLines) const {
    const CatalogueRow* row = findRow(format);
    if (row == nullptr) {
        Logger::log(Logger::logError, "%s", kUnknownFormat);
        return kErrUnknown;
    }
    totalPixelsPerLine = row->totalPixelsPerLine;
    totalLines = row->totalLines;
    return kOk;
}

unsigned int VideoFormat::getPixelsPerFrame() {
    // Left at 0 for an unknown number, whose lookup only logs.
    unsigned short totalPixelsPerLine = 0;
    unsigned short totalLines = 0;
    getVideoFormatFullDimensions(totalPixelsPerLine, totalLines);
    return static_cast<unsigned int>(totalPixelsPerLine) * static_cast<unsigned int>(totalLines);
}

int VideoFormat::getClocksPerFrame() const {
    const CatalogueRow* row = findRow(format);
    if (row == nullptr || row->clocksPerFrame == kNoClock) {
        Logger::log(Logger::logError, "%s", kUnsupportedFormat);
        return kErrUnknown;
    }
    return row->clocksPerFrame;
}

int VideoFormat::getVideoStd() const {
    const CatalogueRow* row = findRow(format);
    return row != nullptr ? row->videoStd : 0;
}

VideoFormat::video_format_t VideoFormat::getQuadFormat() const {
    const CatalogueRow* row = findRow(format);
    return static_cast<video_format_t>(row != nullptr ? row->quadFormat : 0);
}

bool VideoFormat::isFractional() const {
    // Callers treat a format they cannot place as fractional.
    const CatalogueRow* row = findRow(format);
    return row != nullptr ? row->fractional : true;
}

VideoFormat::video_field_rate_t VideoFormat::getFieldRateFromFrameRate(int frameRate,
                                                                       bool interlace) {
    for (const FrameRateRow& row : kFieldRateByFrameRate) {
        if (row.frameRate == frameRate) {
            return static_cast<video_field_rate_t>(interlace ? row.interlaced : row.progressive);
        }
    }
    return VIDEO_FIELD_RATE_NONE;
}

int VideoFormat::getExactFramerateString(std::string& out) const {
    const int rate = fieldRate;
    if (rate >= kLowestExactFieldRate && rate <= kHighestExactFieldRate) {
        for (int whole : kWholeFieldRates) {
            if (whole == rate) {
                out = std::to_string(interlace ? rate >> 1 : rate);
                return kOk;
            }
        }
        for (const FractionalRateRow& row : kFractionalFieldRates) {
            if (row.fieldRate == rate) {
                out = std::to_string(interlace ? row.interlaced : row.progressive) + "/1001";
                return kOk;
            }
        }
    }
    Logger::log(Logger::logError, "%s", kUnknownFormat);
    return kErrUnknown;
}

namespace {

// The record's only key.
struct Key {
    enum : std::size_t { format, count };
    static constexpr const char* names[] = {"format"};
};

}  // namespace

void VideoFormat::Serialize(Json::Value& root) const {
    if (format == VIDEO_FORMAT_UNDEFINED) {
        return;
    }
    zelcommon::Writer out(root, zelcommon::shapeOf<Key>());
    out[Key::format] = Json::Value(toString());
}

void VideoFormat::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<Key>());
    const std::string text = in.text(Key::format, "");
    if (text.empty()) {
        setFormat(VIDEO_FORMAT_UNDEFINED);
        return;
    }
    fromString(text);
}
