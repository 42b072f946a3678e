#pragma once

#include "audio/wave_test_files.h"

#include "torv/audio/wave_out.h"

#include <utility>

constexpr UINT kHostMessage = WM_USER + 11;
constexpr WORD kPositionCode = 5;
constexpr WORD kEndCode = 6;

/// A host's window, with what was posted to it: (wParam, lParam).
struct HostWindow : CWnd {
    using Posted = std::vector<std::pair<WPARAM, LPARAM>>;

    HostWindow() : CWnd(CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {}
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
    explicit MonoWave(const std::vector<SHORT>& samples) : file(path.Text()) {
        file.SetWaveFormat(Format(1, 16));
        for (const SHORT sample : samples)
            file.AppendSample(static_cast<WORD>(sample));
        file.SeekPlayPointer(0, 0);
    }

    const ScratchPath path;
    CWaveFile file;
};

inline std::vector<SHORT> Ramp(int count, int step) {
    std::vector<SHORT> samples;
    for (int i = 1; i <= count; ++i)
        samples.push_back(static_cast<SHORT>(i * step));
    return samples;
}

/// 16-bit samples from byte `at` on.
inline std::vector<SHORT> Samples(const Bytes& bytes, size_t at) {
    std::vector<SHORT> samples;
    for (size_t i = at; i + 1 < bytes.size(); i += 2)
        samples.push_back(static_cast<SHORT>(bytes[i] | bytes[i + 1] << 8));
    return samples;
}
