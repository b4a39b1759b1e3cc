#pragma once

// The library is built with hidden visibility; ZELCT_API marks what it exports.
#if defined(__GNUC__)
#define ZELCT_API __attribute__((visibility("default")))
#else
#define ZELCT_API
#endif
