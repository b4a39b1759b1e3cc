#pragma once

// Reading members the way Json::Value::get(key, default) followed by a conversion reads them,
// without what get costs: it builds the default as a Value and returns the member by copy, so
// a text member is allocated twice before the conversion allocates it a third time.
//
// The outcome is the same in every case, exceptions included: find, like get, raises
// Json::LogicError on a value that is neither an object nor null, and the conversion of the
// member found raises what asString raises on the copy get would have returned.

#include <json/json.h>

#include <cstring>
#include <string>

namespace zelct {

inline const Json::Value* findMember(const Json::Value& root, const char* key) {
    return root.find(key, key + std::strlen(key));
}

// root.get(key, fallback).asString()
inline std::string stringMember(const Json::Value& root, const char* key, const char* fallback) {
    const Json::Value* found = findMember(root, key);
    return found != nullptr ? found->asString() : std::string(fallback);
}

}  // namespace zelct
