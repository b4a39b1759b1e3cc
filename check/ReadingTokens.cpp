// The pieces of a JSON text as the device's reader takes them: spaces, comments, strings, numbers.
#include "ReadingTokens.h"

#include <string>
#include <vector>

#include "ReadingScan.h"

namespace zelct {

namespace {

bool endsLiteral(char c) {
    switch (c) {
        case ' ':
        case '\t':
        case '\n':
        case '\r':
        case ',':
        case ':':
        case '[':
        case ']':
        case '{':
        case '}':
        case '"':
        case '/':
            return true;
        default:
            return false;
    }
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

const char* digitsEnd(const char* p, const char* end) {
    while (p < end && isDigit(*p)) {
        ++p;
    }
    return p;
}

// The length of the UTF-8 sequence a lead byte opens, and the smallest code point it may
// encode; 0 for a byte that opens none.
int sequenceLength(unsigned char lead, unsigned& minimum) {
    if (lead < 0x80) {
        minimum = 0;
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        minimum = 0x80;
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        minimum = 0x800;
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        minimum = 0x10000;
        return 4;
    }
    return 0;
}

}  // namespace

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool startsComment(const std::string& text, size_t pos, size_t end) {
    return text[pos] == '/' && pos + 1 < end && (text[pos + 1] == '/' || text[pos + 1] == '*');
}

// Past the comment at `pos`: a line comment ends before the line break, as jsoncpp ends it.
size_t commentEnd(const std::string& text, size_t pos, size_t end) {
    if (text[pos + 1] == '/') {
        size_t i = pos + 2;
        while (i < end && text[i] != '\n' && text[i] != '\r') {
            ++i;
        }
        return i;
    }
    const size_t close = text.find("*/", pos + 2);
    return close == std::string::npos || close + 2 > end ? end : close + 2;
}

// Past the closing quote of the string opening at `pos`.
size_t stringEnd(const std::string& text, size_t pos, size_t end) {
    size_t i = pos + 1;
    while (i < end) {
        if (text[i] == '\\') {
            i += 2;
        } else if (text[i] == '"') {
            return i + 1;
        } else {
            ++i;
        }
    }
    return end;
}

// JSON's number: -?(0|[1-9][0-9]*)(\.[0-9]+)?([eE][+-]?[0-9]+)?. The device's reader takes
// more: any run of a sign, digits, a point and an exponent that the C library's strtod reads
// whole, and a lone "-" (as 0), so "+850", "0850", "850." and "-.5" all come through.
bool isJsonNumber(const char* p, const char* end) {
    if (p < end && *p == '-') {
        ++p;
    }
    const char* digits = digitsEnd(p, end);
    if (digits == p || (*p == '0' && digits - p > 1)) {
        return false;
    }
    p = digits;
    if (p < end && *p == '.') {
        digits = digitsEnd(p + 1, end);
        if (digits == p + 1) {
            return false;
        }
        p = digits;
    }
    if (p < end && (*p == 'e' || *p == 'E')) {
        ++p;
        if (p < end && (*p == '+' || *p == '-')) {
            ++p;
        }
        digits = digitsEnd(p, end);
        if (digits == p) {
            return false;
        }
        p = digits;
    }
    return p == end;
}

bool startsNumber(char c) {
    return isDigit(c) || c == '-' || c == '+' || c == '.';
}

// Where a string's first escaped NUL (\u0000) starts, or `end` when it has none. An escaped
// backslash before "u0000" is no escape of a NUL.
size_t escapedNul(const std::string& text, size_t pos, size_t end) {
    for (size_t i = pos + 1; i + 1 < end; ++i) {
        if (text[i] != '\\') {
            continue;
        }
        if (text.compare(i + 1, 5, "u0000") == 0 && i + 6 <= end) {
            return i;
        }
        ++i;
    }
    return end;
}

size_t literalEnd(const std::string& text, size_t pos, size_t end) {
    size_t i = pos + 1;
    while (i < end && !endsLiteral(text[i])) {
        ++i;
    }
    return i;
}

bool isValidUtf8(const char* begin, const char* end) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(begin);
    const unsigned char* last = reinterpret_cast<const unsigned char*>(end);
    while (p < last) {
        unsigned minimum = 0;
        const int length = sequenceLength(*p, minimum);
        if (length == 0 || last - p < length) {
            return false;
        }
        unsigned code = length == 1 ? *p : *p & (0x7F >> length);
        for (int i = 1; i < length; ++i) {
            if ((p[i] & 0xC0) != 0x80) {
                return false;
            }
            code = (code << 6) | (p[i] & 0x3F);
        }
        if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            return false;
        }
        p += length;
    }
    return true;
}

size_t nestingPastLimit(const std::string& text, size_t limit) {
    // The parser counts values, not brackets: a number or a string inside the innermost
    // container allowed is one level too deep, as is a container there. A member's name is
    // no value, so within an object only what follows a colon counts.
    std::vector<bool> inObject;
    bool afterColon = false;
    size_t pos = 0;
    while (pos < text.size()) {
        const char c = text[pos];
        const bool valueHere =
            !inObject.empty() && (!inObject.back() || afterColon) && inObject.size() >= limit;
        if (startsComment(text, pos, text.size())) {
            pos = commentEnd(text, pos, text.size());
            continue;
        }
        if (c == '[' || c == '{') {
            if (inObject.size() >= limit) {
                return pos;
            }
            inObject.push_back(c == '{');
            afterColon = false;
        } else if ((c == ']' || c == '}') && !inObject.empty()) {
            inObject.pop_back();
        } else if (c == ':' || c == ',') {
            afterColon = c == ':';
        } else if (!isSpace(c) && valueHere) {
            return pos;
        }
        pos = c == '"' ? stringEnd(text, pos, text.size()) : pos + 1;
    }
    return text.size();
}

}  // namespace zelct
