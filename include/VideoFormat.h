#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>

#include "IJsonSerializable.h"
#include "zelCommonTypesExport.h"

/// One video standard of the device's catalogue of 29, by number, together with the details
/// the standard implies (field rate, active width and height, interlace).
///
/// The number and the details are kept in step in both directions: setting a number rewrites
/// the details from the catalogue, setting a detail re-derives the number (0 when the details
/// name no format). Two formats are reachable only by number or by text, never by details:
/// 20 "1080I50_295" (1080 interlaced at 50 derives 3) and 21 "1080I30" (1080 interlaced at 30
/// derives 0).
///
/// Failures are return codes, -8 for every one of them, plus one error-level log line; nothing
/// is thrown by this class itself. An unknown number stays stored and reports "undefined".
///
/// JSON form: {"format": "1080P59"}; number 0 writes nothing. Reading takes "format" as text
/// ("" when missing): an empty text gives number 0, any other text goes through fromString.
/// Members that throw: "format".
class ZELCOMMONTYPES_API VideoFormat : public IJsonSerializable {
public:
    /// 32 bits wide so that any number a caller stores (35, -1) is a valid value of the type.
    /// Format numbers, each named after its catalogue text ("1080P59" is
    /// VIDEO_FORMAT_1080P59).
    enum video_format_t : std::int32_t {
        VIDEO_FORMAT_UNDEFINED = 0,  ///< No format: writes nothing, reports "undefined".
        VIDEO_FORMAT_1080P60 = 1,
        VIDEO_FORMAT_1080P59 = 2,
        VIDEO_FORMAT_1080I50 = 3,
        VIDEO_FORMAT_1080P30 = 4,
        VIDEO_FORMAT_1080P29 = 5,
        VIDEO_FORMAT_720P60 = 6,
        VIDEO_FORMAT_720P59 = 7,
        VIDEO_FORMAT_1080I60 = 8,
        VIDEO_FORMAT_1080I59 = 9,
        VIDEO_FORMAT_1080P50 = 10,
        VIDEO_FORMAT_1080P25 = 11,
        VIDEO_FORMAT_1080P24 = 12,
        VIDEO_FORMAT_1080P23 = 13,
        VIDEO_FORMAT_720P50 = 14,
        VIDEO_FORMAT_720P30 = 15,
        VIDEO_FORMAT_720P29 = 16,
        VIDEO_FORMAT_720P25 = 17,
        VIDEO_FORMAT_720P24 = 18,
        VIDEO_FORMAT_720P23 = 19,
        VIDEO_FORMAT_1080I50_295 = 20,
        VIDEO_FORMAT_1080I30 = 21,
        VIDEO_FORMAT_480I59 = 22,
        VIDEO_FORMAT_576I50 = 23,
        VIDEO_FORMAT_2160P30 = 24,
        VIDEO_FORMAT_2160P25 = 25,
        VIDEO_FORMAT_2160P60 = 26,
        VIDEO_FORMAT_2160P50 = 27,
        VIDEO_FORMAT_2160P29 = 28,
        VIDEO_FORMAT_2160P59 = 29
    };

    /// Fields per second of interlaced formats, frames per second of progressive ones; the
    /// 1000/1001 rates carry the next lower whole number (59 is 59.94).
    enum video_field_rate_t : std::int32_t {
        VIDEO_FIELD_RATE_NONE = 0,  ///< No rate.
        VIDEO_FIELD_RATE_23 = 23,
        VIDEO_FIELD_RATE_24 = 24,
        VIDEO_FIELD_RATE_25 = 25,
        VIDEO_FIELD_RATE_29 = 29,
        VIDEO_FIELD_RATE_30 = 30,
        VIDEO_FIELD_RATE_47 = 47,
        VIDEO_FIELD_RATE_48 = 48,
        VIDEO_FIELD_RATE_50 = 50,
        VIDEO_FIELD_RATE_59 = 59,
        VIDEO_FIELD_RATE_60 = 60
    };

    static constexpr int kOk = 0;           ///< Success.
    static constexpr int kErrUnknown = -8;  ///< Every failure.

