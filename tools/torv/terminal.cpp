#include "terminal.h"

#ifdef _WIN32
#include <io.h>

bool IsTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }
#else
#include <unistd.h>

bool IsTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }
#endif
