#include "torv/audio/double_buffered_output.h"

#include "torv/platform/wave_header.h"

namespace torv {
namespace {

constexpr DWORD kCloseTime = 1000; ///< ms; a device that was reset gives its headers back at once

} // namespace

MMRESULT DoubleBufferedOutput::Open(UINT number, const WAVEFORMATEX& format, DWORD_PTR target, DWORD kind) {
    const MMRESULT error = waveOutOpen(&device, number, &format, target, 0, kind);
    if (error != MMSYSERR_NOERROR)
        device = nullptr;
    return error;
}

int DoubleBufferedOutput::IndexOf(const WAVEHDR* header) const {
    for (int index = 0; index < kHeaders; ++index)
        if (header == &headers[index])
            return index;
    return -1;
}

MMRESULT DoubleBufferedOutput::Queue(int index) {
    WAVEHDR& header = headers[index];
    MMRESULT error = waveOutPrepareHeader(device, &header, sizeof header);
    if (error == MMSYSERR_NOERROR)
        error = waveOutWrite(device, &header, sizeof header);
    m_isQueued[index] = error == MMSYSERR_NOERROR;
    return error;
}

bool DoubleBufferedOutput::IsBack(int index) const {
    return !m_isQueued[index] || (HeaderFlags(headers[index]) & WHDR_DONE) != 0;
}

bool DoubleBufferedOutput::AwaitBoth(DWORD milliseconds) const {
    const DWORD start = timeGetTime();
    while (!AreBothBack()) {
        if (timeGetTime() - start >= milliseconds)
            return false;
        Sleep(1);
    }
    return true;
}

bool DoubleBufferedOutput::TakeBack(int index) {
    if (!IsBack(index))
        return false;
    waveOutUnprepareHeader(device, &headers[index], sizeof headers[index]);
    m_isQueued[index] = false;
    return true;
}

bool DoubleBufferedOutput::Close() {
    if (!device)
        return true;
    const bool areBack = AwaitBoth(Reset() == MMSYSERR_NOERROR ? kCloseTime : 0);
    for (WAVEHDR& header : headers)
        waveOutUnprepareHeader(device, &header, sizeof header);
    // A device that closes has let go of the headers, whatever their flags say.
    if (waveOutClose(device) != MMSYSERR_NOERROR && !areBack)
        return false;
    device = nullptr;
    for (int index = 0; index < kHeaders; ++index) {
        headers[index] = {};
        m_isQueued[index] = false;
    }
    return true;
}

} // namespace torv
