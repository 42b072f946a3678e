#include "wave_recorder_windows.h"

#if defined(_WIN32)
#include <algorithm>
#include <cstring>

namespace {

std::shared_ptr<WaveRecorder> g_recorder;

template <class Call>
Call SystemCall(const char* name) {
    static const HMODULE system = LoadLibraryA("winmm.dll");
    return reinterpret_cast<Call>(reinterpret_cast<void*>(GetProcAddress(system, name)));
}

} // namespace

WaveRecorderInList::WaveRecorderInList() { g_recorder = recorder; }
WaveRecorderInList::~WaveRecorderInList() { g_recorder.reset(); }

MMRESULT WaveRecorder::Open(LPHWAVEOUT handle, const WAVEFORMATEX& asked, DWORD_PTR callback, DWORD_PTR instance,
                            DWORD flags) {
    if (asked.wBitsPerSample == 32)
        return WAVERR_BADFORMAT;
    if (refuse)
        return MMSYSERR_ALLOCATED;
    {
        const std::lock_guard lock(m_mutex);
        m_format = asked;
        m_callback = callback;
        m_instance = instance;
        m_type = flags & CALLBACK_TYPEMASK;
        m_queue.clear();
    }
    paused = false;
    ++opened;
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
    if (refuseBlocks)
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
        queue = m_queue;
        m_queue.clear();
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
            if (paused || m_queue.empty())
                return finished;
            header = m_queue.front();
            m_queue.erase(m_queue.begin());
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
    const auto wParam = reinterpret_cast<WPARAM>(self);
    const auto lParam = reinterpret_cast<LPARAM>(header);
    if (m_type == CALLBACK_THREAD)
        PostThreadMessageA(static_cast<DWORD>(m_callback), message, wParam, lParam);
    else if (m_type == CALLBACK_WINDOW)
        PostMessageA(reinterpret_cast<HWND>(m_callback), message, wParam, lParam);
    else if (m_type == CALLBACK_FUNCTION)
        reinterpret_cast<LPWAVECALLBACK>(m_callback)(reinterpret_cast<HDRVR>(self), message, m_instance,
                                                     static_cast<DWORD_PTR>(lParam), 0);
}

size_t WaveRecorder::Queued() const {
    const std::lock_guard lock(m_mutex);
    return m_queue.size();
}

std::vector<BYTE> WaveRecorder::Played() const {
    const std::lock_guard lock(m_mutex);
    return m_played;
}

WAVEFORMATEX WaveRecorder::Format() const {
    const std::lock_guard lock(m_mutex);
    return m_format;
}

namespace {

UINT WINAPI GetNumDevs() { return g_recorder ? 1 : SystemCall<decltype(&waveOutGetNumDevs)>("waveOutGetNumDevs")(); }

MMRESULT WINAPI GetDevCaps(UINT_PTR number, LPWAVEOUTCAPSA capabilities, UINT size) {
    if (!g_recorder)
        return SystemCall<decltype(&waveOutGetDevCapsA)>("waveOutGetDevCapsA")(number, capabilities, size);
    *capabilities = {};
    std::memcpy(capabilities->szPname, WaveRecorder::kName, MAXPNAMELEN - 1);
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI Open(LPHWAVEOUT handle, UINT number, LPCWAVEFORMATEX format, DWORD_PTR callback, DWORD_PTR instance,
                     DWORD flags) {
    return g_recorder
               ? g_recorder->Open(handle, *format, callback, instance, flags)
               : SystemCall<decltype(&waveOutOpen)>("waveOutOpen")(handle, number, format, callback, instance, flags);
}

MMRESULT WINAPI Close(HWAVEOUT handle) {
    return g_recorder ? g_recorder->Close() : SystemCall<decltype(&waveOutClose)>("waveOutClose")(handle);
}

MMRESULT WINAPI Prepare(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    if (!g_recorder)
        return SystemCall<decltype(&waveOutPrepareHeader)>("waveOutPrepareHeader")(handle, header, size);
    header->dwFlags |= WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI Unprepare(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    if (!g_recorder)
        return SystemCall<decltype(&waveOutUnprepareHeader)>("waveOutUnprepareHeader")(handle, header, size);
    if (header->dwFlags & WHDR_INQUEUE)
        return WAVERR_STILLPLAYING;
    header->dwFlags &= ~WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI Write(HWAVEOUT handle, LPWAVEHDR header, UINT size) {
    return g_recorder ? g_recorder->Write(*header)
                      : SystemCall<decltype(&waveOutWrite)>("waveOutWrite")(handle, header, size);
}

MMRESULT WINAPI Pause(HWAVEOUT handle) {
    if (!g_recorder)
        return SystemCall<decltype(&waveOutPause)>("waveOutPause")(handle);
    g_recorder->paused = true;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI Restart(HWAVEOUT handle) {
    if (!g_recorder)
        return SystemCall<decltype(&waveOutRestart)>("waveOutRestart")(handle);
    g_recorder->paused = false;
    return MMSYSERR_NOERROR;
}

MMRESULT WINAPI Reset(HWAVEOUT handle) {
    return g_recorder ? g_recorder->Reset() : SystemCall<decltype(&waveOutReset)>("waveOutReset")(handle);
}

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
