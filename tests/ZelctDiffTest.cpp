// zelct diff: what changes on the device between two documents, compared as the device holds
// them.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "Diff.h"
#include "Kinds.h"
#include "Log.h"
#include "TempDir.h"
#include "Understood.h"

using namespace zelct;

namespace {

// What the device holds from a text of the kind, as diff compares it.
struct Held {
    UnderstoodFile file;
    Json::Value held;
};

Held heldFrom(const TempDir& dir, const char* kind, const std::string& name,
              const std::string& text) {
    const std::string path = dir.file(name);
    std::ofstream(path) << text;
    Held held;
    LogRecorder quiet;
    held.file = understandFile(*findKind(kind), path, false);
    EXPECT_NE(held.file.outcome.status, Outcome::Status::Unusable) << held.file.outcome.problem;
    held.held = heldDocument(*findKind(kind), held.file.outcome);
    return held;
}

std::vector<Change> changesBetween(const char* kind, const std::string& before,
                                   const std::string& after) {
    TempDir dir;
    const Held old = heldFrom(dir, kind, "old.json", before);
    const Held now = heldFrom(dir, kind, "new.json", after);
    std::vector<Change> changes = heldChanges(*findKind(kind), old.held, now.held);
    placeChanges(changes, now.file.loaded.document, now.held, now.file.loaded.source.get());
    return changes;
}

std::vector<std::string> textsOf(const std::vector<Change>& changes) {
    std::vector<std::string> texts;
    for (const Change& change : changes) {
        texts.push_back(changeText(change));
    }
    return texts;
}

const char* const kSession =
    "[{\"session\": 1001, \"stream\": 1, \"name\": \"Studio A\", \"type\": \"audio\", "
    "\"state\": \"enabled\"}]";

const char* const kChannels =
    "[\n"
    "  {\"id\": 1, \"type\": \"madi\", \"position\": 0},\n"
    "  {\"id\": 2, \"type\": \"SDI\", \"position\": 1}\n"
    "]\n";

}  // namespace

TEST(ZelctDiff, ReorderedAndReformattedMembersChangeNothing) {
    EXPECT_TRUE(changesBetween("channel-list", kChannels,
                               "[{\"position\":0,\"id\":1,\"type\":\"madi\"},"
                               "{\"type\":\"SDI\",\"position\":1,\"id\":2}]")
                    .empty());
}

TEST(ZelctDiff, AMemberNeverReadChangesNothing) {
    EXPECT_TRUE(changesBetween("channel-list", kChannels,
                               "[{\"id\": 1, \"type\": \"madi\", \"position\": 0, \"note\": 1},\n"
                               " {\"id\": 2, \"type\": \"SDI\", \"position\": 1, \"note\": 2}]")
                    .empty());
}

TEST(ZelctDiff, AStateReadOtherwiseIsAChangeOfWhatTheDeviceHolds) {
    std::string enabled = kSession;
    enabled.replace(enabled.find("\"enabled\""), 9, "\"Enabled\"");
    const std::vector<Change> changes = changesBetween("session-streams", kSession, enabled);
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0].type, Change::Type::Changed);
    EXPECT_EQ(pointerText(changes[0].path), "/0/state");
    EXPECT_EQ(changes[0].before, Json::Value("Disabled"));
    EXPECT_EQ(changes[0].after, Json::Value("Enabled"));
    EXPECT_EQ(changes[0].line, 1);
    EXPECT_EQ(changes[0].column, 70);
    // "enabled" and "ENABLED" are both no state the device knows: the same Disabled.
    std::string upper = kSession;
    upper.replace(upper.find("\"enabled\""), 9, "\"ENABLED\"");
    EXPECT_TRUE(changesBetween("session-streams", kSession, upper).empty());
}

TEST(ZelctDiff, TextsThatNameTheSameInterfaceKindAreTheSame) {
    std::string other = kChannels;
    other.replace(other.find("\"madi\""), 6, "\"AES10\"");  // read as madi too
    other.replace(other.find("\"SDI\""), 5, "\"hdmi\"");    // names no kind either: auto
    EXPECT_TRUE(changesBetween("channel-list", kChannels, other).empty());
    std::string named = kChannels;
    named.replace(named.find("\"SDI\""), 5, "\"sdi-video\"");
    const std::vector<Change> changes = changesBetween("channel-list", kChannels, named);
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0].beforeKept, Json::Value(12));
    EXPECT_EQ(changes[0].afterKept, Json::Value(5));
    EXPECT_EQ(changeText(changes[0]),
              "/1/type: \"SDI\" (kind auto, 12) -> \"sdi-video\" (kind sdi-video, 5)");
}

TEST(ZelctDiff, AnElementAddedOrRemovedIsOneChangePlacedInNew) {
    const std::string longer =
        "[\n"
        "  {\"id\": 1, \"type\": \"madi\", \"position\": 0},\n"
        "  {\"id\": 2, \"type\": \"SDI\", \"position\": 1},\n"
        "  {\"id\": 3, \"type\": \"tdm\"}\n"
        "]\n";
    const std::vector<Change> added = changesBetween("channel-list", kChannels, longer);
    EXPECT_EQ(textsOf(added), std::vector<std::string>{
                                  "/2: (absent) -> {\"id\":3,\"position\":2,\"type\":\"tdm\"}"});
    EXPECT_EQ(added[0].type, Change::Type::Added);
    EXPECT_EQ(added[0].line, 4);
    EXPECT_EQ(added[0].column, 3);
    const std::vector<Change> removed = changesBetween("channel-list", longer, kChannels);
    ASSERT_EQ(removed.size(), 1u);
    EXPECT_EQ(removed[0].type, Change::Type::Removed);
    EXPECT_EQ(removed[0].before["id"], Json::Value(3));
    EXPECT_EQ(removed[0].line, 1);  // the list in NEW that held it
    EXPECT_EQ(removed[0].column, 1);
}

TEST(ZelctDiff, ChangesComeInTheOrderTheDeviceWritesThem) {
    const std::vector<Change> changes = changesBetween(
        "channel-list", kChannels, "[{\"id\": 7, \"type\": \"tdm\", \"position\": 5}]");
    EXPECT_EQ(textsOf(changes), (std::vector<std::string>{
                                    "/0/id: 1 -> 7", "/0/position: 0 -> 5",
                                    "/0/type: \"madi\" (kind madi, 3) -> \"tdm\" (kind tdm, 0)",
                                    "/1: {\"id\":2,\"position\":1,\"type\":\"SDI\"} -> (absent)"}));
}

TEST(ZelctDiff, TheJsonFormGivesBothValuesAndThePlace) {
    std::string enabled = kSession;
    enabled.replace(enabled.find("\"enabled\""), 9, "\"Enabled\"");
    const std::vector<Change> changes = changesBetween("session-streams", kSession, enabled);
    const Json::Value json =
        changesJson(*findKind("session-streams"), "old.json", "new.json", changes);
    EXPECT_EQ(json["exit"], Json::Value(1));
    EXPECT_EQ(json["kind"], Json::Value("session-streams"));
    ASSERT_EQ(json["changes"].size(), 1u);
    const Json::Value& change = json["changes"][0];
    EXPECT_EQ(change["change"], Json::Value("changed"));
    EXPECT_EQ(change["old"], Json::Value("Disabled"));
    EXPECT_EQ(change["new"], Json::Value("Enabled"));
    EXPECT_EQ(change["line"], Json::Value(1));
    EXPECT_FALSE(change.isMember("old-kept"));
    EXPECT_EQ(changesJson(*findKind("session-streams"), "a", "b", {})["exit"], Json::Value(0));
}
