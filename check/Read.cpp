// Reading a document as a kind, recording what the library logs.
#include "Check.h"

#include <exception>
#include <limits>
#include <new>
#include <utility>

namespace zelct {

bool sameReading(const Reading& a, const Reading& b) {
    return a.failed == b.failed && a.error == b.error && a.understood == b.understood &&
           a.log == b.log;
}

// A value that every reader of the library rejects or reads differently: a conversion of
// an array to a scalar throws, and so does a member lookup in it.
Json::Value probeValue() {
    Json::Value probe(Json::arrayValue);
    probe.append(Json::Value(Json::arrayValue));
    return probe;
}

// Another value of the same JSON type, for readers that only look at whether a node is
// there; none for null, arrays and objects.
bool otherValueOfType(const Json::Value& value, Json::Value& other) {
    switch (value.type()) {
        case Json::stringValue:
            other = value.asString() + "~";
            return true;
        case Json::booleanValue:
            other = !value.asBool();
            return true;
        case Json::intValue:
            other = value.asLargestInt() == std::numeric_limits<Json::LargestInt>::max()
                        ? value.asLargestInt() - 1
                        : value.asLargestInt() + 1;
            return true;
        case Json::uintValue:
            other = value.asLargestUInt() == std::numeric_limits<Json::LargestUInt>::max()
                        ? value.asLargestUInt() - 1
                        : value.asLargestUInt() + 1;
            return true;
        case Json::realValue:
            other = value.asDouble() + 1.0;
            return true;
        default:
            return false;
    }
}

Reading readAs(const Kind& kind, const Json::Value& document) {
    Json::Value copy = document;
    return readInPlace(kind, copy);
}

Reading readInPlace(const Kind& kind, Json::Value& document) {
    Reading reading;
    LogRecorder recorder;
    try {
        std::unique_ptr<IJsonSerializable> object = kind.make();
        object->Deserialize(document);
        object->Serialize(reading.understood);
    } catch (const std::bad_alloc&) {
        throw;  // the machine's limit, not the document's: no reading can be judged by it
    } catch (const std::exception& e) {
        reading.failed = true;
        reading.error = e.what();
        reading.understood = Json::Value();
    } catch (...) {
        reading.failed = true;
        reading.error = "unknown exception";
        reading.understood = Json::Value();
    }
    reading.log = recorder.take();
    return reading;
}

}  // namespace zelct
