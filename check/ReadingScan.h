#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "Check.h"
#include "JsonText.h"

namespace zelct {

// Something in a file that jsoncpp's default reader, which the device uses, accepts and reads
// differently from what the text says, or not at all.
struct ReadingTrap {
    // The finding it is reported as: one of the kinds of the text (duplicate member, trailing
    // text, comment, trailing comma, after NUL, not UTF-8, control in string, byte-order mark,
    // number text, NUL in string).
    using Type = Finding::Type;
    Type type = Type::Comment;
    size_t offset = 0;  // where it starts in the file
    JsonPath path;      // the member, the string, or the container the text stands in
    // DuplicateMember: where the ignored value starts and ends, and where the kept
    // occurrence's name starts. NotUtf8 and ControlInString: the string with its quotes
    // (ControlInString's offset is the first such character). AfterNul: the number of bytes
    // from the NUL to the end of the file. NumberText: the number's text. NulInString: the
    // string with its quotes (the offset is the escape's backslash).
    size_t valueStart = 0;
    size_t valueEnd = 0;
    size_t keptOffset = 0;
    size_t count = 0;
};

// Scans a whole file once, as strictly as JSON asks, for what the device's reader lets pass.
// Only the text before the first NUL is read as JSON (the device's loader stops there); it
// must be a text the device's reader accepted. Traps come in the order of their offsets: the
// first `keep` of them, the number of the others in `more` when it is given.
std::vector<ReadingTrap> scanReadingTraps(const std::string& bytes, size_t deviceLength,
                                          size_t keep = std::numeric_limits<size_t>::max(),
                                          size_t* more = nullptr);

// Where a value first lies deeper than `limit` levels, the top-level value being the first
// (a container, or a scalar inside the limit-th container), or the text's size when none
// does. Comments are skipped, and member names are no values.
size_t nestingPastLimit(const std::string& text, size_t limit);

// Whether a byte sequence is well-formed UTF-8 (no overlong forms, no surrogates, nothing
// past U+10FFFF).
bool isValidUtf8(const char* begin, const char* end);

}  // namespace zelct
