// zelct explain: where each value the device holds comes from, on documents written here.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "Explain.h"
#include "Kinds.h"
#include "Log.h"
#include "TempDir.h"
#include "Understood.h"

using namespace zelct;

namespace {

// A file of the test's own, understood as the kind with every finding.
struct Explained {
    UnderstoodFile file;
    std::vector<ExplainedMember> members;
};

Explained explainText(const char* kind, const std::string& text) {
    TempDir dir;
    const std::string path = dir.file("document.json");
    std::ofstream(path) << text;
    Explained explained;
    LogRecorder quiet;
    explained.file = understandFile(*findKind(kind), path, true);
    EXPECT_NE(explained.file.outcome.status, Outcome::Status::Unusable)
        << explained.file.outcome.problem;
    explained.members = explainMembers(*findKind(kind), explained.file.loaded.document,
                                       explained.file.loaded.source.get(), explained.file.outcome);
    return explained;
}

const ExplainedMember& memberAt(const Explained& explained, const std::string& pointer) {
    for (const ExplainedMember& member : explained.members) {
        if (pointerText(member.path) == pointer) {
            return member;
        }
    }
    ADD_FAILURE() << "no member " << pointer;
    static const ExplainedMember none;
    return none;
}

std::vector<std::string> pointersOf(const std::vector<ExplainedMember>& members) {
    std::vector<std::string> pointers;
    for (const ExplainedMember& member : members) {
        pointers.push_back(pointerText(member.path));
    }
    return pointers;
}

// One channel of each origin: a value as written, a default, a value read otherwise, a member
// never read, a text naming no interface kind, and a name given twice.
const char* const kChannels =
    "[\n"
    "  {\"id\": 1, \"type\": \"madi\", \"position\": 0},\n"
    "  {\"id\": 2, \"type\": \"SDI\", \"position\": 300, \"label\": \"Mic 1\"},\n"
    "  {\"id\": 3, \"type\": \"Aes3\", \"id\": 4}\n"
    "]\n";

}  // namespace

TEST(ZelctExplain, AValueAsWrittenComesFromItsMembersPlace) {
    const Explained explained = explainText("channel-list", kChannels);
    const ExplainedMember& type = memberAt(explained, "/0/type");
    EXPECT_EQ(type.origin, Origin::File);
    EXPECT_EQ(type.value, Json::Value("madi"));
    EXPECT_EQ(type.line, 2);
    EXPECT_EQ(type.column, 13);
    EXPECT_TRUE(type.held());
    EXPECT_FALSE(differsFromFile(type));
}

TEST(ZelctExplain, ADefaultIsPlacedAtTheObjectItIsAddedTo) {
    const Explained explained = explainText("channel-list", kChannels);
    const ExplainedMember& position = memberAt(explained, "/2/position");
    EXPECT_EQ(position.origin, Origin::Default);
    EXPECT_EQ(position.value, Json::Value(2));
    EXPECT_EQ(position.line, 4);
    EXPECT_EQ(position.column, 3);
}

TEST(ZelctExplain, AChangedValueKeepsWhatTheFileSaid) {
    const Explained explained = explainText("channel-list", kChannels);
    const ExplainedMember& position = memberAt(explained, "/1/position");
    EXPECT_EQ(position.origin, Origin::Changed);
    EXPECT_EQ(position.value, Json::Value(44));
    EXPECT_EQ(position.from, Json::Value(300));
    EXPECT_EQ(position.line, 3);
    EXPECT_EQ(position.column, 28);
}

TEST(ZelctExplain, AMemberNeverReadIsListedAsNotHeld) {
    const Explained explained = explainText("channel-list", kChannels);
    const ExplainedMember& label = memberAt(explained, "/1/label");
    EXPECT_EQ(label.origin, Origin::Dropped);
    EXPECT_FALSE(label.held());
    EXPECT_TRUE(label.value.isNull());
    EXPECT_EQ(label.from, Json::Value("Mic 1"));
    EXPECT_EQ(label.line, 3);
    EXPECT_EQ(label.column, 45);
}

