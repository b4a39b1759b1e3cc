// Checks a channel id whose type and position the device reads otherwise, from a text and from the
// file the text is stored in, and checks what the two reports hold.
#include <cstdio>
#include <fstream>
#include <string>

#include "DocumentCheck.h"

namespace {

// The type that the device reads as another and the position it clamps, each at its place.
bool holdsTheClampedPosition(const DocumentCheck::Report& report) {
    if (report.status != DocumentCheck::Findings || report.findings.size() != 2) {
        return false;
    }
    for (const DocumentCheck::Finding& finding : report.findings) {
        const bool position = finding.pointer == "/position" && finding.column == 27 &&
                              finding.understood == Json::Value(44);
        const bool type = finding.pointer == "/type" && finding.column == 11 &&
                          finding.understood == Json::Value("tdm");
        if (finding.kind != "changed" || finding.line != 1 || !(position || type)) {
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string path = argc > 1 ? argv[1] : "consumer-check.json";
    const std::string text = R"({"id": 7, "type": "i32s", "position": 300})";
    if (!DocumentCheck::hasKind("channel-id") || DocumentCheck::hasKind("no-such-kind")) {
        std::fprintf(stderr, "the kinds are not as expected\n");
        return 1;
    }
    if (!holdsTheClampedPosition(DocumentCheck::checkText("channel-id", text, "text.json"))) {
        std::fprintf(stderr, "the text's report is not as expected\n");
        return 1;
    }
    std::ofstream(path, std::ios::binary) << text;
    if (!holdsTheClampedPosition(DocumentCheck::checkFile("channel-id", path))) {
        std::fprintf(stderr, "the file's report is not as expected\n");
        return 1;
    }
    if (DocumentCheck::checkFile("no-such-kind", path).status != DocumentCheck::Unusable) {
        std::fprintf(stderr, "an unknown kind is not unusable\n");
        return 1;
    }
    std::printf("%s: two findings, as expected\n", path.c_str());
    return 0;
}
