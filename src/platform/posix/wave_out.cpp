#include "torv/platform/posix/wave_out.h"

#include "torv/platform/posix/open_wave_out.h"
#include "torv/platform/posix/wave_devices.h"
#include "torv/platform/posix/window.h"
#include "torv/platform/safe_point.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <system_error>
#include <unordered_map>

namespace {

using torv::OpenWaveOut;
using Device = std::shared_ptr<torv::WaveOutDevice>;

struct Table {
    std::mutex mutex;
    std::unordered_map<HWAVEOUT, std::shared_ptr<OpenWaveOut>> open;
    ULONG_PTR lastHandle = 0xFFFF; // handles are never used twice
};

/// Never destroyed: a thread may still play while static objects are destroyed.
Table& TheTable() {
    static Table& table = *new Table;
    return table;
}

std::shared_ptr<OpenWaveOut> Find(HWAVEOUT handle) {
    torv::SafePoint();
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    const auto found = table.open.find(handle);
    return found != table.open.end() ? found->second : nullptr;
}

HWAVEOUT NewHandle() {
    Table& table = TheTable();
    const std::lock_guard lock(table.mutex);
    return reinterpret_cast<HWAVEOUT>(++table.lastHandle);
}

bool IsMapper(UINT_PTR number) { return number == WAVE_MAPPER || number == static_cast<UINT_PTR>(-1); }

Device FindDevice(UINT_PTR number) {
    const auto devices = torv::WaveOutDevices();
    if (IsMapper(number))
        return devices.front();
    return number < devices.size() ? devices[number] : nullptr;
}

bool IsSound(const WAVEFORMATEX& format) {
    const DWORD bits = format.wBitsPerSample;
    const bool isFloat = format.wFormatTag == WAVE_FORMAT_IEEE_FLOAT;
    return (format.wFormatTag == WAVE_FORMAT_PCM || (isFloat && bits == 32)) && bits % 8 == 0 && bits >= 8 &&
           bits <= 32 && format.nChannels >= 1 && format.nChannels <= 8 && format.nSamplesPerSec > 0 &&
           format.nBlockAlign == format.nChannels * bits / 8;
}

bool IsTarget(DWORD type, DWORD_PTR callback) {
    switch (type) {
    case CALLBACK_FUNCTION:
        return callback != 0;
    case CALLBACK_WINDOW:
        return IsWindow(reinterpret_cast<HWND>(callback)) != FALSE;
    default:
        return true;
    }
}

template <class Call>
MMRESULT WithHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size, Call call) {
    const auto open = Find(handle);
    if (!open)
        return MMSYSERR_INVALHANDLE;
    if (!header || (!header->lpData && header->dwBufferLength > 0) || size < sizeof(WAVEHDR))
        return MMSYSERR_INVALPARAM;
    return ((*open).*call)(*header);
}

template <class Call>
MMRESULT WithOpen(HWAVEOUT handle, Call call) {
    const auto open = Find(handle);
    return open ? ((*open).*call)() : MMSYSERR_INVALHANDLE;
}

std::string_view ErrorText(MMRESULT error) {
    switch (error) {
    case MMSYSERR_NOERROR:
        return "No error.";
    case MMSYSERR_ERROR:
        return "The wave device failed.";
    case MMSYSERR_BADDEVICEID:
        return "There is no wave device of this number.";
    case MMSYSERR_ALLOCATED:
        return "The wave device cannot be opened; it may be in use, or have been taken away.";
    case MMSYSERR_INVALHANDLE:
        return "The wave device is not open.";
    case MMSYSERR_NODRIVER:
        return "There is no driver for the wave device.";
    case MMSYSERR_NOMEM:
        return "There is not enough memory, or no thread to be had.";
    case MMSYSERR_NOTSUPPORTED:
        return "The wave device cannot do this.";
    case MMSYSERR_BADERRNUM:
        return "There is no error of this number.";
    case MMSYSERR_INVALFLAG:
        return "A flag is not known.";
    case MMSYSERR_INVALPARAM:
        return "A parameter is not valid.";
    case MMSYSERR_HANDLEBUSY:
        return "The wave device is busy on another thread.";
    case WAVERR_BADFORMAT:
        return "The wave device does not play this format.";
    case WAVERR_STILLPLAYING:
        return "Wave data are still being played.";
    case WAVERR_UNPREPARED:
        return "The wave header is not prepared.";
    default:
        return {};
    }
}

} // namespace

