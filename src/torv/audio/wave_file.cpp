#include "torv/audio/wave_file.h"

#include "torv/audio/sample.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr DWORD kHeaderBytes = 44;
constexpr DWORD kRiffOverhead = 36; ///< what the RIFF length counts besides the sample data
constexpr DWORD kMostDataBytes = 0xFFFFFFFF - kHeaderBytes;
constexpr DWORD kDefaultBufferFrames = 1024;
constexpr DWORD kFrameStep = 256;
constexpr LONG kInvalidParameter = 87; ///< the system's number for an argument that makes no sense

DWORD RoundUpFrames(DWORD frames) {
    const ULONGLONG asked = frames ? frames : kDefaultBufferFrames;
    return static_cast<DWORD>(std::min<ULONGLONG>((asked + kFrameStep - 1) / kFrameStep * kFrameStep, 0xFFFFFF00));
}

bool HasTag(const BYTE* at, const char* tag) { return std::memcmp(at, tag, 4) == 0; }

} // namespace

CWaveFile::CWaveFile(DWORD bufferFrames)
    : m_dwAskedFrames(bufferFrames), m_Format(torv::PcmFormat(2, 16, torv::kDefaultSampleRate)) {}

CWaveFile::CWaveFile(const CString& path, DWORD bufferFrames) : CWaveFile(bufferFrames) { CWaveFile::Open(path); }

CWaveFile::~CWaveFile() {
    try {
        CWaveFile::Close();
    } catch (...) {
        // Nobody is left to hear of it; who needs to know closes by name.
    }
}

int CWaveFile::Open(const CString& path) { return OpenPath(path, true); }

int CWaveFile::OpenExisting(const CString& path) { return OpenPath(path, false); }

int CWaveFile::OpenPath(const CString& path, bool mayMake) {
    CWaveFile::Close();
    const auto giveUp = [this] {
        CFile::Abort();
        m_pBuffer.reset();
    };
    try {
        OpenFile(path, mayMake);
    } catch (const std::bad_alloc&) {
        giveUp();
        throw CMemoryException();
    } catch (...) {
        giveUp();
        throw;
    }
    return 1;
}

BOOL CWaveFile::Open(LPCSTR path, UINT /*flags*/, CFileException* error) {
    try {
        return CWaveFile::Open(CString(path));
    } catch (const CFileException& thrown) {
        if (error)
            *error = thrown;
    } catch (const CMemoryException&) {
        if (error)
            *error = CFileException(CFileException::generic);
    } catch (const std::bad_alloc&) {
        if (error)
            *error = CFileException(CFileException::generic);
    }
    return FALSE;
}

void CWaveFile::OpenFile(const CString& path, bool mayMake) {
    CFileException error;
    // A path that cannot be opened as it is becomes a new file.
    if (!CFile::Open(path, modeReadWrite | shareDenyNone, &error) &&
        !(mayMake && CFile::Open(path, modeCreate | modeNoTruncate | modeReadWrite, &error)))
        throw error;
    m_bDirty = false;
    m_bHeaderStale = false;
    m_bWindowLoaded = false;
    ReadHeader(path);
    AllocateBuffer(m_Format.nBlockAlign);
    m_dwCurrentSample = 0;
    m_dwPlayStart = 0;
    m_qwPlayPointer = 0;
    SkipUnplayedFrames();
}

void CWaveFile::ReadHeader(const CString& path) {
    BYTE header[kHeaderBytes];
    if (CFile::Read(header, kHeaderBytes) < kHeaderBytes) {
        // A new file, or what is left of one whose making was cut off.
        UseFormat(torv::PcmFormat(2, 16, torv::kDefaultSampleRate));
        m_dwDataBytes = 0;
        WriteHeader();
        CFile::SeekToBegin();
        if (CFile::Read(header, kHeaderBytes) < kHeaderBytes)
            throw CFileException(CFileException::endOfFile, -1, path);
    }
    if (!HasTag(header, "RIFF") || !HasTag(header + 8, "WAVE"))
        throw CFileException(CFileException::invalidFile, kInvalidParameter, path);
    const auto word = [&header](DWORD at) { return static_cast<WORD>(torv::LoadValue(header + at, 2)); };
    const auto number = [&header](DWORD at) { return torv::LoadValue(header + at, 4); };
    const WAVEFORMATEX format{word(20), word(22), number(24), number(28), word(32), word(34), 0};
    if (!HasTag(header + 12, "fmt ") || number(16) != 16 || !HasTag(header + 36, "data") ||
        !torv::IsUsableFormat(format))
        throw CFileException(CFileException::invalidFile, kInvalidParameter, path);
    const DWORD riffBytes = number(4);
    if (CFile::GetLength() != riffBytes + 8ULL || riffBytes - kRiffOverhead > kMostDataBytes)
        throw CFileException(CFileException::invalidFile, -1, path);
    UseFormat(format);
    SetDataBytes(riffBytes - kRiffOverhead);
}

