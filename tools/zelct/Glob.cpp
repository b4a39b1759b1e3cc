#include "Glob.h"

#include <vector>

namespace zelct {

namespace {

std::vector<std::string> namesOf(const std::string& path) {
    std::vector<std::string> names;
    size_t start = 0;
    while (true) {
        const size_t slash = path.find('/', start);
        names.push_back(path.substr(start, slash - start));
        if (slash == std::string::npos) {
            return names;
        }
        start = slash + 1;
    }
}

// A "[...]" at `p` against one character; `p` is left after the "]". An unclosed "[" stands
// for itself.
bool classMatches(const std::string& pattern, size_t& p, char c) {
    const size_t close = pattern.find(']', p + 2);
    if (close == std::string::npos) {
        ++p;
        return c == '[';
    }
    bool found = false;
    for (size_t i = p + 1; i < close; ++i) {
        if (i + 2 < close && pattern[i + 1] == '-') {
            found = found || (c >= pattern[i] && c <= pattern[i + 2]);
            i += 2;
        } else {
            found = found || c == pattern[i];
        }
    }
    p = close + 1;
    return found;
}

// One name against one name's pattern, "*" backtracking to its last place only: a name is
// short, and this never costs more than its length times the pattern's.
bool nameMatches(const std::string& pattern, const std::string& name) {
    size_t p = 0;
    size_t n = 0;
    size_t starP = std::string::npos;
    size_t starN = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starP = ++p;
            starN = n;
            continue;
        }
        size_t next = p + 1;
        bool same = false;
        if (p < pattern.size()) {
            if (pattern[p] == '[') {
                next = p;
                same = classMatches(pattern, next, name[n]);
            } else {
                same = pattern[p] == '?' || pattern[p] == name[n];
            }
        }
        if (same) {
            p = next;
            ++n;
        } else if (starP != std::string::npos) {
            p = starP;
            n = ++starN;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') {
        ++p;
    }
    return p == pattern.size();
}

}  // namespace

bool globMatches(const std::string& pattern, const std::string& path) {
    const std::vector<std::string> parts = namesOf(pattern);
    const std::vector<std::string> names = namesOf(path);
    // can[i][j]: the first i parts match the first j names. Filled row by row; "**" takes any
    // number of names, so the table stays quadratic however many "**" there are.
    std::vector<std::vector<bool>> can(parts.size() + 1,
                                       std::vector<bool>(names.size() + 1, false));
    can[0][0] = true;
    for (size_t i = 1; i <= parts.size(); ++i) {
        const bool any = parts[i - 1] == "**";
        for (size_t j = 0; j <= names.size(); ++j) {
            if (any) {
                can[i][j] = can[i - 1][j] || (j > 0 && can[i][j - 1]);
            } else {
                can[i][j] = j > 0 && can[i - 1][j - 1] && nameMatches(parts[i - 1], names[j - 1]);
            }
        }
    }
    return can[parts.size()][names.size()];
}

}  // namespace zelct
