// Writes the manual page and bash's completion while the command is built.
#include "command_line.h"
#include "manual.h"

#include <cstdio>
#include <fstream>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: torv_manual MANUAL-PAGE COMPLETION\n");
        return 2;
    }
    const CommandLine line;
    const bool isWritten = (std::ofstream(argv[1]) << ManualPage(line.app, kTorvVersion)).flush().good() &&
                           (std::ofstream(argv[2]) << BashCompletion(line.app)).flush().good();
    return isWritten ? 0 : 1;
}
