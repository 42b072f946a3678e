#pragma once

#include "torv/icons/icon_catalogue.h"
#include "torv/icons/icon_object.h"

/// Host record of the singer icon; the low 8 bits of the codes count.
struct tagSingerIconObject {
    tagIconHeader header; ///< what every icon record begins with
    /// Of the voice in the database.
    /// @{
    WORD languageCode;
    WORD programCode;
    /// @}
};
static_assert(sizeof(void*) != 4 || (offsetof(tagSingerIconObject, languageCode) == 148 &&
                                     offsetof(tagSingerIconObject, programCode) == 150));

namespace torv {

/// As for tagIconHeader; a singer's record has nothing more to free.
TORV_API void ReleaseIconRecord(tagSingerIconObject* record);

} // namespace torv

/// A change of singer, status 7: names a voice by two codes. A point event, one tick long.
class TORV_API CIconSinger : public CIconObject {
public:
    /// Status 7, articulation 1, variation 0: the Japanese program 0.
    CIconSinger();
    /// Articulation and variation as given; the variation packs the two codes.
    CIconSinger(int status, int articulation, int variation);
    /// A copy is one tick long too, whatever the other's length.
    explicit CIconSinger(CIconSinger* other);
    /// As from a pointer.
    CIconSinger(const CIconSinger& other);

    /// The voice's name, which becomes the ID string; "?????", and nothing changes, for a voice that the open database
    /// does not have.
    CString GetSingerName();
    /// The voice's settings; the record is left as it is when there is no such voice. 1 when there is.
    int GetVoiceChangeParam(tagVoiceChangeParam* parameters) const;

    /// Unlike other icons, a singer takes over the other's articulation and variation too.
    int ReplaceParameter(CIconObject* other) override;
    int ConstructParameter(CxTypedFile* file, const char* section) override;
    /// Writes what ConstructParameter reads.
    int DescribeParameter(CxTypedFile* file, const char* section) override;
    /// From and into a host's record; 0 for null. The second allocates the caption: torv::ReleaseIconRecord.
    /// @{
    using CIconObject::ConstructParameter;
    using CIconObject::DescribeParameter;
    int ConstructParameter(const tagSingerIconObject* record);
    int DescribeParameter(tagSingerIconObject* record) const;
    /// @}

    /// Of the voice: torv::kJapanese or torv::kEnglish, and its number there.
    /// @{
    BYTE GetLanguageCode() const { return m_nLanguage; }
    BYTE GetProgramCode() const { return m_nProgram; }
    /// @}

private:
    BYTE m_nLanguage = 0;
    BYTE m_nProgram = 0;
};