// "name" is never read: the class writes its own, so what the device holds is a default.
TEST(ZelctExplain, AValueWhoseMemberIsNeverReadIsTheClassesDefault) {
    const Explained explained =
        explainText("channel-table-entry", "{\"id\": 3, \"name\": \"Talkback\"}");
    const ExplainedMember& name = memberAt(explained, "/name");
    EXPECT_EQ(name.origin, Origin::Default);
    EXPECT_TRUE(name.unread);
    EXPECT_EQ(name.value, Json::Value(""));
    EXPECT_EQ(name.from, Json::Value("Talkback"));
    EXPECT_EQ(name.column, 11);
    EXPECT_EQ(
        std::count_if(explained.members.begin(), explained.members.end(),
                      [](const ExplainedMember& m) { return pointerText(m.path) == "/name"; }),
        1);
    EXPECT_NE(explanationText(explained.members, true)
                  .find("default, the file's \"Talkback\" at 1:11 is never read\n"),
              std::string::npos);
    EXPECT_FALSE(memberAt(explained, "/name-output").unread);
}

TEST(ZelctExplain, ATextNamingNoKindShowsWhatTheChannelKeeps) {
    const Explained explained = explainText("channel-list", kChannels);
    const ExplainedMember& type = memberAt(explained, "/1/type");
    EXPECT_EQ(type.origin, Origin::HiddenState);
    EXPECT_EQ(type.value, Json::Value("SDI"));
    EXPECT_EQ(type.kept, Json::Value(12));
    EXPECT_NE(type.hidden.find("auto (12)"), std::string::npos) << type.hidden;
    EXPECT_EQ(memberAt(explained, "/2/type").origin, Origin::File);
}

TEST(ZelctExplain, ANameGivenTwiceNotesTheIgnoredValue) {
    const Explained explained = explainText("channel-list", kChannels);
    const ExplainedMember& id = memberAt(explained, "/2/id");
    EXPECT_EQ(id.origin, Origin::File);
    EXPECT_EQ(id.value, Json::Value(4));
    EXPECT_EQ(id.column, 29);
    ASSERT_EQ(id.notes.size(), 1u);
    EXPECT_EQ(id.notes[0].type, Finding::Type::DuplicateMember);
    EXPECT_EQ(id.notes[0].column, 4);
    EXPECT_NE(id.notes[0].text.find("ignores this one, 3"), std::string::npos) << id.notes[0].text;
    EXPECT_TRUE(differsFromFile(id));
}

TEST(ZelctExplain, MembersComeInTheOrderTheDeviceWritesThem) {
    const Explained explained = explainText("channel-list", kChannels);
    EXPECT_EQ(
        pointersOf(explained.members),
        (std::vector<std::string>{"/0/id", "/0/position", "/0/type", "/1/id", "/1/label",
                                  "/1/position", "/1/type", "/2/id", "/2/position", "/2/type"}));
}

// The alarm set is written sorted by type: each alarm still comes from its own element.
TEST(ZelctExplain, AnElementOfASetComesFromTheElementItWasReadFrom) {
    const Explained explained =
        explainText("alarms",
                    "{\"alarms\": [\n"
                    "  {\"type\": 28, \"severity\": \"warning\", \"description\": \"reboot\"},\n"
                    "  {\"type\": 8, \"severity\": \"warning\", \"description\": \"link\"}\n"
                    "]}\n");
    const ExplainedMember& first = memberAt(explained, "/alarms/0/type");
    EXPECT_EQ(first.value, Json::Value(8));
    EXPECT_EQ(first.origin, Origin::File);
    EXPECT_EQ(first.line, 3);
    const ExplainedMember& second = memberAt(explained, "/alarms/1/description");
    EXPECT_EQ(second.value, Json::Value("reboot"));
    EXPECT_EQ(second.line, 2);
}

