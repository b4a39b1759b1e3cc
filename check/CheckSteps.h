#pragma once

// What the steps of a check share with one another; not for the tool's commands.
#include <json/json.h>

#include <cstddef>
#include <string>

#include "Check.h"
#include "SourceText.h"

namespace zelct {

// A value as a finding line quotes it: compact JSON, a long container by its size.
std::string quoted(const Json::Value& value);

// An Unusable outcome with the problem's line, without its place.
Outcome unusable(std::string problem);

void placeOutcome(Outcome& outcome, Position position);

// A JSON text cut out of the file, as the device's parser reads it; null when it is none.
Json::Value parsedSlice(const std::string& bytes, size_t begin, size_t end);

// Findings of the text itself, before any class reads it: what the device's parser accepts
// and reads otherwise than a strict reader would. `document` is the text's, as parsed.
void addReadingFindings(const SourceText& source, const Json::Value& document, KeptFindings& kept);

}  // namespace zelct
