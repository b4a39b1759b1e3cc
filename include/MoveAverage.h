#pragma once

#include <vector>

#include "zelCommonTypesExport.h"

/// Mean of the last N float samples, kept in a ring of fixed size N, with a minimum number of
/// samples below which callers treat the mean as not yet meaningful.
///
/// Before the ring is full the mean divides the sum of all slots (unfilled ones hold 0) by the
/// number of samples added; with none added it divides by the ring size.
///
/// A ring of size 0 is accepted and holds nothing: addSample does nothing, the mean is 0/0
/// (NaN) and the dump lists no samples. Nothing is thrown beyond std::bad_alloc from building
/// the ring.
class ZELCOMMONTYPES_API MoveAverage {
public:
    /// A ring of size slots, all 0, with none filled; minSize is the number of samples
    /// minSizeReached waits for.
    MoveAverage(unsigned int size, unsigned int minSize);

    /// Overwrites the oldest slot.
    void addSample(float sample);
    /// Summed and divided in float, in slot order.
    double getAverage();
    /// Empties the ring; its size and the minimum stay.
    void reset();
    /// Whether at least minSize samples were added since construction or reset.
    bool minSizeReached();
    /// Logs the state at debug level, the filled slots in storage order.
    void dump();

private:
    unsigned int position;  // slot the next sample overwrites
    unsigned int count;     // slots filled so far, at most the ring size
    unsigned int minSize;
    std::vector<float> samples;
};
