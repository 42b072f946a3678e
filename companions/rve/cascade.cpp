#include "cascade.h"

#include "place.h"

#include <cstring>
#include <utility>

namespace rve {

namespace {

constexpr int kLanes = 4;

using Four [[gnu::vector_size(16)]] = float;
using Mask [[gnu::vector_size(16)]] = int;

Four Load(const float* values) {
    Four four;
    std::memcpy(&four, values, sizeof four);
    return four;
}

void Store(float* values, const Four& four) { std::memcpy(values, &four, sizeof four); }

constexpr Mask kLane[] = {{-1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, -1}};

} // namespace

void Cascade::Reset() {
    m_y1.fill(0);
    m_y2.fill(0);
}

void Cascade::Set(int stage, const Poles& poles) {
    m_a[PlaceOf(stage)] = 1 - poles.b - poles.c;
    m_b[PlaceOf(stage)] = poles.b;
    m_c[PlaceOf(stage)] = poles.c;
}

Cascade::Gain Cascade::GainOf(int stage) const {
    const double a = m_a[PlaceOf(stage)];
    return {a * a, PolynomialSquared(m_b[PlaceOf(stage)], m_c[PlaceOf(stage)])};
}

/// At turn t stage s takes sample t - s. At the beginning the later stages, and at the end the earlier ones, have none:
/// what they make then is nothing, and what they had made is given to them before their first sample and taken from
/// them after their last.
class Cascade::Turns {
public:
    Turns(Cascade& cascade, float* samples, int count) : m_cascade(cascade), m_samples(samples), m_count(count) {
        for (int group = 0; group < kGroups; ++group) {
            const size_t first = Place(kLanes * group);
            m_a[group] = Load(&cascade.m_a[first]);
            m_b[group] = Load(&cascade.m_b[first]);
            m_c[group] = Load(&cascade.m_c[first]);
            m_kept1[group] = Load(&cascade.m_y1[first]);
            m_kept2[group] = Load(&cascade.m_y2[first]);
        }
    }

    /// Of more samples than there are stages.
    void Run() {
        Four y1[kGroups] = {}, y2[kGroups] = {};
        const auto turn = [&](float sample) {
            Four x = __builtin_shufflevector(y1[kGroups - 1], Four{sample}, 4, 0, 1, 2);
            for (int group = 0; group < kGroups; ++group) {
                const Four y = m_a[group] * x + m_b[group] * y1[group] + m_c[group] * y2[group];
                x = y1[group];
                y2[group] = y1[group];
                y1[group] = y;
            }
        };
        const auto made = [&] { return y1[kGroups - 1][kLanes - 1]; };
        constexpr int kLast = kStages - 1;

        for (int lane = 0; lane < kLanes; ++lane)
            for (int group = 0; group < kGroups; ++group) {
                y1[group] = kLane[lane] ? m_kept1[group] : y1[group];
                y2[group] = kLane[lane] ? m_kept2[group] : y2[group];
                turn(m_samples[kGroups * lane + group]);
            }
        m_samples[0] = made();
        for (int t = kStages; t < m_count - 1; ++t) {
            turn(m_samples[t]);
            m_samples[t - kLast] = made();
        }
        float last = m_samples[m_count - 1];
        for (int lane = 0; lane < kLanes; ++lane)
            for (int group = 0; group < kGroups; ++group) {
                turn(std::exchange(last, 0.0F));
                m_samples[m_count - 1 + kGroups * lane + group - kLast] = made();
                m_kept1[group] = kLane[lane] ? y1[group] : m_kept1[group];
                m_kept2[group] = kLane[lane] ? y2[group] : m_kept2[group];
            }
        for (int group = 0; group < kGroups; ++group) {
            Store(&m_cascade.m_y1[Place(kLanes * group)], m_kept1[group]);
            Store(&m_cascade.m_y2[Place(kLanes * group)], m_kept2[group]);
        }
    }

private:
    Cascade& m_cascade;
    float* const m_samples;
    const int m_count;
    Four m_a[kGroups], m_b[kGroups], m_c[kGroups];
    Four m_kept1[kGroups], m_kept2[kGroups];
};

void Cascade::Run(float* samples, int count) {
    if (count > kStages)
        Turns(*this, samples, count).Run();
    else
        RunInTurn(samples, count);
}

/// One stage after the other, for few samples.
void Cascade::RunInTurn(float* samples, int count) {
    for (int stage = 0; stage < kStages; ++stage) {
        const size_t s = PlaceOf(stage);
        for (int i = 0; i < count; ++i) {
            const float y = m_a[s] * samples[i] + m_b[s] * m_y1[s] + m_c[s] * m_y2[s];
            m_y2[s] = m_y1[s];
            m_y1[s] = samples[i] = y;
        }
    }
}

} // namespace rve
