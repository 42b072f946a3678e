#include "wave_recorder.h"

#if defined(_WIN32)
#include <cstring>

namespace {

std::shared_ptr<WaveRecorder> g_recorder;

} // namespace

void torv::AddWaveOutDevice(const std::shared_ptr<WaveRecorder>& recorder) { g_recorder = recorder; }
void torv::RemoveWaveOutDevice(const WaveRecorder*) { g_recorder.reset(); }

MMRESULT WaveRecorder::Open(LPHWAVEOUT handle, const WAVEFORMATEX& asked, DWORD_PTR callback, DWORD_PTR instance,
                            DWORD flags) {
    if (asked.wBitsPerSample == 32)
        return WAVERR_BADFORMAT;
    if (refuse)
        return MMSYSERR_ALLOCATED;
    {
        const std::lock_guard lock(m_mutex);
        m_callback = callback;
        m_instance = instance;
        m_type = flags & CALLBACK_TYPEMASK;
        Begin(asked);
    }
    *handle = reinterpret_cast<HWAVEOUT>(this);
    Tell(MM_WOM_OPEN, nullptr);
    return MMSYSERR_NOERROR;
}

MMRESULT WaveRecorder::Close() {
    if (Queued() > 0)
        return WAVERR_STILLPLAYING;
    ++closed;
    Tell(MM_WOM_CLOSE, nullptr);
    return MMSYSERR_NOERROR;
}

MMRESULT WaveRecorder::Write(WAVEHDR& header) {
    if (writeHook)
        writeHook();
    if (refuse)
        return MMSYSERR_NODRIVER;
    if (!(header.dwFlags & WHDR_PREPARED))
        return WAVERR_UNPREPARED;
    const std::lock_guard lock(m_mutex);
    header.dwFlags = (header.dwFlags & ~WHDR_DONE) | WHDR_INQUEUE;
    m_queue.push_back(&header);
    return MMSYSERR_NOERROR;
}

MMRESULT WaveRecorder::Reset() {
    if (resetHook)
        resetHook();
    std::vector<WAVEHDR*> queue;
    {
        const std::lock_guard lock(m_mutex);
        queue.swap(m_queue);
        m_queue.reserve(64);
    }
    paused = false;
    ++resets;
    for (WAVEHDR* header : queue)
        GiveBack(*header);
    return MMSYSERR_NOERROR;
}

int WaveRecorder::Finish(int count) {
    for (int finished = 0; finished < count; ++finished) {
        WAVEHDR* header = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            if (!Take(header))
                return finished;
            m_played.insert(m_played.end(), header->lpData, header->lpData + header->dwBufferLength);
        }
        GiveBack(*header);
    }
    return count;
}

/// The header is the caller's again as soon as its flags say so.
void WaveRecorder::GiveBack(WAVEHDR& header) const {
    std::atomic_ref<DWORD>(header.dwFlags).store(WHDR_PREPARED | WHDR_DONE);
    Tell(MM_WOM_DONE, &header);
}

void WaveRecorder::Tell(UINT message, WAVEHDR* header) const {
    auto* const self = reinterpret_cast<HWAVEOUT>(const_cast<WaveRecorder*>(this));
    const auto lParam = reinterpret_cast<LPARAM>(header);
    if (m_type == CALLBACK_THREAD)
        PostThreadMessageA(static_cast<DWORD>(m_callback), message, reinterpret_cast<WPARAM>(self), lParam);
    else if (m_type == CALLBACK_FUNCTION)
        reinterpret_cast<LPWAVECALLBACK>(m_callback)(reinterpret_cast<HDRVR>(self), message, m_instance,
                                                     static_cast<DWORD_PTR>(lParam), 0);
}

namespace {

UINT WINAPI GetNumDevs() { return g_recorder ? 1 : 0; }

MMRESULT WINAPI GetDevCaps(UINT_PTR, LPWAVEOUTCAPSA capabilities, UINT) {
    *capabilities = {};
    std::memcpy(capabilities->szPname, WaveRecorder::kName, MAXPNAMELEN - 1);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI Open(LPHWAVEOUT handle, UINT, LPCWAVEFORMATEX format, DWORD_PTR callback, DWORD_PTR instance,
                     DWORD flags) {
    return g_recorder ? g_recorder->Open(handle, *format, callback, instance, flags) : MMSYSERR_NODRIVER;
}

MMRESULT WINAPI Close(HWAVEOUT) { return g_recorder->Close(); }

MMRESULT WINAPI Prepare(HWAVEOUT, LPWAVEHDR header, UINT) {
    header->dwFlags |= WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI Unprepare(HWAVEOUT, LPWAVEHDR header, UINT) {
    if (header->dwFlags & WHDR_INQUEUE)
        return WAVERR_STILLPLAYING;
    header->dwFlags &= ~WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI Write(HWAVEOUT, LPWAVEHDR header, UINT) { return g_recorder->Write(*header); }

MMRESULT WINAPI Pause(HWAVEOUT) {
    g_recorder->paused = true;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI Restart(HWAVEOUT) {
    g_recorder->paused = false;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI Reset(HWAVEOUT) { return g_recorder->Reset(); }

template <class Call>
void* Address(Call* call) {
    return reinterpret_cast<void*>(call);
}

} // namespace

// What the library's calls go through: defined here, the linker takes these instead of the system's.
#define STANDS_BEFORE(symbol, call)                                                                                    \
    extern void* const imported_##call __asm__("__imp__" symbol);                                                      \
    void* const imported_##call = Address(&call)

STANDS_BEFORE("waveOutGetNumDevs@0", GetNumDevs);
STANDS_BEFORE("waveOutGetDevCapsA@12", GetDevCaps);
STANDS_BEFORE("waveOutOpen@24", Open);
STANDS_BEFORE("waveOutClose@4", Close);
STANDS_BEFORE("waveOutPrepareHeader@12", Prepare);
STANDS_BEFORE("waveOutUnprepareHeader@12", Unprepare);
STANDS_BEFORE("waveOutWrite@12", Write);
STANDS_BEFORE("waveOutPause@4", Pause);
STANDS_BEFORE("waveOutRestart@4", Restart);
STANDS_BEFORE("waveOutReset@4", Reset);
#endif
