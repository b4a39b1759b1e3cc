// The sentence of each finding, as every output format shows it.
#include "CheckSteps.h"

#include <string>

#include "DaifType.h"

namespace zelct {

namespace {

// Longer objects and arrays are summarised in a finding line; --json gives them whole.
constexpr size_t kLongestQuotedContainer = 72;

// Whether a text found at the path is the member's name rather than its value.
bool isNameOf(const JsonPath& path, const Json::Value& text) {
    return !path.empty() && !path.back().isIndex && text.isString() &&
           path.back().key == text.asString();
}

}  // namespace

std::string quoted(const Json::Value& value) {
    const bool container = value.isObject() || value.isArray();
    // Each element takes a character and a comma at least, so a container this long is
    // summarised without writing out its text, which may be most of a large file.
    std::string text = container && value.size() > kLongestQuotedContainer / 2 ? std::string()
                                                                               : compactJson(value);
    if (!container || (!text.empty() && text.size() <= kLongestQuotedContainer)) {
        return text;
    }
    const std::string count = std::to_string(value.size());
    const char* plural = value.size() == 1 ? "" : "s";
    return value.isObject() ? "{...} (" + count + " member" + plural + ")"
                            : "[...] (" + count + " element" + plural + ")";
}

std::string findingText(const Finding& finding) {
    // The whole document has the empty pointer, which would leave a bare ": " in front.
    const std::string where = finding.path.empty() ? "" : pointerText(finding.path) + ": ";
    switch (finding.type) {
        case Finding::Type::Dropped:
            return where + "dropped (never read)";
        case Finding::Type::Changed:
            return where + quoted(finding.original) + " read as " + quoted(finding.understood);
        case Finding::Type::NotWrittenBack:
            return where + quoted(finding.original) + " read but not written back";
        case Finding::Type::Added:
            return where + "added with default " + quoted(finding.understood);
        case Finding::Type::DuplicateMember:
            return where + "member given again later in its object; the device keeps the last " +
                   "value, " + quoted(finding.understood) + ", and ignores this one, " +
                   quoted(finding.original);
        case Finding::Type::TrailingText:
            return where + "text after the document; the device never reads it";
        case Finding::Type::Comment:
            return where + "comment; the device skips it and never writes it back";
        case Finding::Type::TrailingComma:
            return where + "trailing comma; the device skips it";
        case Finding::Type::AfterNul:
            return where + "NUL byte; the device loads the file only up to here and ignores " +
                   "the " + std::to_string(finding.original.asLargestUInt()) + " bytes from here";
        case Finding::Type::NotUtf8:
            return where + "text not valid UTF-8; the device keeps its bytes and writes it back " +
                   "as " + finding.understood.asString();
        case Finding::Type::ControlInString:
            return where + "control character unescaped in a string, which strict JSON " +
                   "forbids; the device keeps it and writes it back escaped, as " +
                   finding.understood.asString();
        case Finding::Type::ByteOrderMark:
            return where + "byte-order mark; the device skips it and never writes it back, " +
                   "and strict JSON readers refuse the file";
        case Finding::Type::NumberText:
            return where + "`" + finding.original.asString() +
                   "` is not a JSON number; the device reads " + quoted(finding.understood);
        case Finding::Type::NulInString:
            return where + "\\u0000 in a " +
                   (isNameOf(finding.path, finding.original) ? "member name" : "string") +
                   "; the device keeps it, and whatever takes the text as a C string (log lines, " +
                   "name comparisons) sees only " + quoted(finding.understood);
        case Finding::Type::HiddenState:
            return where + quoted(finding.original) + " is no interface kind; the channel " +
                   "keeps kind " + DaifType::nameOf(finding.understood.asInt()) + " (" +
                   std::to_string(finding.understood.asInt()) + ") and writes the text back";
    }
    return where;
}

}  // namespace zelct
