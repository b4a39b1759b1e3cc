// Stores a document with the file store, loads it back and checks what came back.
#include <cstdio>
#include <string>

#include "zelCommonTypes.h"

int main(int argc, char** argv) {
    const std::string path = argc > 1 ? argv[1] : "consumer.json";

    SfpInfo sfp;
    sfp.present = true;
    sfp.vendorName = "FINISAR CORP.";
    sfp.wavelength = 850;
    DaifType type;
    type.setNameAndResolve("AES10");

    Json::Value document;
    sfp.Serialize(document["sfp"]);
    type.Serialize(document["interface"]);

    FileMgr files;
    if (files.storeLocalCfg(path, document) != 0) {
        return 1;
    }
    Json::Value loaded;
    if (files.loadLocalCfg(path, loaded) != 0) {
        return 1;
    }
    SfpInfo sfpBack;
    DaifType typeBack;
    sfpBack.Deserialize(loaded["sfp"]);
    typeBack.Deserialize(loaded["interface"]);
    std::printf("%s", loaded.toStyledString().c_str());
    std::remove(path.c_str());

    const bool same = sfpBack.present && sfpBack.vendorName == "FINISAR CORP." &&
                      sfpBack.wavelength == 850 && typeBack.getValue() == DaifType::DAIF_MADI &&
                      typeBack.getName() == "madi";
    return same ? 0 : 1;
}
