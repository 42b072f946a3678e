#include "standard_streams.h"

#ifdef _WIN32
#include <cstdio>
#include <fcntl.h>
#include <io.h>

void MakeStandardInputBinary() { _setmode(_fileno(stdin), _O_BINARY); }
void MakeStandardOutputBinary() { _setmode(_fileno(stdout), _O_BINARY); }
#else

void MakeStandardInputBinary() {}
void MakeStandardOutputBinary() {}
#endif