void CWaveFile::WriteHeader() {
    BYTE header[kHeaderBytes] = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E', 'f', 'm',
                                 't', ' ', 16,  0,   0, 0, 0, 0, 0,   0,   0,   0,   0,   0,
                                 0,   0,   0,   0,   0, 0, 0, 0, 'd', 'a', 't', 'a'};
    const auto put = [&header](DWORD at, DWORD width, DWORD value) { torv::StoreValue(header + at, width, value); };
    put(4, 4, m_dwDataBytes + kRiffOverhead);
    put(20, 2, m_Format.wFormatTag);
    put(22, 2, m_Format.nChannels);
    put(24, 4, m_Format.nSamplesPerSec);
    put(28, 4, m_Format.nAvgBytesPerSec);
    put(32, 2, m_Format.nBlockAlign);
    put(34, 2, m_Format.wBitsPerSample);
    put(40, 4, m_dwDataBytes);
    WriteAt(0, header, kHeaderBytes);
    m_bHeaderStale = false;
}

void CWaveFile::UseFormat(const WAVEFORMATEX& format) {
    m_Format = format;
    m_Level.SetDefaultInterval(static_cast<DWORD>(format.nSamplesPerSec * 0.05));
}

ULONGLONG CWaveFile::PlaceOf(DWORD frame) const {
    return kHeaderBytes + static_cast<ULONGLONG>(frame) * m_Format.nBlockAlign;
}

void CWaveFile::AllocateBuffer(DWORD align) {
    const DWORD frames = RoundUpFrames(m_dwAskedFrames);
    const ULONGLONG bytes = static_cast<ULONGLONG>(frames) * align;
    std::unique_ptr<BYTE[]> buffer(bytes <= 0x7FFFFFFF ? new (std::nothrow) BYTE[static_cast<size_t>(bytes)] : nullptr);
    if (!buffer)
        throw CMemoryException();
    m_pBuffer = std::move(buffer);
    m_dwBufferFrames = frames;
    m_bWindowLoaded = false;
}

void CWaveFile::SetDataBytes(DWORD bytes) {
    m_dwDataBytes = bytes;
    m_dwFrames = bytes / m_Format.nBlockAlign;
    m_dwPlayEnd = m_dwFrames;
}

void CWaveFile::Close() {
    if (m_hFile == hFileNull)
        return;
    try {
        CWaveFile::Flush();
    } catch (...) {
        CFile::Abort();
        m_pBuffer.reset();
        throw;
    }
    m_pBuffer.reset();
    CFile::Close();
}

void CWaveFile::Flush() {
    if (!IsReady())
        return;
    if (m_bDirty) {
        WriteAt(PlaceOf(m_dwWindowFrame), m_pBuffer.get(), (m_dwFrames - m_dwWindowFrame) * m_Format.nBlockAlign);
        m_bDirty = false;
        m_bHeaderStale = true;
    }
    if (m_bHeaderStale)
        WriteHeader();
}

void CWaveFile::SetLength(ULONGLONG dataBytes) {
    if (!IsReady() || dataBytes > kMostDataBytes)
        return;
    Flush();
    CFile::SetLength(dataBytes + kHeaderBytes);
    SetDataBytes(static_cast<DWORD>(dataBytes));
    m_dwCurrentSample = std::min(m_dwCurrentSample, m_dwFrames);
    m_bWindowLoaded = false;
    WriteHeader();
}

int CWaveFile::Remove() {
    if (m_hFile == hFileNull)
        return 0;
    const CString path = GetFilePath();
    CFile::Abort();
    m_pBuffer.reset();
    try {
        CFile::Remove(path);
    } catch (const CFileException&) {
        return 0;
    }
    return 1;
}

void CWaveFile::LoadWindow(DWORD frame) {
    Flush();
    m_bWindowLoaded = false;
    const DWORD align = m_Format.nBlockAlign;
    const DWORD start = frame - frame % m_dwBufferFrames;
    const DWORD frames = start < m_dwFrames ? std::min(m_dwFrames - start, m_dwBufferFrames) : 0;
    UINT done = 0;
    if (frames > 0)
        done = ReadAt(PlaceOf(start), m_pBuffer.get(), frames * align);
    std::memset(m_pBuffer.get() + done, 0, static_cast<size_t>(m_dwBufferFrames) * align - done);
    m_dwWindowFrame = start;
    m_bWindowLoaded = true;
}

int CWaveFile::AppendSample(DWORD left, DWORD right) {
    const DWORD align = m_Format.nBlockAlign;
    if (!IsReady() || m_dwDataBytes > kMostDataBytes - align)
        return 0;
    LoadWindowOf(m_dwFrames);
    torv::StoreFrame(m_pBuffer.get() + (m_dwFrames - m_dwWindowFrame) * align, m_Format.nChannels, align,
                     {left, right});
    m_bDirty = true;
    CountAppended(1);
    if (m_dwFrames - m_dwWindowFrame == m_dwBufferFrames)
        Flush();
    return 1;
}

