#pragma once

#include <json/json.h>

#include "zelCommonTypesExport.h"

/// Base of every model class: it writes itself into a Json::Value and reads itself back.
///
/// Serialize sets its keys in the value it is given and never clears it; Deserialize reads
/// from the value it is given, takes defaults for missing keys and reports nothing. Reading
/// may add null members to the caller's document (non-const member access).
///
/// Exceptions, shared by every reader: the library catches nothing, so jsoncpp's
/// Json::LogicError reaches the caller when a member holds a JSON type its conversion cannot
/// take (an array or an object where a scalar belongs, text where a number or a flag belongs,
/// a negative number for an unsigned field, a number outside the field's range), or when the
/// value handed over, or a member holding a record or a list element, is neither an object nor
/// null. Members read before the throw keep their new values. Nothing else is thrown. Each
/// header names its members that throw on a line "Members that throw:" (a test holds the
/// readers to it) and states only what differs from this rule.
class ZELCOMMONTYPES_API IJsonSerializable {
public:
    /// Nothing to set up: the interface holds no state.
    IJsonSerializable();
    /// Virtual, so that a record deleted through the interface is destroyed whole.
    virtual ~IJsonSerializable();

    /// Writes the record's keys into root, leaving any other member of root as it is.
    virtual void Serialize(Json::Value& root) const = 0;
    /// Reads the record from root, taking the record's default for every missing key.
    /// \throws Json::LogicError when a member holds a JSON type its field cannot take (see
    ///         the class description).
    virtual void Deserialize(Json::Value& root) = 0;
};
