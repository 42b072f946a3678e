#pragma once

#ifdef __SSE__
#include <xmmintrin.h>
#endif

namespace rve {

/// While it lives, this thread's results that are too small for a float's exponent are zero: levels and resonances that
/// die away come to such numbers, and the processor takes a hundred times as long for each. Nothing of them could be
/// heard.
class WithoutSubnormals {
public:
#ifdef __SSE__
    WithoutSubnormals() : m_before(_mm_getcsr()) { _mm_setcsr(m_before | _MM_FLUSH_ZERO_ON); }
    ~WithoutSubnormals() { _mm_setcsr(m_before); }
#else
    WithoutSubnormals() = default;
#endif
    WithoutSubnormals(const WithoutSubnormals&) = delete;
    WithoutSubnormals& operator=(const WithoutSubnormals&) = delete;

private:
#ifdef __SSE__
    const unsigned m_before;
#endif
};

} // namespace rve
