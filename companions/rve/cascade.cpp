#include "cascade.h"

#include "place.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace rve {

namespace {

using Four [[gnu::vector_size(16)]] = float;
using Mask [[gnu::vector_size(16)]] = int;

Four Load(const float* values) {
    Four four;
    std::memcpy(&four, values, sizeof four);
    return four;
}

void Store(float* values, const Four& four) { std::memcpy(values, &four, sizeof four); }

} // namespace

template <int kGroups>
void Cascade<kGroups>::Reset() {
    m_y1.fill(0);
    m_y2.fill(0);
}

template <int kGroups>
void Cascade<kGroups>::Set(int stage, const Poles& poles) {
    m_a[Place(stage)] = 1 - poles.b - poles.c;
    m_b[Place(stage)] = poles.b;
    m_c[Place(stage)] = poles.c;
}

template <int kGroups>
void Cascade<kGroups>::MultiplyGainSquared(int stage, double cosine, double& above, double& below) const {
    above *= m_a[Place(stage)] * m_a[Place(stage)];
    below *= std::max(PolynomialSquared(m_b[Place(stage)], m_c[Place(stage)], cosine), 1e-12);
}

template <int kGroups>
void Cascade<kGroups>::Run(float* samples, int count) {
    Four a[kGroups], b[kGroups], c[kGroups], y1[kGroups], y2[kGroups];
    for (int group = 0; group < kGroups; ++group) {
        a[group] = Load(&m_a[Place(4 * group)]);
        b[group] = Load(&m_b[Place(4 * group)]);
        c[group] = Load(&m_c[Place(4 * group)]);
        y1[group] = Load(&m_y1[Place(4 * group)]);
        y2[group] = Load(&m_y2[Place(4 * group)]);
    }
    // At turn t stage s takes sample t - s. At the beginning the later stages, and at the end the earlier ones, have
    // none and stay as they are.
    const auto turn = [&](int t, auto isPartial) {
        Four x[kGroups];
        for (int group = 0; group < kGroups; ++group) {
            const Four before = group ? y1[group - 1] : Four{0, 0, 0, t < count ? samples[t] : 0};
            x[group] = __builtin_shufflevector(before, y1[group], 3, 4, 5, 6);
        }
        for (int group = 0; group < kGroups; ++group) {
            const Four y = a[group] * x[group] + b[group] * y1[group] + c[group] * y2[group];
            if constexpr (isPartial) {
                const Mask sample = t - 4 * group - Mask{0, 1, 2, 3};
                const Mask has = (sample >= 0) & (sample < count);
                y2[group] = has ? y1[group] : y2[group];
                y1[group] = has ? y : y1[group];
            } else {
                y2[group] = y1[group];
                y1[group] = y;
            }
        }
        if (t >= kStages - 1)
            samples[t - (kStages - 1)] = y1[kGroups - 1][3];
    };
    int t = 0;
    for (; t < kStages - 1; ++t)
        turn(t, std::true_type());
    for (; t < count; ++t)
        turn(t, std::false_type());
    for (; t < count + kStages - 1; ++t)
        turn(t, std::true_type());
    for (int group = 0; group < kGroups; ++group) {
        Store(&m_y1[Place(4 * group)], y1[group]);
        Store(&m_y2[Place(4 * group)], y2[group]);
    }
}

template class Cascade<1>;
template class Cascade<3>;

} // namespace rve
