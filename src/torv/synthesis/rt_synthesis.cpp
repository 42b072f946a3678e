#include "torv/synthesis/rt_synthesis.h"

#include "torv/audio/sample.h"
#include "torv/platform/or_zero.h"
#include "torv/synthesis/step_feeder.h"
#include "torv/synthesis/trace_text.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace {

constexpr DWORD kEndOfRates = 0xFFFFFFFF;
constexpr DWORD kSampleRates[] = {44100, 48000, 96000, kEndOfRates};
/// A block's frames at each of these rates. 441 is more than a step makes at 48000 Hz; rings and their blocks are cut
/// by these numbers, so they stay.
constexpr DWORD kFrameSizes[] = {256, 441, 558};
constexpr DWORD kOtherFrameSize = 256;
constexpr int kSampleBits = 16;

} // namespace

CRtSynthesis::CRtSynthesis() : m_strLibrary("RVE.dll") {}
CRtSynthesis::CRtSynthesis(const CRtSynthesis&) = default;
CRtSynthesis& CRtSynthesis::operator=(const CRtSynthesis&) = default;

CRtSynthesis::~CRtSynthesis() { CRtSynthesis::RTS_StopSynthesis(); }

DWORD CRtSynthesis::GetDefaultSampleRate() { return torv::kDefaultSampleRate; }
int CRtSynthesis::GetDefaultSampleBit() { return kSampleBits; }
const DWORD* CRtSynthesis::GetSampleRateList() { return kSampleRates; }

int CRtSynthesis::IsValidSampleRate(DWORD rate) {
    return rate != kEndOfRates &&
           std::find(std::begin(kSampleRates), std::end(kSampleRates), rate) != std::end(kSampleRates);
}

int CRtSynthesis::IsValidSampleBit(int bits) { return bits == kSampleBits; }
const char* CRtSynthesis::GetQSMVersionString() { return "No Version String"; }

void CRtSynthesis::SetRate(DWORD rate) {
    m_dwRate = rate;
    SetOutputRate(rate);
}

int CRtSynthesis::OpenSynthesizer() {
    SetRate(torv::kDefaultSampleRate);
    if (!m_pLibrary)
        m_pLibrary = torv::OrZero([&] { return torv::EngineLibrary::Load(m_strLibrary); });
    const int handle = CreateRVE();
    if (handle == torv::kNoEngine)
        return 0;
    DeleteRVE(handle);
    return 1;
}

int CRtSynthesis::CloseSynthesizer() {
    m_pLibrary.reset();
    return 0;
}

int CRtSynthesis::CreateRVE() {
    if (!m_pLibrary)
        return torv::kNoEngine;
    SetOutputRate(m_dwRate);
    return torv::CreateEngine(*m_pLibrary, m_dwRate, m_strOption);
}

void CRtSynthesis::DeleteRVE(int handle) {
    if (m_pLibrary && handle >= 0)
        m_pLibrary->Delete(handle);
}

int CRtSynthesis::DoSynthesis(tagQuillSynthOut* out) {
    if (!out || !out->stream || !out->file || m_dwRate == 0)
        return 0;
    torv::EngineInstance engine(m_pLibrary, m_dwRate, m_strOption);
    if (!engine)
        return 0;
    const WAVEFORMATEX format = torv::PcmFormat(m_wOutputChannels, kSampleBits, m_dwRate);
    try {
        out->file->SetWaveFormat(format);
        WAVEFORMATEX taken;
        out->file->GetWaveFormat(taken);
        if (taken.nChannels != format.nChannels || taken.nSamplesPerSec != format.nSamplesPerSec ||
            taken.wBitsPerSample != format.wBitsPerSample)
            return 0;
        torv::StreamSinger singer(std::move(engine), *out->stream, m_dwRate, RTS_GetFrameSize());
        if (!torv::RenderOffline(singer, *out->file, m_progress))
            return 0;
        out->file->Flush();
    } catch (const CException&) {
        return 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return 1;
}

int CRtSynthesis::DoSynthesis(CQuillMidiBuffer* stream, CWaveFile* file, DWORD rate) {
    SetRate(rate);
    tagQuillSynthOut out{stream, file};
    return DoSynthesis(&out);
}

std::unique_ptr<torv::StreamSinger> CRtSynthesis::BeginSynthesis(CQuillMidiBuffer* stream, DWORD rate) {
    if (!stream || rate == 0)
        return nullptr;
    SetRate(rate);
    return torv::OrZero([&]() -> std::unique_ptr<torv::StreamSinger> {
        torv::EngineInstance engine(m_pLibrary, m_dwRate, m_strOption);
        if (!engine)
            return nullptr;
        return std::make_unique<torv::StreamSinger>(std::move(engine), *stream, m_dwRate, RTS_GetFrameSize());
    });
}

DWORD CRtSynthesis::RTS_GetFrameSize() const {
    for (std::size_t i = 0; i < std::size(kFrameSizes); ++i)
        if (kSampleRates[i] == m_dwRate)
            return kFrameSizes[i];
    return kOtherFrameSize;
}

LONGLONG CRtSynthesis::RTS_MsToSample(DWORD milliseconds, DWORD rate) const {
    return torv::MsToSample(milliseconds, rate);
}

DWORD CRtSynthesis::RTS_SampleToMs(LONGLONG sample) const {
    if (m_dwRate == 0)
        return 0;
    const double milliseconds = static_cast<double>(sample) / m_dwRate * 1000.0;
    return static_cast<DWORD>(std::clamp<LONGLONG>(torv::TruncateToInt64(milliseconds), 0, 0xFFFFFFFF));
}

int CRtSynthesis::PostTo(HWND window, WORD code, LONGLONG sample) const {
    if (!window || !IsWindow(window))
        return 0;
    return PostMessageA(window, m_nMessage, code, static_cast<LPARAM>(RTS_SampleToMs(sample)));
}

int CRtSynthesis::PostMessageToMsgDestination([[maybe_unused]] UINT message, WORD code, LONGLONG sample) {
    // Notifications go out under the one message that the host chose, whatever a caller names here.
    return PostTo(m_hScoreWnd, code, sample);
}

void CRtSynthesis::TraceEvent(const BYTE* data, int length) { torv::TraceText(data, length); }
void CRtSynthesis::TraceEvent2(const BYTE* data, int length) { torv::TraceMessages(data, length); }
