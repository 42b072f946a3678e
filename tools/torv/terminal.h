#pragma once

#include <cstdio>

/// Whether somebody sits before this stream.
bool IsTerminal(std::FILE* stream);
