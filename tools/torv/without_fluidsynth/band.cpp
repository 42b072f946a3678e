// Where there is no library that plays instruments.
#include "band.h"

#include "errors.h"

std::unique_ptr<torv::songs::SoundSource> MakeBand(const torv::songs::Song&, const BandPlan&) {
#ifdef _WIN32
    throw InputError{"--band: there is no band on Windows: write the voices alone, and mix them with one (torv mix)"};
#else
    throw InputError{"--band: this torv was built without FluidSynth: install libfluidsynth-dev and build it again"};
#endif
}
