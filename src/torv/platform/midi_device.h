#pragma once

#include "torv/platform/export.h"
#include "torv/platform/system.h"

#if !defined(_WIN32)
#include <memory>

/// Where MIDI goes on a system without MIDI output calls of its own. midiOutOpen and the rest address the devices of
/// one list: those that the host added, the ports of the system's MIDI library, and last the "Null Output", which is
/// always there and swallows everything.
namespace torv {

/// One device. It is open for one caller at a time, and its calls never overlap. They return false on failure and must
/// return in finite time.
class TORV_API MidiOutDevice {
public:
    virtual ~MidiOutDevice() = default;
    /// At most 31 bytes of it are shown.
    virtual const char* Name() const = 0;
    /// Takes the device for a caller. False when it cannot be had.
    virtual bool Open() = 0;
    /// Gives it back; what still sounds goes silent.
    virtual void Close() = 0;
    /// A whole message of 1 to 3 bytes; on the caller's thread, often a timer's: it should not wait.
    virtual bool ShortMessage(const BYTE* bytes, DWORD count) = 0;
    /// A system-exclusive message or a piece of one; on a thread of its own. Returns when the bytes were sent.
    virtual bool LongMessage(const BYTE* bytes, DWORD count) = 0;
};

/// Puts a device behind those added before, ahead of all others, so that the first one added is the system's choice
/// too. The numbers of the devices behind it move up.
TORV_API void AddMidiOutDevice(std::shared_ptr<MidiOutDevice> device);
/// Takes a device from the list; one that is open stays so until it is closed.
TORV_API void RemoveMidiOutDevice(const MidiOutDevice* device);

} // namespace torv
#endif
