#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/multimedia.h"

/// MIDI output over the devices of torv/platform/midi_device.h, numbered from 0. Any thread may call; a device's calls
/// do not overlap. Long messages are sent on a thread of the open device, which also calls back when one is done.

using HMIDIOUT = struct HMIDIOUT__*;
using LPHMIDIOUT = HMIDIOUT*;
using LPMIDICALLBACK = void(CALLBACK*)(HMIDIOUT device, UINT message, DWORD_PTR instance, DWORD_PTR header, DWORD_PTR);

struct MIDIHDR {
    LPSTR lpData;
    DWORD dwBufferLength; ///< bytes to send
    DWORD dwBytesRecorded;
    DWORD_PTR dwUser;
    DWORD dwFlags; ///< MHDR_
    MIDIHDR* lpNext;
    DWORD_PTR reserved;
    DWORD dwOffset;
    DWORD_PTR dwReserved[8];
};
using LPMIDIHDR = MIDIHDR*;

struct MIDIOUTCAPSA {
    WORD wMid;
    WORD wPid;
    MMVERSION vDriverVersion;
    CHAR szPname[MAXPNAMELEN];
    WORD wTechnology;
    WORD wVoices;
    WORD wNotes;
    WORD wChannelMask;
    DWORD dwSupport;
};
using LPMIDIOUTCAPSA = MIDIOUTCAPSA*;

constexpr UINT MIDI_MAPPER = 0xFFFFFFFF; ///< the first device of the list

constexpr MMRESULT MIDIERR_UNPREPARED = 64;
constexpr MMRESULT MIDIERR_STILLPLAYING = 65;
constexpr MMRESULT MIDIERR_NOTREADY = 67;
constexpr MMRESULT MIDIERR_NODEVICE = 68;

constexpr UINT MOM_OPEN = 0x3C7;
constexpr UINT MOM_CLOSE = 0x3C8;
constexpr UINT MOM_DONE = 0x3C9;

constexpr DWORD MHDR_DONE = 1;
constexpr DWORD MHDR_PREPARED = 2;
constexpr DWORD MHDR_INQUEUE = 4;

constexpr WORD MOD_MIDIPORT = 1;
constexpr WORD MOD_MAPPER = 5;

TORV_API UINT midiOutGetNumDevs();
/// MMSYSERR_BADDEVICEID for a number outside the list. At most `size` bytes are written.
TORV_API MMRESULT midiOutGetDevCapsA(UINT_PTR device, LPMIDIOUTCAPSA capabilities, UINT size);
/// `flags` is CALLBACK_NULL, or CALLBACK_FUNCTION with a LPMIDICALLBACK. MMSYSERR_ALLOCATED when the device is open
/// already, MIDIERR_NODEVICE when it refuses.
TORV_API MMRESULT midiOutOpen(LPHMIDIOUT handle, UINT device, DWORD_PTR callback, DWORD_PTR instance, DWORD flags);
/// Status lowest. MIDIERR_NOTREADY while a long message is being sent; MMSYSERR_INVALPARAM for what is no short message
/// with a status.
TORV_API MMRESULT midiOutShortMsg(HMIDIOUT handle, DWORD message);
TORV_API MMRESULT midiOutPrepareHeader(HMIDIOUT handle, LPMIDIHDR header, UINT size);
/// MIDIERR_STILLPLAYING while the header is queued.
TORV_API MMRESULT midiOutUnprepareHeader(HMIDIOUT handle, LPMIDIHDR header, UINT size);
/// Queues dwBufferLength bytes. Header and bytes stay with the device until MOM_DONE.
TORV_API MMRESULT midiOutLongMsg(HMIDIOUT handle, LPMIDIHDR header, UINT size);
/// All queued headers come back, the one being sent included, and the notes and pedals of all channels end. Waits,
/// unless called from the device's callback.
TORV_API MMRESULT midiOutReset(HMIDIOUT handle);
/// MIDIERR_STILLPLAYING while headers are queued, MMSYSERR_HANDLEBUSY from the device's callback.
TORV_API MMRESULT midiOutClose(HMIDIOUT handle);
