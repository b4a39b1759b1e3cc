#include "ReadingScan.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zelct {

namespace {

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

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

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

const char* digitsEnd(const char* p, const char* end) {
    while (p < end && isDigit(*p)) {
        ++p;
    }
    return p;
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

struct Member {
    size_t keyOffset = 0;
    size_t valueStart = 0;
    size_t valueEnd = 0;
};

struct Container {
    explicit Container(bool object) : isObject(object) {}

    bool isObject;
    bool expectingKey = true;  // an object between its members
    bool memberPending = false;
    bool afterComma = false;
    size_t commaOffset = 0;
    Json::ArrayIndex count = 0;  // elements begun, in an array
    std::string key;
    Member current;
    std::unordered_map<std::string, Member> last;  // the latest occurrence of each name
    std::vector<std::pair<std::string, Member>> ignored;
};

ReadingTrap trapAt(ReadingTrap::Type type, size_t offset, JsonPath path) {
    ReadingTrap trap;
    trap.type = type;
    trap.offset = offset;
    trap.path = std::move(path);
    return trap;
}

class Scanner {
public:
    Scanner(const std::string& bytes, size_t end, size_t keep)
        : text_(bytes), end_(end), keep_(keep) {}

    std::vector<ReadingTrap> run() {
        size_t pos = 0;
        if (end_ >= 3 && text_.compare(0, 3, "\xEF\xBB\xBF") == 0) {
            add(trapAt(ReadingTrap::Type::ByteOrderMark, 0, JsonPath()));
            pos = 3;
        }
        while (pos < end_) {
            pos = step(pos);
        }
        if (end_ < text_.size()) {
            ReadingTrap trap = trapAt(ReadingTrap::Type::AfterNul, end_, JsonPath());
            trap.count = text_.size() - end_;
            add(std::move(trap));
        }
        keepFirst();
        return std::move(traps_);
    }

    size_t more() const { return more_; }

private:
    // A duplicated member is known only when its object closes, after traps that follow it in
    // the text, so the first traps by offset are known only at the end. Trimming to them
    // whenever twice as many are held keeps the memory bounded and the result the same.
    void add(ReadingTrap trap) {
        traps_.push_back(std::move(trap));
        if (traps_.size() / 2 >= std::max<size_t>(keep_, 1024)) {
            keepFirst();
        }
    }

    void keepFirst() {
        std::stable_sort(
            traps_.begin(), traps_.end(),
            [](const ReadingTrap& a, const ReadingTrap& b) { return a.offset < b.offset; });
        if (traps_.size() > keep_) {
            more_ += traps_.size() - keep_;
            traps_.erase(traps_.begin() + static_cast<std::ptrdiff_t>(keep_), traps_.end());
        }
    }

    size_t step(size_t pos) {
        const char c = text_[pos];
        if (isSpace(c)) {
            return pos + 1;
        }
        if (startsComment(text_, pos, end_)) {
            add(trapAt(ReadingTrap::Type::Comment, pos, containerPath()));
            return commentEnd(text_, pos, end_);
        }
        if (rootDone_) {
            add(trapAt(ReadingTrap::Type::TrailingText, pos, JsonPath()));
            return end_;
        }
        switch (c) {
            case '{':
            case '[':
                beginValue(pos);
                stack_.push_back(Container{c == '{'});
                path_.push_back(PathStep::element(0));
                return pos + 1;
            case '}':
            case ']':
                close(pos);
                return pos + 1;
            case ',':
                comma(pos);
                return pos + 1;
            case ':':
                return pos + 1;
            case '"':
                return string(pos);
            default: {
                const size_t end = literalEnd(text_, pos, end_);
                beginValue(pos);
                if (startsNumber(c) && !isJsonNumber(text_.data() + pos, text_.data() + end)) {
                    stringTrap(ReadingTrap::Type::NumberText, pos, pos, end);
                }
                endValue(end);
                return end;
            }
        }
    }

    JsonPath containerPath() const {
        return path_.empty() ? JsonPath() : JsonPath(path_.begin(), path_.end() - 1);
    }

    void beginValue(size_t pos) {
        if (stack_.empty()) {
            return;
        }
        Container& top = stack_.back();
        top.afterComma = false;
        if (top.isObject) {
            top.current.valueStart = pos;
        } else {
            path_.back() = PathStep::element(top.count++);
        }
    }

    void endValue(size_t end) {
        if (stack_.empty()) {
            rootDone_ = true;
        } else if (stack_.back().isObject) {
            stack_.back().current.valueEnd = end;
        }
    }

    void comma(size_t pos) {
        if (stack_.empty()) {
            return;
        }
        Container& top = stack_.back();
        top.afterComma = true;
        top.commaOffset = pos;
        if (top.isObject) {
            finishMember(top);
            top.expectingKey = true;
        }
    }

    // The device's reader assigns each member as it comes, so the last of a name stays. An
    // object's ignored members come in the order of their offsets, so once it holds as many
    // as are kept, the later ones can only be counted.
    void finishMember(Container& object) {
        if (!object.memberPending) {
            return;
        }
        object.memberPending = false;
        auto placed = object.last.emplace(object.key, object.current);
        if (!placed.second) {
            if (object.ignored.size() < keep_) {
                object.ignored.emplace_back(object.key, placed.first->second);
            } else {
                ++more_;
            }
            placed.first->second = object.current;
        }
    }

    void close(size_t pos) {
        if (stack_.empty()) {
            return;
        }
        Container& top = stack_.back();
        const JsonPath path = containerPath();
        if (top.afterComma) {
            add(trapAt(ReadingTrap::Type::TrailingComma, top.commaOffset, path));
        }
        if (top.isObject) {
            finishMember(top);
            for (const auto& ignored : top.ignored) {
                ReadingTrap trap =
                    trapAt(ReadingTrap::Type::DuplicateMember, ignored.second.keyOffset, path);
                trap.path.push_back(PathStep::member(ignored.first));
                trap.valueStart = ignored.second.valueStart;
                trap.valueEnd = ignored.second.valueEnd;
                trap.keptOffset = top.last[ignored.first].keyOffset;
                add(std::move(trap));
            }
        }
        stack_.pop_back();
        path_.pop_back();
        endValue(pos + 1);
    }

    size_t string(size_t pos) {
        const size_t end = stringEnd(text_, pos, end_);
        const bool valid =
            isValidUtf8(text_.data() + pos + 1, text_.data() + end - 1) && escapesAreUtf8(pos, end);
        if (!stack_.empty() && stack_.back().isObject && stack_.back().expectingKey) {
            Container& top = stack_.back();
            top.key = decoded(pos, end);
            top.expectingKey = false;
            top.memberPending = true;
            top.afterComma = false;
            top.current = Member{pos, 0, 0};
            path_.back() = PathStep::member(top.key);
            stringTraps(pos, end, valid);
            return end;
        }
        beginValue(pos);
        stringTraps(pos, end, valid);
        endValue(end);
        return end;
    }

    // The string's start first; the others come in the order of their offsets when the trimming
    // sorts them.
    void stringTraps(size_t pos, size_t end, bool valid) {
        if (!valid) {
            stringTrap(ReadingTrap::Type::NotUtf8, pos, pos, end);
        }
        const size_t nul = escapedNul(text_, pos, end);
        if (nul != end) {
            stringTrap(ReadingTrap::Type::NulInString, nul, pos, end);
        }
        // Between the quotes; a string cut short by the end of the text has no closing one.
        const char* first = text_.data() + pos + 1;
        const char* last = std::max(first, text_.data() + end - (text_[end - 1] == '"' ? 1 : 0));
        const char* control =
            std::find_if(first, last, [](char c) { return static_cast<unsigned char>(c) < 0x20; });
        if (control != last) {
            stringTrap(ReadingTrap::Type::ControlInString,
                       static_cast<size_t>(control - text_.data()), pos, end);
        }
    }

    void stringTrap(ReadingTrap::Type type, size_t offset, size_t pos, size_t end) {
        ReadingTrap trap = trapAt(type, offset, path_);
        trap.valueStart = pos;
        trap.valueEnd = end;
        add(std::move(trap));
    }

    // A \u escape of a lone surrogate decodes to bytes that are no UTF-8 either.
    bool escapesAreUtf8(size_t pos, size_t end) {
        static const char kEscape[] = "\\u";
        const char* begin = text_.data() + pos;
        const char* last = text_.data() + end;
        if (std::search(begin, last, kEscape, kEscape + 2) == last) {
            return true;  // the common case, looked at within the string only
        }
        const std::string text = decoded(pos, end);
        return isValidUtf8(text.data(), text.data() + text.size());
    }

    // A member name as the device's reader decodes it; escapes are rare, so only a name with
    // a backslash goes through jsoncpp.
    std::string decoded(size_t pos, size_t end) {
        const std::string quoted = text_.substr(pos, end - pos);
        if (quoted.find('\\') == std::string::npos) {
            return quoted.substr(1, quoted.size() >= 2 ? quoted.size() - 2 : 0);
        }
        if (!reader_) {
            reader_.reset(Json::CharReaderBuilder().newCharReader());
        }
        Json::Value name;
        std::string errors;
        if (reader_->parse(quoted.data(), quoted.data() + quoted.size(), &name, &errors) &&
            name.isString()) {
            return name.asString();
        }
        return quoted;
    }

    const std::string& text_;
    size_t end_;
    size_t keep_;
    size_t more_ = 0;
    std::vector<ReadingTrap> traps_;
    std::vector<Container> stack_;
    JsonPath path_;  // one step per open container: the child being read
    bool rootDone_ = false;
    std::unique_ptr<Json::CharReader> reader_;
};

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

std::vector<ReadingTrap> scanReadingTraps(const std::string& bytes, size_t deviceLength,
                                          size_t keep, size_t* more) {
    Scanner scanner(bytes, std::min(deviceLength, bytes.size()), keep);
    std::vector<ReadingTrap> traps = scanner.run();
    if (more != nullptr) {
        *more = scanner.more();
    }
    return traps;
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
