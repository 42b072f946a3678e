#pragma once

#include "torv/platform/midi_device.h"
#include "torv/platform/platform.h"

#if !defined(_WIN32)
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

/// A MIDI device that keeps what it is sent. Room is made beforehand, so that recording does not
/// allocate. While `hold` is set, long messages do not end (five seconds at most).
class MidiRecorder : public torv::MidiOutDevice {
public:
    struct Message {
        DWORD bytes; // of a short message, status lowest
        DWORD length;
        bool isLong;
    };

    MidiRecorder() {
        m_messages.reserve(100000);
        m_longBytes.reserve(1000000);
    }
    const char* Name() const override { return "A recorder with a name of more than thirty-one bytes"; }
    bool Open() override {
        if (refuse)
            return false;
        ++opened;
        return true;
    }
    void Close() override { ++closed; }
    bool ShortMessage(const BYTE* bytes, DWORD count) override {
        if (shortHook)
            shortHook();
        DWORD packed = 0;
        for (DWORD i = 0; i < count; ++i)
            packed |= static_cast<DWORD>(bytes[i]) << (8 * i);
        const std::lock_guard lock(m_mutex);
        m_messages.push_back({packed, count, false});
        return true;
    }
    bool LongMessage(const BYTE* bytes, DWORD count) override {
        {
            const std::lock_guard lock(m_mutex);
            m_messages.push_back({0, count, true});
            m_longBytes.insert(m_longBytes.end(), bytes, bytes + count);
        }
        for (int i = 0; i < 5000 && hold; ++i)
            Sleep(1);
        return true;
    }

    std::vector<Message> Messages() const {
        const std::lock_guard lock(m_mutex);
        return m_messages;
    }
    std::vector<BYTE> LongBytes() const {
        const std::lock_guard lock(m_mutex);
        return m_longBytes;
    }
    void Clear() {
        const std::lock_guard lock(m_mutex);
        m_messages.clear();
        m_longBytes.clear();
    }
    /// Until there are `count` messages, five seconds at most.
    bool Await(size_t count) const {
        for (int i = 0; i < 5000 && Messages().size() < count; ++i)
            Sleep(1);
        return Messages().size() >= count;
    }

    std::atomic<bool> hold = false;
    std::atomic<bool> refuse = false;
    std::atomic<int> opened = 0;
    std::atomic<int> closed = 0;
    void (*shortHook)() = nullptr;

private:
    mutable std::mutex m_mutex;
    std::vector<Message> m_messages;
    std::vector<BYTE> m_longBytes;
};

/// A recorder in the list of devices, as the first of them, while this lives.
struct RecorderInList {
    RecorderInList() { torv::AddMidiOutDevice(recorder); }
    ~RecorderInList() { torv::RemoveMidiOutDevice(recorder.get()); }
    RecorderInList(const RecorderInList&) = delete;
    RecorderInList& operator=(const RecorderInList&) = delete;
    MidiRecorder* operator->() const { return recorder.get(); }

    const std::shared_ptr<MidiRecorder> recorder = std::make_shared<MidiRecorder>();
};
#endif
