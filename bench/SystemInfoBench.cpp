// The board's system information document: a TARVIK board (so the main-board record is
// written) with 2 Ethernet interfaces carrying SFP modules and 16 current system errors. For
// the scaling check the interfaces and errors grow together: 2+16, 8+64, 32+256.

#include <string>

#include "DocumentHarness.h"
#include "SystemBasicInfo.h"

namespace {

EthBasicInfo buildInterface(int i) {
    EthBasicInfo eth;
    eth.ethName = "eth" + std::to_string(i);
    eth.ipv4 = 0xC0A80A15u + static_cast<unsigned>(i);  // 192.168.10.21 onwards
    eth.networkMask = 0xFFFFFF00u;
    eth.mac = "00:1b:2c:3d:4e:" + std::to_string(10 + i % 90);
    eth.linkup = i % 4 != 3;
    eth.ifid = static_cast<unsigned>(2 + i);
    eth.sfp.present = true;
    eth.sfp.vendorName = "FINISAR CORP.";
    eth.sfp.partNumber = "FTLX8574D3BCL";
    eth.sfp.serialNumber = "AQX0" + std::to_string(4172 + i);
    eth.sfp.revision = "A";
    eth.sfp.connector = "LC";
    eth.sfp.wavelength = 850;
    eth.sfp.temperature = 41.5 + i;
    eth.sfp.supplyVoltage = 3.29;
    eth.sfp.txPower = -2.25;
    eth.sfp.rxPower = -3.5 - 0.25 * (i % 4);
    return eth;
}

SystemError buildError(int i) {
    static const char* const kTexts[] = {
        "PTP: lost lock to grandmaster, holding over",
        "Fan tray: speed below threshold",
        "MADI input 2: no carrier",
        "Session 'Studio A main mix': packets arriving too late",
    };
    SystemError error;
    error.code = 1000 + i;
    error.description = kTexts[i % 4];
    return error;
}

SystemBasicInfo buildSystem(const bench::DocumentSize& size) {
    SystemBasicInfo info;
    info.fwVersion = "4.2.1-rc3";
    info.fwDate = "2024-03-18 14:02:11";
    info.product = "TARVIK";
    info.bitstream = "tarvik_top_v2_17.bit";
    info.serialNumber = "TVK-2207-00415";
    info.chipidVersion = "3.1";
    info.chipidName = "ZX-2110";
    const int interfaces = 2 * size.scale;
    for (int i = 0; i < interfaces; ++i) {
        info.eth.push_back(buildInterface(i));
    }
    info.rtsp.ethPort = "eth0";
    info.rtsp.tpcPort = 554;
    info.advertisement.ethPort = "eth1";
    info.advertisement.tpcPort = 5353;
    info.temperature.fpga = 58;
    info.fanSpeed.main = 4200;
    info.madiLock = true;
    info.deviceCapabilities.numMediaIpInterfaces = 2;
    info.deviceCapabilities.sendersAudio = 64;
    info.deviceCapabilities.sendersVideo = 4;
    info.deviceCapabilities.sendersAncillary = 4;
    info.deviceCapabilities.receiversAudio = 64;
    info.deviceCapabilities.receiversVideo = 4;
    info.deviceCapabilities.receiversAncillary = 4;
    TarvikInfo& board = info.productInfo;
    board.fanSpeed = 4200;
    board.slotNumber = 3;
    board.voltage = 12050;
    board.current = 1830;
    board.boardType = 7;
    board.rearModuleId1 = 21;
    board.rearModuleId2 = 22;
    board.boardRev = 4;
    board.baseIoId = 11;
    board.baseRevIssue = 2;
    board.daughterCard.id = 5;
    board.daughterCard.current = 410;
    board.daughterCard.voltage = 3300;
    board.daughterCard.rev = 2;
    board.daughterCard.ioId = 9;
    board.daughterCard.variant = 1;
    board.daughterCard.issue = 3;
    info.cpuLoadavg.loadAverage1min = 0.42;
    info.cpuLoadavg.loadAverage5min = 0.37;
    info.cpuLoadavg.loadAverage15min = 0.31;
    for (int i = 0; i < size.elements - interfaces; ++i) {
        info.errors.push_back(buildError(i));
    }
    return info;
}

const bool registered = [] {
    bench::registerKind<SystemBasicInfo>("SystemInfo",
                                         {
                                             {"2+16", 2 + 16, 1, true},
                                             {"8+64", 8 + 64, 4, false},
                                             {"32+256", 32 + 256, 16, false},
                                         },
                                         buildSystem);
    return true;
}();

}  // namespace
