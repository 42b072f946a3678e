#include "torv/platform/immortal.h"
#include "torv/platform/posix/wave_blocks.h"
#include "torv/platform/posix/wave_devices.h"

#include <SDL.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <mutex>
#include <string>

namespace torv {
namespace {

/// What the library calls a format; 0 for one that it does not know. It has no 24-bit samples: they are widened.
SDL_AudioFormat DeviceFormat(const WAVEFORMATEX& format) {
    if (format.wFormatTag == WAVE_FORMAT_IEEE_FLOAT)
        return format.wBitsPerSample == 32 ? AUDIO_F32LSB : 0;
    switch (format.wBitsPerSample) {
    case 8:
        return AUDIO_U8;
    case 16:
        return AUDIO_S16LSB;
    case 24:
    case 32:
        return AUDIO_S32LSB;
    default:
        return 0;
    }
}

class DeviceLock {
public:
    explicit DeviceLock(SDL_AudioDeviceID device) : m_device(device) { SDL_LockAudioDevice(m_device); }
    DeviceLock(const DeviceLock&) = delete;
    DeviceLock& operator=(const DeviceLock&) = delete;
    ~DeviceLock() { SDL_UnlockAudioDevice(m_device); }

private:
    const SDL_AudioDeviceID m_device;
};

/// The library calls Fill on its thread with the device locked; that lock guards the blocks.
class Stream : public WaveOutStream {
public:
    Stream(const std::string& device, const WAVEFORMATEX& format, WaveOutListener& listener)
        : m_frameBytes(format.nBlockAlign), m_widens(format.wBitsPerSample == 24),
          m_silence(format.wBitsPerSample == 8 ? 128 : 0), m_listener(listener) {
        SDL_AudioSpec wanted{};
        wanted.freq = static_cast<int>(format.nSamplesPerSec);
        wanted.format = DeviceFormat(format);
        wanted.channels = static_cast<Uint8>(format.nChannels);
        wanted.samples = static_cast<Uint16>(std::bit_ceil(format.nSamplesPerSec / 50)); // 20 to 40 ms
        wanted.callback = &Stream::Fill;
        wanted.userdata = this;
        m_device = SDL_OpenAudioDevice(device.c_str(), 0, &wanted, nullptr, 0);
        if (IsOpen())
            SDL_PauseAudioDevice(m_device, 0);
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() override {
        if (IsOpen())
            SDL_CloseAudioDevice(m_device);
    }
    bool IsOpen() const { return m_device != 0; }

    void Write(const WaveBlock& block) override {
        const DeviceLock lock(m_device);
        m_blocks.Push(block);
    }
    void Pause() override { SDL_PauseAudioDevice(m_device, 1); }
    void Restart() override { SDL_PauseAudioDevice(m_device, 0); }
    void Reset() override {
        {
            const DeviceLock lock(m_device);
            m_blocks.Clear();
            m_offset = 0;
        }
        Restart();
    }

private:
    static void Fill(void* self, Uint8* out, int bytes) {
        static_cast<Stream*>(self)->Fill(out, static_cast<DWORD>(bytes));
    }

    void Fill(BYTE* out, DWORD room) {
        // What was handed over last time has been taken, so that a caller who closes after his last block hears it out.
        if (m_handedOver > m_told)
            m_listener.BlockDone(m_told = m_handedOver);
        while (!m_blocks.IsEmpty()) {
            const WaveBlock& block = m_blocks.Front();
            const DWORD whole = block.count - block.count % m_frameBytes;
            const DWORD taken = std::min(whole - m_offset, m_widens ? room / 4 * 3 : room);
            out = Copy(out, block.bytes + m_offset, taken);
            room -= m_widens ? taken / 3 * 4 : taken;
            m_offset += taken;
            if (m_offset < whole)
                break;
            m_handedOver = block.number;
            m_offset = 0;
            m_blocks.Pop();
        }
        std::memset(out, m_silence, room);
    }

    /// Returns where it ended.
    BYTE* Copy(BYTE* out, const BYTE* bytes, DWORD count) const {
        if (!m_widens) {
            if (count > 0)
                std::memcpy(out, bytes, count);
            return out + count;
        }
        for (DWORD at = 0; at < count; at += 3) {
            *out++ = 0;
            out = std::copy_n(bytes + at, 3, out);
        }
        return out;
    }

    const DWORD m_frameBytes;
    const bool m_widens;
    const BYTE m_silence;
    WaveOutListener& m_listener;
    WaveBlocks m_blocks;
    DWORD m_offset = 0;         // in the front block
    ULONGLONG m_handedOver = 0; // up to this block
    ULONGLONG m_told = 0;
    SDL_AudioDeviceID m_device = 0;
};

/// Devices are known by name: their numbers move when others come and go.
class Device : public WaveOutDevice {
public:
    explicit Device(std::string name) : m_name(std::move(name)) {}
    const char* Name() const override { return m_name.c_str(); }
    bool Plays(const WAVEFORMATEX& format) const override {
        const WORD channels = format.nChannels;
        return DeviceFormat(format) != 0 && (channels <= 2 || channels == 4 || channels == 6 || channels == 8) &&
               format.nSamplesPerSec >= 1000 && format.nSamplesPerSec <= 384000;
    }
    std::unique_ptr<WaveOutStream> Open(const WAVEFORMATEX& format, WaveOutListener& listener) override {
        auto stream = std::make_unique<Stream>(m_name, format, listener);
        return stream->IsOpen() ? std::move(stream) : nullptr;
    }

private:
    const std::string m_name;
};

bool Begin() {
    SDL_SetHintWithPriority(SDL_HINT_AUDIO_DEVICE_APP_NAME, "TORV", SDL_HINT_DEFAULT); // unless the host has a name
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1"); // Ctrl+C and the end of the process are the host's
    return SDL_InitSubSystem(SDL_INIT_AUDIO) == 0;
}

/// The library keeps an error text for each thread that it failed on, and lets go of it by itself on its own threads
/// only.
void ForgetErrorsWithThread() {
    struct AtEnd {
        AtEnd() = default;
        AtEnd(const AtEnd&) = delete;
        AtEnd& operator=(const AtEnd&) = delete;
        ~AtEnd() { SDL_TLSCleanup(); }
    };
    thread_local const AtEnd atEnd;
}

std::vector<std::string> DeviceNames() {
    std::vector<std::string> names;
    for (int i = 0, count = SDL_GetNumAudioDevices(0); i < count; ++i) {
        if (const char* name = SDL_GetAudioDeviceName(i, 0))
            names.emplace_back(name);
    }
    char* chosen = nullptr;
    SDL_AudioSpec format;
    if (SDL_GetDefaultAudioInfo(&chosen, &format, 0) == 0 && chosen) {
        const auto found = std::find(names.begin(), names.end(), chosen);
        if (found != names.end())
            std::rotate(names.begin(), found, found + 1);
    }
    SDL_free(chosen);
    return names;
}

} // namespace

std::vector<std::shared_ptr<WaveOutDevice>> SoundLibraryDevices() {
    struct Known {
        std::mutex mutex;
        std::vector<std::shared_ptr<WaveOutDevice>> devices;
    };
    auto& [mutex, devices] = Immortal<Known>();
    const std::lock_guard lock(mutex);
    ForgetErrorsWithThread(); // before a device can be opened it must be found
    static const bool hasSound = Begin();
    if (!hasSound)
        return {};
    std::vector<std::shared_ptr<WaveOutDevice>> present;
    for (const std::string& name : DeviceNames()) {
        const auto known = std::find_if(devices.begin(), devices.end(), [&](const auto& device) {
            return name == device->Name() && std::find(present.begin(), present.end(), device) == present.end();
        });
        present.push_back(known != devices.end() ? *known : std::make_shared<Device>(name));
    }
    devices = present;
    return present;
}

} // namespace torv
