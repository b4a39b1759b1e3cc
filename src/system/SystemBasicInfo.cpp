#include "SystemBasicInfo.h"

#include "../common/JsonMember.h"

namespace {

// Only this board carries a main-board record in its document; compared exactly.
const char* const kMainBoardProduct = "TARVIK";

// A member record written into an object of its own.
template <typename Record>
Json::Value objectOf(const Record& record) {
    Json::Value object(Json::objectValue);
    record.Serialize(object);
    return object;
}

}  // namespace

SystemBasicInfo::SystemBasicInfo() : madiLock(false) {}

void SystemBasicInfo::Serialize(Json::Value& root) const {
    // "eth", "errors" and "product-info" are written only at times, so they are not part of
    // the shape; "deviceCapabilities" is written by the capabilities themselves.
    static const zelct::ObjectShape shape{"fw-version",    "fw-date",           "product",
                                          "bitstream",     "chipid-name",       "chipid-version",
                                          "serial-number", "madi-lock",         "rtsp",
                                          "advertisement", "temperature",       "fan-speed",
                                          "cpu-loadavg",   "deviceCapabilities"};
    zelct::ShapedObject out(root, shape);
    out["fw-version"] = Json::Value(fwVersion);
    out["fw-date"] = Json::Value(fwDate);
    out["product"] = Json::Value(product);
    out["bitstream"] = Json::Value(bitstream);
    out["chipid-name"] = Json::Value(chipidName);
    out["chipid-version"] = Json::Value(chipidVersion);
    out["serial-number"] = Json::Value(serialNumber);
    out["madi-lock"] = Json::Value(madiLock);
    zelct::writeListMember(eth, root, "eth");
    out["rtsp"] = objectOf(rtsp);
    out["advertisement"] = objectOf(advertisement);
    out["temperature"] = objectOf(temperature);
    out["fan-speed"] = objectOf(fanSpeed);
    out["cpu-loadavg"] = objectOf(cpuLoadavg);
    if (product == kMainBoardProduct) {
        root["product-info"] = objectOf(productInfo);
    }
    zelct::writeListMember(errors, root, "errors");
    deviceCapabilities.Serialize(root);
}

// Two differences from writing are deliberate and kept: a missing serial number reads as
// "NA", and "product-info" is read whatever the product, so a board other than "TARVIK"
// always comes back with an unknown main-board record.
void SystemBasicInfo::Deserialize(Json::Value& root) {
    fwVersion = zelct::stringMember(root, "fw-version", "");
    fwDate = zelct::stringMember(root, "fw-date", "");
    product = zelct::stringMember(root, "product", "");
    bitstream = zelct::stringMember(root, "bitstream", "");
    rtsp.Deserialize(root["rtsp"]);
    advertisement.Deserialize(root["advertisement"]);
    chipidName = zelct::stringMember(root, "chipid-name", "");
    chipidVersion = zelct::stringMember(root, "chipid-version", "");
    serialNumber = zelct::stringMember(root, "serial-number", "NA");
    madiLock = root.get("madi-lock", false).asBool();
    zelct::replaceList(root["eth"], eth);
    temperature.Deserialize(root["temperature"]);
    fanSpeed.Deserialize(root["fan-speed"]);
    productInfo.Deserialize(root["product-info"]);
    cpuLoadavg.Deserialize(root["cpu-loadavg"]);
    zelct::replaceList(root["errors"], errors);
    deviceCapabilities.Deserialize(root);
}
