#pragma once

#include "torv/icons/break_point.h"
#include "torv/score/time_signature.h"
#include "torv/stream/chart_record.h"
#include "torv/stream/stream_buffer.h"

#include <array>
#include <cstdint>
#include <memory>

class CIconObject;
class CLyricObject;

/// A track's settings as one record.
struct tagSequenceObject {
    /// As the accessors of CSequenceObject; the name is NUL-terminated and cut to 259 bytes.
    /// @{
    int modify;
    char name[260];
    DWORD color;
    int channel;
    int transpose;
    int initialLanguage;
    int dynamicsMode;
    /// @}
};
static_assert(sizeof(tagSequenceObject) == 284 && offsetof(tagSequenceObject, color) == 264);

namespace torv {

/// How many voice controls a track can have curves for.
inline constexpr int kVoiceControls = 17;
/// What GetBreakPointList's id names beside the voice controls, which are 1 to 17.
enum BreakPointListId : int {
    kDynamicsList = 18,      ///< 0 to 127
    kPitchBendSensList = 19, ///< semitones
    kPitchBendList = 20,     ///< -8192 to 8191
    kTremoloDepthList = 21   ///< 0 to 127
};

} // namespace torv

/// One singing track: its settings, its chart of events, the icon and lyric objects that events name by 16-bit handles
/// (1 to 65534, 0 for none), and its control curves. It owns all of them. Setters set no modify flag. When memory is
/// short what has a result answers 0 and changes nothing; SetName and GetName throw std::bad_alloc.
class TORV_API CSequenceObject : public CObject {
public:
    /// Settings as they are said below; no stores before Create.
    CSequenceObject();
    CSequenceObject(const CSequenceObject&) = delete;
    CSequenceObject& operator=(const CSequenceObject&) = delete;
    ~CSequenceObject() override;

    /// Makes the stores. 0 when memory is short (such a track is good for nothing more), and on a track that has them.
    int Create();
    /// RemoveAllEvent, then RemoveAllController.
    void Cleanup();
    /// Deletes every event record, icon and lyric; the next handles are 1 again.
    void RemoveAllEvent();
    /// Empties the four fixed lists and deletes the voice-control lists.
    void RemoveAllController();
    /// Gives the content up to another owner: records and objects stay alive. Afterwards the track has no event buffer.
    int ReleaseObject();

    /// The chart's stream of 8-byte entries {delta, event id}, for cursors; null before Create and after ReleaseObject.
    CStreamBuffer* GetEventBuffer() const { return m_pEvents.get(); }
    /// The record that an event id names, or null.
    static tagEventHeader* QueryEventID(DWORD id);

    /// Gives an object the next handle and returns it; 0 when handles are exhausted, or for null.
    void* AttachIconObject(CObject* icon);
    /// As AttachIconObject, for lyrics, whose handles are counted apart.
    void* AttachLyricObject(CLyricObject* lyric);
    /// Stores an object under a handle of the caller's; 0 for a handle that is taken, 0 or 65535, and for null.
    int SetIconObjectAt(void* handle, CIconObject* icon);
    /// As their icon counterparts. A lookup is null for a handle that names nothing; objects stay the track's.
    /// @{
    int SetLyricObjectAt(void* handle, CLyricObject* lyric);
    CIconObject* LookupIconObject(void* handle) const;
    CLyricObject* LookupLyricObject(void* handle) const;
    /// @}
    /// Frees a handle, and deletes its object when asked; 0 when it names nothing.
    int DetachIconObject(void* handle, int deleteObject);
    /// As DetachIconObject, for lyrics.
    int DetachLyricObject(void* handle, int deleteObject);

    /// Null for an unknown id, and for a voice control without a list.
    CBreakPointList* GetBreakPointList(int id) const;
    /// The curve of voice control 0 to 16; null outside, and until it is created.
    CBreakPointList* GetVoiceControlBreakPointList(int index) const;
    /// Null when the index is outside 0..16 or the list exists.
    CBreakPointList* CreateVoiceControlBreakPointList(int index);
    /// The curves that every created track has, by ticks; null before Create. Values: dynamics 0 to 127, bend -8192 to
    /// 8191, sensitivity in semitones, tremolo depth 0 to 127.
    /// @{
    CBreakPointList* GetDynamicsBreakPointList() const { return m_pDynamics.get(); }
    CBreakPointList* GetPitchBendBreakPointList() const { return m_pPitchBend.get(); }
    CBreakPointList* GetPitchBendSensBreakPointList() const { return m_pPitchBendSens.get(); }
    CBreakPointList* GetTremoloDepthBreakPointList() const { return m_pTremoloDepth.get(); }
    /// @}

