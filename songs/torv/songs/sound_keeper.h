#pragma once

#include "torv/songs/export.h"
#include "torv/songs/performance.h"

#include <vector>

namespace torv::songs {

/// Takes a part's sound as it is rendered and keeps it at a rate for listening in a page, 22050 or 24000 Hz: what lies
/// above is filtered away. Memory: about 45,000 bytes a second of sound; throws std::bad_alloc.
class TORV_SONGS_API SoundKeeper {
public:
    /// `rate` is the one of what comes in, Hz.
    explicit SoundKeeper(unsigned rate);
    /// The next sample, full scale 1.
    void Add(float sample);
    /// What has come in, its length rounded up to the lower rate; the keeper is empty then.
    KeptSound Take();

private:
    void Keep();

    const unsigned m_rate;
    const unsigned m_step; ///< samples that become one
    std::vector<float> m_weights;
    std::vector<float> m_latest; ///< as many samples as there are weights, twice, so that they lie in a row
    size_t m_place = 0;
    size_t m_untilNext;
    KeptSound m_kept;
};

} // namespace torv::songs
