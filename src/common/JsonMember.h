#pragma once

// The one way every record reads and writes its members. A record lists its keys once, in a
// Key struct: an enum naming each key's place and, beside it, the keys in the order it writes
// them (see shapeOf). A Writer and a Reader over shapeOf<Key>() take its members by those
// names. Values, results and exceptions are exactly those of the plain member access,
// Value::get and the conversions: the shape only saves allocations and searches, and every
// step that cannot use it falls back to them.

#include <json/json.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace zelcommon {

inline const Json::Value* findMember(const Json::Value& root, const char* key) {
    return root.find(key, key + std::strlen(key));
}

// A record's keys, and the object a fresh target starts from: the keys it always writes,
// each holding null, built once. Copying it allocates each key once, where the member access
// allocates a missing key twice and searches the object on every write. A list of another
// number of keys than the record names does not compile. Only ever read after it is built, so
// any number of threads may copy it at once.
template <std::size_t N>
class Shape {
public:
    // sometimes: the places of the keys written only at times, left out of the starting object.
    template <std::size_t M, typename Sometimes = std::initializer_list<std::size_t>>
    explicit Shape(const char* const (&keys)[M], const Sometimes& sometimes = {}) {
        static_assert(M == N, "a shape lists exactly one key for each name of the record");
        build(keys, std::begin(sometimes), std::end(sometimes));
    }

    template <std::size_t M>
    explicit Shape(const std::array<const char*, M>& keys) {
        static_assert(M == N, "a shape lists exactly one key for each name of the record");
        const std::size_t* none = nullptr;
        build(keys.data(), none, none);
    }

    const char* key(std::size_t i) const { return keys_[i]; }
    std::size_t length(std::size_t i) const { return lengths_[i]; }
    // The index of the key that comes j-th when jsoncpp walks all the keys.
    std::size_t walkOrder(std::size_t j) const { return walkOrder_[j]; }
    bool walkable() const { return walkOrder_.size() == N; }
    // For the j-th member of the starting object, the index of its key.
    const std::vector<std::size_t>& startOrder() const { return startOrder_; }
    const Json::Value& start() const { return start_; }

private:
    void build(const char* const* keys, const std::size_t* sometimes, const std::size_t* end) {
        Json::Value all(Json::objectValue);
        for (std::size_t i = 0; i < N; ++i) {
            keys_[i] = keys[i];
            lengths_[i] = std::strlen(keys[i]);
            all[keys[i]] = Json::Value();
            if (std::find(sometimes, end, i) == end) {
                start_[keys[i]] = Json::Value();
            }
        }
        walkOrder_ = orderOf(all);
        startOrder_ = orderOf(start_);
    }

    // Learnt from jsoncpp's own walk rather than assumed.
    std::vector<std::size_t> orderOf(const Json::Value& object) const {
        std::vector<std::size_t> order;
        for (auto it = object.begin(); it != object.end(); ++it) {
            std::size_t i = 0;
            while (i < N && it.name() != keys_[i]) {
                ++i;
            }
            order.push_back(i);
        }
        return order;
    }

    Json::Value start_{Json::objectValue};
    std::array<const char*, N> keys_{};
    std::array<std::size_t, N> lengths_{};
    std::vector<std::size_t> walkOrder_;
    std::vector<std::size_t> startOrder_;
};

template <typename Key, typename = void>
struct ListsKeysWrittenAtTimes : std::false_type {};
template <typename Key>
struct ListsKeysWrittenAtTimes<Key, std::void_t<decltype(Key::writtenAtTimes)>> : std::true_type {};

// The shape of one record's keys, built on first use. Key is the record's list of keys: an
// enum naming each key's place, ending in count; the keys in that order, as names; and, where
// some are written only at times, their places, as writtenAtTimes.
template <typename Key>
const Shape<Key::count>& shapeOf() {
    static const Shape<Key::count> shape = [] {
        if constexpr (ListsKeysWrittenAtTimes<Key>::value) {
            return Shape<Key::count>(Key::names, Key::writtenAtTimes);
        } else {
            return Shape<Key::count>(Key::names);
        }
    }();
    return shape;
}

// The keys of a table of members, each row naming its key, in the table's order, then the
// keys the record writes after the table's.
template <typename Row, std::size_t N, typename... Last>
constexpr std::array<const char*, N + sizeof...(Last)> keysOfRows(const Row (&rows)[N],
                                                                  Last... last) {
    std::array<const char*, N + sizeof...(Last)> keys{};
    for (std::size_t i = 0; i < N; ++i) {
        keys[i] = rows[i].key;
    }
    const char* const after[] = {last..., nullptr};
    for (std::size_t i = 0; i < sizeof...(Last); ++i) {
        keys[N + i] = after[i];
    }
    return keys;
}

// Writes one record's members into root. A null root or an empty object becomes a copy of the
// shape's starting object and the writes go straight to its members; any other root goes
// through the member access, so members root already holds stay as they are. Either way root
// ends as the member access alone would leave it. The members of a std::map never move, so
// the pointers to them stay good while other members are added.
template <std::size_t N>
class Writer {
public:
    Writer(Json::Value& root, const Shape<N>& shape) : root_(root), shape_(shape) {
        if (root.isNull()) {
            // As the member access turns a null value into an object: the whole value goes.
            root = shape.start();
        } else if (root.isObject() && root.empty()) {
            // An empty object keeps what it carries besides its members (its comments), as it
            // would when the member access added them.
            Json::Value copy(shape.start());
            root.swapPayload(copy);
        } else {
            return;
        }
        // The copy is walked as the shape's start was; a member whose name is not the one
        // learnt leaves its key to the member access.
        std::size_t j = 0;
        for (auto it = root.begin(); it != root.end() && j < shape.startOrder().size(); ++it) {
            const std::size_t i = shape.startOrder()[j++];
            if (i < N && named(it, i)) {
                slots_[i] = &*it;
            }
        }
    }

