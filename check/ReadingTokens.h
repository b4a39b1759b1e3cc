#pragma once

// The pieces of a JSON text that the scans take apart; not for the tool's commands.
#include <cstddef>
#include <string>

namespace zelct {

bool isSpace(char c);

bool startsComment(const std::string& text, size_t pos, size_t end);
size_t commentEnd(const std::string& text, size_t pos, size_t end);
size_t stringEnd(const std::string& text, size_t pos, size_t end);

bool isJsonNumber(const char* p, const char* end);
bool startsNumber(char c);

size_t escapedNul(const std::string& text, size_t pos, size_t end);

// Past the literal (a number, true, false, null, or a word the reader refuses) at `pos`.
size_t literalEnd(const std::string& text, size_t pos, size_t end);

}  // namespace zelct
