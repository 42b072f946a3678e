#pragma once

#include "torv/icons/break_point.h"
#include "torv/icons/icon_id.h"
#include "torv/platform/or_zero.h"
#include "torv/platform/platform.h"

class CxTypedFile;

/// What every icon record of the host begins with. A record that an icon describes itself into owns newly allocated
/// texts and arrays, which the receiver frees with delete[] or torv::ReleaseIconRecord.
struct tagIconHeader {
    DWORD iconId;            ///< status, articulation, variation: torv::MakeIconID
    DWORD originalVariation; ///< the variation of the preset that a user's icon was made from
    DWORD reserved;          ///< the host's own
    char idString[129];      ///< at most 128 characters and a NUL
    char* caption;           ///< NUL-terminated; may be null on constructing
};
static_assert(sizeof(void*) != 4 || (offsetof(tagIconHeader, idString) == 12 &&
                                     offsetof(tagIconHeader, caption) == 144 && sizeof(tagIconHeader) == 148));

namespace torv {

/// Frees the texts and arrays that the icon's description allocated and clears their pointers; the record stays.
/// A null record is left alone.
TORV_API void ReleaseIconRecord(tagIconHeader* record);

/// @cond not exported
/// A copy of a text by new[]; null texts copy as empty.
char* NewText(const char* text);

/// What a copy is made of: the icon, or in place of null one of id 0 that is as newly made.
template <class Icon>
const Icon& OrEmpty(const Icon* icon, const Icon& empty = Icon(0, 0, 0)) {
    return icon ? *icon : empty;
}
/// @endcond

} // namespace torv

/// What the user puts on notes or on the timeline: id, texts and length, which all kinds share. Results are 1 and 0.
class TORV_API CIconObject : public CObject {
public:
    /// Ticks, of an icon whose file does not tell.
    static constexpr int kDefaultLength = 240;

    /// The three parts of the id. No texts, no length.
    CIconObject(int status, int articulation, int variation);
    /// Copies id and all; null as an icon of id 0.
    explicit CIconObject(CIconObject* other);
    CIconObject(const CIconObject&) = default;
    CIconObject& operator=(const CIconObject&) = delete;
    ~CIconObject() override;

    // The virtual functions stand in the order in which hosts built against the library call them: kinds add theirs
    // after these, and none goes between.

    /// Non-zero when the icon goes on across notes.
    virtual int IsContinuance();
    /// Loads an icon file. When it is missing or unreadable the user is told, 0 comes back and the icon keeps what it
    /// held.
    virtual int LoadPreset(const char* path);
    /// Reads from, or writes into, one section of a file. Missing keys take their defaults.
    virtual int ConstructParameter(CxTypedFile* file, const char* section);
    /// Writes what ConstructParameter reads. 1; 0 when memory is refused.
    virtual int DescribeParameter(CxTypedFile* file, const char* section);
    /// Takes over the other icon's parameters and keeps the own id; of an icon of another kind, what they share.
    virtual int ReplaceParameter(CIconObject* other);
    /// Cuts away what lies before (after) `clock` ticks; 0 when the kind has nothing to trim.
    virtual int TrimIconHead(DWORD clock);
    /// See TrimIconHead.
    virtual int TrimIconTail(DWORD clock);

    // Memory that is refused is answered with 0, and then the icon is as it was.

    /// From and into a host's record. The second allocates the texts: torv::ReleaseIconRecord.
    /// @{
    int ConstructParameter(const tagIconHeader* record);
    int DescribeParameter(tagIconHeader* record) const;
    /// @}

