#include "torv/platform/posix/wave_devices.h"

#include "torv/platform/immortal.h"
#include "torv/platform/posix/null_wave_out.h"
#include "torv/platform/posix/output_calls.h"

namespace {

struct List : torv::DeviceList<torv::WaveOutDevice> {
    List() : DeviceList(std::make_shared<torv::NullWaveOut>()) {}
};

} // namespace

void torv::AddWaveOutDevice(std::shared_ptr<WaveOutDevice> device) { Immortal<List>().Add(std::move(device)); }

void torv::RemoveWaveOutDevice(const WaveOutDevice* device) { Immortal<List>().Remove(device); }

std::vector<std::shared_ptr<torv::WaveOutDevice>> torv::WaveOutDevices() {
    return Immortal<List>().With(SoundLibraryDevices());
}