int CWaveFile::AppendFrames(const BYTE* frames, DWORD count) {
    const DWORD align = m_Format.nBlockAlign;
    if (!IsReady() || !frames || (static_cast<ULONGLONG>(m_dwFrames) + count) * align > kMostDataBytes)
        return 0;
    while (count > 0) {
        const DWORD inWindow = m_dwFrames % m_dwBufferFrames;
        DWORD piece = std::min(count, m_dwBufferFrames - inWindow);
        if (piece == m_dwBufferFrames) { // whole windows need no copy of their own
            piece = count / m_dwBufferFrames * m_dwBufferFrames;
            Flush();
            m_bWindowLoaded = false;
            WriteAt(PlaceOf(m_dwFrames), frames, piece * align);
            CountAppended(piece);
            m_bHeaderStale = true;
            Flush();
        } else {
            LoadWindowOf(m_dwFrames);
            std::memcpy(m_pBuffer.get() + static_cast<size_t>(inWindow) * align, frames, piece * align);
            m_bDirty = true;
            CountAppended(piece);
            if (inWindow + piece == m_dwBufferFrames)
                Flush();
        }
        frames += static_cast<size_t>(piece) * align;
        count -= piece;
    }
    return 1;
}

void CWaveFile::CountAppended(DWORD frames) {
    m_dwFrames += frames;
    m_dwDataBytes = m_dwFrames * m_Format.nBlockAlign; // a broken frame at the data's end is written over
    m_dwPlayEnd = m_dwFrames;
}

int CWaveFile::ReadSample(DWORD& left, DWORD& right) {
    left = 0;
    right = 0;
    if (!IsReady() || m_dwCurrentSample >= m_dwFrames)
        return 0;
    LoadWindowOf(m_dwCurrentSample);
    const DWORD align = m_Format.nBlockAlign;
    const auto values =
        torv::LoadFrame(m_pBuffer.get() + (m_dwCurrentSample - m_dwWindowFrame) * align, m_Format.nChannels, align);
    left = values.left;
    right = values.right;
    ++m_dwCurrentSample;
    return 1;
}

DWORD CWaveFile::ReadFrames(BYTE* frames, DWORD count) {
    if (!IsReady() || !frames)
        return 0;
    Flush();
    const DWORD align = m_Format.nBlockAlign;
    const DWORD most = std::min(m_dwFrames - m_dwCurrentSample, 0xFFFFFFFF / align);
    count = std::min(count, most);
    const UINT done = ReadAt(PlaceOf(m_dwCurrentSample), frames, count * align);
    std::memset(frames + done, 0, static_cast<size_t>(count) * align - done);
    m_dwCurrentSample += count;
    return count;
}

int CWaveFile::SeekSample(LONG frame, int whence) {
    if (whence != 0 && whence != 1)
        return 0;
    Flush();
    const LONGLONG target = frame + (whence == 1 ? static_cast<LONGLONG>(m_dwCurrentSample) : 0);
    m_dwCurrentSample = static_cast<DWORD>(std::clamp<LONGLONG>(target, 0, m_dwFrames));
    return 1;
}

void CWaveFile::SetWaveFormat(const WAVEFORMATEX& format) {
    if (m_dwDataBytes != 0 || !torv::IsUsableFormat(format))
        return;
    if (IsReady())
        AllocateBuffer(format.nBlockAlign);
    UseFormat(format);
    m_bHeaderStale = true;
    Flush();
}

DWORD CWaveFile::GetWaveData(BYTE* data, DWORD bytes) {
    if (!IsReady() || !data)
        return 0;
    Flush();
    return ReadAt(kHeaderBytes, data, std::min(bytes, m_dwDataBytes));
}

int CWaveFile::AddVolumeToWaveData(const BYTE* in, BYTE* out, DWORD bytes, int clip) const {
    const DWORD width = m_Format.wBitsPerSample / 8;
    const DWORD channels = m_Format.nChannels;
    if (!in || !out || width < 1 || width > 4 || channels > 2)
        return 0;
    const DWORD whole = bytes - bytes % m_Format.nBlockAlign;
    std::memmove(out, in, bytes);
    for (DWORD at = 0, channel = 0; at < whole; at += width, channel = (channel + 1) % channels) {
        // A mono frame is one side of the picture: the left gain, as when it is played.
        const double gain = channel == 0 ? m_dGainL : m_dGainR;
        const DWORD value = torv::LoadValue(out + at, width);
        torv::StoreValue(out + at, width, torv::ScaledWithin(value, m_Format.wBitsPerSample, gain, clip != 0));
    }
    return 1;
}

double CWaveFile::SamplesToMilliSec(double samples) const {
    return m_Format.nSamplesPerSec ? samples * 1000.0 / m_Format.nSamplesPerSec : 0.0;
}

double CWaveFile::MilliSecToSamples(double milliseconds) const {
    return m_Format.nSamplesPerSec * milliseconds * 0.001;
}
