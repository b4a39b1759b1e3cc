#include "SourceText.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zelct {

namespace {

constexpr size_t kBlock = 64;

bool startsCharacter(char c) {
    // A UTF-8 continuation byte belongs to the character before it.
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The opening quote of the string whose closing quote is at `close`, or `close` when there is
// none. A quote preceded by an odd number of backslashes is inside the string.
size_t openingQuote(const std::string& text, size_t close) {
    size_t i = close;
    while (i > 0) {
        --i;
        if (text[i] != '"') {
            continue;
        }
        size_t backslashes = 0;
        while (i > backslashes && text[i - 1 - backslashes] == '\\') {
            ++backslashes;
        }
        if (backslashes % 2 == 0) {
            return i;
        }
    }
    return close;
}

}  // namespace

LineIndex::LineIndex(const std::string& text) : text_(text) {
    lineStarts_.push_back(0);
    size_t characters = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (i % kBlock == 0) {
            blockCharacters_.push_back(characters);
        }
        if (startsCharacter(text[i])) {
            ++characters;
        }
        if (text[i] == '\n') {
            lineStarts_.push_back(i + 1);
        }
    }
}

size_t LineIndex::charactersBefore(size_t offset) const {
    const size_t block = offset / kBlock;
    if (block >= blockCharacters_.size()) {
        return 0;
    }
    size_t characters = blockCharacters_[block];
    for (size_t i = block * kBlock; i < offset && i < text_.size(); ++i) {
        if (startsCharacter(text_[i])) {
            ++characters;
        }
    }
    return characters;
}

Position LineIndex::at(size_t offset) const {
    offset = std::min(offset, text_.size());
    const auto after = std::upper_bound(lineStarts_.begin(), lineStarts_.end(), offset);
    const size_t line = static_cast<size_t>(after - lineStarts_.begin());
    const size_t start = lineStarts_[line - 1];
    Position position;
    position.line = static_cast<int>(line);
    position.column = static_cast<int>(charactersBefore(offset) - charactersBefore(start) + 1);
    return position;
}

size_t LineIndex::offsetOf(int line, int byteColumn) const {
    if (line < 1 || lineStarts_.empty()) {
        return 0;
    }
    const size_t start = lineStarts_[std::min(static_cast<size_t>(line), lineStarts_.size()) - 1];
    return std::min(start + static_cast<size_t>(std::max(byteColumn, 1) - 1), text_.size());
}

SourceText::SourceText(std::string fileBytes)
    : bytes(std::move(fileBytes)),
      deviceLength(std::strlen(bytes.c_str())),
      markLength(deviceLength >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0),
      lines(bytes) {}

size_t SourceText::startOf(const Json::Value& value) const {
    return markLength + static_cast<size_t>(value.getOffsetStart());
}

size_t SourceText::limitOf(const Json::Value& value) const {
    return markLength + static_cast<size_t>(value.getOffsetLimit());
}

size_t SourceText::offsetOfParserPlace(int line, int byteColumn) const {
    return lines.offsetOf(line, byteColumn) + (line == 1 ? markLength : 0);
}

Position SourceText::positionOf(const Json::Value& value, bool member) const {
    if (value.getOffsetStart() == 0 && value.getOffsetLimit() == 0) {
        return Position();  // built in memory, or parsed without offsets
    }
    const size_t start = startOf(value);
    if (!member) {
        return lines.at(start);
    }
    size_t i = start;
    while (i > 0 && isSpace(bytes[i - 1])) {
        --i;
    }
    if (i == 0 || bytes[i - 1] != ':') {
        return lines.at(start);
    }
    --i;
    while (i > 0 && isSpace(bytes[i - 1])) {
        --i;
    }
    if (i == 0 || bytes[i - 1] != '"') {
        return lines.at(start);
    }
    return lines.at(openingQuote(bytes, i - 1));
}

}  // namespace zelct
