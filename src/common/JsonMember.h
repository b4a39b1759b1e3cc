#pragma once

// The one way every record reads and writes its members. A record names each key once, as a
// constant; its Shape lists the keys it always writes, in the order it writes them; a Writer
// and a Reader take its members through that shape. Values, results and exceptions are
// exactly those of the plain member access, Value::get and the conversions: the shape only
// saves allocations and searches, and every step that could not use it falls back to them.

#include <json/json.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>

namespace zelct {

inline const Json::Value* findMember(const Json::Value& root, const char* key) {
    return root.find(key, key + std::strlen(key));
}

// A record's keys with null values, built once. Copying it allocates each key once, where
// the member access allocates a missing key twice and searches the object on every write.
// The size is the number of keys given, so a shape can never drop one. Only ever read after
// it is built, so any number of threads may copy it at once.
template <std::size_t N>
class Shape {
public:
    explicit Shape(const char* const (&keys)[N]) : value_(Json::objectValue) {
        for (std::size_t i = 0; i < N; ++i) {
            keys_[i] = keys[i];
            lengths_[i] = std::strlen(keys[i]);
            value_[keys[i]] = Json::Value();
        }
        computeOrder();
    }

    // A key holding an object that a member record writes into: inner is what the record
    // writes, so the shape takes the record's keys from the record itself.
    Shape& nest(const char* key, Json::Value inner) {
        if (value_.isMember(key)) {
            value_[key] = std::move(inner);
            computeOrder();
        }
        return *this;
    }

    static constexpr std::size_t size() { return N; }
    const char* key(std::size_t i) const { return keys_[i]; }
    std::size_t length(std::size_t i) const { return lengths_[i]; }
    // The index of the key that comes j-th when jsoncpp walks the shape's members.
    std::size_t inOrder(std::size_t j) const { return inOrder_[j]; }
    bool ordered() const { return ordered_; }
    const Json::Value& value() const { return value_; }

    // The index of key among the shape's, searched from start onwards and then from the
    // beginning, as records take their members mostly in the shape's order; N if it is not one.
    std::size_t indexOf(const char* key, std::size_t start) const {
        for (std::size_t k = 0; k < N; ++k) {
            const std::size_t i = (start + k) % N;
            if (std::strcmp(keys_[i], key) == 0) {
                return i;
            }
        }
        return N;
    }

private:
    // Learnt from jsoncpp's own walk of the shape rather than assumed; a shape whose walk does
    // not meet every key exactly once is never used to place members.
    void computeOrder() {
        std::size_t listed = 0;
        for (auto it = value_.begin(); it != value_.end(); ++it) {
            for (std::size_t i = 0; i < N && listed < N; ++i) {
                if (it.name() == keys_[i]) {
                    inOrder_[listed++] = i;
                }
            }
        }
        ordered_ = listed == N && value_.size() == N;
    }

    Json::Value value_;
    std::array<const char*, N> keys_{};
    std::array<std::size_t, N> lengths_{};
    std::array<std::size_t, N> inOrder_{};
    bool ordered_ = false;
};

// The shape of a table of members, each row naming its key, in the table's order.
template <typename Row, std::size_t N>
Shape<N> shapeOfRows(const Row (&rows)[N]) {
    const char* keys[N] = {};
    for (std::size_t i = 0; i < N; ++i) {
        keys[i] = rows[i].key;
    }
    return Shape<N>(keys);
}

// Writes one record's members into root. A null root or an empty object becomes a copy of the
// shape and the writes go straight to its members; any other root, or a key the shape lacks,
// goes through the member access, so members root already holds stay as they are. Either way
// root ends as the member access alone would leave it. The members of a std::map never move,
// so the pointers to them stay good while other members are added.
template <std::size_t N>
class Writer {
public:
    Writer(Json::Value& root, const Shape<N>& shape) : root_(root), shape_(shape) {
        if (!shape.ordered()) {
            return;
        }
        if (root.isNull()) {
            // As the member access turns a null value into an object: the whole value goes.
            root = shape.value();
        } else if (root.isObject() && root.empty()) {
            // An empty object keeps what it carries besides its members (its comments), as it
            // would when the member access added them.
            Json::Value copy(shape.value());
            root.swapPayload(copy);
        } else {
            return;
        }
        // The copy is walked as the shape was; each slot is checked against its key all the
        // same, and a mismatch leaves every write to the member access.
        std::size_t j = 0;
        for (auto it = root.begin(); it != root.end(); ++it, ++j) {
            const std::size_t i = shape.inOrder(j);
            const char* end = nullptr;
            const char* name = it.memberName(&end);
            if (static_cast<std::size_t>(end - name) != shape.length(i) ||
                std::memcmp(name, shape.key(i), shape.length(i)) != 0) {
                return;
            }
            slots_[i] = &*it;
        }
        shaped_ = true;
    }

