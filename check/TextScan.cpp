// The findings of a file's text: what the device's parser accepts and reads otherwise than the
// text says, found by the scan before any class reads the document.
#include "CheckSteps.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>

#include "ReadingScan.h"

namespace zelct {

namespace {

// What the device's writer makes of a string: jsoncpp's styled text without its line break.
std::string writtenBack(const Json::Value& text) {
    std::string written = text.toStyledString();
    while (!written.empty() && written.back() == '\n') {
        written.pop_back();
    }
    return written;
}

Finding findingOfTrap(const ReadingTrap& trap, const SourceText& source) {
    Finding finding{trap.type, trap.path, Json::Value(), Json::Value()};
    switch (trap.type) {
        case ReadingTrap::Type::DuplicateMember:
            finding.original = parsedSlice(source.bytes, trap.valueStart, trap.valueEnd);
            break;
        case ReadingTrap::Type::AfterNul:
            finding.original = Json::Value(static_cast<Json::LargestUInt>(trap.count));
            break;
        case ReadingTrap::Type::NotUtf8:
        case ReadingTrap::Type::ControlInString:
            finding.original = parsedSlice(source.bytes, trap.valueStart, trap.valueEnd);
            finding.understood = writtenBack(finding.original);
            break;
        case ReadingTrap::Type::NumberText:
            finding.original =
                source.bytes.substr(trap.valueStart, trap.valueEnd - trap.valueStart);
            finding.understood = parsedSlice(source.bytes, trap.valueStart, trap.valueEnd);
            break;
        case ReadingTrap::Type::NulInString: {
            finding.original = parsedSlice(source.bytes, trap.valueStart, trap.valueEnd);
            finding.understood = std::string(finding.original.asCString());
            break;
        }
        default:
            // The others carry their place only; the scan finds no finding of the reading.
            break;
    }
    const Position position = source.lines.at(trap.offset);
    finding.line = position.line;
    finding.column = position.column;
    return finding;
}

}  // namespace

// A JSON text cut out of the file, as the device's parser reads it; null when it is none.
Json::Value parsedSlice(const std::string& bytes, size_t begin, size_t end) {
    Json::Value value;
    if (begin >= end || end > bytes.size()) {
        return value;
    }
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    std::string errors;
    if (!reader->parse(bytes.data() + begin, bytes.data() + end, &value, &errors)) {
        return Json::Value();
    }
    return value;
}

// Findings of the text itself, before any class reads it: what the device's parser accepts
// and reads otherwise than a strict reader would.
void addReadingFindings(const SourceText& source, const Json::Value& document, KeptFindings& kept) {
    size_t more = 0;
    for (const ReadingTrap& trap :
         scanReadingTraps(source.bytes, source.deviceLength, kept.room(), &more)) {
        kept.findings.push_back(findingOfTrap(trap, source));
        if (trap.type == ReadingTrap::Type::DuplicateMember) {
            if (const Json::Value* value = nodeAt(document, trap.path)) {
                kept.findings.back().understood = *value;
            }
        }
    }
    kept.omitted += more;
}

}  // namespace zelct
