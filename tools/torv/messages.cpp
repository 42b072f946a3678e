#include "messages.h"

#include <cstdio>

void Remark(bool isQuiet, const std::string& text) {
    if (!isQuiet)
        std::fprintf(stderr, "torv: %s\n", text.c_str());
}

std::string Counted(size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}
