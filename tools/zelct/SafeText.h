#pragma once

#include <json/json.h>

#include <cstddef>
#include <string>

namespace zelct {

// Columns a printed line may take before it is cut. A fixed width, not the terminal's, so
// that what the tool prints is the same wherever it runs.
constexpr size_t kScreenWidth = 240;

// The text with every control character and every byte that is not part of valid UTF-8 made
// visible: \n, \r, \t, and \xNN for the others. A document's text can then never move the
// cursor, clear the screen or start a line of its own.
std::string escapedForTerminal(const std::string& text);

// The text cut after `width` bytes (on a character boundary) with a note of how many bytes
// were left out: "... (12345 more bytes)". Shorter text is returned as it is.
std::string shortenedLine(const std::string& text, size_t width = kScreenWidth);

// What the tool prints as one line: escaped, then shortened.
std::string safeLine(const std::string& text);

// The text with every byte that is not part of valid UTF-8 replaced by the four characters
// \xNN and every backslash doubled, so that JSON output is valid UTF-8, still shows which byte
// was there, and two texts never come out alike: the raw byte 0xff gives \xff, the text \xff
// gives \\xff.
std::string validUtf8(const std::string& text);

// A copy of the value with validUtf8 applied to every string and member name.
Json::Value withValidUtf8(const Json::Value& value);

}  // namespace zelct
