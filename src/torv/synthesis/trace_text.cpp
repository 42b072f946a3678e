#include "torv/synthesis/trace_text.h"

namespace torv {

CString TraceText(const BYTE* data, int length) {
    CString text;
    for (int i = 0; data && i < length; ++i) {
        if (i > 0 && i % 16 == 0)
            text += "\n                 :";
        CString byte;
        byte.Format("%02X ", data[i]);
        text += byte;
    }
    return text;
}

CString TraceMessages(const BYTE* data, int length) {
    CString text;
    text.Format("TraceEvent2 Size=%d\n", length);
    for (int i = 0; data && i + 3 <= length; i += 3) {
        CString message;
        message.Format("%02X %02X %02X\n", data[i], data[i + 1], data[i + 2]);
        text += message;
    }
    return text;
}

} // namespace torv
