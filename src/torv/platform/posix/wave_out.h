#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/multimedia.h"
#include "torv/platform/posix/wave_format.h"

/// Wave output over the devices of torv/platform/wave_device.h, numbered from 0. Any thread may call. Opening a
/// device and the calls on an open one are safe points.
///
/// Buffers come back in the order of writing and once each: first the header's flags, then MM_WOM_DONE. A function is
/// called on a thread of the open device and may call back; read flags with torv::HeaderFlags meanwhile. Loops within
/// headers are not played.

using HWAVEOUT = struct HWAVEOUT__*;
using LPHWAVEOUT = HWAVEOUT*;
using LPWAVECALLBACK = void(CALLBACK*)(HWAVEOUT device, UINT message, DWORD_PTR instance, DWORD_PTR header, DWORD_PTR);

struct WAVEOUTCAPSA {
    WORD wMid;
    WORD wPid;
    MMVERSION vDriverVersion;
    CHAR szPname[MAXPNAMELEN];
    DWORD dwFormats;
    WORD wChannels;
    WORD wReserved1;
    DWORD dwSupport;
};
using LPWAVEOUTCAPSA = WAVEOUTCAPSA*;

constexpr UINT WAVE_MAPPER = 0xFFFFFFFF; ///< the first device of the list

constexpr DWORD WAVE_FORMAT_QUERY = 0x0001;
constexpr DWORD WAVE_ALLOWSYNC = 0x0002;
constexpr DWORD WAVE_MAPPED = 0x0004;
constexpr DWORD WAVE_FORMAT_DIRECT = 0x0008;

constexpr MMRESULT WAVERR_BADFORMAT = 32;
constexpr MMRESULT WAVERR_STILLPLAYING = 33;
constexpr MMRESULT WAVERR_UNPREPARED = 34;

constexpr UINT MM_WOM_OPEN = 0x3BB;
constexpr UINT MM_WOM_CLOSE = 0x3BC;
constexpr UINT MM_WOM_DONE = 0x3BD;
constexpr UINT WOM_OPEN = MM_WOM_OPEN;
constexpr UINT WOM_CLOSE = MM_WOM_CLOSE;
constexpr UINT WOM_DONE = MM_WOM_DONE;

TORV_API UINT waveOutGetNumDevs();
/// MMSYSERR_BADDEVICEID for a number outside the list. At most `size` bytes are written.
TORV_API MMRESULT waveOutGetDevCapsA(UINT_PTR device, LPWAVEOUTCAPSA capabilities, UINT size);
/// `flags` say what is told of the device: CALLBACK_NULL nothing; CALLBACK_WINDOW and CALLBACK_THREAD messages to that
/// window or thread number, wParam the handle, lParam the header; CALLBACK_FUNCTION calls of a LPWAVECALLBACK. With
/// WAVE_FORMAT_QUERY the format is only asked for. WAVERR_BADFORMAT for what the device does not play,
/// MMSYSERR_ALLOCATED when it refuses.
TORV_API MMRESULT waveOutOpen(LPHWAVEOUT handle, UINT device, LPCWAVEFORMATEX format, DWORD_PTR callback,
                              DWORD_PTR instance, DWORD flags);
TORV_API MMRESULT waveOutPrepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size);
/// WAVERR_STILLPLAYING while the header is queued.
TORV_API MMRESULT waveOutUnprepareHeader(HWAVEOUT handle, LPWAVEHDR header, UINT size);
/// Queues dwBufferLength bytes, of which whole frames are played. Header and bytes stay with the device until it is
/// back. WAVERR_UNPREPARED, or WAVERR_STILLPLAYING when it is queued already.
TORV_API MMRESULT waveOutWrite(HWAVEOUT handle, LPWAVEHDR header, UINT size);
TORV_API MMRESULT waveOutPause(HWAVEOUT handle);
TORV_API MMRESULT waveOutRestart(HWAVEOUT handle);
/// All queued headers come back before it returns (on the thread of a callback function: soon after), and a pause ends.
TORV_API MMRESULT waveOutReset(HWAVEOUT handle);
/// WAVERR_STILLPLAYING while headers are queued, MMSYSERR_HANDLEBUSY from the device's callback.
TORV_API MMRESULT waveOutClose(HWAVEOUT handle);
/// The text, cut to the size with its NUL; MMSYSERR_BADERRNUM for a number that is none.
TORV_API MMRESULT waveOutGetErrorTextA(MMRESULT error, LPSTR text, UINT size);
