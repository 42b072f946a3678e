#include "torv/database/file_text.h"

#include "torv/platform/or_zero.h"
#include "torv/typed_file/typed_file.h"

#include <algorithm>

namespace torv {
namespace {

constexpr const char* kExact = "Bytes"; // behind the key

int DigitOf(char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    return static_cast<int>(digits.find(c)); // -1 when it is none
}

} // namespace

CString FileText(const CString& text) {
    std::string bytes = text.GetStdString();
    std::replace(bytes.begin(), bytes.end(), ';', ',');
    std::replace_if(
        bytes.begin(), bytes.end(), [](unsigned char c) { return c < ' '; }, ' ');
    CString storable(std::move(bytes));
    storable.TrimLeft();
    storable.TrimRight();
    return storable;
}

void WriteEntry(CxTypedFile& file, const char* section, const char* key, const char* value) {
    OrBadAlloc(file.WriteAt(section, key, value));
}

void WriteText(CxTypedFile& file, const char* section, const char* key, const CString& text) {
    const CString storable = FileText(text);
    WriteEntry(file, section, key, storable);
    if (storable == text)
        return;
    CString digits;
    for (const unsigned char byte : text.GetStdString()) {
        CString two;
        two.Format("%02x", byte);
        digits += two;
    }
    WriteEntry(file, section, CString(key) + kExact, digits);
}

CString ReadText(const CxTypedFile& file, const char* section, const char* key) {
    CString storable = file.ReadAt(section, key, nullptr);
    const CString digits = file.ReadAt(section, CString(key) + kExact, nullptr);
    std::string bytes;
    for (int i = 0; i + 1 < digits.GetLength(); i += 2) {
        const int byte = DigitOf(digits[i]) * 16 + DigitOf(digits[i + 1]);
        if (DigitOf(digits[i]) < 0 || DigitOf(digits[i + 1]) < 0 || byte == 0)
            return storable;
        bytes += static_cast<char>(byte);
    }
    // A user who edits the file edits the plain text.
    CString exact(std::move(bytes));
    return FileText(exact) == storable ? exact : storable;
}

} // namespace torv
