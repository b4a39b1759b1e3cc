#pragma once

#include <ostream>
#include <string>

namespace zelct {

// `zelct alarms`: the alarm catalogue (type, enumerator, severity, description), or with a
// file the set of raised alarms that the library reads from it. Returns the exit code:
// 0, or 2 when the file cannot be used.
int showAlarms(const std::string& file, bool json, std::ostream& out, std::ostream& err);

}  // namespace zelct
