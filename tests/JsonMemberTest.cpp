// The member helpers every record reads and writes through: no key is ever dropped, and
// members are found whatever order the document's keys fall in.

#include "../src/common/JsonMember.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "RecordKinds.h"

namespace {

// A shape lists exactly one key for each name of its record: a list of another length does
// not compile.
static_assert(std::is_constructible<zelcommon::Shape<3>, const char* const (&)[3]>::value,
              "a shape takes as many keys as its record names");
static_assert(!std::is_convertible<const char* const (&)[3], zelcommon::Shape<3>>::value,
              "a shape is built from its keys on purpose only");

constexpr const char* kManyKeys[] = {"k00", "k01", "k02", "k03", "k04", "k05", "k06",
                                     "k07", "k08", "k09", "k10", "k11", "k12", "k13",
                                     "k14", "k15", "k16", "k17", "k18", "k19"};

// Keys that a walk in a guessed order could confuse: one a prefix of another, bytes above
// 0x7F, the empty key, keys differing only in length.
constexpr const char* kAwkwardKeys[] = {"",         "a",    "ab",       "abc", "a\x7f", "a\x80",
                                        "\xc3\xa9", "\xff", "\xff\xff", "b",   "ba"};

// A record's list of keys, with one key written only at times.
struct TestKey {
    enum : std::size_t { always, sometimes, also, count };
    static constexpr const char* names[] = {"always", "sometimes", "also"};
    static constexpr std::size_t writtenAtTimes[] = {TestKey::sometimes};
};

// An element of a list: the number it was read from, -1 for anything else.
struct Number {
    int value = -2;
    void Deserialize(Json::Value& root) { value = root.isInt() ? root.asInt() : -1; }
};

std::vector<int> readNumbers(Json::Value& array) {
    std::vector<int> numbers;
    zelcommon::readEach(array, Number(), [&numbers](Number&& n) { numbers.push_back(n.value); });
    return numbers;
}

}  // namespace

TEST(JsonMember, AShapeOfTwentyKeysWritesEveryOne) {
    const zelcommon::Shape<20> shape(kManyKeys);
    Json::Value root;
    zelcommon::Writer out(root, shape);
    for (std::size_t i = 0; i < 20; ++i) {
        out[i] = Json::Value(static_cast<int>(i));
    }
    ASSERT_EQ(root.size(), 20u);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(root[kManyKeys[i]], i) << kManyKeys[i];
    }
}

TEST(JsonMember, AReaderOfTwentyKeysFindsEveryOne) {
    const zelcommon::Shape<20> shape(kManyKeys);
    Json::Value root(Json::objectValue);
    for (int i = 0; i < 20; ++i) {
        root[kManyKeys[i]] = Json::Value(100 + i);
    }
    zelcommon::Reader in(root, shape);
    for (int i = 19; i >= 0; --i) {  // against the shape's order, too
        EXPECT_EQ(in.integer(static_cast<std::size_t>(i), -1), 100 + i) << kManyKeys[i];
    }
}

TEST(JsonMember, KeysWrittenOnlyAtTimesStayOutOfAFreshObject) {
    const zelcommon::Shape<3> shape({"always", "sometimes", "also"}, {1});
    Json::Value root;
    zelcommon::Writer out(root, shape);
    out[0] = 1;
    out[2] = 3;
    EXPECT_EQ(root.getMemberNames(), (std::vector<std::string>{"also", "always"}));
    out[1] = 2;
    EXPECT_EQ(root["sometimes"], 2);
}

TEST(JsonMember, AwkwardKeysAreWrittenAndFoundInAnyOrder) {
    const zelcommon::Shape<11> shape(kAwkwardKeys);
    ASSERT_TRUE(shape.walkable());
    Json::Value root;
    {
        zelcommon::Writer out(root, shape);
        for (std::size_t i = 0; i < 11; ++i) {
            out[i] = Json::Value(static_cast<int>(i));
        }
    }
    ASSERT_EQ(root.size(), 11u);
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(root[kAwkwardKeys[i]], i) << i;
    }
    // Only some of the keys present, among others that are not the shape's.
    Json::Value sparse(Json::objectValue);
    for (const char* other : {"aa", "a\x7e", "\xc3", "\xfe", "c", "abcd"}) {
        sparse[other] = "other";
    }
    sparse[""] = "empty";
    sparse["ab"] = 2;
    sparse["\xff\xff"] = 8;
    sparse["ba"] = 10;
    zelcommon::Reader in(sparse, shape);
    EXPECT_EQ(in.integer(10, -1), 10);  // "ba"
    EXPECT_EQ(in.integer(2, -1), 2);    // "ab"
    EXPECT_EQ(in.integer(3, -1), -1);   // "abc"
    EXPECT_EQ(in.integer(8, -1), 8);    // "\xff\xff"
    EXPECT_EQ(in.integer(7, -1), -1);   // "\xff"
    EXPECT_EQ(in.text(0, "none"), "empty");
    EXPECT_EQ(in.integer(1, -1), -1);  // "a"
}

