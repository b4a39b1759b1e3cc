#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zelct {

// A JSON value as its text writes it: members in the order they are written, with the place
// of each value. jsoncpp sorts member names, and a project file's patterns are tried in the
// order their author wrote them.
struct OrderedValue {
    enum class Type { Null, Boolean, Number, String, Array, Object, Skipped };
    Type type = Type::Null;
    std::string text;  // a string's value, a number's or a literal's text
    std::vector<std::pair<std::string, OrderedValue>> members;
    std::vector<OrderedValue> elements;
    int line = 0;
    int column = 0;
    int nameLine = 0;  // a member's: where its name is written
    int nameColumn = 0;

    // The last member of that name (as the device's parser keeps it), or nullptr.
    const OrderedValue* member(const std::string& name) const;
};

struct OrderedParse {
    bool ok = false;
    OrderedValue value;
    std::string error;  // when not ok, with its place
    int line = 0;
    int column = 0;
};

struct OrderedOptions {
    bool comments = false;        // // and /* */ as JSONC has them (editor settings)
    bool trailingCommas = false;  // a comma before } or ], as JSONC has it
    // Values nested deeper than this are skipped, not read (their type is Skipped): a
    // document's top level is all that its kind can be told from, and a deep one must not
    // cost more than a scan.
    int readDepth = 64;
};

// Parses the whole text as one JSON value. Never throws; a text nested past any limit is
// scanned, not recursed into.
OrderedParse parseOrdered(const std::string& text, const OrderedOptions& options);

}  // namespace zelct
