#include "SafeText.h"

#include <cstdio>

namespace zelct {

namespace {

// Length of the valid UTF-8 sequence that starts at `at`, or 0 when the byte there does not
// start one (a stray continuation byte, an overlong form, a surrogate, past U+10FFFF, cut off).
size_t utf8Length(const std::string& text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    if (lead < 0x80) {
        return 1;
    }
    size_t length = 0;
    unsigned char low = 0x80;   // the range the second byte must fall in
    unsigned char high = 0xBF;  // excludes overlong forms, surrogates and past U+10FFFF
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (at + length > text.size() || byte(at + 1) < low || byte(at + 1) > high) {
        return 0;
    }
    for (size_t i = 2; i < length; ++i) {
        if (byte(at + i) < 0x80 || byte(at + i) > 0xBF) {
            return 0;
        }
    }
    return length;
}

std::string hexEscape(unsigned char byte) {
    char escaped[5];
    std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
    return escaped;
}

// C1 control characters (U+0080 to U+009F) steer terminals as much as the C0 ones do.
bool isC1Control(const std::string& text, size_t at, size_t length) {
    return length == 2 && static_cast<unsigned char>(text[at]) == 0xC2 &&
           static_cast<unsigned char>(text[at + 1]) < 0xA0;
}

std::string controlEscape(unsigned char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return hexEscape(byte);
    }
}

}  // namespace

std::string escapedForTerminal(const std::string& text) {
    std::string escaped;
    escaped.reserve(text.size());
    size_t at = 0;
    while (at < text.size()) {
        const size_t length = utf8Length(text, at);
        const auto lead = static_cast<unsigned char>(text[at]);
        if (length == 0) {
            escaped += hexEscape(lead);
            at += 1;
        } else if (length == 1 && (lead < 0x20 || lead == 0x7F)) {
            escaped += controlEscape(lead);
            at += 1;
        } else if (isC1Control(text, at, length)) {
            escaped += hexEscape(lead) + hexEscape(static_cast<unsigned char>(text[at + 1]));
            at += 2;
        } else {
            escaped.append(text, at, length);
            at += length;
        }
    }
    return escaped;
}

std::string shortenedLine(const std::string& text, size_t width) {
    if (text.size() <= width) {
        return text;
    }
    size_t cut = width;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) {
        --cut;  // never split a character
    }
    return text.substr(0, cut) + " ... (" + std::to_string(text.size() - cut) + " more bytes)";
}

std::string safeLine(const std::string& text) {
    return shortenedLine(escapedForTerminal(text));
}

std::string validUtf8(const std::string& text) {
    std::string valid;
    valid.reserve(text.size());
    size_t at = 0;
    while (at < text.size()) {
        const size_t length = utf8Length(text, at);
        if (length == 0) {
            valid += hexEscape(static_cast<unsigned char>(text[at]));
            at += 1;
        } else if (text[at] == '\\') {
            valid += "\\\\";
            at += 1;
        } else {
            valid.append(text, at, length);
            at += length;
        }
    }
    return valid;
}

Json::Value withValidUtf8(const Json::Value& value) {
    if (value.isString()) {
        return validUtf8(value.asString());
    }
    if (value.isArray()) {
        Json::Value array(Json::arrayValue);
        for (const Json::Value& element : value) {
            array.append(withValidUtf8(element));
        }
        return array;
    }
    if (value.isObject()) {
        Json::Value object(Json::objectValue);
        for (auto it = value.begin(); it != value.end(); ++it) {
            object[validUtf8(it.name())] = withValidUtf8(*it);
        }
        return object;
    }
    return value;
}

}  // namespace zelct