    /// All settings at once. 1; 0 for a null record.
    int GetParameter(tagSequenceObject* record) const;
    int SetParameter(const tagSequenceObject* record); ///< the modify flag included

    /// Ticks of the note whose denominator is 2^index, dotted first, then made a triplet, each cut to whole ticks; 0
    /// for an index outside 0..7.
    static int CalcNoteLength(int index, int dotted, int triplet);
    /// Ticks of a measure; 0 for an exponent outside 0..7, and for a length beyond 32 bits.
    static int CalcMeasureClock(int numerator, int denominatorExponent);

    /// Bytes; encoders and file writers take them as they are.
    /// @{
    CString GetName() const { return m_strName; }
    void SetName(const char* name) { m_strName = name; }
    /// @}
    /// A display colour; the value is the host's own, 0xC0C0C0 at first.
    /// @{
    DWORD GetColor() const { return m_dwColor; }
    void SetColor(DWORD color) { m_dwColor = color; }
    /// @}
    /// The low four bits are the MIDI channel that the track's engine stream is written for.
    /// @{
    int GetChannel() const { return m_nChannel; }
    void SetChannel(int channel) { m_nChannel = channel; }
    /// @}
    int GetTranspose() const { return m_nTranspose; } ///< semitones
    /// As GetTranspose: by these the encoder moves every note of the track.
    void SetTranspose(int transpose) { m_nTranspose = transpose; }
    /// A torv::kJapanese or torv::kEnglish of the host's own: what is sung follows the singers of the chart.
    /// @{
    int GetInitialLanguage() const { return m_nInitialLanguage; }
    void SetInitialLanguage(int language) { m_nInitialLanguage = language; }
    /// @}
    int GetDynamicsMode() const { return m_nDynamicsMode; } ///< 0: by icons, 1: by the dynamics list
    /// As GetDynamicsMode.
    void SetDynamicsMode(int mode) { m_nDynamicsMode = mode; }
    int GetMute() const { return m_nMute; } ///< the encoder does not ask
    /// As GetMute.
    void SetMute(int mute) { m_nMute = mute; }
    DWORD GetLength() const { return m_dwLength; } ///< ticks, as stored
    /// As GetLength: the library stores it and does not measure.
    void SetLength(DWORD length) { m_dwLength = length; }
    /// Non-zero after an edit through a cursor. Setters leave it alone; hosts set and clear it.
    /// @{
    int GetModify() const { return m_nModify; }
    void SetModify(int modify) { m_nModify = modify; }
    /// @}

private:
    /// Objects of one kind under their handles. A bit for each handle keeps the search for a free one short: hosts
    /// replace the icons of a whole track one by one, and each freed handle sends the search past all that are taken.
    struct HandleMap {
        CMapWordToOb objects;
        std::array<uint64_t, 0x10000 / 64> taken;
        DWORD next = 1; ///< the handle that the next object gets; 0 when there is none

        HandleMap() { ForgetAll(); }
        /// The first free handle at or after `start`, going round once; 0 when all are taken.
        DWORD FindNextHandle(DWORD start) const;
        bool Take(WORD handle, CObject* object);
        /// The object, or null; the handle is free then.
        CObject* Release(WORD handle);
        void* Attach(CObject* object);
        int SetAt(void* handle, CObject* object);
        CObject* Lookup(void* handle) const;
        int Detach(void* handle, int deleteObject);
        void DeleteAll();
        void ForgetAll();
    };
    void CleanupEventBuffer();

    int m_nModify = 0;
    CString m_strName;
    DWORD m_dwColor = 0xC0C0C0;
    int m_nChannel = 0;
    int m_nTranspose = 0;
    int m_nInitialLanguage = 0;
    int m_nDynamicsMode = 0;
    int m_nMute = 0;

    DWORD m_dwLength = 0;
    std::unique_ptr<CStreamBuffer> m_pEvents;
    std::unique_ptr<HandleMap> m_pIcons;
    std::unique_ptr<HandleMap> m_pLyrics;

    using List = std::unique_ptr<CBreakPointList>;
    List m_pDynamics;
    List m_pPitchBend;
    List m_pPitchBendSens;
    List m_pTremoloDepth;
    std::array<List, torv::kVoiceControls> m_voiceControls;
};
