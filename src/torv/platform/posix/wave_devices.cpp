#include "torv/platform/posix/wave_devices.h"

#include "torv/platform/immortal.h"
#include "torv/platform/posix/null_wave_out.h"

#include <mutex>

namespace {

struct Added {
    std::mutex mutex;
    std::vector<std::shared_ptr<torv::WaveOutDevice>> devices;
    const std::shared_ptr<torv::WaveOutDevice> nullOutput = std::make_shared<torv::NullWaveOut>();
};

Added& TheAdded() { return torv::Immortal<Added>(); }

} // namespace

void torv::AddWaveOutDevice(std::shared_ptr<WaveOutDevice> device) {
    if (!device)
        return;
    Added& added = TheAdded();
    const std::lock_guard lock(added.mutex);
    added.devices.push_back(std::move(device));
}

void torv::RemoveWaveOutDevice(const WaveOutDevice* device) {
    Added& added = TheAdded();
    const std::lock_guard lock(added.mutex);
    std::erase_if(added.devices, [&](const auto& candidate) { return candidate.get() == device; });
}

std::vector<std::shared_ptr<torv::WaveOutDevice>> torv::WaveOutDevices() {
    const auto offered = SoundLibraryDevices();
    Added& added = TheAdded();
    const std::lock_guard lock(added.mutex);
    auto devices = added.devices;
    devices.insert(devices.end(), offered.begin(), offered.end());
    devices.push_back(added.nullOutput);
    return devices;
}
