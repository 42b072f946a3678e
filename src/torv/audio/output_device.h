#pragma once

#include "torv/platform/platform.h"

namespace torv {

/// The number of the output device of this product name, whatever the case of its letters; -1 when there is none.
int FindOutputDevice(const CString& name);

/// "Cannot output waves (...)" with the system's own text for the error. The calling thread waits at rest.
void ShowOutputError(MMRESULT error);

} // namespace torv
