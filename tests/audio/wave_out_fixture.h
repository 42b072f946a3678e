#pragma once

#include "audio/wave_test_files.h"
#include "platform/begun_thread.h"
#include "torv/audio/wave_out.h"

#include <utility>

constexpr UINT kHostMessage = WM_USER + 11;
constexpr WORD kPositionCode = 5;
constexpr WORD kEndCode = 6;

/// A host's window, with what was posted to it: (wParam, lParam).
struct HostWindow : CWnd {
    using Posted = std::vector<std::pair<WPARAM, LPARAM>>;

    HostWindow() : CWnd(NewWindow()) {}
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;
    ~HostWindow() override { DestroyWindow(m_hWnd); }

    Posted Take() const {
        Posted posted;
        MSG message;
        while (PeekMessageA(&message, m_hWnd, kHostMessage, kHostMessage, PM_REMOVE))
            posted.emplace_back(message.wParam, message.lParam);
        return posted;
    }
};

/// A 16-bit mono file at 44100 Hz, open, and gone at the end.
struct MonoWave {
    explicit MonoWave(const Shorts& samples) : file(path.Text()) {
        file.SetWaveFormat(Format(1, 16));
        for (const short sample : samples)
            file.AppendSample(static_cast<WORD>(sample));
        file.SeekPlayPointer(0, 0);
    }

    const Scratch path;
    CWaveFile file;
};

inline Shorts Ramp(int count, int step, size_t silence = 0) {
    Shorts samples;
    for (int i = 1; i <= count; ++i)
        samples.push_back(static_cast<short>(i * step));
    samples.insert(samples.end(), silence, 0);
    return samples;
}
