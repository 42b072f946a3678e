#include "torv/platform/posix/midi_out.h"

#include "torv/platform/immortal.h"
#include "torv/platform/posix/midi_ports.h"
#include "torv/platform/posix/open_midi_out.h"
#include "torv/platform/posix/output_calls.h"

#include <algorithm>
#include <cstring>

namespace {

using torv::OpenMidiOut;

torv::OpenOutputs<HMIDIOUT, OpenMidiOut>& Outputs() {
    return torv::Immortal<torv::OpenOutputs<HMIDIOUT, OpenMidiOut>>();
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

} // namespace

UINT midiOutGetNumDevs() { return torv::CountDevices(torv::MidiOutDevices); }

MMRESULT midiOutGetDevCapsA(UINT_PTR number, LPMIDIOUTCAPSA capabilities, UINT size) {
    if (!capabilities)
        return MMSYSERR_INVALPARAM;
    const auto device = torv::FindDevice(torv::MidiOutDevices, number);
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
    const auto device = torv::FindDevice(torv::MidiOutDevices, number);
    if (!device)
        return MMSYSERR_BADDEVICEID;
    const auto function = flags == CALLBACK_FUNCTION ? reinterpret_cast<LPMIDICALLBACK>(callback) : nullptr;
    return Outputs().Open(handle, MOM_OPEN, true, device, function, instance);
}

MMRESULT midiOutShortMsg(HMIDIOUT handle, DWORD message) {
    return Outputs().On(handle, &OpenMidiOut::Short, message, ShortMessageLength(static_cast<BYTE>(message)));
}

MMRESULT midiOutPrepareHeader(HMIDIOUT handle, LPMIDIHDR header, UINT size) {
    return Outputs().OnHeader(handle, &OpenMidiOut::Prepare, header, size);
}

MMRESULT midiOutUnprepareHeader(HMIDIOUT handle, LPMIDIHDR header, UINT size) {
    return Outputs().OnHeader(handle, &OpenMidiOut::Unprepare, header, size);
}

MMRESULT midiOutLongMsg(HMIDIOUT handle, LPMIDIHDR header, UINT size) {
    return Outputs().OnHeader(handle, &OpenMidiOut::Long, header, size);
}

MMRESULT midiOutReset(HMIDIOUT handle) { return Outputs().On(handle, &OpenMidiOut::Reset); }
MMRESULT midiOutClose(HMIDIOUT handle) { return Outputs().Close(handle, MOM_CLOSE); }
