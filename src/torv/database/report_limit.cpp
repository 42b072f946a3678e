#include "torv/database/report_limit.h"

#include <utility>

namespace torv {

void ReportLimit::TellRest(const char* what) {
    const int rest = std::exchange(m_errors, 0) - m_most;
    if (rest <= 0)
        return;
    CString text;
    text.Format("%d more of such errors in", rest);
    MessageBeep(MB_ICONEXCLAMATION);
    AfxMessageBox(text + "\n\n" + what, MB_ICONEXCLAMATION | MB_OK);
}

} // namespace torv