    // Any key may be written; a member set some other way in between (a member record
    // writing its own keys into root) is simply passed over.
    Json::Value& operator[](const char* key) {
        if (shaped_) {
            const std::size_t i = shape_.indexOf(key, next_);
            if (i < N) {
                next_ = i + 1;
                return *slots_[i];
            }
        }
        return root_[key];
    }

private:
    Json::Value& root_;
    const Shape<N>& shape_;
    std::array<Json::Value*, N> slots_{};
    std::size_t next_ = 0;
    bool shaped_ = false;
};

// Finds one record's members in root. An object is walked once beside the shape's keys, both
// taken in the order jsoncpp walks members, so most reads take their member without a search
// of their own. The walk only ever finds members; whenever it has found nothing for a key,
// the key is looked up as the plain reads do: by Value::find as get does (null has no members,
// anything else but an object raises Json::LogicError), or by the member access, which adds a
// missing member as null. So a jsoncpp that ordered members otherwise would cost searches, never
// a member.
template <std::size_t N>
class Reader {
public:
    Reader(Json::Value& root, const Shape<N>& shape) : root_(root), shape_(shape) {
        if (!root.isObject() || !shape.ordered()) {
            return;
        }
        std::size_t j = 0;
        const auto last = root.end();
        for (auto it = root.begin(); it != last && j < N; ++it) {
            const char* end = nullptr;
            const char* name = it.memberName(&end);
            const auto length = static_cast<std::size_t>(end - name);
            int order = -1;
            while (j < N && (order = compare(shape.inOrder(j), name, length)) < 0) {
                ++j;
            }
            if (order == 0) {
                found_[shape.inOrder(j)] = &*it;
                ++j;
            }
        }
    }

    // As root.find(key).
    const Json::Value* find(const char* key) {
        Json::Value* found = walked(key);
        return found != nullptr ? found : findMember(root_, key);
    }

    // As root[key], the member access that adds a missing member as null.
    Json::Value& member(const char* key) {
        Json::Value* found = walked(key);
        return found != nullptr ? *found : root_[key];
    }

    bool has(const char* key) { return find(key) != nullptr; }

    // root.get(key, fallback).asString(), and the same for the other conversions: the
    // fallback is what get's default value converts to.
    std::string text(const char* key, const char* fallback) {
        const Json::Value* found = find(key);
        return found != nullptr ? found->asString() : std::string(fallback);
    }
    int integer(const char* key, int fallback) {
        const Json::Value* found = find(key);
        return found != nullptr ? found->asInt() : fallback;
    }
    unsigned uinteger(const char* key, unsigned fallback) {
        const Json::Value* found = find(key);
        return found != nullptr ? found->asUInt() : fallback;
    }
    Json::UInt64 uinteger64(const char* key, Json::UInt64 fallback) {
        const Json::Value* found = find(key);
        return found != nullptr ? found->asUInt64() : fallback;
    }
    bool flag(const char* key, bool fallback) {
        const Json::Value* found = find(key);
        return found != nullptr ? found->asBool() : fallback;
    }
    double real(const char* key, double fallback) {
        const Json::Value* found = find(key);
        return found != nullptr ? found->asDouble() : fallback;
    }

private:
    Json::Value* walked(const char* key) {
        const std::size_t i = shape_.indexOf(key, next_);
        if (i == N) {
            return nullptr;
        }
        next_ = i + 1;
        return found_[i];
    }

    // Orders the shape's key i against a member name as jsoncpp orders keys: by their bytes
    // over the shorter length, then the shorter first. A guess only: see the class comment.
    int compare(std::size_t i, const char* name, std::size_t length) const {
        const std::size_t keyLength = shape_.length(i);
        const int order = std::memcmp(shape_.key(i), name, keyLength < length ? keyLength : length);
        if (order != 0) {
            return order;
        }
        return keyLength < length ? -1 : keyLength > length ? 1 : 0;
    }

    Json::Value& root_;
    const Shape<N>& shape_;
    std::array<Json::Value*, N> found_{};
    std::size_t next_ = 0;
};

// What a record writes into an object of its own: a nested member, or a child's keys for a
// parent's shape.
template <typename Record>
Json::Value written(const Record& record) {
    Json::Value object(Json::objectValue);
    record.Serialize(object);
    return object;
}

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

}  // namespace zelct
