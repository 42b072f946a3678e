// How a song becomes buffers: its meta events, and its tracks one after the other.
#include "torv/files/quill_midi_file.h"

#include "torv/score/sequence.h"
#include "torv/score/sequence_object.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

constexpr BYTE kMeta = 0xFF;
constexpr BYTE kText = 0x01;
constexpr BYTE kTrackName = 0x03;
constexpr BYTE kEndOfTrack = 0x2F;
constexpr BYTE kTempo = 0x51;
constexpr BYTE kTimeSignature = 0x58;
constexpr DWORD kMaxName = 0xFF;
constexpr DWORD kMaxTempo = 0xFFFFFF;
constexpr BYTE kClocksPerClick = 24;
constexpr BYTE kThirtySecondsPerQuarter = 8;
constexpr DWORD kMaxPiece = 119; // with its head, 127 bytes: the longest text whose length is one byte
constexpr DWORD kPieceHead = 8;
constexpr DWORD kPieceNumbers = 10000;

} // namespace

int CxQuillMidiFile::EncodeMultiTrackSequence(std::span<CQuillMidiBuffer> buffers, CSequence* song,
                                              const tagQuillMidiQSBBuffer* qsb) {
    if (!song || buffers.size() <= static_cast<size_t>(song->GetObjectCount()))
        return 0;
    auto buffer = buffers.begin();
    {
        const TrackRun run(*this, *buffer, nullptr);
        if (!WriteMetaTrackName("Master Track") || !WriteMasterTrack(song) || !WriteMetaEOT(0))
            return 0;
    }
    const std::unique_ptr<tagSequenceTimeMap[]> map(CreateSequenceTimeMap(song->GetMasterTrack()));
    if (!map)
        return 0;
    for (POSITION at = song->GetHeadObjectPosition(); at;) {
        CSequenceObject* const track = song->GetNextObject(at);
        const TrackRun run(*this, *++buffer, track);
        if (!EncodeTrack(track, map.get(), qsb))
            return 0;
        if (qsb)
            ++qsb;
    }
    return 1;
}

int CxQuillMidiFile::EncodeTrack(CSequenceObject* track, const tagSequenceTimeMap* map,
                                 const tagQuillMidiQSBBuffer* qsb) {
    m_pBuffer->SetLast(0, 0);
    if (!WriteMetaTrackName(track ? track->GetName() : CString()))
        return 0;
    if (qsb) {
        const DWORD pieces = qsb->data ? (qsb->size / kMaxPiece) + (qsb->size % kMaxPiece != 0) : 0;
        if (static_cast<DWORD>(WriteMetaQSBEvent(qsb, 0)) != pieces)
            return 0;
    }
    // A track that has given its content up is an empty one.
    if (track && track->GetEventBuffer() && !WriteQuillMidiTrack(track, map))
        return 0;
    // The last insertion was anywhere; the end of track follows what stands last.
    m_pBuffer->SeekToEnd();
    const DWORD end = m_pBuffer->GetPosition();
    const DWORD lastTick = std::min(m_pBuffer->GetLastTick(), torv::kMaxClock);
    return WriteMetaEOT(lastTick > end ? lastTick - end : 0);
}

int CxQuillMidiFile::WriteMasterTrack(CSequence* song) {
    CMasterTrack* const master = song ? song->GetMasterTrack() : nullptr;
    CArray<tagTempoMap> tempos;
    CArray<tagTimeSignatureMap> signatures;
    if (!m_pBuffer || !master || !master->GetTempoMap(tempos) || !master->GetTimeSignatureMap(signatures))
        return 0;
    for (int i = 0; i < tempos.GetSize(); ++i)
        if (!m_pBuffer->MoveTo(tempos[i].clock) || !WriteMetaTempo(tempos[i].tempo))
            return 0;
    uint64_t tick = 0;
    tagTimeSignatureMap previous = signatures[0];
    for (int i = 0; i < signatures.GetSize(); ++i) {
        const tagTimeSignatureMap current = signatures[i];
        const int measureTicks =
            CSequenceObject::CalcMeasureClock(previous.signature.numerator, previous.signature.denominatorExponent);
        // Measure numbers are 16 bits and go round.
        const WORD measures = static_cast<WORD>(current.measure - previous.measure);
        tick += static_cast<uint64_t>(measures) * static_cast<DWORD>(measureTicks);
        if (tick > torv::kMaxClock)
            break;
        if (!m_pBuffer->MoveTo(static_cast<DWORD>(tick)) || !WriteMetaTimeSignature(current.signature))
            return 0;
        previous = current;
    }
    return 1;
}

int CxQuillMidiFile::WriteMetaTrackName(const char* text) {
    const DWORD length = text ? static_cast<DWORD>(strnlen(text, kMaxName)) : 0;
    const BYTE head[] = {kMeta, kTrackName, static_cast<BYTE>(length)};
    return m_pBuffer && m_pBuffer->InsertEvent(head, sizeof head, reinterpret_cast<const BYTE*>(text), length, 0, 1);
}

int CxQuillMidiFile::WriteMetaTempo(DWORD tempo) {
    const DWORD told = std::min(tempo, kMaxTempo);
    const BYTE bytes[] = {kMeta,
                          kTempo,
                          3,
                          static_cast<BYTE>(told >> 16),
                          static_cast<BYTE>(told >> 8 & 0xFF),
                          static_cast<BYTE>(told & 0xFF)};
    return m_pBuffer && m_pBuffer->InsertEvent(bytes, sizeof bytes, 0, 1);
}

int CxQuillMidiFile::WriteMetaTimeSignature(tagTimeSignature signature) {
    const BYTE bytes[] = {
        kMeta,           kTimeSignature,          4, signature.numerator, signature.denominatorExponent,
        kClocksPerClick, kThirtySecondsPerQuarter};
    return m_pBuffer && m_pBuffer->InsertEvent(bytes, sizeof bytes, 0, 1);
}

int CxQuillMidiFile::WriteMetaEOT(DWORD delta) {
    constexpr BYTE kBytes[] = {kMeta, kEndOfTrack, 0};
    return m_pBuffer && m_pBuffer->AddEvent(delta, kBytes, sizeof kBytes, 0);
}

int CxQuillMidiFile::WriteMetaQSBEvent(const tagQuillMidiQSBBuffer* qsb, DWORD firstNumber) {
    if (!m_pBuffer || !qsb || !qsb->data)
        return 0;
    int count = 0;
    for (DWORD done = 0; done < qsb->size; ++count) {
        const DWORD size = std::min(qsb->size - done, kMaxPiece);
        BYTE head[3 + kPieceHead + 1] = {kMeta, kText, static_cast<BYTE>(size + kPieceHead)};
        std::snprintf(reinterpret_cast<char*>(head + 3), kPieceHead + 1,
                      "QM:%04u:", static_cast<unsigned>((firstNumber + static_cast<DWORD>(count)) % kPieceNumbers));
        if (!m_pBuffer->AddEvent(0, head, sizeof head - 1, qsb->data + done, size, 0))
            break;
        done += size;
    }
    return count;
}

void CxQuillMidiFile::DebugTrace(CQuillMidiBuffer* buffer) {
    if (!buffer)
        return;
    tagQuillMidiEntry entry;
    buffer->SeekToBegin();
    while (buffer->ReadNextEntry(&entry)) {
    }
}
