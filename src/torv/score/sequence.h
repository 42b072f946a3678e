#pragma once

#include "torv/score/time_signature.h"

class CMasterTrack;
class CSequenceObject;

/// A song's settings.
struct tagSequenceHeaderInfo {
    char name[260];                  ///< NUL-terminated
    DWORD color;                     ///< the host's own value, as is the key signature
    LONG transpose;                  ///< semitones
    DWORD sequenceLength;            ///< ticks, as stored
    DWORD startPosition;             ///< ticks
    DWORD timeDivision;              ///< ticks to a quarter note, as stored: conversions always count 480
    DWORD initialTempo;              ///< stored only, like the next two
    DWORD initialKeySig;             ///< the host's own value
    tagTimeSignature initialTimeSig; ///< stored only; signature changes are the master track's events
};
static_assert(offsetof(tagSequenceHeaderInfo, color) == 260 && offsetof(tagSequenceHeaderInfo, initialTimeSig) == 288);

/// A song: settings, a master track, and tracks in order, which it owns. List positions are those of its tracks; a null
/// one is harmless, a foreign one must not be passed. Setters set no modify flag.
class TORV_API CSequence : public CObject {
public:
    /// Empty and unnamed: 480 ticks a quarter, 120 beats a minute, 4/4. No master track before Create.
    CSequence();
    CSequence(const CSequence&) = delete;
    CSequence& operator=(const CSequence&) = delete;
    ~CSequence() override;

    /// Uses a master track of the caller's, which stays the caller's, or for null one of its own. An owned one that
    /// stood here before is deleted; handed back to the song, it stays and is owned as before. 0, with nothing changed,
    /// when memory is short.
    int Create(CMasterTrack* master);
    /// A new track, created; it belongs to the caller until it is added. Null when memory is short.
    static CSequenceObject* CreateObject();

    /// The track's position; null, and the track is the caller's still, when memory is short. With `at` null the track
    /// becomes the first, or with `after` the last.
    POSITION AddObject(CSequenceObject* track);
    /// Puts the track before (after 0) or after the position, with a null position as the first (0) or the last.
    /// Results as AddObject.
    POSITION InsertObject(POSITION at, CSequenceObject* track, int after);
    /// Takes the track out of the list, and deletes it when asked.
    void RemoveObjectAt(POSITION at, int deleteObject);
    /// Deletes every track.
    void RemoveAllObject();
    /// Walks from the head; null when the track is not in the song.
    POSITION FindObject(CSequenceObject* track) const;
    /// The first and the last track; null without tracks. They stay the song's, as all tracks that are handed out.
    /// @{
    CSequenceObject* GetHeadObject() const;
    CSequenceObject* GetTailObject() const;
    /// @}
    /// Where the walk begins, forwards and backwards; null without tracks.
    /// @{
    POSITION GetHeadObjectPosition() const { return m_tracks.GetHeadPosition(); }
    POSITION GetTailObjectPosition() const { return m_tracks.GetTailPosition(); }
    /// @}
    /// Null for a null position.
    CSequenceObject* GetObjectAt(POSITION at) const;
    /// The track at the position, which moves on to its neighbour (null after the last).
    /// @{
    CSequenceObject* GetNextObject(POSITION& at) const;
    CSequenceObject* GetPrevObject(POSITION& at) const;
    /// @}
    /// Tracks, the master track not counted.
    int GetObjectCount() const { return m_tracks.GetCount(); }
    /// Null before Create. Whose it is Create says.
    CMasterTrack* GetMasterTrack() const { return m_pMaster; }

    /// A track's stored length in ticks; for null the longest of the tracks and the master track, whose cursor is left
    /// at its end.
    DWORD GetObjectLength(POSITION at) const;
    /// Whether any track is modified; the song's own flag and the master's do not count.
    int IsObjectModified() const;
    /// Clears the tracks' flags and the song's, not the master's.
    void ClearAllModified();
    /// The host's own mark that the song was changed: nothing in the library sets it.
    /// @{
    int GetModify() const { return m_nModify; }
    void SetModify(int modify) { m_nModify = modify; }
    /// @}

    /// NUL-terminated, at most 259 bytes; valid until the next SetName.
    const char* GetName() const { return m_header.name; }
    /// Keeps 259 bytes.
    int SetName(const char* name);
    /// A display colour; the value is the host's own.
    /// @{
    DWORD GetColor() const { return m_header.color; }
    void SetColor(DWORD color) { m_header.color = color; }
    /// @}
    /// Semitones, as stored: the encoder moves notes by their track's own transposition alone.
    /// @{
    int GetTranspose() const { return m_header.transpose; }
    void SetTranspose(int transpose) { m_header.transpose = transpose; }
    /// @}
    /// Ticks, as stored: the library does not compute it. GetObjectLength measures.
    /// @{
    DWORD GetSequenceLength() const { return m_header.sequenceLength; }
    void SetSequenceLength(DWORD length) { m_header.sequenceLength = length; }
    /// @}
    /// Ticks, as stored, for the host.
    /// @{
    DWORD GetStartPosition() const { return m_header.startPosition; }
    void SetStartPosition(DWORD position) { m_header.startPosition = position; }
    /// @}
    /// Ticks to a quarter note, as stored: conversions always count 480.
    /// @{
    DWORD GetTimeDivision() const { return m_header.timeDivision; }
    void SetTimeDivision(DWORD division) { m_header.timeDivision = division; }
    /// @}
    /// Microseconds to a quarter note, as stored: what is sung follows the master track's events.
    /// @{
    DWORD GetInitialTempo() const { return m_header.initialTempo; }
    void SetInitialTempo(DWORD tempo) { m_header.initialTempo = tempo; }
    /// @}
    /// The host's own value.
    /// @{
    DWORD GetInitialKeySig() const { return m_header.initialKeySig; }
    void SetInitialKeySig(DWORD key) { m_header.initialKeySig = key; }
    /// @}
    /// As stored: the grid follows the master track.
    /// @{
    tagTimeSignature GetInitialTimeSig() const { return m_header.initialTimeSig; }
    void SetInitialTimeSig(tagTimeSignature signature) { m_header.initialTimeSig = signature; }
    /// @}
    /// The exponent comes first here, against the record's order: hosts call it so.
    void SetInitialTimeSig(unsigned char denominatorExponent, unsigned char numerator);

protected:
    static int InitSequenceHeaderInfo(tagSequenceHeaderInfo* header);

private:
    void DeleteOwnMaster();

    int m_nModify = 0;
    tagSequenceHeaderInfo m_header;
    CMasterTrack* m_pMaster = nullptr;
    bool m_bOwnsMaster = false;
    CObList m_tracks{10};
};
