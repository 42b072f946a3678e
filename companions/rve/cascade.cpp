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
    m_made.fill(0);
    m_step.fill(0);
}

void Cascade::Set(int stage, const Poles& poles) {
    m_a[PlaceOf(stage)] = 1 - poles.b - poles.c;
    m_squared[PlaceOf(stage)] = -poles.c;
}

Cascade::Gain Cascade::GainOf(int stage) const {
    const double a = m_a[PlaceOf(stage)], squared = m_squared[PlaceOf(stage)];
    return {a * a, PolynomialSquared(1 - a + squared, -squared)};
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
            m_squared[group] = Load(&cascade.m_squared[first]);
            m_keptMade[group] = Load(&cascade.m_made[first]);
            m_keptStep[group] = Load(&cascade.m_step[first]);
        }
    }

    /// Of more samples than there are stages.
    void Run() {
        Four made[kGroups] = {}, step[kGroups] = {};
        const auto turn = [&](float sample) {
            Four x = __builtin_shufflevector(made[kGroups - 1], Four{sample}, 4, 0, 1, 2);
            for (int group = 0; group < kGroups; ++group) {
                step[group] = m_a[group] * x + m_squared[group] * step[group] - m_a[group] * made[group];
                x = made[group];
                made[group] += step[group];
            }
        };
        const auto last = [&] { return made[kGroups - 1][kLanes - 1]; };
        constexpr int kLast = kStages - 1;

        for (int lane = 0; lane < kLanes; ++lane)
            for (int group = 0; group < kGroups; ++group) {
                made[group] = kLane[lane] ? m_keptMade[group] : made[group];
                step[group] = kLane[lane] ? m_keptStep[group] : step[group];
                turn(m_samples[kGroups * lane + group]);
            }
        m_samples[0] = last();
        for (int t = kStages; t < m_count - 1; ++t) {
            turn(m_samples[t]);
            m_samples[t - kLast] = last();
        }
        float sample = m_samples[m_count - 1];
        for (int lane = 0; lane < kLanes; ++lane)
            for (int group = 0; group < kGroups; ++group) {
                turn(std::exchange(sample, 0.0F));
                m_samples[m_count - 1 + kGroups * lane + group - kLast] = last();
                m_keptMade[group] = kLane[lane] ? made[group] : m_keptMade[group];
                m_keptStep[group] = kLane[lane] ? step[group] : m_keptStep[group];
            }
        for (int group = 0; group < kGroups; ++group) {
            Store(&m_cascade.m_made[Place(kLanes * group)], m_keptMade[group]);
            Store(&m_cascade.m_step[Place(kLanes * group)], m_keptStep[group]);
        }
    }

private:
    Cascade& m_cascade;
    float* const m_samples;
    const int m_count;
    Four m_a[kGroups], m_squared[kGroups];
    Four m_keptMade[kGroups], m_keptStep[kGroups];
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
            m_step[s] = m_a[s] * samples[i] + m_squared[s] * m_step[s] - m_a[s] * m_made[s];
            samples[i] = m_made[s] += m_step[s];
        }
    }
}

} // namespace rve
