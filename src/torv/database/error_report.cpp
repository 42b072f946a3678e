#include "torv/database/error_report.h"

#include <new>

namespace torv {
namespace {

constexpr const char* kContinueQuestion = "\nIgnore this error or warning, and continue ?";
constexpr const char* kInternalError = "Internal Error !\nPlease Report.";
constexpr const char* kNoInformation = "No Error Information.";
constexpr DWORD kVolumeLabel = 0x08;

int Show(CString text, bool ask) {
    if (text.IsEmpty()) // the library's own texts are gone
        text = kInternalError;
    if (ask)
        text += kContinueQuestion;
    MessageBeep(MB_ICONEXCLAMATION);
    return AfxMessageBox(text, ask ? MB_ICONQUESTION | MB_YESNO : MB_ICONEXCLAMATION | MB_OK);
}

const char* OrNoInformation(const char* text) { return text && *text ? text : kNoInformation; }

DWORD AttributesOf(const char* path, bool& exists) {
    WIN32_FIND_DATAA found{};
    const HANDLE search = FindFirstFileA(path ? path : "", &found);
    if (search == INVALID_HANDLE_VALUE && GetLastError() == ERROR_NOT_ENOUGH_MEMORY)
        throw std::bad_alloc(); // that is no file which is not there
    exists = search != INVALID_HANDLE_VALUE;
    if (exists)
        FindClose(search);
    return found.dwFileAttributes;
}

} // namespace

int ReportError(UINT message, const char* first, bool ask) {
    CString text;
    AfxFormatString1(text, message, OrNoInformation(first));
    return Show(text, ask);
}

int ReportError(UINT message, const char* first, const char* second, bool ask) {
    CString text;
    AfxFormatString2(text, message, OrNoInformation(first), OrNoInformation(second));
    return Show(text, ask);
}

int ReportError(UINT message, const char* first, const char* second, const char* third) {
    CString text;
    AfxFormatString2(text, message, OrNoInformation(first), OrNoInformation(second));
    if (const int at = text.Find("%3"); at >= 0) // where the message begins, before anything that was filled in
        text = text.Left(at) + OrNoInformation(third) + text.Mid(at + 2);
    return Show(text, false);
}

int ReportErrorFormat(UINT message, const char* first, const char*, const char*, bool ask) {
    CString text;
    text.LoadString(message);
    // Never as a format: what surrounds "%s" is no valid one. A message has one "%s", so that the others have no place.
    if (const int at = text.Find("%s"); at >= 0)
        text = text.Left(at) + OrNoInformation(first) + text.Mid(at + 2);
    return Show(text, ask);
}

CString DescribeEntry(const char* section, const char* entry, const char* value) {
    return CString("Section : '") + section + "'\nEntry : '" + entry + "'\nValue : '" + value + "'";
}

bool CheckFile(const char* path, bool report) {
    bool exists = false;
    const DWORD attributes = AttributesOf(path, exists);
    if (exists && !(attributes & (FILE_ATTRIBUTE_DIRECTORY | kVolumeLabel)))
        return true;
    if (report)
        ReportError(kMsgFileNotFound, path);
    return false;
}

bool CheckFolder(const char* path, bool report) {
    bool exists = false;
    if ((AttributesOf(path, exists) & FILE_ATTRIBUTE_DIRECTORY) && exists)
        return true;
    if (report)
        ReportError(kMsgFolderNotFound, path);
    return false;
}

} // namespace torv
