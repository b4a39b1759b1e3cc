// Every record's header names the members whose wrong JSON type makes reading throw, on a line
// "Members that throw: ..." next to its exception contract. This suite feeds every member of
// every record's document each wrong type and compares the members that threw with that line,
// so a contract cannot drift from what the readers do.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "RecordKinds.h"
#include "zelCommonTypes.h"

namespace {

using zelct_test::Kind;
using zelct_test::kinds;
using zelct_test::Reader;

// null, bool, negative, 2^31, 2^64, 1e300, text, array, object.
std::vector<Json::Value> wrongValues() {
    Json::Value array(Json::arrayValue);
    array.append(1);
    Json::Value object(Json::objectValue);
    object["x"] = 1;
    return {Json::Value(),
            Json::Value(true),
            Json::Value(-1),
            Json::Value(Json::UInt64{1} << 31),
            Json::Value(std::ldexp(1.0, 64)),
            Json::Value(1e300),
            Json::Value("text"),
            array,
            object};
}

// Only jsoncpp's LogicError may leave a reader; anything else fails the test.
bool throws(const Reader& read, Json::Value document) {
    try {
        read(document);
    } catch (const Json::LogicError&) {
        return true;
    }
    return false;
}

// A member throws when some wrong value makes reading raise, either alone in an object or in
// place of the member in the record's own document (where other members decide what is read).
std::set<std::string> throwingMembers(const Kind& kind) {
    LogCapture quiet;  // the Ethernet reader logs every address it cannot parse
    std::set<std::string> members;
    for (const std::string& key : kind.document.getMemberNames()) {
        for (const Json::Value& wrong : wrongValues()) {
            Json::Value alone(Json::objectValue);
            alone[key] = wrong;
            Json::Value replaced(kind.document);
            replaced[key] = wrong;
            if (throws(kind.read, alone) || throws(kind.read, replaced)) {
                members.insert(key);
            }
        }
    }
    return members;
}

// The quoted names on the "Members that throw:" line of the comment above the class, which
// may run over several comment lines up to the one ending with a full stop.
std::set<std::string> contractOf(const Kind& kind, bool& found) {
    std::ifstream file(std::string(ZELCT_INCLUDE_DIR) + "/" + kind.header);
    std::vector<std::string> comment;
    std::string line;
    const std::string declaration = std::string("class ZELCOMMONTYPES_API ") + kind.name + " ";
    found = false;
    while (std::getline(file, line)) {
        if (line.rfind("//", 0) == 0) {
            comment.push_back(line);
            continue;
        }
        if (line.rfind(declaration, 0) == 0) {
            break;
        }
        comment.clear();
    }
    std::set<std::string> names;
    bool inList = false;
    for (const std::string& text : comment) {
        std::size_t from = 0;
        if (!inList) {
            from = text.find("Members that throw:");
            if (from == std::string::npos) {
                continue;
            }
            inList = true;
            found = true;
        }
        for (std::size_t open = text.find('"', from); open != std::string::npos;) {
            const std::size_t close = text.find('"', open + 1);
            names.insert(text.substr(open + 1, close - open - 1));
            open = text.find('"', close + 1);
        }
        if (!text.empty() && text.back() == '.') {
            break;
        }
    }
    return names;
}

std::string listed(const std::set<std::string>& names) {
    std::ostringstream out;
    for (const std::string& name : names) {
        out << '"' << name << "\" ";
    }
    return out.str();
}

}  // namespace

TEST(ExceptionContract, EveryHeaderNamesExactlyTheMembersThatThrow) {
    for (const Kind& kind : kinds()) {
        bool found = false;
        const std::set<std::string> contract = contractOf(kind, found);
        EXPECT_TRUE(found) << kind.header << " has no \"Members that throw:\" line for "
                           << kind.name;
        const std::set<std::string> measured = throwingMembers(kind);
        EXPECT_EQ(listed(contract), listed(measured)) << kind.name << " in " << kind.header;
    }
}

TEST(ExceptionContract, EveryKindHasMembersToFeed) {
    for (const Kind& kind : kinds()) {
        EXPECT_TRUE(kind.document.isObject()) << kind.name;
        EXPECT_FALSE(kind.document.getMemberNames().empty()) << kind.name;
    }
}

// The members named in issue reports of readers that threw while their contract was silent.
TEST(ExceptionContract, SystemTextMembersAndMadiLockThrowOnWrongTypes) {
    LogCapture quiet;
    for (const char* key : {"fw-version", "fw-date", "product", "bitstream", "chipid-name",
                            "chipid-version", "serial-number"}) {
        Json::Value document(Json::objectValue);
        document[key] = Json::Value(Json::arrayValue);
        document[key].append(1);
        SystemBasicInfo info;
        EXPECT_THROW(info.Deserialize(document), Json::LogicError) << key;
    }
    for (const char* madiLock : {R"("on")", "[1]", R"({"x":1})"}) {
        Json::Value document(Json::objectValue);
        std::istringstream(madiLock) >> document["madi-lock"];
        SystemBasicInfo info;
        EXPECT_THROW(info.Deserialize(document), Json::LogicError) << madiLock;
    }
}

TEST(ExceptionContract, EntryIdAndBlockedThrowOnWrongTypes) {
    for (const Json::Value& id : {Json::Value(Json::UInt64{1} << 31), Json::Value(1e300)}) {
        Json::Value document(Json::objectValue);
        document["id"] = id;
        ChannelTableEntry entry;
        EXPECT_THROW(entry.Deserialize(document), Json::LogicError) << id.toStyledString();
    }
    for (const char* key : {"id", "blocked"}) {
        Json::Value document(Json::objectValue);
        document[key] = "text";
        ChannelTableEntry entry;
        EXPECT_THROW(entry.Deserialize(document), Json::LogicError) << key;
    }
}
