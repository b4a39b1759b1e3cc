#include "IJsonSerializable.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "zelCommonTypes.h"

namespace {

class Counter : public IJsonSerializable {
public:
    explicit Counter(int* destroyed) : destroyed_(destroyed) {}
    ~Counter() override { ++*destroyed_; }
    void Serialize(Json::Value& root) const override { root["count"] = Json::Value(count); }
    void Deserialize(Json::Value& root) override { count = root.get("count", 0).asInt(); }
    int count = 0;

private:
    int* destroyed_;
};

}  // namespace

TEST(IJsonSerializable, IsAbstractWithVirtualDestructor) {
    EXPECT_TRUE(std::is_abstract<IJsonSerializable>::value);
    EXPECT_TRUE(std::has_virtual_destructor<IJsonSerializable>::value);
}

TEST(IJsonSerializable, OperationsDispatchThroughTheInterface) {
    int destroyed = 0;
    {
        std::unique_ptr<IJsonSerializable> object(new Counter(&destroyed));
        Json::Value in;
        in["count"] = 9;
        object->Deserialize(in);
        Json::Value out;
        out["other"] = "kept";
        object->Serialize(out);
        EXPECT_EQ(out["count"].asInt(), 9);
        EXPECT_EQ(out["other"].asString(), "kept");
    }
    EXPECT_EQ(destroyed, 1);  // deleting through the base runs the derived destructor
}

// Model classes are plain values: lists and maps hold them by value, so each keeps the
// implicit member-wise copy and derives from the interface alone.
template <typename... Records>
constexpr bool allCopyByValue() {
    return ((std::is_copy_constructible<Records>::value &&
             std::is_copy_assignable<Records>::value &&
             std::is_base_of<IJsonSerializable, Records>::value) &&
            ...);
}
static_assert(
    allCopyByValue<DaifType, DaifMediaType, DaifCapabilities, StreamType, State, ChannelId,
                   ChannelList, ChannelTableEntry, ChannelTable, ChannelTables, AlarmSeverity,
                   Alarm, AlarmManager, SystemTemperature, FanSpeed, DaughterBoard, TarvikInfo,
                   CpuLoadAverage, SystemError, DeviceCapabilities, ProcessBasicInfo,
                   SystemBasicInfo, EthBasicInfo, EthBandwidthInfo, SessionStreamBasics,
                   SessionStreamList, SfpInfo, VideoFormat>(),
    "every model class copies by value");

TEST(IJsonSerializable, DerivedClassesCopyByValue) {
    SystemBasicInfo original;
    original.eth.emplace_back();
    original.eth.front().ethName = "eth0";
    original.errors.emplace_back();
    original.errors.front().description = "fan";
    SystemBasicInfo copy(original);
    copy.eth.front().ethName = "eth9";
    copy.errors.clear();
    copy.rtsp.tpcPort = 554;
    EXPECT_EQ(original.eth.front().ethName, "eth0");
    ASSERT_EQ(original.errors.size(), 1u);
    EXPECT_EQ(original.errors.front().description, "fan");
    EXPECT_EQ(original.rtsp.tpcPort, 0u);
    EXPECT_EQ(copy.eth.front().ethName, "eth9");
}
