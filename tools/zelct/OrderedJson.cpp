#include "OrderedJson.h"

#include <cctype>
#include <cstdint>
#include <cstdlib>

namespace zelct {

const OrderedValue* OrderedValue::member(const std::string& name) const {
    const OrderedValue* found = nullptr;
    for (const auto& entry : members) {
        if (entry.first == name) {
            found = &entry.second;
        }
    }
    return found;
}

namespace {

struct Failure {
    std::string message;
};

void appendUtf8(std::string& out, uint32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

class Parser {
public:
    Parser(const std::string& text, const OrderedOptions& options)
        : text_(text), options_(options) {}

    OrderedParse run() {
        OrderedParse result;
        try {
            if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0) {
                at_ = 3;
            }
            space();
            result.value = value(0);
            space();
            if (at_ < text_.size()) {
                fail("text after the value");
            }
            result.ok = true;
        } catch (const Failure& failure) {
            result.error = failure.message;
            result.line = line_;
            result.column = column();
        }
        return result;
    }

private:
    [[noreturn]] void fail(const std::string& message) { throw Failure{message}; }

    int column() const { return column_; }

    char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }

    // Columns count characters, a multi-byte one once, as the check's positions do.
    void advance() {
        if (text_[at_] == '\n') {
            ++line_;
            column_ = 1;
        } else if ((static_cast<unsigned char>(text_[at_]) & 0xC0) != 0x80) {
            ++column_;
        }
        ++at_;
    }

    void advance(size_t count) {
        for (size_t i = 0; i < count; ++i) {
            advance();
        }
    }

    void comment() {
        if (text_.compare(at_, 2, "//") == 0) {
            while (at_ < text_.size() && text_[at_] != '\n') {
                advance();
            }
            return;
        }
        const size_t end = text_.find("*/", at_ + 2);
        if (end == std::string::npos) {
            fail("a comment that never ends");
        }
        while (at_ < end + 2) {
            advance();
        }
    }

    void space() {
        while (at_ < text_.size()) {
            const char c = text_[at_];
            if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
                advance();
            } else if (c == '/' && options_.comments &&
                       (text_.compare(at_, 2, "//") == 0 || text_.compare(at_, 2, "/*") == 0)) {
                comment();
            } else {
                return;
            }
        }
    }

    void expect(char c, const char* what) {
        if (peek() != c) {
            fail(std::string("expected ") + what);
        }
        advance();
    }

    OrderedValue value(int depth) {
        OrderedValue value;
        value.line = line_;
        value.column = column();
        const char c = peek();
        if ((c == '{' || c == '[') && depth >= options_.readDepth) {
            skipNested();
            value.type = OrderedValue::Type::Skipped;
        } else if (c == '{') {
            object(value, depth);
        } else if (c == '[') {
            array(value, depth);
        } else if (c == '"') {
            value.type = OrderedValue::Type::String;
            value.text = string();
        } else if (c == '-' || std::isdigit(static_cast<unsigned char>(c)) != 0) {
            value.type = OrderedValue::Type::Number;
            value.text = number();
        } else {
            literal(value);
        }
        return value;
    }

    void literal(OrderedValue& value) {
        static const struct {
            const char* text;
            OrderedValue::Type type;
        } kLiterals[] = {{"true", OrderedValue::Type::Boolean},
                         {"false", OrderedValue::Type::Boolean},
                         {"null", OrderedValue::Type::Null}};
        for (const auto& literal : kLiterals) {
            const std::string word(literal.text);
            if (text_.compare(at_, word.size(), word) == 0) {
                value.type = literal.type;
                value.text = word;
                advance(word.size());
                return;
            }
        }
        fail(at_ < text_.size() ? "expected a value" : "the text ends where a value should be");
    }

    // Whether the list goes on after an element: a comma, then (unless trailing commas are
    // allowed) another element.
    bool more(char close) {
        space();
        if (peek() == close) {
            advance();
            return false;
        }
        expect(',', close == '}' ? "',' or '}'" : "',' or ']'");
        space();
        if (options_.trailingCommas && peek() == close) {
            advance();
            return false;
        }
        return true;
    }

