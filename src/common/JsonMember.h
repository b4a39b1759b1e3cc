#pragma once

// How the records read and write their members without paying jsoncpp more than the document
// needs. Every function and class here leaves values, results and exceptions exactly as the
// plain member access, get and the conversions do; only allocations and searches are saved.
//
// Reading: Json::Value::get(key, default) builds the default as a Value and returns the member
// by copy, so a text member is allocated twice before the conversion allocates it a third
// time. The readers below find the member in place instead. find, like get, raises
// Json::LogicError on a value that is neither an object nor null, and the conversion of the
// member found raises what it raises on the copy get would have returned.

#include <json/json.h>

#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>

namespace zelct {

inline const Json::Value* findMember(const Json::Value& root, const char* key) {
    return root.find(key, key + std::strlen(key));
}

// root.get(key, fallback).asInt(), and the same for the other conversions: the fallback is
// what the default value converts to.
inline int intMember(const Json::Value& root, const char* key, int fallback) {
    const Json::Value* found = findMember(root, key);
    return found != nullptr ? found->asInt() : fallback;
}

inline unsigned uintMember(const Json::Value& root, const char* key, unsigned fallback) {
    const Json::Value* found = findMember(root, key);
    return found != nullptr ? found->asUInt() : fallback;
}

inline Json::UInt64 uint64Member(const Json::Value& root, const char* key, Json::UInt64 fallback) {
    const Json::Value* found = findMember(root, key);
    return found != nullptr ? found->asUInt64() : fallback;
}

inline bool boolMember(const Json::Value& root, const char* key, bool fallback) {
    const Json::Value* found = findMember(root, key);
    return found != nullptr ? found->asBool() : fallback;
}

// root.get(key, fallback).asString()
inline std::string stringMember(const Json::Value& root, const char* key, const char* fallback) {
    const Json::Value* found = findMember(root, key);
    return found != nullptr ? found->asString() : std::string(fallback);
}

// The keys a record always writes, each holding null, built once. jsoncpp's member access
// allocates a missing key twice and releases one copy, then searches the object for every
// write; copying the shape allocates each key once, and one walk over the copy finds every
// member. ShapedObject writes through the shape when it may, the member access otherwise.
//
// The copies own their keys (nothing in a caller's value points into the library), and the
// shape is only ever read after it is built, so any number of threads may copy it at once.
class ObjectShape {
public:
    static constexpr std::size_t kMaxKeys = 16;

    // The keys in the order the record writes them.
    ObjectShape(std::initializer_list<const char*> keys) : shape_(Json::objectValue) {
        for (const char* key : keys) {
            if (count_ < kMaxKeys) {
                lengths_[count_] = std::strlen(key);
                keys_[count_++] = key;
                shape_[key] = Json::Value();
            }
        }
        computeRanks();
    }

    // A key whose value is itself shaped, for members written by a record that cannot shape
    // itself. The key must be one of those given to the constructor.
    ObjectShape& nest(const char* key, const ObjectShape& inner) {
        shape_[key] = inner.shape_;
        computeRanks();
        return *this;
    }

    std::size_t size() const { return count_; }
    const char* key(std::size_t i) const { return keys_[i]; }
    std::size_t length(std::size_t i) const { return lengths_[i]; }
    std::size_t rank(std::size_t i) const { return rank_[i]; }
    // The index of the key that comes j-th in the order jsoncpp keeps members in.
    std::size_t inOrder(std::size_t j) const { return inOrder_[j]; }
    const Json::Value& value() const { return shape_; }

private:
    // Where each key stands among the object's members, which jsoncpp keeps sorted.
    void computeRanks() {
        std::size_t sorted = 0;
        std::size_t listed = 0;
        for (auto it = shape_.begin(); it != shape_.end(); ++it, ++sorted) {
            for (std::size_t i = 0; i < count_; ++i) {
                if (it.name() == keys_[i]) {
                    rank_[i] = sorted;
                    inOrder_[listed++] = i;
                }
            }
        }
    }

    Json::Value shape_;
    const char* keys_[kMaxKeys] = {};
    std::size_t lengths_[kMaxKeys] = {};
    std::size_t rank_[kMaxKeys] = {};
    std::size_t inOrder_[kMaxKeys] = {};
    std::size_t count_ = 0;
};

// Writes one record's members into root. A null root or an empty object becomes a copy of the
// record's shape and the writes go straight to its members; any other root, or a key the shape
// lacks, goes through the member access, so members root already holds stay as they are. Either way
// root ends as the member access alone would leave it. The members of a std::map never move, so the
// pointers to them stay good while other members are added.
class ShapedObject {
public:
    ShapedObject(Json::Value& root, const ObjectShape& shape) : root_(root), shape_(shape) {
        if (shape.value().size() > ObjectShape::kMaxKeys) {
            return;
        }
        if (root.isNull()) {
            // As the member access turns a null value into an object: the whole value is
            // replaced.
            root = shape.value();
        } else if (root.isObject() && root.empty()) {
            // An empty object keeps what it carries besides its members, as it would when
            // the member access added them.
            Json::Value copy(shape.value());
            root.swapPayload(copy);
        } else {
            return;
        }
        Json::Value* sorted[ObjectShape::kMaxKeys] = {};
        std::size_t n = 0;
        for (auto it = root.begin(); it != root.end() && n < ObjectShape::kMaxKeys; ++it) {
            sorted[n++] = &*it;
        }
        for (std::size_t i = 0; i < shape.size(); ++i) {
            slots_[i] = sorted[shape.rank(i)];
        }
        shaped_ = true;
    }

