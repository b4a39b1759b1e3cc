#include "IJsonSerializable.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

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

TEST(IJsonSerializable, DerivedClassesCopyByValue) {
    int destroyed = 0;
    Counter a(&destroyed);
    a.count = 4;
    Counter b(a);
    EXPECT_EQ(b.count, 4);
}
