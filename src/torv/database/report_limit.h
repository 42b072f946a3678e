#pragma once

#include "torv/platform/platform.h"

namespace torv {

/// How many errors of one file or list are shown one by one: what is damaged must not keep the user pressing OK for
/// ever.
class ReportLimit {
public:
    static constexpr int kMost = 10;

    explicit ReportLimit(int most = kMost) : m_most(most) {}

    /// Counts one more error; whether it is to be shown.
    bool MayReport() { return ++m_errors <= m_most; }
    /// Shows how many errors of `what` were not shown, in one more message when there are any, and counts anew.
    void TellRest(const char* what);

private:
    int m_most;
    int m_errors = 0;
};

} // namespace torv
