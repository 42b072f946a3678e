#include "torv/platform/midi_device.h"

#include "torv/platform/immortal.h"
#include "torv/platform/posix/midi_ports.h"
#include "torv/platform/posix/output_calls.h"

namespace {

class NullOutput : public torv::MidiOutDevice {
public:
    const char* Name() const override { return "Null Output"; }
    bool Open() override { return true; }
    void Close() override {}
    bool ShortMessage(const BYTE*, DWORD) override { return true; }
    bool LongMessage(const BYTE*, DWORD) override { return true; }
};

struct List : torv::DeviceList<torv::MidiOutDevice> {
    List() : DeviceList(std::make_shared<NullOutput>()) {}
};

} // namespace

void torv::AddMidiOutDevice(std::shared_ptr<MidiOutDevice> device) { Immortal<List>().Add(std::move(device)); }

void torv::RemoveMidiOutDevice(const MidiOutDevice* device) { Immortal<List>().Remove(device); }

std::vector<std::shared_ptr<torv::MidiOutDevice>> torv::MidiOutDevices() {
    return Immortal<List>().With(SystemMidiPorts());
}
