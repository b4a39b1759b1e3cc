// The walk of a file's tokens that finds what the device's reader takes otherwise than JSON.
#include "ReadingScan.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ReadingTokens.h"

namespace zelct {

namespace {

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

}  // namespace
std::vector<ReadingTrap> scanReadingTraps(const std::string& bytes, size_t deviceLength,
                                          size_t keep, size_t* more) {
    Scanner scanner(bytes, std::min(deviceLength, bytes.size()), keep);
    std::vector<ReadingTrap> traps = scanner.run();
    if (more != nullptr) {
        *more = scanner.more();
    }
    return traps;
}
}  // namespace zelct
