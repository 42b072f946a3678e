#pragma once

#include "torv/platform/export.h"
#include "torv/platform/system.h"

namespace torv {

#if defined(_WIN32)

// The system stops a thread wherever it is.
inline void SafePoint() {}
class AtRest {
public:
    AtRest() {}
    AtRest(const AtRest&) = delete;
    AtRest& operator=(const AtRest&) = delete;
};

#else

class ThreadState;

/// Where a suspended thread stops, besides the platform's own waits (Sleep, GetMessageA, PeekMessageA, SendMessageA,
/// WaitForSingleObject, SuspendThread) and wave-out calls. Long work calls it now and then, holding no lock; it costs
/// one load while nobody suspends.
TORV_API void SafePoint();

/// Around a wait that is none of the platform's: while it lives its thread counts as stopped, so that whoever suspends
/// it need not wait for it. Its end is a safe point. What runs inside touches nothing that a suspension protects.
class TORV_API AtRest {
public:
    AtRest();
    AtRest(const AtRest&) = delete;
    AtRest& operator=(const AtRest&) = delete;
    ~AtRest();

private:
    ThreadState& m_thread;
};

#endif

} // namespace torv
