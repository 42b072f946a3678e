#pragma once

#include "torv/platform/platform.h"

class CxTypedFile;

namespace torv {

/// A text as a sectioned file gives it back, where a value ends at ";" or a control byte and has no blanks around it.
CString FileText(const CString& text);

/// An entry of a file that must not lack it: throws std::bad_alloc when it cannot be stored.
void WriteEntry(CxTypedFile& file, const char* section, const char* key, const char* value);

/// Any text in a section: as FileText under its key, and when that is another one, byte for byte in hexadecimal digits
/// under a second key, which older readers pass over. Written again, it leaves no second key that is not needed.
void WriteText(CxTypedFile& file, const char* section, const char* key, const CString& text);
CString ReadText(const CxTypedFile& file, const char* section, const char* key);

} // namespace torv
