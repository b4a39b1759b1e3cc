#include "FindingKinds.h"

#include <algorithm>

namespace zelct {

const std::vector<FindingKind>& findingKinds() {
    using T = Finding::Type;
    // clang-format off
    static const std::vector<FindingKind> kinds = {
        {T::Dropped,         "dropped",           "MemberNeverRead",            "A member the library never reads: the device ignores it and drops it on store.", false},
        {T::Changed,         "changed",           "ValueReadOtherwise",         "A value the library reads as another value.", true},
        {T::NotWrittenBack,  "not-written-back",  "MemberLostOnStore",          "A member the library reads but does not write back: storing the document loses it.", false},
        {T::Added,           "added",             "MissingMemberReadAsDefault", "A member the document lacks, which the library reads as its default.", true},
        {T::DuplicateMember, "duplicate-member",  "MemberGivenTwice",           "A member given twice in one object: the device keeps the last value.", false},
        {T::TrailingText,    "trailing-text",     "TextAfterDocument",          "Text after the document, never parsed.", false},
        {T::Comment,         "comment",           "CommentSkipped",             "A comment, which the device's parser skips.", false},
        {T::TrailingComma,   "trailing-comma",    "CommaBeforeClosingBracket",  "A comma before a closing bracket, which the device's parser skips.", false},
        {T::AfterNul,        "after-nul",         "BytesAfterNul",              "Bytes from a NUL byte on, which the device never loads.", false},
        {T::NotUtf8,         "not-utf8",          "StringNotUtf8",              "A string that is not UTF-8, written back otherwise.", false},
        {T::ControlInString, "control-in-string", "UnescapedControlCharacter",  "A control character unescaped in a string, which strict JSON forbids and the device writes back escaped.", false},
        {T::ByteOrderMark,   "byte-order-mark",   "ByteOrderMarkSkipped",       "A byte-order mark before the document, which the device skips and never writes back.", false},
        {T::NumberText,      "number-text",       "NumberOutsideJson",          "A number written otherwise than JSON allows, which the device's parser reads all the same.", true},
        {T::NulInString,     "nul-in-string",     "NulInsideString",            "An escaped NUL in a string or member name, where a C string ends.", true},
        {T::HiddenState,     "hidden-state",      "KindKeptBehindText",         "A text that names no interface kind: the channel keeps its kind and writes the text back.", true},
    };
    // clang-format on
    return kinds;
}

const FindingKind& findingKind(Finding::Type type) {
    const std::vector<FindingKind>& kinds = findingKinds();
    const auto row = std::find_if(kinds.begin(), kinds.end(),
                                  [type](const FindingKind& kind) { return kind.type == type; });
    return row != kinds.end() ? *row : kinds.front();
}

const char* findingTypeName(Finding::Type type) {
    return findingKind(type).id;
}

}  // namespace zelct
