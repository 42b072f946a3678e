#pragma once

#include "torv/platform/platform.h"

/// What the databases tell the user, in message boxes with texts from the string resources.
namespace torv {

enum DatabaseMessage : UINT {
    kMsgDatabaseFailed = 10100,  ///< what, details
    kMsgInvalidLine = 10102,     ///< file, the line
    kMsgInvalidKey = 10103,      ///< key
    kMsgKeyUsed = 10104,         ///< key, section, file
    kMsgFileNotFound = 10105,    ///< path
    kMsgSectionNotFound = 10106, ///< section, file
    kMsgFunctionError = 10107,   ///< name of the function that failed
    kMsgKeyNotFound = 10108,     ///< key, section, file: of which the key is shown
    kMsgFolderNotFound = 10109,  ///< folder
    kMsgSingerUsed = 10110,      ///< singer, file
    kMsgInvalidSection = 10111,  ///< section, file
};

/// Fills "%1" ("%2" and "%3") of the message, beeps, shows it, and returns the answer. Asking adds the question whether
/// to go on, with Yes (IDYES: go on) and No; otherwise there is an OK to press.
int ReportError(UINT message, const char* first, bool ask = false);
int ReportError(UINT message, const char* first, const char* second, bool ask = false);
int ReportError(UINT message, const char* first, const char* second, const char* third);
/// Fills "%s" with the first argument. "%1" and "%2" stay as they are: the one message that is shown so has always been
/// seen with them.
int ReportErrorFormat(UINT message, const char* first, const char* second, const char* third, bool ask = false);

/// An entry of a sectioned file, on three lines, as an argument of a message.
CString DescribeEntry(const char* section, const char* entry, const char* value);

/// Whether the path names a file (a folder); when it does not and `report` is set, the user is told.
bool CheckFile(const char* path, bool report);
bool CheckFolder(const char* path, bool report);

} // namespace torv