TEST(ZelctExplain, TheTextFormAlignsItsColumnsAndCompactKeepsOnlyWhatDiffers) {
    const Explained explained = explainText("channel-list", kChannels);
    const std::string text = explanationText(explained.members, false);
    EXPECT_NE(text.find("/0/id        = 1         from 2:4\n"), std::string::npos) << text;
    EXPECT_NE(text.find("/1/label     (not held)  dropped, the file has \"Mic 1\" at 3:45; never "
                        "read\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("\n    4:4: member given again later"), std::string::npos) << text;
    const std::string compact = explanationText(explained.members, true);
    EXPECT_EQ(compact.find("/0/id"), std::string::npos) << compact;
    EXPECT_NE(compact.find("/2/position  = 2         default, absent from the file (its object "
                           "at 4:3)\n"),
              std::string::npos)
        << compact;
}

TEST(ZelctExplain, TheJsonFormNamesEachOrigin) {
    const Explained explained = explainText("channel-list", kChannels);
    const Json::Value all = explanationJson(explained.members, false);
    ASSERT_EQ(all.size(), 10u);
    EXPECT_EQ(all[5]["pointer"], Json::Value("/1/position"));
    EXPECT_EQ(all[5]["origin"], Json::Value("changed"));
    EXPECT_EQ(all[5]["from"], Json::Value(300));
    EXPECT_EQ(all[5]["value"], Json::Value(44));
    EXPECT_FALSE(all[4].isMember("value"));
    EXPECT_EQ(all[6]["kept"], Json::Value(12));
    const Json::Value compact = explanationJson(explained.members, true);
    ASSERT_EQ(compact.size(), 5u);
    EXPECT_EQ(compact[3]["notes"][0]["finding"], Json::Value("duplicate-member"));
}

TEST(ZelctExplain, AnEmptyListIsTheKindsOwnEmptyShape) {
    const Explained explained = explainText("channel-list", "[]");
    ASSERT_EQ(explained.members.size(), 1u);
    EXPECT_TRUE(explained.members[0].path.empty());
    EXPECT_EQ(explained.members[0].value, Json::Value(Json::arrayValue));
    EXPECT_EQ(explained.members[0].origin, Origin::File);
    EXPECT_EQ(explanationText(explained.members, false).substr(0, 16), "(whole document)");
}

TEST(ZelctUnderstood, ElementsPairWithTheOnesTheyWereReadFrom) {
    Json::Value given(Json::arrayValue);
    given.append(3);
    given.append(1);
    given.append(2);
    Json::Value written(Json::arrayValue);
    written.append(1);
    written.append(2);
    written.append(5);
    const std::vector<const Json::Value*> sources = elementSources(given, written);
    ASSERT_EQ(sources.size(), 3u);
    EXPECT_EQ(sources[0], &given[1]);
    EXPECT_EQ(sources[1], &given[2]);
    EXPECT_EQ(sources[2], nullptr);  // its place is taken and nothing is alike: a new one
}

TEST(ZelctUnderstood, ASourceNodeStopsAtWhatHoldsItsPlace) {
    Json::Value given;
    given["a"]["b"] = 1;
    Json::Value written = given;
    written["a"]["c"] = 2;
    const SourceNode whole =
        sourceNode(given, written, {PathStep::member("a"), PathStep::member("b")});
    EXPECT_TRUE(whole.whole);
    EXPECT_TRUE(whole.member);
    EXPECT_EQ(whole.node, &given["a"]["b"]);
    const SourceNode holder =
        sourceNode(given, written, {PathStep::member("a"), PathStep::member("c")});
    EXPECT_FALSE(holder.whole);
    EXPECT_EQ(holder.node, &given["a"]);
}

TEST(ZelctUnderstood, PathsComeInWrittenOrder) {
    EXPECT_TRUE(writtenBefore({PathStep::element(2)}, {PathStep::element(10)}));
    EXPECT_FALSE(writtenBefore({PathStep::element(10)}, {PathStep::element(2)}));
    EXPECT_TRUE(
        writtenBefore({PathStep::member("a")}, {PathStep::member("a"), PathStep::member("b")}));
    EXPECT_TRUE(writtenBefore({PathStep::member("B")}, {PathStep::member("a")}));
    EXPECT_FALSE(writtenBefore({PathStep::member("a")}, {PathStep::member("a")}));
}

TEST(ZelctUnderstood, LongContainersAreShownByTheirSize) {
    Json::Value list(Json::arrayValue);
    for (int i = 0; i < 40; ++i) {
        list.append(i);
    }
    EXPECT_EQ(shownValue(list), "[...] (40 elements)");
    EXPECT_EQ(shownValue(Json::Value("x")), "\"x\"");
}
