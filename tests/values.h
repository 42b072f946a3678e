#pragma once

#include <sstream>
#include <string>

/// Several values as one text, blanks between them: compared as one, and shown when they differ.
template <class... Value>
std::string Values(const Value&... values) {
    std::ostringstream text;
    const char* gap = "";
    ((text << gap << values, gap = " "), ...);
    return text.str();
}