    /// Number 0, field rate 0, width and height 0, progressive.
    VideoFormat();
    /// Stores the number as setFormat does.
    VideoFormat(video_format_t number);  // NOLINT: a number converts to its format
    /// Copies the number and the details as they are.
    VideoFormat(const VideoFormat& other) = default;

    /// Assignment takes only the other side's number and rebuilds the details from it.
    VideoFormat& operator=(const VideoFormat& other);
    /// Stores the number as setFormat does.
    VideoFormat& operator=(const video_format_t& number);

    /// Formats compare by number only.
    bool operator==(const VideoFormat& other) const;
    /// Whether the stored number is the given one.
    bool operator==(const video_format_t& number) const;
    /// Whether the stored number is not the given one.
    bool operator!=(const video_format_t& number) const;

    /// The stored number.
    video_format_t getFormat() const;
    /// The stored field rate.
    video_field_rate_t getFieldrate() const;
    /// Whether the stored details are interlaced.
    bool isInterlace() const;
    /// Frames per second: half the field rate (rounded down) when interlaced.
    int getFramerate() const;

    /// Each stores its detail, re-derives the number with updateFormat and returns 0.
    int setVideoFieldRate(video_field_rate_t fieldRate);
    /// Stores the active width, as setVideoFieldRate does with its detail.
    int setVideoWidth(unsigned int width);
    /// Stores the active height, as setVideoFieldRate does with its detail.
    int setVideoHeight(unsigned int height);
    /// Stores the interlace flag, as setVideoFieldRate does with its detail.
    int setVideoInterlace(bool interlace);
    /// Stores the field rate that the frame rate gives with the current interlace flag. A rate
    /// without one stores 0 and returns -8 without touching the number; otherwise re-derives
    /// the number and returns 0.
    int setVideoFrameRate(int frameRate);

    /// Stores the number; a non-zero number also rewrites the details from the catalogue. An
    /// unknown number is kept as it is (and logged); 0 and unknown numbers keep the details.
    void setFormat(video_format_t number);

    /// Derives the number from the details: the catalogue format whose field rate, width,
    /// height and interlace all match, or 0 (details kept) when none does. Public so that a
    /// caller that filled the details can re-derive the number explicitly.
    void updateFormat();

    /// Details of the stored number; -8 and nothing written for an unknown number.
    int getVideoDetails(video_field_rate_t& fieldRate, unsigned int& width, unsigned int& height,
                        bool& interlace) const;

    /// Catalogue text of the stored number, "undefined" for 0 and unknown numbers.
    std::string toString() const;
    /// Exact, case-sensitive match against the catalogue texts; an unknown text stores 0 and
    /// returns -8.
    int fromString(const std::string& text);

    /// 0 when the details name a catalogue format, else -8 (the number is re-derived).
    int checkVideoDetailConsistency();

    /// Raster totals including blanking; -8 with both outputs untouched for an unknown number.
    int getVideoFormatFullDimensions(unsigned short& totalPixelsPerLine,
                                     unsigned short& totalLines) const;
    /// Total pixels per line times total lines; 0 for an unknown number.
    unsigned int getPixelsPerFrame();
    /// Ticks of the 148.5 MHz clock per frame; -8 for 0, unknown numbers and 1080I50_295.
    int getClocksPerFrame() const;
    /// Serial-interface class the format needs: 0 SD, 1 1.5G, 3 3G, 4 6G, 5 12G; 0 when unknown.
    int getVideoStd() const;
    /// The 2160-line format of the same rate for a 1080-line progressive one, else 0.
    video_format_t getQuadFormat() const;
    /// True for the 1000/1001 formats, and for 0 and every unknown number.
    bool isFractional() const;

    /// Field rate that a frame rate has when progressive or interlaced; 0 when it has none.
    static video_field_rate_t getFieldRateFromFrameRate(int frameRate, bool interlace);

    /// Frame rate of the stored field rate and interlace as text: "25", "60000/1001". -8 and
    /// out untouched for a field rate without one.
    int getExactFramerateString(std::string& out) const;

    void Serialize(Json::Value& root) const override;
    void Deserialize(Json::Value& root) override;

private:
    video_format_t format;
    video_field_rate_t fieldRate;
    unsigned int width;
    unsigned int height;
    bool interlace;
};
