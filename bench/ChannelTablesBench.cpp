// The channel tables of a device: one table per interface kind, each routing interface
// channels to stream channels. 8 tables of 64 rows on a typical board, 16 of 512 as the large
// case; 8x64, 8x256 and 16x512 (1x, 4x, 16x the rows) for the scaling check.

#include <string>

#include "ChannelTables.h"
#include "DocumentHarness.h"
#include "SessionRecords.h"

namespace {

struct TableShape {
    int tables;
    int rows;
};

ChannelTableEntry buildRow(int table, int row) {
    ChannelTableEntry entry;
    entry.id = row;
    entry.nameInput = "In " + std::to_string(table + 1) + "." + std::to_string(row + 1);
    entry.nameOutput =
        "Stream " + std::to_string(row / 8 + 1) + " ch " + std::to_string(row % 8 + 1);
    entry.input = bench::sessionRecord(table * 1000 + row);
    entry.output = bench::sessionRecord(table * 1000 + row + 500);
    entry.blocked = row % 17 == 16;
    return entry;
}

ChannelTables buildTables(const TableShape& shape) {
    // The interface kinds a board carries, by number (name rebuilt from the number).
    static const int kKinds[] = {DaifType::DAIF_MADI,       DaifType::DAIF_AES3,
                                 DaifType::DAIF_SDI_AUDIO,  DaifType::DAIF_TDM,
                                 DaifType::DAIF_HDMI_AUDIO, DaifType::DAIF_ANALOG_AUDIO,
                                 DaifType::DAIF_I2S,        DaifType::DAIF_TPI};
    ChannelTables set;
    for (int t = 0; t < shape.tables; ++t) {
        ChannelTable table;
        table.type.setValueAndName(kKinds[t % 8]);
        for (int r = 0; r < shape.rows; ++r) {
            table.entries.push_back(buildRow(t, r));
        }
        set.tables.push_back(table);
    }
    return set;
}

const bool registered = [] {
    bench::registerKind<ChannelTables>(
        "ChannelTables",
        {
            {"8x64", 8 * 64, 1, false},
            {"8x256", 8 * 256, 4, false},
            {"16x512", 16 * 512, 16, true},
        },
        [](const bench::DocumentSize& size) {
            // The label's two numbers: tables x rows.
            const std::string label = size.label;
            const std::string::size_type x = label.find('x');
            return buildTables({std::stoi(label.substr(0, x)), std::stoi(label.substr(x + 1))});
        });
    return true;
}();

}  // namespace
