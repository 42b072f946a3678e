#include "torv/platform/afx/message.h"

#include "torv/platform/message_box.h"
#include "torv/platform/system_default.h"

int AfxMessageBox(LPCSTR text, UINT type, [[maybe_unused]] UINT helpId) {
    return torv::ShowMessageBox(torv::ActiveWindow(), text, nullptr, type);
}

void AfxFormatString1(CString& result, UINT id, LPCSTR first) {
    CString text;
    text.LoadString(id);
    text.Replace("%1", first);
    result = text;
}

void AfxFormatString2(CString& result, UINT id, LPCSTR first, LPCSTR second) {
    CString text;
    text.LoadString(id);
    CString formatted;
    // In one pass: a "%2" that came with the first argument is the user's text.
    for (LPCSTR at = text; *at; ++at) {
        if (at[0] == '%' && (at[1] == '1' || at[1] == '2'))
            formatted += *++at == '1' ? first : second;
        else
            formatted += *at;
    }
    result = formatted;
}