    void object(OrderedValue& value, int depth) {
        value.type = OrderedValue::Type::Object;
        advance();
        space();
        if (peek() == '}') {
            advance();
            return;
        }
        do {
            if (peek() != '"') {
                fail("expected a member name in double quotes");
            }
            const int nameLine = line_;
            const int nameColumn = column();
            std::string name = string();
            space();
            expect(':', "':' after a member name");
            space();
            value.members.emplace_back(std::move(name), this->value(depth + 1));
            value.members.back().second.nameLine = nameLine;
            value.members.back().second.nameColumn = nameColumn;
        } while (more('}'));
    }

    void array(OrderedValue& value, int depth) {
        value.type = OrderedValue::Type::Array;
        advance();
        space();
        if (peek() == ']') {
            advance();
            return;
        }
        do {
            value.elements.push_back(this->value(depth + 1));
        } while (more(']'));
    }

    uint32_t hex4() {
        if (at_ + 4 > text_.size()) {
            fail("a \\u escape cut short");
        }
        const std::string digits = text_.substr(at_, 4);
        for (char d : digits) {
            if (std::isxdigit(static_cast<unsigned char>(d)) == 0) {
                fail("a \\u escape without four hex digits");
            }
        }
        advance(4);
        return static_cast<uint32_t>(std::strtoul(digits.c_str(), nullptr, 16));
    }

    void escape(std::string& out) {
        static const std::string kFrom = "\"\\/bfnrt";
        static const std::string kTo = "\"\\/\b\f\n\r\t";
        const char c = peek();
        const size_t simple = kFrom.find(c);
        if (c != '\0' && simple != std::string::npos) {
            out += kTo[simple];
            advance();
            return;
        }
        if (c != 'u') {
            fail("an unknown escape in a string");
        }
        advance();
        uint32_t code = hex4();
        if (code >= 0xD800 && code < 0xDC00 && text_.compare(at_, 2, "\\u") == 0) {
            advance(2);
            const uint32_t low = hex4();
            if (low < 0xDC00 || low > 0xDFFF) {
                fail("a \\u escape of half a character");
            }
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        }
        appendUtf8(out, code);
    }

    std::string string() {
        advance();
        std::string out;
        while (true) {
            if (at_ >= text_.size()) {
                fail("a string that never ends");
            }
            const char c = text_[at_];
            if (c == '"') {
                advance();
                return out;
            }
            if (static_cast<unsigned char>(c) < 0x20) {
                fail("a control character in a string");
            }
            advance();
            if (c == '\\') {
                escape(out);
            } else {
                out += c;
            }
        }
    }

    std::string number() {
        const size_t start = at_;
        while (at_ < text_.size() && (std::isdigit(static_cast<unsigned char>(text_[at_])) != 0 ||
                                      std::string("+-.eE").find(text_[at_]) != std::string::npos)) {
            advance();
        }
        return text_.substr(start, at_ - start);
    }

    // Past a nested value without recursing into it: brackets counted, strings and comments
    // stepped over, so that no depth costs stack.
    void skipNested() {
        size_t open = 0;
        do {
            const char c = peek();
            if (c == '\0' && at_ >= text_.size()) {
                fail("the text ends inside a value");
            }
            if (c == '"') {
                string();
                continue;
            }
            if (c == '/' && options_.comments &&
                (text_.compare(at_, 2, "//") == 0 || text_.compare(at_, 2, "/*") == 0)) {
                comment();
                continue;
            }
            open += (c == '{' || c == '[') ? 1 : 0;
            open -= (c == '}' || c == ']') ? 1 : 0;
            advance();
        } while (open > 0);
    }

    const std::string& text_;
    const OrderedOptions& options_;
    size_t at_ = 0;
    int line_ = 1;
    int column_ = 1;
};

}  // namespace

OrderedParse parseOrdered(const std::string& text, const OrderedOptions& options) {
    return Parser(text, options).run();
}

}  // namespace zelct
