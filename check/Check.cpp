// The verdict on a document or a file: the steps of the check, in order.
#include "CheckSteps.h"

#include <memory>
#include <string>
#include <utility>

#include "HiddenState.h"

namespace zelct {

namespace {

// Where a finding is: the node itself, the name of a member, or for an added node the object
// or array it was added to.
Position positionOfPath(const SourceText& source, const Json::Value& document, JsonPath path,
                        bool added) {
    if (added && !path.empty()) {
        path.pop_back();
    }
    const Json::Value* node = nodeAt(document, path);
    if (node == nullptr) {
        return Position();
    }
    return source.positionOf(*node, !path.empty() && !path.back().isIndex);
}

void placeFindings(std::vector<Finding>& findings, size_t first, const SourceText& source,
                   const Json::Value& document) {
    for (size_t i = first; i < findings.size(); ++i) {
        Finding& finding = findings[i];
        const Position position =
            positionOfPath(source, document, finding.path, finding.type == Finding::Type::Added);
        finding.line = position.line;
        finding.column = position.column;
    }
}

// A reading that throws: the first node it rejects, quoted as the file has it. `work` is the
// caller's and is changed by the search.
Outcome unreadable(const Kind& kind, Json::Value& work, const Reading& reading,
                   const SourceText* source) {
    const FailurePlace place = locateFailureInPlace(kind, work);
    if (!place.found) {
        Outcome outcome = unusable("the library cannot read it (" + reading.error + ")");
        return outcome;
    }
    // The node itself is as it was; members the reading added to it have no place in the
    // text, so the file's own text of it is quoted when there is one.
    const Json::Value& node = *nodeAt(work, place.path);
    Json::Value asWritten = node;
    if (source != nullptr && node.getOffsetLimit() > node.getOffsetStart()) {
        const Json::Value slice =
            parsedSlice(source->bytes, source->startOf(node), source->limitOf(node));
        if (!slice.isNull()) {
            asWritten = slice;
        }
    }
    const std::string& error = place.error.empty() ? reading.error : place.error;
    Outcome outcome = unusable(pointerText(place.path) + ": the library cannot read " +
                               quoted(asWritten) + " here (" + error + ")");
    outcome.problemPlace = place;
    if (source != nullptr) {
        placeOutcome(outcome, source->positionOf(node, !place.path.back().isIndex));
    }
    return outcome;
}

}  // namespace

Outcome unusable(std::string problem) {
    Outcome outcome;
    outcome.status = Outcome::Status::Unusable;
    outcome.problem = std::move(problem);
    return outcome;
}

void placeOutcome(Outcome& outcome, Position position) {
    outcome.line = position.line;
    outcome.column = position.column;
}

int exitCodeOf(Outcome::Status status) {
    switch (status) {
        case Outcome::Status::Exact:
            return 0;
        case Outcome::Status::Findings:
            return 1;
        case Outcome::Status::Unusable:
            return 2;
    }
    return 2;
}

namespace {

Outcome wrongTopLevel(const Kind& kind, const Json::Value& document, const SourceText* source) {
    Outcome outcome = unusable(std::string("the top-level value is ") + jsonTypeText(document) +
                               ", expected " + topLevelText(kind.topLevel) + " for " + kind.name);
    if (source != nullptr) {
        placeOutcome(outcome, source->positionOf(document, false));
    }
    return outcome;
}

// A top-level "$schema" names the schema an editor checks the document against. The library
// never reads it, as intended, so it is no finding.
bool isSchemaReference(Finding::Type type, const JsonPath& path) {
    return type == Finding::Type::Dropped && path.size() == 1 && !path[0].isIndex &&
           path[0].key == "$schema";
}

// The verdict on a document that was read without failing. The document is the check's own:
// the kept findings take what they quote out of it.
Outcome judged(const Kind& kind, Json::Value& document, Reading& reading, bool withFindings,
               const SourceText* source, size_t keep) {
    Outcome outcome;
    if (withFindings) {
        KeptFindings kept(keep);
        kept.noFinding = &isSchemaReference;
        if (source != nullptr) {
            addReadingFindings(*source, document, kept);
        }
        const size_t differences = kept.findings.size();
        addHiddenStateFindings(kind, document, kept);
        findDifferencesTaking(kind, document, reading, kept);
        if (source != nullptr) {
            placeFindings(kept.findings, differences, *source, document);
        }
        outcome.findings = std::move(kept.findings);
        outcome.omitted = kept.omitted;
        outcome.status = outcome.findings.empty() && outcome.omitted == 0
                             ? Outcome::Status::Exact
                             : Outcome::Status::Findings;
    }
    outcome.understood = std::move(reading.understood);
    outcome.log = std::move(reading.log);
    return outcome;
}

// The document of a file as the device's parser gives it.
bool parsedAgain(const SourceText& source, Json::Value& document) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    std::string errors;
    return reader->parse(source.bytes.data(), source.bytes.data() + source.deviceLength, &document,
                         &errors);
}

// A document the library refuses keeps the findings of its text: the parser took it, and
// what it skipped or read otherwise is so whatever the classes then make of it. `document`
// is the text's document as the parser gave it, unread.
void addTextFindings(Outcome& outcome, const SourceText& source, const Json::Value& document,
                     size_t keep) {
    KeptFindings kept(keep);
    addReadingFindings(source, document, kept);
    outcome.findings = std::move(kept.findings);
    outcome.omitted = kept.omitted;
}

// The same for a file whose document the reading has changed: it is parsed again.
void addTextFindings(Outcome& outcome, const SourceText& source, size_t keep) {
    Json::Value document;
    if (parsedAgain(source, document)) {
        addTextFindings(outcome, source, document, keep);
    }
}

// Reading adds null members to what it reads, and the comparison needs the document as the
// file has it. A document of up to this many values (the largest channel tables in use hold
// about 280,000) is read in a copy; a larger one is read in place and parsed again from the
// text afterwards, so that a file near the store's limit is never held twice.
constexpr long long kCopiedValues = 300000;

// Checks a loaded file reading a copy of its document, which stays as the file has it.
Outcome checkCopy(const Kind& kind, LoadedFile& loaded, size_t keep) {
    const SourceText& source = *loaded.source;
    Json::Value work = loaded.document;
    Reading reading = readInPlace(kind, work);
    if (reading.failed) {
        Outcome outcome = unreadable(kind, work, reading, &source);
        outcome.log = std::move(reading.log);
        work = Json::Value();
        addTextFindings(outcome, source, loaded.document, keep);
        return outcome;
    }
    work = Json::Value();
    return judged(kind, loaded.document, reading, true, &source, keep);
}

// Checks a loaded file reading its document in place, as the device does, so that a document
// the library cannot read is never copied. The comparison needs the document as the file
// has it, which the reading changed: it is parsed again from the text.
Outcome checkInPlace(const Kind& kind, LoadedFile& loaded, bool withFindings, size_t keep) {
    const SourceText& source = *loaded.source;
    if (!hasTopLevel(kind, loaded.document)) {
        Outcome outcome = wrongTopLevel(kind, loaded.document, &source);
        if (withFindings) {
            addTextFindings(outcome, source, loaded.document, keep);
        }
        return outcome;
    }
    if (withFindings && loaded.values <= kCopiedValues) {
        return checkCopy(kind, loaded, keep);
    }
    Reading reading = readInPlace(kind, loaded.document);
    if (reading.failed) {
        Outcome outcome = unreadable(kind, loaded.document, reading, &source);
        outcome.log = std::move(reading.log);
        if (withFindings) {
            loaded.document = Json::Value();
            addTextFindings(outcome, source, keep);
        }
        return outcome;
    }
    if (!withFindings) {
        return judged(kind, loaded.document, reading, false, &source, keep);
    }
    loaded.document = Json::Value();
    Json::Value document;
    if (!parsedAgain(source, document)) {
        return unusable("the file changed while it was checked");
    }
    return judged(kind, document, reading, true, &source, keep);
}

}  // namespace

