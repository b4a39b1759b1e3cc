#include "SystemBasicInfo.h"

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

// An empty list leaves no member behind: readers take a missing list as an empty one.
template <typename Record>
void writeList(Json::Value& root, const char* key, const std::list<Record>& list) {
    if (list.empty()) {
        return;
    }
    Json::Value array(Json::arrayValue);
    for (const Record& record : list) {
        array.append(objectOf(record));
    }
    root[key] = array;
}

// The document replaces the list; it does not add to it.
template <typename Record>
void readList(Json::Value& array, std::list<Record>& list) {
    list.clear();
    for (Json::ArrayIndex i = 0; i < array.size(); ++i) {
        Record record;
        record.Deserialize(array[i]);
        list.push_back(record);
    }
}

}  // namespace

SystemBasicInfo::SystemBasicInfo() : madiLock(false) {}

void SystemBasicInfo::Serialize(Json::Value& root) const {
    root["fw-version"] = Json::Value(fwVersion);
    root["fw-date"] = Json::Value(fwDate);
    root["product"] = Json::Value(product);
    root["bitstream"] = Json::Value(bitstream);
    root["chipid-name"] = Json::Value(chipidName);
    root["chipid-version"] = Json::Value(chipidVersion);
    root["serial-number"] = Json::Value(serialNumber);
    root["madi-lock"] = Json::Value(madiLock);
    writeList(root, "eth", eth);
    root["rtsp"] = objectOf(rtsp);
    root["advertisement"] = objectOf(advertisement);
    root["temperature"] = objectOf(temperature);
    root["fan-speed"] = objectOf(fanSpeed);
    root["cpu-loadavg"] = objectOf(cpuLoadavg);
    if (product == kMainBoardProduct) {
        root["product-info"] = objectOf(productInfo);
    }
    writeList(root, "errors", errors);
    deviceCapabilities.Serialize(root);
}

// Two differences from writing are deliberate and kept: a missing serial number reads as
// "NA", and "product-info" is read whatever the product, so a board other than "TARVIK"
// always comes back with an unknown main-board record.
void SystemBasicInfo::Deserialize(Json::Value& root) {
    fwVersion = root.get("fw-version", "").asString();
    fwDate = root.get("fw-date", "").asString();
    product = root.get("product", "").asString();
    bitstream = root.get("bitstream", "").asString();
    rtsp.Deserialize(root["rtsp"]);
    advertisement.Deserialize(root["advertisement"]);
    chipidName = root.get("chipid-name", "").asString();
    chipidVersion = root.get("chipid-version", "").asString();
    serialNumber = root.get("serial-number", "NA").asString();
    madiLock = root.get("madi-lock", false).asBool();
    readList(root["eth"], eth);
    temperature.Deserialize(root["temperature"]);
    fanSpeed.Deserialize(root["fan-speed"]);
    productInfo.Deserialize(root["product-info"]);
    cpuLoadavg.Deserialize(root["cpu-loadavg"]);
    readList(root["errors"], errors);
    deviceCapabilities.Deserialize(root);
}
