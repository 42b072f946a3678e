#pragma once

#include <torv/torv.h>

namespace torv::songs {

/// Gives a track's voice controls the parameters of a voice from a tick on. Calls go forward in time.
class VoiceParameters {
public:
    explicit VoiceParameters(CSequenceObject* track);
    void Set(DWORD tick, const tagVoiceChangeParam& parameters);

private:
    CSequenceObject* m_track;
    tagVoiceChangeParam m_now; ///< what is in force
};

} // namespace torv::songs
