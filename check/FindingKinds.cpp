#include "FindingKinds.h"

#include <algorithm>

namespace zelct {

const std::vector<FindingKind>& findingKinds() {
    using T = Finding::Type;
    // clang-format off
    static const std::vector<FindingKind> kinds = {
        {T::Dropped,         "dropped",           "warning", "MemberNeverRead",            "A member the library never reads: the device ignores it and drops it on store.", "look for a misspelt or outdated member name; the kind's schema lists the members the library knows (`zelct schema KIND`, or the installed `/usr/share/zelCommonTypes/schemas/KIND.schema.json`).", false},
        {T::Changed,         "changed",           "warning", "ValueReadOtherwise",         "A value the library reads as another value.", "write the value the device keeps.", true},
        {T::NotWrittenBack,  "not-written-back",  "warning", "MemberLostOnStore",          "A member the library reads but does not write back: storing the document loses it.", "find out why the library does not write it.", false},
        {T::Added,           "added",             "warning", "MissingMemberReadAsDefault", "A member the document lacks, which the library reads as its default.", "add the member with the value you mean; otherwise the device works with the default shown.", true},
        {T::DuplicateMember, "duplicate-member",  "warning", "MemberGivenTwice",           "A member given twice in one object: the device keeps the last value.", "keep one occurrence with the value you mean and delete the others.", false},
        {T::TrailingText,    "trailing-text",     "warning", "TextAfterDocument",          "Text after the document, never parsed.", "remove what follows the document's closing bracket.", false},
        {T::Comment,         "comment",           "warning", "CommentSkipped",             "A comment, which the device's parser skips.", "remove the comment, or keep the note somewhere else: strict JSON has no comments, other readers refuse them, and the device's first store of the document drops them.", false},
        {T::TrailingComma,   "trailing-comma",    "warning", "CommaBeforeClosingBracket",  "A comma before a closing bracket, which the device's parser skips.", "delete the comma.", false},
        {T::AfterNul,        "after-nul",         "warning", "BytesAfterNul",              "Bytes from a NUL byte on, which the device never loads.", "remove the NUL byte and decide what to do with what follows it (often the rest of an interrupted or concatenated write).", false},
        {T::NotUtf8,         "not-utf8",          "warning", "StringNotUtf8",              "A string that is not UTF-8, written back otherwise.", "save the file as UTF-8 (a file written in Latin-1 or a Windows code page shows this on every accented letter), or write the character as a `\\uXXXX` escape.", false},
        {T::ControlInString, "control-in-string", "warning", "UnescapedControlCharacter",  "A control character unescaped in a string, which strict JSON forbids and the device writes back escaped.", "write the character escaped, as the device will (`\\t`, `\\n`, `\\u001b`), or remove it if it came in by accident (a tab typed into a value, a line broken inside a string).", false},
        {T::ByteOrderMark,   "byte-order-mark",   "warning", "ByteOrderMarkSkipped",       "A byte-order mark before the document, which the device skips and never writes back.", "save the file as UTF-8 without a byte-order mark (an editor's \"UTF-8\" rather than \"UTF-8 with BOM\").", false},
        {T::NumberText,      "number-text",       "warning", "NumberOutsideJson",          "A number written otherwise than JSON allows, which the device's parser reads all the same.", "write the number as JSON has it (`2.35`, `3.0` or `3`, `41.5`); for a value that is not known, write the value the device uses for \"unknown\" (the kind's schema and `zelct template KIND` show the defaults, often -1) rather than a `-`.", true},
        {T::NulInString,     "nul-in-string",     "warning", "NulInsideString",            "An escaped NUL in a string or member name, where a C string ends.", "remove the `\\u0000`; it is almost always left over from a fixed-size field copied whole (a name padded with NULs).", true},
        {T::HiddenState,     "hidden-state",      "warning", "KindKeptBehindText",         "A text that names no interface kind: the channel keeps its kind and writes the text back.", "write one of the interface kinds' names (`sdi-video`, `sdi-audio` or `sdi-ancillary` for an SDI channel; `madi` without the space).", true},
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