    /// The ID string names the icon in its database (a preset's: its file's or model's name), the caption is for
    /// display. Null is empty.
    /// @{
    CString GetIDString() const { return m_strID; }
    int SetIDString(const char* text);
    CString GetCaption() const { return m_strCaption; }
    void GetCaption(CString& caption) const { caption = m_strCaption; }
    int SetCaption(const char* text);
    /// @}
    DWORD GetLength() const { return m_dwLength; } ///< ticks
    /// 0 is refused.
    int SetLength(DWORD length);
    /// Status, articulation and variation as one number.
    DWORD GetIconID() const { return torv::MakeIconID(m_nStatus, m_nArticulation, m_nVariation); }
    /// The variation of the preset that the icon was made from; carried along, never looked at.
    /// @{
    DWORD GetOriginalVariation() const { return m_dwOriginalVariation; }
    void SetOriginalVariation(DWORD variation) { m_dwOriginalVariation = variation; }
    /// @}
    /// Gives the icon another number; status and articulation are for good.
    void SetVariation(int variation) { m_nVariation = variation; }

    /// Non-zero when the user bit is in the variation: the icon is one that a user made.
    /// @{
    int IsUserIcon() const;
    static int IsUserIcon(DWORD id);
    /// @}

protected:
    /// The two sections of icon files of their own.
    static constexpr const char* kGlobalSection = "Common";
    static constexpr const char* kParameterSection = "Parameter";

    /// Finds and loads an icon file, with the two messages when it cannot.
    static int OpenPresetFile(CxTypedFile& file, const char* path);
    /// What all kinds share, of an icon file and of one section.
    int ReadPreset(CxTypedFile& file);
    int ReadSection(CxTypedFile* file, const char* section);
    int WriteSection(CxTypedFile* file, const char* section) const;
    int ReadRecord(const tagIconHeader* record);
    /// Takes everything from an icon that is given up.
    void TakeAll(CIconObject& from) noexcept;
    /// Makes a change to a copy, which is taken over when `work(copy)` answers non-zero. 0 when it does not, and when
    /// memory is refused.
    template <class Icon, class Work>
    static int ChangeWhole(Icon& icon, Work work) {
        return torv::OrZero([&] {
            Icon changed(icon);
            if (!work(changed))
                return 0;
            icon.TakeAll(changed);
            return 1;
        });
    }
    int ReadGlobalSection(CxTypedFile* file, const char* section);
    int WriteGlobalSection(CxTypedFile* file, const char* section) const;
    int ReadParameterSection(CxTypedFile* file, const char* section);
    int WriteParameterSection(CxTypedFile* file, const char* section) const;
    static int WriteNumber(CxTypedFile* file, const char* section, const char* key, int value);

    /// The keys of a curve in a file, where positions are fractions of the icon's length.
    struct CurveKeys {
        const char* count;
        const char* positions;
        const char* values;
    };
    /// Appends the points to the list. Returns the number that the file states (its low 16 bits); when it is 0 the
    /// points are not looked at.
    static int ReadCurve(CBreakPointList& list, CxTypedFile* file, const char* section, const CurveKeys& keys);
    /// Positions and values are written only when there are points.
    static int WriteCurve(const CBreakPointList& list, CxTypedFile* file, const char* section, const CurveKeys& keys);

    /// Appends the points to two texts: positions as fractions of `length`, and values.
    static void FormatBreakPoint(const CBreakPointList& list, DWORD length, CString& positions, CString& values);
    /// Appends at most `count` points from two such texts; stops at a position of `length` or more. Returns `count`
    /// whatever was appended: callers learn the number of points from the list.
    static int UnformatBreakPoint(CBreakPointList& list, int count, DWORD length, const char* positions,
                                  const char* values);
    /// Keeps what lies at or after `t` and shifts it to 0; but a list that starts at or after `t` stays unshifted.
    static int TrimBreakPointListHead(CBreakPointList& list, LONG t);
    /// Keeps what lies at or before `t`; a list that starts at or after `t` is emptied.
    static int TrimBreakPointListTail(CBreakPointList& list, LONG t);
    static void RemoveBreakPointBefore(CBreakPointList& list, POSITION position);
    static void RemoveBreakPointAfter(CBreakPointList& list, POSITION position);

    int m_nStatus;
    int m_nArticulation;
    int m_nVariation;
    CString m_strID;
    DWORD m_dwOriginalVariation = 0;
    CString m_strCaption;
    DWORD m_dwLength = 0;
};
