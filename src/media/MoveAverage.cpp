#include "MoveAverage.h"

#include <string>

#include "Logger.h"

MoveAverage::MoveAverage(unsigned int size, unsigned int minSize)
    : position(0), count(0), minSize(minSize), samples(size, 0.0f) {}

void MoveAverage::addSample(float sample) {
    const unsigned int size = static_cast<unsigned int>(samples.size());
    if (size == 0) {
        return;  // no slot to write to
    }
    samples[position] = sample;
    position = position < size - 1 ? position + 1 : 0;
    if (count < size) {
        ++count;
    }
}

double MoveAverage::getAverage() {
    float sum = 0.0f;
    for (float sample : samples) {
        sum += sample;
    }
    // An empty ring divides by its size, so a fresh or reset ring averages 0 (and a ring of
    // size 0 gives NaN).
    const unsigned int divisor = count != 0 ? count : static_cast<unsigned int>(samples.size());
    return static_cast<double>(sum / static_cast<float>(divisor));
}

void MoveAverage::reset() {
    samples.assign(samples.size(), 0.0f);
    position = 0;
    count = 0;
}

bool MoveAverage::minSizeReached() {
    return count >= minSize;
}

void MoveAverage::dump() {
    // Every value is followed by the separator, the last one too: log readers expect it.
    std::string text = "[";
    for (unsigned int i = 0; i < count; ++i) {
        text += std::to_string(samples[i]);
        text += ", ";
    }
    text += "]";
    Logger::log(Logger::logDebug,
                "DBG::MoveAverage(size '%d'): Average '%.2f::' pos '%d' size '%d' (min '%d'):: "
                "Samples '%s'",
                static_cast<int>(samples.size()), getAverage(), static_cast<int>(position),
                static_cast<int>(count), static_cast<int>(minSize), text.c_str());
}
