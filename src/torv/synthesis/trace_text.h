#pragma once

#include "torv/platform/platform.h"

namespace torv {

/// Hexadecimal bytes, sixteen a line; null or no length gives an empty text.
CString TraceText(const BYTE* data, int length);
/// Three-byte messages, one a line below a line that tells the length; an unfinished message is left out.
CString TraceMessages(const BYTE* data, int length);

} // namespace torv
