// zelct check on arbitrary bytes as a file's text: the strict scan of the text, the nesting
// probe, and, when the device's parser accepts what comes before the first NUL, the whole
// check of the document as one kind (picked by the first byte) with every finding put into
// words. A crash, a sanitizer report, an exception out of checkDocument or a hang is a finding.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Check.h"
#include "FuzzHarness.h"
#include "Kinds.h"
#include "ReadingScan.h"
#include "SourceText.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::quietLogger();
    if (size == 0) {
        return 0;
    }
    const std::vector<zelct::Kind>& kinds = zelct::allKinds();
    const zelct::Kind& kind = kinds[data[0] % kinds.size()];
    const zelct::SourceText source(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
    (void)zelct::nestingPastLimit(source.bytes, 1000);
    Json::Value document;
    if (!fuzz::parse(data + 1, source.deviceLength, document)) {
        return 0;
    }
    const zelct::Outcome outcome = zelct::checkDocument(kind, document, true, &source);
    for (const zelct::Finding& finding : outcome.findings) {
        (void)zelct::findingText(finding);
    }
    return 0;
}
