#include "SystemBasicInfo.h"

#include "../common/JsonMember.h"

namespace {

// Only this board carries a main-board record in its document; compared exactly.
const char* const kMainBoardProduct = "TARVIK";

// Written in this order; read in another, kept as it is. "eth", "product-info" and "errors"
// are written only at times; the capabilities write their own member into the object.
struct Key {
    enum : std::size_t {
        fwVersion,
        fwDate,
        product,
        bitstream,
        chipidName,
        chipidVersion,
        serialNumber,
        madiLock,
        eth,
        rtsp,
        advertisement,
        temperature,
        fanSpeed,
        cpuLoadavg,
        productInfo,
        errors,
        count
    };
    static constexpr const char* names[] = {
        "fw-version",  "fw-date",        "product",       "bitstream",
        "chipid-name", "chipid-version", "serial-number", "madi-lock",
        "eth",         "rtsp",           "advertisement", "temperature",
        "fan-speed",   "cpu-loadavg",    "product-info",  "errors"};
    static constexpr std::size_t writtenAtTimes[] = {eth, productInfo, errors};
};

}  // namespace

SystemBasicInfo::SystemBasicInfo() : madiLock(false) {}

// The member records are set whole; the lists are written element by element.
void SystemBasicInfo::Serialize(Json::Value& root) const {
    zelcommon::Writer out(root, zelcommon::shapeOf<Key>());
    out[Key::fwVersion] = Json::Value(fwVersion);
    out[Key::fwDate] = Json::Value(fwDate);
    out[Key::product] = Json::Value(product);
    out[Key::bitstream] = Json::Value(bitstream);
    out[Key::chipidName] = Json::Value(chipidName);
    out[Key::chipidVersion] = Json::Value(chipidVersion);
    out[Key::serialNumber] = Json::Value(serialNumber);
    out[Key::madiLock] = Json::Value(madiLock);
    zelcommon::writeListMember(eth, out, Key::eth);
    out[Key::rtsp] = zelcommon::written(rtsp);
    out[Key::advertisement] = zelcommon::written(advertisement);
    out[Key::temperature] = zelcommon::written(temperature);
    out[Key::fanSpeed] = zelcommon::written(fanSpeed);
    out[Key::cpuLoadavg] = zelcommon::written(cpuLoadavg);
    if (product == kMainBoardProduct) {
        out[Key::productInfo] = zelcommon::written(productInfo);
    }
    zelcommon::writeListMember(errors, out, Key::errors);
    deviceCapabilities.Serialize(root);
}

// Two differences from writing are deliberate and kept: a missing serial number reads as
// "NA", and "product-info" is read whatever the product, so a board other than "TARVIK"
// always comes back with an unknown main-board record.
void SystemBasicInfo::Deserialize(Json::Value& root) {
    zelcommon::Reader in(root, zelcommon::shapeOf<Key>());
    fwVersion = in.text(Key::fwVersion, "");
    fwDate = in.text(Key::fwDate, "");
    product = in.text(Key::product, "");
    bitstream = in.text(Key::bitstream, "");
    rtsp.Deserialize(in.member(Key::rtsp));
    advertisement.Deserialize(in.member(Key::advertisement));
    chipidName = in.text(Key::chipidName, "");
    chipidVersion = in.text(Key::chipidVersion, "");
    serialNumber = in.text(Key::serialNumber, "NA");
    madiLock = in.flag(Key::madiLock, false);
    zelcommon::replaceList(in.member(Key::eth), eth);
    temperature.Deserialize(in.member(Key::temperature));
    fanSpeed.Deserialize(in.member(Key::fanSpeed));
    productInfo.Deserialize(in.member(Key::productInfo));
    cpuLoadavg.Deserialize(in.member(Key::cpuLoadavg));
    zelcommon::replaceList(in.member(Key::errors), errors);
    deviceCapabilities.Deserialize(root);
}