Outcome checkDocument(const Kind& kind, const Json::Value& document, bool withFindings,
                      const SourceText* source, size_t keep) {
    Outcome outcome;
    if (!hasTopLevel(kind, document)) {
        outcome = wrongTopLevel(kind, document, source);
    } else {
        Json::Value work = document;
        Reading reading = readInPlace(kind, work);
        if (!reading.failed) {
            work = document;
            return judged(kind, work, reading, withFindings, source, keep);
        }
        work = document;
        outcome = unreadable(kind, work, reading, source);
        outcome.log = std::move(reading.log);
    }
    if (withFindings && source != nullptr) {
        addTextFindings(outcome, *source, document, keep);
    }
    return outcome;
}

Outcome checkLoaded(const Kind& kind, const LoadedFile& loaded, bool withFindings, size_t keep) {
    Outcome outcome = checkDocument(kind, loaded.document, withFindings, loaded.source.get(), keep);
    outcome.log.insert(outcome.log.begin(), loaded.log.begin(), loaded.log.end());
    return outcome;
}

namespace {

// Checks what `load` loads into a LoadedFile; its log comes first in the outcome's.
template <typename Load>
Outcome checkLoading(const Kind& kind, bool withFindings, size_t keep, Load load) {
    try {
        LoadedFile loaded;
        Outcome failure;
        if (!load(loaded, failure)) {
            return failure;
        }
        Outcome outcome = checkInPlace(kind, loaded, withFindings, keep);
        outcome.log.insert(outcome.log.begin(), loaded.log.begin(), loaded.log.end());
        return outcome;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& e) {
        return unusable(std::string("cannot be checked (") + e.what() + ")");
    }
}

}  // namespace

Outcome checkFile(const Kind& kind, const std::string& path, bool withFindings, size_t keep) {
    return checkLoading(kind, withFindings, keep, [&path](LoadedFile& loaded, Outcome& failure) {
        return loadFile(path, loaded, failure);
    });
}

Outcome checkText(const Kind& kind, const std::string& name, std::string bytes, bool withFindings,
                  size_t keep) {
    return checkLoading(kind, withFindings, keep, [&](LoadedFile& loaded, Outcome& failure) {
        return loadText(name, std::move(bytes), loaded, failure);
    });
}

}  // namespace zelct
