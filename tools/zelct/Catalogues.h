#pragma once

#include <string>

#include "Printer.h"

namespace zelct {

// `zelct video`: every figure of all 29 formats as a table, or of one format named by its
// text ("1080P59") or number ("2"). Returns 0, or 1 when the library does not know the format.
int showVideo(const std::string& format, Printer& printer);

// What `zelct ptime` is asked: nothing (the table of every frequency), a frequency with
// samples per packet, or a frequency with a measured packet time.
struct PtimeRequest {
    bool hasFreq = false;
    unsigned int freq = 0;
    bool hasSamplesPerPacket = false;
    unsigned int samplesPerPacket = 0;
    bool hasPtime = false;
    unsigned int ptimeUs = 0;
};

// `zelct ptime`: nominal packet time, allowed range and link offsets of samples per packet at
// a frequency, or the samples per packet a measured packet time converts to. Returns 0, 1 when
// the library refuses the values, or 2 for an incomplete request.
int showPtime(const PtimeRequest& request, Printer& printer);

// `zelct alarms`: the alarm catalogue (type, enumerator, severity, description), or with a
// file the set of raised alarms that the library reads from it, after what check alarms finds
// in the file. Returns the exit code: that of check alarms for a file, else 0.
int showAlarms(const std::string& file, Printer& printer);

}  // namespace zelct
