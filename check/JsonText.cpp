#include "JsonText.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace zelct {

namespace {

void appendQuoted(std::string& out, const std::string& text) {
    out += '"';
    for (const char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\b':
                out += "\\b";
                break;
            case '\f':
                out += "\\f";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04x",
                                  static_cast<unsigned>(static_cast<unsigned char>(c)));
                    out += escaped;
                } else {
                    out += c;
                }
        }
    }
    out += '"';
}

// Written as jsoncpp writes non-finite numbers without its special-float option.
std::string doubleText(double number) {
    if (std::isnan(number)) {
        return "null";
    }
    if (std::isinf(number)) {
        return number < 0 ? "-1e+9999" : "1e+9999";
    }
    char text[40];
    for (int digits = 15; digits <= 17; ++digits) {
        std::snprintf(text, sizeof text, "%.*g", digits, number);
        if (std::strtod(text, nullptr) == number) {
            break;
        }
    }
    std::string result(text);
    if (result.find_first_of(".e") == std::string::npos) {
        result += ".0";  // keeps a double recognisable as one, as jsoncpp does
    }
    return result;
}

void appendCompact(std::string& out, const Json::Value& value) {
    switch (value.type()) {
        case Json::nullValue:
            out += "null";
            break;
        case Json::intValue:
            out += std::to_string(value.asLargestInt());
            break;
        case Json::uintValue:
            out += std::to_string(value.asLargestUInt());
            break;
        case Json::realValue:
            out += doubleText(value.asDouble());
            break;
        case Json::stringValue:
            appendQuoted(out, value.asString());
            break;
        case Json::booleanValue:
            out += value.asBool() ? "true" : "false";
            break;
        case Json::arrayValue:
            out += '[';
            for (Json::ArrayIndex i = 0; i < value.size(); ++i) {
                if (i > 0) {
                    out += ',';
                }
                appendCompact(out, value[i]);
            }
            out += ']';
            break;
        case Json::objectValue: {
            out += '{';
            bool first = true;
            for (auto it = value.begin(); it != value.end(); ++it) {
                if (!first) {
                    out += ',';
                }
                first = false;
                appendQuoted(out, it.name());
                out += ':';
                appendCompact(out, *it);
            }
            out += '}';
            break;
        }
    }
}

bool isNumber(const Json::Value& value) {
    return value.type() == Json::intValue || value.type() == Json::uintValue ||
           value.type() == Json::realValue;
}

bool isNegativeInteger(const Json::Value& value) {
    return value.type() == Json::intValue && value.asLargestInt() < 0;
}

bool sameNumber(const Json::Value& a, const Json::Value& b) {
    if (a.type() == Json::realValue || b.type() == Json::realValue) {
        return a.asDouble() == b.asDouble();
    }
    if (isNegativeInteger(a) || isNegativeInteger(b)) {
        return isNegativeInteger(a) && isNegativeInteger(b) && a.asLargestInt() == b.asLargestInt();
    }
    return a.asLargestUInt() == b.asLargestUInt();
}

bool sameMembers(const Json::Value& a, const Json::Value& b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (auto it = a.begin(); it != a.end(); ++it) {
        const std::string name = it.name();
        const Json::Value* other = b.find(name.data(), name.data() + name.size());
        if (other == nullptr || !sameValue(*it, *other)) {
            return false;
        }
    }
    return true;
}

bool sameElements(const Json::Value& a, const Json::Value& b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (Json::ArrayIndex i = 0; i < a.size(); ++i) {
        if (!sameValue(a[i], b[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string compactJson(const Json::Value& value) {
    std::string out;
    appendCompact(out, value);
    return out;
}

std::string indentedJson(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    builder["emitUTF8"] = true;
    // jsoncpp keeps a document's comments on the values read from it and writes them back,
    // which no JSON reader accepts; a value quoted from a document must come out as data only.
    builder["commentStyle"] = "None";
    return Json::writeString(builder, value) + "\n";
}

bool sameValue(const Json::Value& a, const Json::Value& b) {
    if (isNumber(a) && isNumber(b)) {
        return sameNumber(a, b);
    }
    if (a.type() != b.type()) {
        return false;
    }
    if (a.isObject()) {
        return sameMembers(a, b);
    }
    if (a.isArray()) {
        return sameElements(a, b);
    }
    return a == b;
}

const char* jsonTypeText(const Json::Value& value) {
    switch (value.type()) {
        case Json::nullValue:
            return "null";
        case Json::intValue:
        case Json::uintValue:
        case Json::realValue:
            return "a number";
        case Json::stringValue:
            return "a string";
        case Json::booleanValue:
            return "a boolean";
        case Json::arrayValue:
            return "an array";
        case Json::objectValue:
            return "an object";
    }
    return "a value";
}

std::string pointerText(const JsonPath& path) {
    std::string text;
    for (const PathStep& step : path) {
        text += '/';
        if (step.isIndex) {
            text += std::to_string(step.index);
            continue;
        }
        for (const char c : step.key) {
            if (c == '~') {
                text += "~0";
            } else if (c == '/') {
                text += "~1";
            } else {
                text += c;
            }
        }
    }
    return text;
}

const Json::Value* nodeAt(const Json::Value& document, const JsonPath& path) {
    const Json::Value* node = &document;
    for (const PathStep& step : path) {
        if (step.isIndex) {
            if (!node->isArray() || step.index >= node->size()) {
                return nullptr;
            }
            node = &(*node)[step.index];
        } else {
            if (!node->isObject()) {
                return nullptr;
            }
            node = node->find(step.key.data(), step.key.data() + step.key.size());
            if (node == nullptr) {
                return nullptr;
            }
        }
    }
    return node;
}

Json::Value* nodeAt(Json::Value& document, const JsonPath& path) {
    // The node found in a document the caller may change is the caller's to change.
    return const_cast<Json::Value*>(nodeAt(static_cast<const Json::Value&>(document), path));
}

Json::Value replacedAt(const Json::Value& document, const JsonPath& path,
                       const Json::Value& value) {
    Json::Value copy = document;
    if (Json::Value* node = nodeAt(copy, path)) {
        *node = value;
    }
    return copy;
}

// The document with the node at the path removed, in place: a member is removed, the last
// array element is cut off, an element in the middle becomes null so the others keep their
// index.
void removeAt(Json::Value& document, const JsonPath& path) {
    if (path.empty()) {
        document = Json::Value();
        return;
    }
    const JsonPath parentPath(path.begin(), path.end() - 1);
    Json::Value* parent = nodeAt(document, parentPath);
    const PathStep& last = path.back();
    if (parent == nullptr) {
        return;
    }
    if (!last.isIndex) {
        if (parent->isObject()) {
            parent->removeMember(last.key);
        }
    } else if (parent->isArray() && last.index < parent->size()) {
        if (last.index + 1 == parent->size()) {
            parent->resize(last.index);
        } else {
            (*parent)[last.index] = Json::Value();
        }
    }
}

Json::Value removedAt(const Json::Value& document, const JsonPath& path) {
    Json::Value copy = document;
    removeAt(copy, path);
    return copy;
}

size_t likeness(const Json::Value& a, const Json::Value& b) {
    if (!a.isObject() || !b.isObject()) {
        return 0;
    }
    size_t shared = 0;
    for (auto it = a.begin(); it != a.end(); ++it) {
        const std::string name = it.name();
        const Json::Value* other = b.find(name.data(), name.data() + name.size());
        if (other != nullptr && sameValue(*it, *other)) {
            ++shared;
        }
    }
    return shared;
}

}  // namespace zelct
