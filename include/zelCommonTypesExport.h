#pragma once

// The library is built with hidden visibility; ZELCOMMONTYPES_API marks what it exports.
#if defined(__GNUC__)
#define ZELCOMMONTYPES_API __attribute__((visibility("default")))
#else
#define ZELCOMMONTYPES_API
#endif
