#pragma once

// libzelCommonTypesCheck is built with hidden visibility; ZELCOMMONTYPESCHECK_API marks what
// it exports.
#if defined(__GNUC__)
#define ZELCOMMONTYPESCHECK_API __attribute__((visibility("default")))
#else
#define ZELCOMMONTYPESCHECK_API
#endif