UINT waveOutGetNumDevs() { return static_cast<UINT>(torv::WaveOutDevices().size()); }

MMRESULT waveOutGetDevCapsA(UINT_PTR number, LPWAVEOUTCAPSA capabilities, UINT size) {
    if (!capabilities)
        return MMSYSERR_INVALPARAM;
    const Device device = FindDevice(number);
    if (!device)
        return MMSYSERR_BADDEVICEID;
    WAVEOUTCAPSA found{};
    std::strncpy(found.szPname, IsMapper(number) ? "Wave Mapper" : device->Name(), MAXPNAMELEN - 1);
    found.dwFormats = 0xFFF; // 11025, 22050 and 44100 Hz, mono and stereo, 8 and 16 bits
    found.wChannels = 2;
    std::memcpy(capabilities, &found, std::min<std::size_t>(size, sizeof(found)));
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutOpen(LPHWAVEOUT handle, UINT number, LPCWAVEFORMATEX format, DWORD_PTR callback, DWORD_PTR instance,
                     DWORD flags) {
    torv::SafePoint();
    constexpr DWORD kKnown = CALLBACK_TYPEMASK | WAVE_FORMAT_QUERY | WAVE_ALLOWSYNC | WAVE_MAPPED | WAVE_FORMAT_DIRECT;
    const bool onlyAsks = (flags & WAVE_FORMAT_QUERY) != 0;
    const DWORD type = flags & CALLBACK_TYPEMASK;
    if (!format || (!handle && !onlyAsks))
        return MMSYSERR_INVALPARAM;
    if ((flags & ~kKnown) != 0 || type > CALLBACK_FUNCTION)
        return MMSYSERR_INVALFLAG;
    if (!onlyAsks && !IsTarget(type, callback))
        return MMSYSERR_INVALPARAM;
    const Device device = FindDevice(number);
    if (!device)
        return MMSYSERR_BADDEVICEID;
    WAVEFORMATEX copy{};
    std::memcpy(&copy, format, offsetof(WAVEFORMATEX, cbSize)); // PCM callers need not have the last field
    if (!IsSound(copy) || !device->Plays(copy))
        return WAVERR_BADFORMAT;
    if (onlyAsks)
        return MMSYSERR_NOERROR;
    const HWAVEOUT fresh = NewHandle();
    const auto open = std::make_shared<OpenWaveOut>(fresh, OpenWaveOut::Target{type, callback, instance});
    try {
        if (!open->Open(device, copy))
            return MMSYSERR_ALLOCATED;
    } catch (const std::system_error&) {
        return MMSYSERR_NOMEM;
    }
    {
        Table& table = TheTable();
        const std::lock_guard lock(table.mutex);
        table.open.emplace(fresh, open);
    }
    *handle = fresh;
    open->Tell(MM_WOM_OPEN, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutPrepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return WithHeader(handle, header, size, &OpenWaveOut::Prepare);
}

MMRESULT waveOutUnprepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return WithHeader(handle, header, size, &OpenWaveOut::Unprepare);
}

MMRESULT waveOutWrite(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return WithHeader(handle, header, size, &OpenWaveOut::Write);
}

MMRESULT waveOutPause(HWAVEOUT handle) { return WithOpen(handle, &OpenWaveOut::Pause); }
MMRESULT waveOutRestart(HWAVEOUT handle) { return WithOpen(handle, &OpenWaveOut::Restart); }
MMRESULT waveOutReset(HWAVEOUT handle) { return WithOpen(handle, &OpenWaveOut::Reset); }

MMRESULT waveOutClose(HWAVEOUT handle) {
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
    }
    open->Tell(MM_WOM_CLOSE, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutGetErrorTextA(MMRESULT error, LPSTR text, UINT size) {
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
