#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace zelct {

// A count of zero is no value for ptime's options: the library takes it, and a packet of no
// samples has a packet time of 0 us, whose allowed range wraps around below zero.
inline CLI::Validator atLeastOne() {
    return CLI::Validator(
        [](std::string& text) {
            unsigned long value = 0;
            const bool zero = CLI::detail::lexical_cast(text, value) && value == 0;
            return zero ? std::string("must be 1 or more, not 0") : std::string();
        },
        "", "at least one");
}

// An empty video format would otherwise read as none given, and print every format as if
// none had been asked for (`zelct video "$FORMAT"` with the variable unset).
inline CLI::Validator namesSomething() {
    return CLI::Validator(
        [](std::string& text) {
            return text.empty() ? std::string(
                                      "an empty name names no format: give its text "
                                      "(1080P59) or its number")
                                : std::string();
        },
        "", "not empty");
}

}  // namespace zelct
