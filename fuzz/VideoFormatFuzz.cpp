// Video formats by name, and every timing question asked of what was read.
#include "FuzzHarness.h"
#include "VideoFormat.h"

template <>
struct fuzz::Handling<VideoFormat> {
    static VideoFormat make() { return VideoFormat(); }
    static void exercise(VideoFormat& format) {
        unsigned short pixelsPerLine = 0;
        unsigned short lines = 0;
        (void)format.getVideoFormatFullDimensions(pixelsPerLine, lines);
        (void)format.getPixelsPerFrame();
        (void)format.getClocksPerFrame();
        (void)format.getVideoStd();
        (void)format.getQuadFormat();
        (void)format.isFractional();
        std::string rate;
        (void)format.getExactFramerateString(rate);
        (void)format.checkVideoDetailConsistency();
        (void)format.toString();
    }
};

ZELCT_FUZZ_READERS(VideoFormat)
