#pragma once

#include <json/json.h>

#include "zelCommonTypesExport.h"

// Base of every model class: it writes itself into a Json::Value and reads itself back.
//
// Serialize sets its keys in the value it is given and never clears it; Deserialize reads
// from the value it is given, takes defaults for missing keys and reports nothing. Reading
// may add null members to the caller's document (non-const member access), and a value of
// a JSON type that jsoncpp cannot convert raises Json::LogicError from the conversion.
class ZELCT_API IJsonSerializable {
public:
    IJsonSerializable();
    virtual ~IJsonSerializable();

    virtual void Serialize(Json::Value& root) const = 0;
    virtual void Deserialize(Json::Value& root) = 0;
};
