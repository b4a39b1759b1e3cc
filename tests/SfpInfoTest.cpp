#include "SfpInfo.h"

#include <gtest/gtest.h>

#include "FileUtil.h"

TEST(SfpInfo, DefaultsMeanNothingKnown) {
    SfpInfo sfp;
    EXPECT_FALSE(sfp.present);
    EXPECT_EQ(sfp.vendorName, "");
    EXPECT_EQ(sfp.partNumber, "");
    EXPECT_EQ(sfp.serialNumber, "");
    EXPECT_EQ(sfp.revision, "");
    EXPECT_EQ(sfp.connector, "");
    EXPECT_EQ(sfp.wavelength, -1);
    EXPECT_DOUBLE_EQ(sfp.temperature, -1.0);
    EXPECT_DOUBLE_EQ(sfp.supplyVoltage, -1.0);
    EXPECT_DOUBLE_EQ(sfp.txPower, -1.0);
    EXPECT_DOUBLE_EQ(sfp.rxPower, -1.0);
}

TEST(SfpInfo, SerializeWritesEveryKeyInOrder) {
    SfpInfo sfp;
    sfp.present = true;
    sfp.vendorName = "FINISAR CORP.";
    sfp.partNumber = "FTLX8574D3BCL";
    sfp.serialNumber = "ARF0K2B";
    sfp.revision = "A";
    sfp.connector = "LC";
    sfp.wavelength = 850;
    sfp.temperature = 41.5;
    sfp.supplyVoltage = 3.3;
    sfp.txPower = -2.5;
    sfp.rxPower = -3.25;
    Json::Value out;
    out["keep"] = 1;
    sfp.Serialize(out);
    EXPECT_EQ(out, parseJson(R"({"keep": 1, "present": true, "vendor-name": "FINISAR CORP.",
        "part-number": "FTLX8574D3BCL", "serial-number": "ARF0K2B", "revision": "A",
        "connector": "LC", "wavelength": 850, "temperature": 41.5, "supply-voltage": 3.3,
        "tx-power": -2.5, "rx-power": -3.25})"));
}

TEST(SfpInfo, RoundTripReproducesEveryField) {
    SfpInfo sfp;
    sfp.present = true;
    sfp.vendorName = "AVAGO";
    sfp.wavelength = 1310;
    sfp.rxPower = -7.0;
    Json::Value out;
    sfp.Serialize(out);
    SfpInfo back;
    back.Deserialize(out);
    EXPECT_TRUE(back.present);
    EXPECT_EQ(back.vendorName, "AVAGO");
    EXPECT_EQ(back.wavelength, 1310);
    EXPECT_DOUBLE_EQ(back.rxPower, -7.0);
    EXPECT_DOUBLE_EQ(back.txPower, -1.0);
}

TEST(SfpInfo, DeserializeOfEmptyObjectGivesDefaults) {
    SfpInfo sfp;
    sfp.present = true;
    sfp.vendorName = "old";
    sfp.temperature = 20.0;
    Json::Value in(Json::objectValue);
    sfp.Deserialize(in);
    EXPECT_FALSE(sfp.present);
    EXPECT_EQ(sfp.vendorName, "");
    EXPECT_DOUBLE_EQ(sfp.temperature, -1.0);
    EXPECT_EQ(sfp.wavelength, -1);
}

TEST(SfpInfo, WrongJsonTypeRaisesJsonException) {
    SfpInfo sfp;
    Json::Value in = parseJson(R"({"wavelength": {"nm": 850}})");
    EXPECT_THROW(sfp.Deserialize(in), Json::Exception);
}
