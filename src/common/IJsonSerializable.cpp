#include "IJsonSerializable.h"

// Out of line so that the vtable and the type information live in the library alone.
IJsonSerializable::IJsonSerializable() = default;

IJsonSerializable::~IJsonSerializable() = default;
