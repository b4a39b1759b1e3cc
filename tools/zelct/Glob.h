#pragma once

#include <string>

namespace zelct {

// Whether a path ("devices/a/system-info.json", folders separated by "/") matches a pattern in
// the form shells and editors write them: "*" any characters within a name, "?" one of them,
// "**" as a whole name any number of folders (none included), "[abc]" one of those
// characters. Nothing else is special; a name starting with "." is matched like any other.
bool globMatches(const std::string& pattern, const std::string& path);

}  // namespace zelct
