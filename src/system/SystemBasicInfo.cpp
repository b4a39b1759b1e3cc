#include "SystemBasicInfo.h"

#include "../common/JsonMember.h"

namespace {

// Only this board carries a main-board record in its document; compared exactly.
const char* const kMainBoardProduct = "TARVIK";

constexpr char kFwVersion[] = "fw-version";
constexpr char kFwDate[] = "fw-date";
constexpr char kProduct[] = "product";
constexpr char kBitstream[] = "bitstream";
constexpr char kChipidName[] = "chipid-name";
constexpr char kChipidVersion[] = "chipid-version";
constexpr char kSerialNumber[] = "serial-number";
constexpr char kMadiLock[] = "madi-lock";
constexpr char kEth[] = "eth";
constexpr char kRtsp[] = "rtsp";
constexpr char kAdvertisement[] = "advertisement";
constexpr char kTemperature[] = "temperature";
constexpr char kFanSpeed[] = "fan-speed";
constexpr char kCpuLoadavg[] = "cpu-loadavg";
constexpr char kProductInfo[] = "product-info";
constexpr char kErrors[] = "errors";
constexpr char kDeviceCapabilities[] = "deviceCapabilities";

// The keys always written. "eth", "errors" and "product-info" are written only at times;
// "deviceCapabilities" is written by the capabilities themselves into the shaped object.
const zelct::Shape<14>& boardShape() {
    static const zelct::Shape<14> shape({kFwVersion, kFwDate, kProduct, kBitstream, kChipidName,
                                         kChipidVersion, kSerialNumber, kMadiLock, kRtsp,
                                         kAdvertisement, kTemperature, kFanSpeed, kCpuLoadavg,
                                         kDeviceCapabilities});
    return shape;
}

}  // namespace

SystemBasicInfo::SystemBasicInfo() : madiLock(false) {}

// The member records are set whole; the lists are written element by element.
void SystemBasicInfo::Serialize(Json::Value& root) const {
    zelct::Writer out(root, boardShape());
    out[kFwVersion] = Json::Value(fwVersion);
    out[kFwDate] = Json::Value(fwDate);
    out[kProduct] = Json::Value(product);
    out[kBitstream] = Json::Value(bitstream);
    out[kChipidName] = Json::Value(chipidName);
    out[kChipidVersion] = Json::Value(chipidVersion);
    out[kSerialNumber] = Json::Value(serialNumber);
    out[kMadiLock] = Json::Value(madiLock);
    zelct::writeListMember(eth, root, kEth);
    out[kRtsp] = zelct::written(rtsp);
    out[kAdvertisement] = zelct::written(advertisement);
    out[kTemperature] = zelct::written(temperature);
    out[kFanSpeed] = zelct::written(fanSpeed);
    out[kCpuLoadavg] = zelct::written(cpuLoadavg);
    if (product == kMainBoardProduct) {
        root[kProductInfo] = zelct::written(productInfo);
    }
    zelct::writeListMember(errors, root, kErrors);
    deviceCapabilities.Serialize(root);
}

// Two differences from writing are deliberate and kept: a missing serial number reads as
// "NA", and "product-info" is read whatever the product, so a board other than "TARVIK"
// always comes back with an unknown main-board record.
void SystemBasicInfo::Deserialize(Json::Value& root) {
    zelct::Reader in(root, boardShape());
    fwVersion = in.text(kFwVersion, "");
    fwDate = in.text(kFwDate, "");
    product = in.text(kProduct, "");
    bitstream = in.text(kBitstream, "");
    rtsp.Deserialize(in.member(kRtsp));
    advertisement.Deserialize(in.member(kAdvertisement));
    chipidName = in.text(kChipidName, "");
    chipidVersion = in.text(kChipidVersion, "");
    serialNumber = in.text(kSerialNumber, "NA");
    madiLock = in.flag(kMadiLock, false);
    zelct::replaceList(in.member(kEth), eth);
    temperature.Deserialize(in.member(kTemperature));
    fanSpeed.Deserialize(in.member(kFanSpeed));
    productInfo.Deserialize(in.member(kProductInfo));
    cpuLoadavg.Deserialize(in.member(kCpuLoadavg));
    zelct::replaceList(in.member(kErrors), errors);
    deviceCapabilities.Deserialize(root);
}