    Json::Value& operator[](std::size_t key) {
        Json::Value* slot = slots_[key];
        return slot != nullptr ? *slot : root_[shape_.key(key)];
    }

private:
    bool named(const Json::Value::iterator& it, std::size_t i) const {
        const char* end = nullptr;
        const char* name = it.memberName(&end);
        return static_cast<std::size_t>(end - name) == shape_.length(i) &&
               std::memcmp(name, shape_.key(i), shape_.length(i)) == 0;
    }

    Json::Value& root_;
    const Shape<N>& shape_;
    std::array<Json::Value*, N> slots_{};
};

// Finds one record's members in root. An object is walked once beside the shape's keys, both
// taken in the order jsoncpp walks members, so most reads take their member without a search
// of their own. The walk only ever finds members; whenever it has found nothing for a key,
// the key is looked up as the plain reads do: by Value::find as get does (null has no members,
// anything else but an object raises Json::LogicError), or by the member access, which adds a
// missing member as null. So a jsoncpp that ordered members otherwise would cost searches,
// never a member.
template <std::size_t N>
class Reader {
public:
    Reader(Json::Value& root, const Shape<N>& shape) : root_(root), shape_(shape) {
        if (!root.isObject() || !shape.walkable()) {
            return;
        }
        std::size_t j = 0;
        const auto last = root.end();
        for (auto it = root.begin(); it != last && j < N; ++it) {
            const char* end = nullptr;
            const char* name = it.memberName(&end);
            const auto length = static_cast<std::size_t>(end - name);
            int order = -1;
            while (j < N && (order = compare(shape.walkOrder(j), name, length)) < 0) {
                ++j;
            }
            if (order == 0) {
                found_[shape.walkOrder(j++)] = &*it;
            }
        }
    }

    // As root.find(key).
    const Json::Value* find(std::size_t key) {
        Json::Value* found = found_[key];
        return found != nullptr ? found : findMember(root_, shape_.key(key));
    }

    // As root[key], the member access that adds a missing member as null.
    Json::Value& member(std::size_t key) {
        Json::Value* found = found_[key];
        return found != nullptr ? *found : root_[shape_.key(key)];
    }

    bool has(std::size_t key) { return find(key) != nullptr; }

    // root.get(key, fallback).asString(), and the same for the other conversions: the
    // fallback is what get's default value converts to.
    std::string text(std::size_t key, const char* fallback) {
        const Json::Value* found = find(key);
        return found != nullptr ? found->asString() : std::string(fallback);
    }
    int integer(std::size_t key, int fallback) { return read(key, fallback, &Json::Value::asInt); }
    unsigned uinteger(std::size_t key, unsigned fallback) {
        return read(key, fallback, &Json::Value::asUInt);
    }
    Json::UInt64 uinteger64(std::size_t key, Json::UInt64 fallback) {
        return read(key, fallback, &Json::Value::asUInt64);
    }
    bool flag(std::size_t key, bool fallback) { return read(key, fallback, &Json::Value::asBool); }
    double real(std::size_t key, double fallback) {
        return read(key, fallback, &Json::Value::asDouble);
    }

private:
    template <typename T>
    T read(std::size_t key, T fallback, T (Json::Value::*convert)() const) {
        const Json::Value* found = find(key);
        return found != nullptr ? (found->*convert)() : fallback;
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
};

// A row of a table of the texts an enum's values are written as.
template <typename Enum>
struct Named {
    Enum value;
    const char* text;
};

// What a record writes into an object of its own, for a member that is set whole.
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

// An empty list writes no member: readers take a missing list as an empty one. object is a
// Json::Value or a Writer, key its kind of key.
template <typename List, typename Object, typename Key>
void writeListMember(const List& list, Object& object, Key key) {
    if (!list.empty()) {
        writeElements(list, object[key]);
    }
}

// The element at index i, as array[i]. An array is walked alongside the indexes rather than
// searched for each one. An index the walk does not hold (an array with gaps) goes to the
// member access, which adds it as null, and so do all after it: the walk is not trusted past
// an insertion.
class ElementWalk {
public:
    explicit ElementWalk(Json::Value& array) : array_(array), walk_(array.isArray()) {
        if (walk_) {
            next_ = array.begin();
            last_ = array.end();
        }
    }

    Json::Value& at(Json::ArrayIndex i) {
        if (walk_ && next_ != last_ && next_.index() == i) {
            return *next_++;
        }
        walk_ = false;
        return array_[i];
    }

private:
    Json::Value& array_;
    bool walk_;
    Json::Value::iterator next_;
    Json::Value::iterator last_;
};

// Hands each element, read into a copy of blank, to add, in the array's order.
template <typename Record, typename Add>
void readEach(Json::Value& array, const Record& blank, Add add) {
    ElementWalk elements(array);
    for (Json::ArrayIndex i = 0; i < array.size(); ++i) {
        Record record(blank);
        record.Deserialize(elements.at(i));
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

}  // namespace zelcommon
