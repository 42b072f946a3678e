#include "torv/platform/posix/wave_out.h"

#include "torv/platform/immortal.h"
#include "torv/platform/posix/open_wave_out.h"
#include "torv/platform/posix/output_calls.h"
#include "torv/platform/posix/wave_devices.h"
#include "torv/platform/posix/window.h"
#include "torv/platform/safe_point.h"
#include "torv/platform/text.h"

#include <algorithm>
#include <cstring>

namespace {

using torv::OpenWaveOut;

torv::OpenOutputs<HWAVEOUT, OpenWaveOut>& Outputs() {
    torv::SafePoint();
    return torv::Immortal<torv::OpenOutputs<HWAVEOUT, OpenWaveOut>>();
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

/// Null for a number that is none.
const char* ErrorText(MMRESULT error) {
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
        return nullptr;
    }
}

} // namespace

UINT waveOutGetNumDevs() { return torv::CountDevices(torv::WaveOutDevices); }

MMRESULT waveOutGetDevCapsA(UINT_PTR number, LPWAVEOUTCAPSA capabilities, UINT size) {
    if (!capabilities)
        return MMSYSERR_INVALPARAM;
    const auto device = torv::FindDevice(torv::WaveOutDevices, number);
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
    constexpr DWORD kKnown = CALLBACK_TYPEMASK | WAVE_FORMAT_QUERY | WAVE_ALLOWSYNC | WAVE_MAPPED | WAVE_FORMAT_DIRECT;
    const bool onlyAsks = (flags & WAVE_FORMAT_QUERY) != 0;
    const DWORD type = flags & CALLBACK_TYPEMASK;
    if (!format || (!handle && !onlyAsks))
        return MMSYSERR_INVALPARAM;
    if ((flags & ~kKnown) != 0 || type > CALLBACK_FUNCTION)
        return MMSYSERR_INVALFLAG;
    if (!onlyAsks && !IsTarget(type, callback))
        return MMSYSERR_INVALPARAM;
    const auto device = torv::FindDevice(torv::WaveOutDevices, number);
    if (!device)
        return MMSYSERR_BADDEVICEID;
    WAVEFORMATEX copy{};
    std::memcpy(&copy, format, offsetof(WAVEFORMATEX, cbSize)); // PCM callers need not have the last field
    if (!IsSound(copy) || !device->Plays(copy))
        return WAVERR_BADFORMAT;
    if (onlyAsks)
        return MMSYSERR_NOERROR;
    return Outputs().Open(handle, MM_WOM_OPEN, false, OpenWaveOut::Target{type, callback, instance}, device, copy);
}

MMRESULT waveOutPrepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return Outputs().OnHeader(handle, &OpenWaveOut::Prepare, header, size);
}

MMRESULT waveOutUnprepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return Outputs().OnHeader(handle, &OpenWaveOut::Unprepare, header, size);
}

MMRESULT waveOutWrite(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return Outputs().OnHeader(handle, &OpenWaveOut::Write, header, size);
}

MMRESULT waveOutPause(HWAVEOUT handle) { return Outputs().On(handle, &OpenWaveOut::Pause); }
MMRESULT waveOutRestart(HWAVEOUT handle) { return Outputs().On(handle, &OpenWaveOut::Restart); }
MMRESULT waveOutReset(HWAVEOUT handle) { return Outputs().On(handle, &OpenWaveOut::Reset); }
MMRESULT waveOutClose(HWAVEOUT handle) { return Outputs().Close(handle, MM_WOM_CLOSE); }

MMRESULT waveOutGetErrorTextA(MMRESULT error, LPSTR text, UINT size) {
    const char* const found = ErrorText(error);
    if (!text)
        return MMSYSERR_INVALPARAM;
    if (!found)
        return MMSYSERR_BADERRNUM;
    torv::CopyText(text, size, found);
    return MMSYSERR_NOERROR;
}
