#pragma once

#include "score_object.h"

#include <torv/synthesis/stream_singer.h>

namespace torv::c {

/// A score's parts as the engine sings them, mixed block by block: the parts side by side on as many threads as there
/// are processors.
class Singing {
public:
    /// Throws Failure without the engine.
    Singing(ScoreObject& score, const torv_sing_options& options);

    uint32_t Rate() const { return m_rate; }
    uint32_t Channels() const { return m_channels; }
    bool IsMix() const { return m_voices.size() > 1; }
    /// The next frames, interleaved and at most kBlock; 0 at the end. Throws Failure when the engine gives up.
    size_t Next(std::vector<float>& frames);
    /// 0..1 of all there is.
    double Done() const;

    static constexpr size_t kBlock = 16384; ///< frames

private:
    struct Voice {
        std::unique_ptr<StreamSinger> singer;
        double left;
        double right;
        std::vector<int16_t> waiting; ///< sung, and not yet in a block
        bool hasFailed = false;
    };

    void Add(const SungPart& part, double pan);
    void SingAhead(uint64_t frames);
    static void SingAhead(Voice& voice, uint64_t frames) noexcept;
    void Mix(size_t count, std::vector<float>& frames);

    uint32_t m_rate;
    uint32_t m_channels = 1;
    uint64_t m_skip; ///< frames of the streams before the first that is wanted
    uint64_t m_left; ///< frames that are still wanted
    CRtSynthesis m_engine;
    std::vector<Voice> m_voices;
    std::vector<float> m_sumLeft;
    std::vector<float> m_sumRight;
};

} // namespace torv::c
