#pragma once

#include "timeline.h"

#include <algorithm>

namespace rve {

/// Icon styles by the low byte of their code: 1 stretches a shape, 2 tightens it.
inline float StyleTime(const Shape& shape, float gentle, float strong) {
    return shape.style == 1 ? gentle : shape.style == 2 ? strong : 1.0F;
}

/// From 0 to 1 with level ends.
inline float Smoothstep(float x) {
    x = std::clamp(x, 0.0F, 1.0F);
    return x * x * (3 - 2 * x);
}

} // namespace rve