TEST(JsonMember, ReaderAddsAMissingMemberAsNullLikeTheMemberAccess) {
    const zelcommon::Shape<3> shape({"inner", "count", "other"});
    Json::Value root(Json::objectValue);
    root["count"] = 3;
    zelcommon::Reader in(root, shape);
    EXPECT_TRUE(in.member(0).isNull());
    EXPECT_TRUE(root.isMember("inner"));
    EXPECT_EQ(in.integer(1, 0), 3);
    EXPECT_FALSE(in.has(2));
    EXPECT_FALSE(root.isMember("other"));
}

TEST(JsonMember, WriterIntoAFilledObjectKeepsItsMembers) {
    const zelcommon::Shape<2> shape({"a", "b"});
    Json::Value root(Json::objectValue);
    root["z"] = "kept";
    root["a"] = "old";
    zelcommon::Writer out(root, shape);
    out[0] = 1;
    out[1] = 2;
    Json::Value expected(Json::objectValue);
    expected["z"] = "kept";
    expected["a"] = 1;
    expected["b"] = 2;
    EXPECT_EQ(root, expected);
}

// Every record reads its own document the same whatever keys surround its members: for each
// member, a key that is its prefix, one it is a prefix of, ones ending or starting in bytes
// above 0x7F, and the empty key, each holding a value no member could read.
TEST(JsonMember, EveryRecordReadsCorrectlyAmongKeysThatStressOrdering) {
    Json::Value poison(Json::arrayValue);
    poison.append("not a member");
    for (const zelct_test::Kind& kind : zelct_test::kinds()) {
        LogCapture quiet;
        Json::Value plain(kind.document);
        const Json::Value expected = kind.read(plain);
        Json::Value stressed(kind.document);
        stressed[""] = poison;
        for (const std::string& key : kind.document.getMemberNames()) {
            for (const std::string& near :
                 {key.substr(0, key.size() - 1), key + "-", key + "\x7f", key + "\x80",
                  key + "\xff", "\xc3\xa9" + key, std::string(key.size(), 'z')}) {
                if (!kind.document.isMember(near)) {
                    stressed[near] = poison;
                }
            }
        }
        EXPECT_EQ(kind.read(stressed).toStyledString(), expected.toStyledString()) << kind.name;
        EXPECT_EQ(expected.toStyledString(), kind.document.toStyledString()) << kind.name;
    }
}

TEST(JsonMember, AShapeOfAKeyListIsBuiltOnceFromItsNames) {
    const zelcommon::Shape<TestKey::count>& shape = zelcommon::shapeOf<TestKey>();
    EXPECT_EQ(&shape, &zelcommon::shapeOf<TestKey>());
    EXPECT_STREQ(shape.key(TestKey::also), "also");
    EXPECT_EQ(shape.start().getMemberNames(), (std::vector<std::string>{"also", "always"}));
}

TEST(JsonMember, ListElementsAreReadInIndexOrder) {
    Json::Value array(Json::arrayValue);
    for (int i = 0; i < 40; ++i) {
        array.append(i * 3);
    }
    std::vector<int> expected;
    for (int i = 0; i < 40; ++i) {
        expected.push_back(i * 3);
    }
    EXPECT_EQ(readNumbers(array), expected);
}

// An array with gaps reads each missing index as the member access does: it adds it as null.
TEST(JsonMember, AnArrayWithGapsReadsEachGapAsAnAddedNull) {
    Json::Value array(Json::arrayValue);
    array[1] = 7;
    array[4] = 9;
    EXPECT_EQ(readNumbers(array), (std::vector<int>{-1, 7, -1, -1, 9}));
    Json::Value filled(Json::arrayValue);
    for (const Json::Value& v :
         {Json::Value(), Json::Value(7), Json::Value(), Json::Value(), Json::Value(9)}) {
        filled.append(v);
    }
    EXPECT_EQ(array, filled);
}

TEST(JsonMember, AListReadFromANonArrayIsEmptyOrThrowsAsTheMemberAccess) {
    Json::Value null;
    EXPECT_TRUE(readNumbers(null).empty());
    Json::Value number(5);
    EXPECT_TRUE(readNumbers(number).empty());
    Json::Value object(Json::objectValue);
    object["a"] = 1;
    EXPECT_THROW(readNumbers(object), Json::LogicError);
}

// A gap after elements the walk has handed out: the elements before it come from the walk, the
// gap is added as null, and the elements after it are still read, each at its own index.
TEST(JsonMember, AGapInsideAnArrayReadsAsAnAddedNullBetweenItsNeighbours) {
    Json::Value array(Json::arrayValue);
    array[0] = 1;
    array[1] = 2;
    array[3] = 4;
    array[4] = 5;
    EXPECT_EQ(readNumbers(array), (std::vector<int>{1, 2, -1, 4, 5}));
    EXPECT_EQ(array.size(), 5u);
    EXPECT_TRUE(array[2].isNull());
    EXPECT_EQ(array[3].asInt(), 4);
}
