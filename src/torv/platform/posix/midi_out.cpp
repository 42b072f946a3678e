#include "torv/platform/posix/midi_out.h"

#include "torv/platform/immortal.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/midi_ports.h"
#include "torv/platform/posix/open_midi_out.h"
#include "torv/platform/posix/output_calls.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

namespace {

using Device = std::shared_ptr<torv::MidiOutDevice>;

torv::OpenOutputs<HMIDIOUT, torv::OpenMidiOut>& Outputs() {
    return torv::Immortal<torv::OpenOutputs<HMIDIOUT, torv::OpenMidiOut>>();
}

/// The devices in use, from before they open until after they closed.
struct Used {
    std::mutex mutex;
    std::unordered_set<const torv::MidiOutDevice*> devices;
};

Used& TheUsed() { return torv::Immortal<Used>(); }

std::shared_ptr<torv::OpenMidiOut> Find(HMIDIOUT handle) { return Outputs().Find(handle); }

Device FindDevice(UINT_PTR number) {
    return torv::OrFail(Device(), [&] { return torv::DeviceAt(torv::MidiOutDevices(), number); });
}

bool TakeIntoUse(const torv::MidiOutDevice* device) {
    Used& used = TheUsed();
    const std::lock_guard lock(used.mutex);
    return used.devices.insert(device).second;
}

void GiveBack(const torv::MidiOutDevice* device) {
    Used& used = TheUsed();
    const std::lock_guard lock(used.mutex);
    used.devices.erase(device);
}

/// 0 for what is no short message of its own.
DWORD ShortMessageLength(BYTE status) {
    switch (status) {
    case 0xF1: // time code
    case 0xF3: // song select
        return 2;
    case 0xF2: // song position
        return 3;
    case 0xF0: // system exclusive, whose bytes come by headers
    case 0xF4:
    case 0xF5:
    case 0xF7:
        return 0;
    default:
        break;
    }
    if (status < 0x80)
        return 0;
    if (status >= 0xF0)
        return 1;
    return (status & 0xE0) == 0xC0 ? 2 : 3;
}

template <class Call>
MMRESULT WithHeader(HMIDIOUT handle, LPMIDIHDR header, UINT size, Call call) {
    const auto open = Find(handle);
    if (!open)
        return MMSYSERR_INVALHANDLE;
    if (!header || !header->lpData || size < sizeof(MIDIHDR))
        return MMSYSERR_INVALPARAM;
    return ((*open).*call)(*header);
}

std::string ErrorText(MMRESULT error) {
    switch (error) {
    case MIDIERR_UNPREPARED:
        return "The MIDI header is not prepared.";
    case MIDIERR_STILLPLAYING:
        return "MIDI data are still being sent.";
    case MIDIERR_NOTREADY:
        return "The MIDI device is busy with other data.";
    case MIDIERR_NODEVICE:
        return "The MIDI device cannot be opened; it may have been taken away.";
    default:
        return torv::OutputErrorText(error, "MIDI");
    }
}

} // namespace

UINT midiOutGetNumDevs() {
    return torv::OrFail(0u, [] { return static_cast<UINT>(torv::MidiOutDevices().size()); });
}

MMRESULT midiOutGetDevCapsA(UINT_PTR number, LPMIDIOUTCAPSA capabilities, UINT size) {
    if (!capabilities)
        return MMSYSERR_INVALPARAM;
    const Device device = FindDevice(number);
    if (!device)
        return MMSYSERR_BADDEVICEID;
    const bool mapper = torv::IsMapper(number);
    MIDIOUTCAPSA found{};
    std::strncpy(found.szPname, mapper ? "MIDI Mapper" : device->Name(), MAXPNAMELEN - 1);
    found.wTechnology = mapper ? MOD_MAPPER : MOD_MIDIPORT;
    found.wChannelMask = 0xFFFF;
    std::memcpy(capabilities, &found, std::min<std::size_t>(size, sizeof(found)));
    return MMSYSERR_NOERROR;
}

MMRESULT midiOutOpen(LPHMIDIOUT handle, UINT number, DWORD_PTR callback, DWORD_PTR instance, DWORD flags) {
    if (!handle)
        return MMSYSERR_INVALPARAM;
    *handle = nullptr;
    if (flags != CALLBACK_NULL && flags != CALLBACK_FUNCTION)
        return MMSYSERR_INVALFLAG;
    if (flags == CALLBACK_FUNCTION && !callback)
        return MMSYSERR_INVALPARAM;
    const Device device = FindDevice(number);
    if (!device)
        return MMSYSERR_BADDEVICEID;
    const HMIDIOUT fresh = Outputs().NewHandle();
    const auto function = flags == CALLBACK_FUNCTION ? reinterpret_cast<LPMIDICALLBACK>(callback) : nullptr;
    std::shared_ptr<torv::OpenMidiOut> open;
    bool isTaken = false;
    const MMRESULT result = torv::OrFail(MMSYSERR_NOMEM, [&] {
        isTaken = TakeIntoUse(device.get());
        if (!isTaken)
            return MMSYSERR_ALLOCATED;
        open = std::make_shared<torv::OpenMidiOut>(fresh, device, function, instance);
        Outputs().Add(fresh, open);
        return open->Open();
    });
    if (result == MMSYSERR_NOERROR) {
        *handle = fresh;
        open->Tell(MOM_OPEN, 0);
    } else if (isTaken) {
        Outputs().Remove(fresh);
        GiveBack(device.get());
    }
    return result;
}

MMRESULT midiOutShortMsg(HMIDIOUT handle, DWORD message) {
    const auto open = Find(handle);
    if (!open)
        return MMSYSERR_INVALHANDLE;
    const DWORD count = ShortMessageLength(static_cast<BYTE>(message));
    if (count == 0)
        return MMSYSERR_INVALPARAM;
    const BYTE bytes[] = {static_cast<BYTE>(message), static_cast<BYTE>(message >> 8),
                          static_cast<BYTE>(message >> 16)};
    return open->Short(bytes, count);
}

MMRESULT midiOutPrepareHeader(HMIDIOUT handle, LPMIDIHDR header, UINT size) {
    return WithHeader(handle, header, size, &torv::OpenMidiOut::Prepare);
}

MMRESULT midiOutUnprepareHeader(HMIDIOUT handle, LPMIDIHDR header, UINT size) {
    return WithHeader(handle, header, size, &torv::OpenMidiOut::Unprepare);
}

MMRESULT midiOutLongMsg(HMIDIOUT handle, LPMIDIHDR header, UINT size) {
    return WithHeader(handle, header, size, &torv::OpenMidiOut::Long);
}

MMRESULT midiOutReset(HMIDIOUT handle) {
    const auto open = Find(handle);
    return open ? open->Reset() : MMSYSERR_INVALHANDLE;
}

MMRESULT midiOutClose(HMIDIOUT handle) {
    const auto open = Find(handle);
    if (!open)
        return MMSYSERR_INVALHANDLE;
    const MMRESULT result = open->Close();
    if (result != MMSYSERR_NOERROR)
        return result;
    Outputs().Remove(handle);
    GiveBack(open->Device());
    open->Tell(MOM_CLOSE, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT midiOutGetErrorTextA(MMRESULT error, LPSTR text, UINT size) {
    return torv::OrFail(MMSYSERR_NOMEM, [&] { return torv::CopyErrorText(ErrorText(error), text, size); });
}
