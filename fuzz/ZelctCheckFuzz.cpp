// zelct check on arbitrary bytes as a file's text, checked as one kind (picked by the first
// byte) exactly as a file holding them would be: the file store's load (its limits and
// parser), the scan of the text, reading, comparing and locating, with every finding and the
// unusable place put into words. A crash, a sanitizer report, an exception out of checkText
// other than running out of memory, or a hang is a finding.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Check.h"
#include "FuzzHarness.h"
#include "Kinds.h"
#include "ReadingScan.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::quietLogger();
    if (size == 0) {
        return 0;
    }
    const std::vector<zelct::Kind>& kinds = zelct::allKinds();
    const zelct::Kind& kind = kinds[data[0] % kinds.size()];
    const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    (void)zelct::nestingPastLimit(bytes, 1000);
    const zelct::Outcome outcome = zelct::checkText(kind, "fuzz.json", bytes, true);
    for (const zelct::Finding& finding : outcome.findings) {
        (void)zelct::findingText(finding);
    }
    return 0;
}
