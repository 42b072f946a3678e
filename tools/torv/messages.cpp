#include "messages.h"

#include <cstdio>

void Remark(bool isQuiet, const std::string& text) {
    if (!isQuiet)
        std::fprintf(stderr, "torv: %s\n", text.c_str());
}