    // The writes are expected in the shape's order, so the search starts after the last key
    // written; a member set some other way in between (a member record writing its own key
    // into root) is simply passed over.
    Json::Value& operator[](const char* key) {
        if (shaped_) {
            for (std::size_t i = next_; i < shape_.size(); ++i) {
                if (std::strcmp(shape_.key(i), key) == 0) {
                    next_ = i + 1;
                    return *slots_[i];
                }
            }
        }
        return root_[key];
    }

private:
    Json::Value& root_;
    const ObjectShape& shape_;
    Json::Value* slots_[ObjectShape::kMaxKeys] = {};
    std::size_t next_ = 0;
    bool shaped_ = false;
};

// Finds one record's members in root. An object is walked once beside the shape's keys, both
// in the order jsoncpp keeps members in, so every read takes its member without a search of
// its own. Any other value, or a key the shape lacks, is looked up as before: by Value::find
// as get does (null has no members, anything else but an object raises Json::LogicError), or
// by the member access, which adds a missing member as null.
class ShapedReader {
public:
    ShapedReader(Json::Value& root, const ObjectShape& shape) : root_(root), shape_(shape) {
        if (!root.isObject()) {
            return;
        }
        std::size_t j = 0;
        const auto last = root.end();
        for (auto it = root.begin(); it != last && j < shape.size(); ++it) {
            const char* end = nullptr;
            const char* name = it.memberName(&end);
            const auto length = static_cast<std::size_t>(end - name);
            int order = -1;
            while (j < shape.size() && (order = compare(shape.inOrder(j), name, length)) < 0) {
                ++j;
            }
            if (order == 0) {
                found_[shape.inOrder(j)] = &*it;
                ++j;
            }
        }
        walked_ = true;
    }

    // As root.find(key); the reads are expected in the shape's order.
    const Json::Value* find(const char* key) {
        std::size_t i = 0;
        if (walked_ && inShape(key, i)) {
            return found_[i];
        }
        return findMember(root_, key);
    }

    // As root[key], the member access that adds a missing member as null.
    Json::Value& member(const char* key) {
        std::size_t i = 0;
        if (walked_ && inShape(key, i) && found_[i] != nullptr) {
            return *found_[i];
        }
        return root_[key];
    }

private:
    bool inShape(const char* key, std::size_t& index) {
        for (std::size_t i = next_; i < shape_.size(); ++i) {
            if (std::strcmp(shape_.key(i), key) == 0) {
                next_ = i + 1;
                index = i;
                return true;
            }
        }
        return false;
    }

    // Orders the shape's key i against a member name as jsoncpp orders keys: by their bytes
    // over the shorter length, then the shorter first.
    int compare(std::size_t i, const char* name, std::size_t length) const {
        const std::size_t keyLength = shape_.length(i);
        const int order = std::memcmp(shape_.key(i), name, keyLength < length ? keyLength : length);
        if (order != 0) {
            return order;
        }
        return keyLength < length ? -1 : keyLength > length ? 1 : 0;
    }

    Json::Value& root_;
    const ObjectShape& shape_;
    Json::Value* found_[ObjectShape::kMaxKeys] = {};
    std::size_t next_ = 0;
    bool walked_ = false;
};

// Lists. Writing follows one rule for every list: element i serializes into element i of the
// array already there, elements beyond the list's length stay, and members of an existing
// element that the record does not write stay. Reading reaches each element by index through
// the member access, so a scalar reads as an empty list and an object with members throws.

template <typename List>
void writeElements(const List& list, Json::Value& array) {
    Json::ArrayIndex i = 0;
    for (const auto& element : list) {
        element.Serialize(array[i++]);
    }
}

// An empty list writes no member: readers take a missing list as an empty one.
template <typename List>
void writeListMember(const List& list, Json::Value& root, const char* key) {
    if (!list.empty()) {
        writeElements(list, root[key]);
    }
}

// Hands each element, read into a copy of blank, to add, in the array's order.
template <typename Record, typename Add>
void readEach(Json::Value& array, const Record& blank, Add add) {
    for (Json::ArrayIndex i = 0; i < array.size(); ++i) {
        Record record(blank);
        record.Deserialize(array[i]);
        add(std::move(record));
    }
}

// The list grows by what the array holds: reading the same array twice holds it twice.
template <typename List>
void appendList(Json::Value& array, List& list) {
    using Record = typename List::value_type;
    readEach(array, Record(), [&list](Record&& record) { list.push_back(std::move(record)); });
}

// The list becomes what the array holds.
template <typename List>
void replaceList(Json::Value& array, List& list) {
    list.clear();
    appendList(array, list);
}

// The same conversions as above, reading through a shaped reader.
inline std::string stringMember(ShapedReader& in, const char* key, const char* fallback) {
    const Json::Value* found = in.find(key);
    return found != nullptr ? found->asString() : std::string(fallback);
}

inline int intMember(ShapedReader& in, const char* key, int fallback) {
    const Json::Value* found = in.find(key);
    return found != nullptr ? found->asInt() : fallback;
}

inline unsigned uintMember(ShapedReader& in, const char* key, unsigned fallback) {
    const Json::Value* found = in.find(key);
    return found != nullptr ? found->asUInt() : fallback;
}

inline Json::UInt64 uint64Member(ShapedReader& in, const char* key, Json::UInt64 fallback) {
    const Json::Value* found = in.find(key);
    return found != nullptr ? found->asUInt64() : fallback;
}

inline bool boolMember(ShapedReader& in, const char* key, bool fallback) {
    const Json::Value* found = in.find(key);
    return found != nullptr ? found->asBool() : fallback;
}

}  // namespace zelct
