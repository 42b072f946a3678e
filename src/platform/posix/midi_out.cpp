#include "torv/platform/posix/midi_out.h"

#include "torv/platform/posix/midi_ports.h"
#include "torv/platform/posix/open_midi_out.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <unordered_set>

namespace {

using Device = std::shared_ptr<torv::MidiOutDevice>;

struct Table {
    std::mutex mutex;
    std::unordered_map<HMIDIOUT, std::shared_ptr<torv::OpenMidiOut>> open;
    std::unordered_set<const torv::MidiOutDevice*> used; // from before they open until after they closed
    ULONG_PTR lastHandle = 0xFFFF;                       // handles are never used twice
};

/// Never destroyed: a timer may still send while static objects are destroyed.
Table& TheTable() {
    static Table& table = *new Table;
    return table;
}

std::shared_ptr<torv::OpenMidiOut> Find(HMIDIOUT handle) {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    const auto found = table.open.find(handle);
    return found != table.open.end() ? found->second : nullptr;
}

Device FindDevice(UINT_PTR number) {
    const auto devices = torv::MidiOutDevices();
    if (number == MIDI_MAPPER || number == static_cast<UINT_PTR>(-1))
        return devices.front();
    return number < devices.size() ? devices[number] : nullptr;
}

bool TakeIntoUse(const torv::MidiOutDevice* device) {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    return table.used.insert(device).second;
}

void GiveBack(const torv::MidiOutDevice* device) {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    table.used.erase(device);
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

std::string_view ErrorText(MMRESULT error) {
    switch (error) {
    case MMSYSERR_NOERROR:
        return "No error.";
    case MMSYSERR_ERROR:
        return "The MIDI device failed.";
    case MMSYSERR_BADDEVICEID:
        return "There is no MIDI device of this number.";
    case MMSYSERR_ALLOCATED:
        return "The MIDI device is in use.";
    case MMSYSERR_INVALHANDLE:
        return "The MIDI device is not open.";
    case MMSYSERR_NODRIVER:
        return "There is no driver for the MIDI device.";
    case MMSYSERR_NOMEM:
        return "There is not enough memory, or no thread to be had.";
    case MMSYSERR_NOTSUPPORTED:
        return "The MIDI device cannot do this.";
    case MMSYSERR_BADERRNUM:
        return "There is no error of this number.";
    case MMSYSERR_INVALFLAG:
        return "A flag is not known.";
    case MMSYSERR_INVALPARAM:
        return "A parameter is not valid.";
    case MMSYSERR_HANDLEBUSY:
        return "The MIDI device is busy on another thread.";
    case MIDIERR_UNPREPARED:
        return "The MIDI header is not prepared.";
    case MIDIERR_STILLPLAYING:
        return "MIDI data are still being sent.";
    case MIDIERR_NOTREADY:
        return "The MIDI device is busy with other data.";
    case MIDIERR_NODEVICE:
        return "The MIDI device cannot be opened; it may have been taken away.";
    default:
        return {};
    }
}

} // namespace

UINT midiOutGetNumDevs() { return static_cast<UINT>(torv::MidiOutDevices().size()); }

MMRESULT midiOutGetDevCapsA(UINT_PTR number, LPMIDIOUTCAPSA capabilities, UINT size) {
    if (!capabilities)
        return MMSYSERR_INVALPARAM;
    const Device device = FindDevice(number);
    if (!device)
        return MMSYSERR_BADDEVICEID;
    const bool mapper = number == MIDI_MAPPER || number == static_cast<UINT_PTR>(-1);
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
    if (!TakeIntoUse(device.get()))
        return MMSYSERR_ALLOCATED;
    if (!device->Open()) {
        GiveBack(device.get());
        return MIDIERR_NODEVICE;
    }
    std::shared_ptr<torv::OpenMidiOut> open;
    Table& table = TheTable();
    try {
        const std::lock_guard lock(table.mutex);
        const auto fresh = reinterpret_cast<HMIDIOUT>(++table.lastHandle);
        const auto function = flags == CALLBACK_FUNCTION ? reinterpret_cast<LPMIDICALLBACK>(callback) : nullptr;
        open = std::make_shared<torv::OpenMidiOut>(fresh, device, function, instance);
        table.open.emplace(fresh, open);
        *handle = fresh;
    } catch (const std::system_error&) {
        device->Close();
        GiveBack(device.get());
        return MMSYSERR_NOMEM;
    }
    open->Tell(MOM_OPEN, 0);
    return MMSYSERR_NOERROR;
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
    {
        Table& table = TheTable();
        const std::lock_guard lock(table.mutex);
        table.open.erase(handle);
        table.used.erase(open->Device());
    }
    open->Tell(MOM_CLOSE, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT midiOutGetErrorTextA(MMRESULT error, LPSTR text, UINT size) {
    if (!text)
        return MMSYSERR_INVALPARAM;
    const std::string_view found = ErrorText(error);
    if (found.empty())
        return MMSYSERR_BADERRNUM;
    if (size == 0)
        return MMSYSERR_NOERROR;
    const std::size_t count = std::min<std::size_t>(found.size(), size - 1);
    std::memcpy(text, found.data(), count);
    text[count] = 0;
    return MMSYSERR_NOERROR;
}
