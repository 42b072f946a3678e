#pragma once

#include <cstdlib>
#include <string>

/// What this process and the libraries in it find in their environment from now on.
inline void SetEnvironment(const char* name, const std::string& value) {
#if defined(_WIN32)
    _putenv_s(name, value.c_str());
#else
    setenv(name, value.c_str(), 1);
#endif
}
