#include "torv/songs/wave_outputs.h"

#include <torv/torv.h>

namespace torv::songs {

std::vector<std::string> WaveOutputNames() {
    CStringList list;
    CWaveOut::EnumWaveOutDevices(list);
    std::vector<std::string> names;
    for (POSITION at = list.GetHeadPosition(); at;)
        names.emplace_back(list.GetNext(at));
    return names;
}

} // namespace torv::songs
