#pragma once

#include "torv/score/time_signature.h"

class CMasterTrack;
class CSequenceObject;

/// A song's settings.
struct tagSequenceHeaderInfo {
    char name[260];
    DWORD color;
    LONG transpose;       ///< semitones
    DWORD sequenceLength; ///< ticks, as stored
    DWORD startPosition;  ///< ticks
    DWORD timeDivision;   ///< ticks to a quarter note, as stored: conversions always count 480
    DWORD initialTempo;   ///< stored only, like the next two
    DWORD initialKeySig;
    tagTimeSignature initialTimeSig;
};
static_assert(offsetof(tagSequenceHeaderInfo, color) == 260 && offsetof(tagSequenceHeaderInfo, initialTimeSig) == 288);

/// A song: settings, a master track, and tracks in order, which it owns. List positions are those of its tracks; a null
/// one is harmless, a foreign one must not be passed. Setters set no modify flag.
class TORV_API CSequence : public CObject {
public:
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
    POSITION InsertObject(POSITION at, CSequenceObject* track, int after);
    /// Takes the track out of the list, and deletes it when asked.
    void RemoveObjectAt(POSITION at, int deleteObject);
    void RemoveAllObject();
    POSITION FindObject(CSequenceObject* track) const;
    CSequenceObject* GetHeadObject() const;
    CSequenceObject* GetTailObject() const;
    POSITION GetHeadObjectPosition() const { return m_tracks.GetHeadPosition(); }
    POSITION GetTailObjectPosition() const { return m_tracks.GetTailPosition(); }
    CSequenceObject* GetObjectAt(POSITION at) const;
    CSequenceObject* GetNextObject(POSITION& at) const;
    CSequenceObject* GetPrevObject(POSITION& at) const;
    int GetObjectCount() const { return m_tracks.GetCount(); }
    CMasterTrack* GetMasterTrack() const { return m_pMaster; }

    /// A track's stored length in ticks; for null the longest of the tracks and the master track, whose cursor is left
    /// at its end.
    DWORD GetObjectLength(POSITION at) const;
    /// Whether any track is modified; the song's own flag and the master's do not count.
    int IsObjectModified() const;
    /// Clears the tracks' flags and the song's, not the master's.
    void ClearAllModified();
    int GetModify() const { return m_nModify; }
    void SetModify(int modify) { m_nModify = modify; }

    const char* GetName() const { return m_header.name; }
    /// Keeps 259 bytes.
    int SetName(const char* name);
    DWORD GetColor() const { return m_header.color; }
    void SetColor(DWORD color) { m_header.color = color; }
    int GetTranspose() const { return m_header.transpose; }
    void SetTranspose(int transpose) { m_header.transpose = transpose; }
    DWORD GetSequenceLength() const { return m_header.sequenceLength; }
    void SetSequenceLength(DWORD length) { m_header.sequenceLength = length; }
    DWORD GetStartPosition() const { return m_header.startPosition; }
    void SetStartPosition(DWORD position) { m_header.startPosition = position; }
    DWORD GetTimeDivision() const { return m_header.timeDivision; }
    void SetTimeDivision(DWORD division) { m_header.timeDivision = division; }
    DWORD GetInitialTempo() const { return m_header.initialTempo; }
    void SetInitialTempo(DWORD tempo) { m_header.initialTempo = tempo; }
    DWORD GetInitialKeySig() const { return m_header.initialKeySig; }
    void SetInitialKeySig(DWORD key) { m_header.initialKeySig = key; }
    tagTimeSignature GetInitialTimeSig() const { return m_header.initialTimeSig; }
    void SetInitialTimeSig(tagTimeSignature signature) { m_header.initialTimeSig = signature; }
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
