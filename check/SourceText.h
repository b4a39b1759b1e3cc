#pragma once

#include <json/json.h>

#include <cstddef>
#include <string>
#include <vector>

namespace zelct {

// A place in a file for a human: 1-based line and column. The column counts characters of
// the line (a UTF-8 sequence or a stray byte as one, a tab as one), as editors count them
// when they jump to "FILE:LINE:COLUMN". 0 and 0 when the place is unknown.
struct Position {
    int line = 0;
    int column = 0;
};

// Turns byte offsets of one text into positions. Built once per file; each lookup is a
// binary search over the line starts and a count over at most one block of bytes, so
// reporting many places on one long line stays linear.
class LineIndex {
public:
    explicit LineIndex(const std::string& text);

    Position at(size_t offset) const;

    // The offset of a 1-based line and byte column, as jsoncpp's error messages give them.
    size_t offsetOf(int line, int byteColumn) const;

private:
    size_t charactersBefore(size_t offset) const;

    const std::string& text_;
    std::vector<size_t> lineStarts_;
    std::vector<size_t> blockCharacters_;  // characters before each block of kBlock bytes
};

// The text of a file as the device's loader hands it to the parser (up to the first NUL), the
// whole file as it lies on disk, and the positions in it.
struct SourceText {
    std::string bytes;        // the whole file
    size_t deviceLength = 0;  // bytes before the first NUL
    // The parser skips a byte-order mark and counts its offsets, lines and columns from
    // after it: 3 when the text starts with one, else 0.
    size_t markLength = 0;
    LineIndex lines;

    explicit SourceText(std::string fileBytes);
    SourceText(const SourceText&) = delete;
    SourceText& operator=(const SourceText&) = delete;

    // Where a parsed value starts, or where the name of the member it is the value of starts
    // when `member` is true and only spaces and a colon stand between them.
    Position positionOf(const Json::Value& value, bool member) const;

    // Where a parsed value starts and ends in `bytes`.
    size_t startOf(const Json::Value& value) const;
    size_t limitOf(const Json::Value& value) const;

    // The offset of a place the parser names by 1-based line and byte column.
    size_t offsetOfParserPlace(int line, int byteColumn) const;
};

}  // namespace zelct
