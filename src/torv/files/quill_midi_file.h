#pragma once

#include "torv/encoding/quill_midi_encoder.h"
#include "torv/files/riff.h"
#include "torv/score/time_signature.h"

#include <array>
#include <memory>
#include <span>

class CSequence;

/// Data of the host's own that a song track carries; they pass through unchanged. Null data are none.
struct tagQuillMidiQSBBuffer {
    const BYTE* data; ///< borrowed
    DWORD size;       ///< bytes
};
static_assert(sizeof(void*) != 4 || (offsetof(tagQuillMidiQSBBuffer, size) == 4 && sizeof(tagQuillMidiQSBBuffer) == 8));

/// Encodes songs and saves them as standard MIDI files whose tracks carry the engine's stream: every message of a
/// block is a control change of its own. Encoding has its settings from CxQuillMidiEncoder, the file its errors from
/// CxRiff.
///
/// A file that is created through this object, by a save or by Open, takes the place of an older one when it is closed,
/// as torv::ReplacedFile does, unless a write has failed: whoever reads the name sees the old file or the new one.
class TORV_API CxQuillMidiFile : public CxRiff, public CxQuillMidiEncoder {
public:
    /// No file is open.
    CxQuillMidiFile();
    ~CxQuillMidiFile() override;

    /// Saves the song as a master track and one track for each of its own, 480 ticks to a quarter note. `qsb` is null
    /// or one record for each track, in order: nobody can tell from an array whether it has them all.
    ///
    /// Puts the encoder into file mode, which the object keeps, and closes a file that it had open. Moves the cursors
    /// of the song's tracks. 0, with the old file as it was and no new one, when a write fails (GetErrorMessage tells
    /// how), without a song or a created master track, with more than 65534 tracks, and when memory is short.
    int SaveAsFormat1(const char* path, CSequence* song, tagQuillMidiQSBBuffer* qsb);
    /// The stream of a song does not fit one track: writes nothing. Returns 1, which hosts take as done.
    int SaveAsFormat0(const char* path, CSequence* song, tagQuillMidiQSBBuffer* qsb);

    /// The last file error's text, of this save when one failed: "CFileException::none" to "::endOfFile".
    const char* GetErrorMessage();

    /// Sizes are big-endian here.
    int CloseChunk() override;

protected:
    /// Encodes into one buffer for the master track and one for each song track, all created in file mode. 0 when
    /// something that belongs to the song does not get in.
    int EncodeMultiTrackSequence(std::span<CQuillMidiBuffer> buffers, CSequence* song,
                                 const tagQuillMidiQSBBuffer* qsb);
    /// The tempo and time-signature changes, into the current buffer. A signature's tick is counted in measures, so a
    /// change within a measure moves to its beginning. One past the last tick that a stream can hold is left out.
    int WriteMasterTrack(CSequence* song);

    // Meta events, into the current buffer. The first three go to its position.

    /// The length is one byte, so a name is cut to 255 bytes. One of 128 and more stands as it is, though readers take
    /// its length for a longer number.
    int WriteMetaTrackName(const char* text);
    /// Microseconds to a quarter note, at most what three bytes hold.
    int WriteMetaTempo(DWORD tempo);
    int WriteMetaTimeSignature(tagTimeSignature signature);
    /// Appends the end of track, `delta` ticks after the last event.
    int WriteMetaEOT(DWORD delta);
    /// Appends the data in text events of at most 119 bytes each, numbered from `firstNumber` with four digits (0000
    /// follows 9999). The number of events written.
    int WriteMetaQSBEvent(const tagQuillMidiQSBBuffer* qsb, DWORD firstNumber);

    // The file's parts. What they write is gathered, and in the file when the chunk is closed.

    int RiffWriteMidiHeader(WORD format, WORD tracks, WORD division);
    /// A track chunk of the current buffer's entries.
    int RiffWriteMidiTrack();
    /// A variable-length quantity. 0, and nothing, for more than 0x0FFFFFFF.
    int RiffWriteDelta(DWORD delta);
    /// An empty text event, for a delta to end at.
    int RiffWriteDummyEvent();

    /// Walks the buffer's entries: a place to look at them.
    void DebugTrace(CQuillMidiBuffer* buffer);

private:
    explicit CxQuillMidiFile(std::unique_ptr<CFile> file);
    int EncodeTrack(CSequenceObject* track, const tagSequenceTimeMap* map, const tagQuillMidiQSBBuffer* qsb);
    int SaveSong(const char* path, CSequence* song, const tagQuillMidiQSBBuffer* qsb);
    int WriteFile(const char* path, std::span<CQuillMidiBuffer> buffers);
    int RiffWriteEntry(const tagQuillMidiEntry& entry);
    int RiffGather(const void* bytes, DWORD count);
    BYTE* RiffRoom(DWORD count);
    int RiffFlush();

    std::unique_ptr<CFile> m_pFile; ///< what CxRiff works on
    std::array<BYTE, 4096> m_gathered;
    DWORD m_dwGathered = 0; ///< bytes that wait for the file
};
