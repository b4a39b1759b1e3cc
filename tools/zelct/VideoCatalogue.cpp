// `zelct video`: the figures the library gives for its video formats.
#include "Catalogues.h"

#include <json/json.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "Log.h"
#include "Printer.h"
#include "TextTable.h"
#include "VideoFormat.h"

namespace zelct {

namespace {

constexpr int kRefused = 1;

// Names of the serial-interface classes that VideoFormat::getVideoStd returns.
struct InterfaceClass {
    int videoStd;
    const char* name;
};
constexpr InterfaceClass kInterfaceClasses[] = {
    {0, "SD"}, {1, "1.5G"}, {3, "3G"}, {4, "6G"}, {5, "12G"},
};

const char* interfaceClassName(int videoStd) {
    for (const InterfaceClass& row : kInterfaceClasses) {
        if (row.videoStd == videoStd) {
            return row.name;
        }
    }
    return "?";
}

// Every figure the library gives for one format; the results of operations that can fail
// are kept with their code.
struct VideoFigures {
    int number;
    std::string text;
    int fieldRate;
    unsigned int width;
    unsigned int height;
    bool interlace;
    int frameRate;
    int exactResult;
    std::string exactFrameRate;
    bool fractional;
    int dimensionsResult;
    unsigned short totalPixelsPerLine;
    unsigned short totalLines;
    unsigned int pixelsPerFrame;
    int clocksPerFrame;  // -8 when the library has no clock count for the format
    int videoStd;
    int quadFormat;
};

VideoFigures figuresOf(VideoFormat& format) {
    VideoFigures figures{};
    figures.number = format.getFormat();
    figures.text = format.toString();
    figures.fieldRate = format.getFieldrate();
    VideoFormat::video_field_rate_t fieldRate = VideoFormat::VIDEO_FIELD_RATE_NONE;
    format.getVideoDetails(fieldRate, figures.width, figures.height, figures.interlace);
    figures.frameRate = format.getFramerate();
    figures.exactResult = format.getExactFramerateString(figures.exactFrameRate);
    figures.fractional = format.isFractional();
    figures.dimensionsResult =
        format.getVideoFormatFullDimensions(figures.totalPixelsPerLine, figures.totalLines);
    figures.pixelsPerFrame = format.getPixelsPerFrame();
    figures.clocksPerFrame = format.getClocksPerFrame();
    figures.videoStd = format.getVideoStd();
    figures.quadFormat = format.getQuadFormat();
    return figures;
}

std::string formatText(int number) {
    return VideoFormat(static_cast<VideoFormat::video_format_t>(number)).toString();
}

std::string quadText(int quadFormat) {
    return quadFormat == 0 ? "-" : formatText(quadFormat);
}

std::string resultOr(int result, const std::string& value) {
    return result == 0 ? value : "error " + std::to_string(result);
}

Json::Value figuresJson(const VideoFigures& figures) {
    Json::Value json(Json::objectValue);
    json["number"] = figures.number;
    json["format"] = figures.text;
    json["field-rate"] = figures.fieldRate;
    json["width"] = figures.width;
    json["height"] = figures.height;
    json["interlaced"] = figures.interlace;
    json["frame-rate"] = figures.frameRate;
    json["exact-frame-rate"] =
        figures.exactResult == 0 ? Json::Value(figures.exactFrameRate) : Json::Value();
    json["fractional"] = figures.fractional;
    json["total-pixels-per-line"] = figures.totalPixelsPerLine;
    json["total-lines"] = figures.totalLines;
    json["pixels-per-frame"] = figures.pixelsPerFrame;
    json["clocks-per-frame"] = figures.clocksPerFrame;
    json["video-std"] = figures.videoStd;
    json["interface-class"] = interfaceClassName(figures.videoStd);
    json["quad-format"] =
        figures.quadFormat == 0 ? Json::Value() : Json::Value(quadText(figures.quadFormat));
    return json;
}

void printVideoTable(const std::vector<VideoFigures>& all, std::ostream& out) {
    using A = TextTable::Align;
    TextTable table({A::Right, A::Left, A::Right, A::Right, A::Left, A::Right, A::Left, A::Left,
                     A::Right, A::Right, A::Right, A::Left, A::Left});
    table.add({"no", "format", "field", "active", "scan", "frame", "exact", "1000/1001", "raster",
               "pixels/frame", "clocks/frame", "interface", "quad"});
    for (const VideoFigures& f : all) {
        table.add({std::to_string(f.number), f.text, std::to_string(f.fieldRate),
                   std::to_string(f.width) + "x" + std::to_string(f.height),
                   f.interlace ? "I" : "P", std::to_string(f.frameRate),
                   resultOr(f.exactResult, f.exactFrameRate), f.fractional ? "yes" : "no",
                   std::to_string(f.totalPixelsPerLine) + "x" + std::to_string(f.totalLines),
                   std::to_string(f.pixelsPerFrame),
                   resultOr(f.clocksPerFrame < 0 ? f.clocksPerFrame : 0,
                            std::to_string(f.clocksPerFrame)),
                   interfaceClassName(f.videoStd), quadText(f.quadFormat)});
    }
    table.print(out);
}

void printVideoFigures(const VideoFigures& f, std::ostream& out) {
    TextTable table({TextTable::Left, TextTable::Left});
    table.add({"format:", f.text + " (number " + std::to_string(f.number) + ")"});
    table.add({"field rate:", std::to_string(f.fieldRate)});
    table.add({"active:", std::to_string(f.width) + " x " + std::to_string(f.height) + ", " +
                              (f.interlace ? "interlaced" : "progressive")});
    table.add({"frame rate:", std::to_string(f.frameRate) + ", exactly " +
                                  resultOr(f.exactResult, f.exactFrameRate)});
    table.add({"1000/1001 rate:", f.fractional ? "yes" : "no"});
    table.add(
        {"raster totals:",
         resultOr(f.dimensionsResult, std::to_string(f.totalPixelsPerLine) + " pixels per line x " +
                                          std::to_string(f.totalLines) + " lines")});
    table.add({"pixels per frame:", std::to_string(f.pixelsPerFrame)});
    table.add({"clocks per frame:", f.clocksPerFrame < 0
                                        ? "error " + std::to_string(f.clocksPerFrame)
                                        : std::to_string(f.clocksPerFrame) + " at 148.5 MHz"});
    table.add({"interface class:", std::string(interfaceClassName(f.videoStd)) + " (video std " +
                                       std::to_string(f.videoStd) + ")"});
    table.add({"quad format:", f.quadFormat == 0 ? "none"
                                                 : quadText(f.quadFormat) + " (number " +
                                                       std::to_string(f.quadFormat) + ")"});
    table.print(out);
}

bool parseNumber(const std::string& text, long& number) {
    if (text.empty() || text.find_first_not_of("-0123456789") != std::string::npos) {
        return false;
    }
    char* end = nullptr;
    errno = 0;
    number = std::strtol(text.c_str(), &end, 10);
    return errno == 0 && end != nullptr && *end == '\0';
}

// The format that the argument names, through the library: a number is set with setFormat
// and checked with getVideoDetails, a text (or a number beyond 32 bits) goes through
// fromString. Each refusal logs one
// library line. Returns 0 or the library's code.
int formatFromArgument(const std::string& argument, VideoFormat& format, std::string& how) {
    long number = 0;
    if (!parseNumber(argument, number) || number < INT32_MIN || number > INT32_MAX) {
        how = "VideoFormat::fromString";
        return format.fromString(argument);
    }
    how = "VideoFormat::getVideoDetails";
    {
        LogRecorder quiet;  // getVideoDetails says the same below, for 0 too
        format.setFormat(static_cast<VideoFormat::video_format_t>(number));
    }
    VideoFormat::video_field_rate_t fieldRate;
    unsigned int width = 0;
    unsigned int height = 0;
    bool interlace = false;
    return format.getVideoDetails(fieldRate, width, height, interlace);
}

}  // namespace

int showVideo(const std::string& format, Printer& printer) {
    if (format.empty()) {
        std::vector<VideoFigures> all;
        LogRecorder quiet;  // the table shows each refusal in its cell
        for (int number = VideoFormat::VIDEO_FORMAT_1080P60;
             number <= VideoFormat::VIDEO_FORMAT_2160P59; ++number) {
            VideoFormat video(static_cast<VideoFormat::video_format_t>(number));
            all.push_back(figuresOf(video));
        }
        Json::Value array(Json::arrayValue);
        for (const VideoFigures& figures : all) {
            array.append(figuresJson(figures));
        }
        std::ostringstream text;
        printVideoTable(all, text);
        printer.result(array, text.str());
        return 0;
    }
    VideoFormat video;
    std::string how;
    const int result = formatFromArgument(format, video, how);
    if (result != 0) {
        printer.problem(
            {"", 0, 0,
             "unknown video format '" + format + "' (" + how + ": " + std::to_string(result) + ")",
             kRefused});
        return kRefused;
    }
    const VideoFigures figures = figuresOf(video);
    std::ostringstream text;
    printVideoFigures(figures, text);
    printer.result(figuresJson(figures), text.str());
    return 0;
}

}  // namespace zelct
