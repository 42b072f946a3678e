#include "torv/platform/posix/wave_out.h"

#include "torv/platform/immortal.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/open_wave_out.h"
#include "torv/platform/posix/output_calls.h"
#include "torv/platform/posix/wave_devices.h"
#include "torv/platform/posix/window.h"
#include "torv/platform/safe_point.h"

#include <algorithm>
#include <cstring>

namespace {

using torv::OpenWaveOut;
using Device = std::shared_ptr<torv::WaveOutDevice>;

torv::OpenOutputs<HWAVEOUT, OpenWaveOut>& Outputs() {
    return torv::Immortal<torv::OpenOutputs<HWAVEOUT, OpenWaveOut>>();
}

std::shared_ptr<OpenWaveOut> Find(HWAVEOUT handle) {
    torv::SafePoint();
    return Outputs().Find(handle);
}

Device FindDevice(UINT_PTR number) {
    return torv::OrFail(Device(), [&] { return torv::DeviceAt(torv::WaveOutDevices(), number); });
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

std::string ErrorText(MMRESULT error) {
    switch (error) {
    case WAVERR_BADFORMAT:
        return "The wave device does not play this format.";
    case WAVERR_STILLPLAYING:
        return "Wave data are still being played.";
    case WAVERR_UNPREPARED:
        return "The wave header is not prepared.";
    default:
        return torv::OutputErrorText(error, "wave");
    }
}

} // namespace

UINT waveOutGetNumDevs() {
    return torv::OrFail(0u, [] { return static_cast<UINT>(torv::WaveOutDevices().size()); });
}

MMRESULT waveOutGetDevCapsA(UINT_PTR number, LPWAVEOUTCAPSA capabilities, UINT size) {
    if (!capabilities)
        return MMSYSERR_INVALPARAM;
    const Device device = FindDevice(number);
    if (!device)
        return MMSYSERR_BADDEVICEID;
    WAVEOUTCAPSA found{};
    std::strncpy(found.szPname, torv::IsMapper(number) ? "Wave Mapper" : device->Name(), MAXPNAMELEN - 1);
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
    const HWAVEOUT fresh = Outputs().NewHandle();
    std::shared_ptr<OpenWaveOut> open;
    const MMRESULT result = torv::OrFail(MMSYSERR_NOMEM, [&] {
        open = std::make_shared<OpenWaveOut>(fresh, OpenWaveOut::Target{type, callback, instance});
        Outputs().Add(fresh, open);
        return open->Open(device, copy) ? MMSYSERR_NOERROR : MMSYSERR_ALLOCATED;
    });
    if (result != MMSYSERR_NOERROR) {
        Outputs().Remove(fresh);
        return result;
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
    Outputs().Remove(handle);
    open->Tell(MM_WOM_CLOSE, 0);
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutGetErrorTextA(MMRESULT error, LPSTR text, UINT size) {
    return torv::OrFail(MMSYSERR_NOMEM, [&] { return torv::CopyErrorText(ErrorText(error), text, size); });
}
