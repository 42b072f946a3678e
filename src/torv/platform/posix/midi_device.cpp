#include "torv/platform/midi_device.h"

#include "torv/platform/immortal.h"
#include "torv/platform/posix/midi_ports.h"

#include <mutex>

namespace {

class NullOutput : public torv::MidiOutDevice {
public:
    const char* Name() const override { return "Null Output"; }
    bool Open() override { return true; }
    void Close() override {}
    bool ShortMessage(const BYTE*, DWORD) override { return true; }
    bool LongMessage(const BYTE*, DWORD) override { return true; }
};

struct Added {
    std::mutex mutex;
    std::vector<std::shared_ptr<torv::MidiOutDevice>> devices;
    const std::shared_ptr<torv::MidiOutDevice> nullOutput = std::make_shared<NullOutput>();
};

Added& TheAdded() { return torv::Immortal<Added>(); }

} // namespace

void torv::AddMidiOutDevice(std::shared_ptr<MidiOutDevice> device) {
    if (!device)
        return;
    Added& added = TheAdded();
    const std::lock_guard lock(added.mutex);
    added.devices.push_back(std::move(device));
}

void torv::RemoveMidiOutDevice(const MidiOutDevice* device) {
    Added& added = TheAdded();
    const std::lock_guard lock(added.mutex);
    std::erase_if(added.devices, [&](const auto& candidate) { return candidate.get() == device; });
}

std::vector<std::shared_ptr<torv::MidiOutDevice>> torv::MidiOutDevices() {
    const auto ports = SystemMidiPorts();
    Added& added = TheAdded();
    const std::lock_guard lock(added.mutex);
    auto devices = added.devices;
    devices.insert(devices.end(), ports.begin(), ports.end());
    devices.push_back(added.nullOutput);
    return devices;
}
