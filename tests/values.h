#pragma once

#include <sstream>
#include <string>

/// Several values as one text, blanks between them: compared as one, and shown when they differ. In braces they are
/// made from left to right, so that calls may stand there which come one after another.
struct Values : std::string {
    template <class... Value>
    explicit Values(const Value&... values) {
        std::ostringstream text;
        const char* gap = "";
        ((text << gap << values, gap = " "), ...);
        assign(text.str());
    }
};
