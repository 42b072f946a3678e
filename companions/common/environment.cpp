#include "environment.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <cstdlib>
#endif

namespace companion {

#if defined(_WIN32)

std::string Environment(const char* name) {
    std::string text;
    DWORD length = 0;
    do { // until the buffer holds it: the answer is its length then, else what it takes
        text.resize(length);
        length = GetEnvironmentVariableA(name, text.data(), length);
    } while (length > text.size());
    text.resize(length);
    return text;
}

#else

std::string Environment(const char* name) {
    const char* const text = std::getenv(name);
    return text ? text : "";
}

#endif

} // namespace companion
