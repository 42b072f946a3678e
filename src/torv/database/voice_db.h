#pragma once

#include "torv/database/quill_db_if.h"
#include "torv/icons/icon_catalogue.h"

struct DBMVoice;

namespace torv {

class DatabaseLibrary;

} // namespace torv

/// A voice as a host gets it.
struct tagVoiceParameters {
    char* name;                     ///< newly allocated; freed with delete[] or torv::ReleaseVoiceParameters
    tagVoiceChangeParam parameters; ///< the seventeen settings
};

namespace torv {

/// Frees the name and clears it; null is left alone.
TORV_API void ReleaseVoiceParameters(tagVoiceParameters* record);

} // namespace torv

/// The singers: the voices of the external database library, and a singer icon for each. A singer's variation is its
/// language x 256 + its program. While it is open it answers the singer icons of all songs.
class TORV_API CVoiceDB : public CQuillDBIF, public torv::VoiceCatalogue {
public:
    ~CVoiceDB() override;

    /// Reads every voice. 0, after a message, when the library does not tell them; it must stay loaded until the
    /// database closes. A second voice of the same two numbers is told and passed over.
    int OpenDatabase(torv::DatabaseLibrary* library);
    /// Forgets every voice; singer icons are answered by others that are open, or not at all.
    void CloseDatabase();
    /// Reads the voices anew, as after they were edited. Earlier singer models are gone.
    int ReloadDatabase();

    bool HasArticulation(int status, int articulation) const override;
    bool FindVoice(BYTE language, BYTE program, CString& name, tagVoiceChangeParam& parameters) const override;
    /// Fills a record for the host; 0, and it is left as it is, when there is no such voice.
    int GetVoiceParameters(int language, int program, tagVoiceParameters* record) const;
    /// The name of the installed voice that a voice is made over ("Soprano"); empty when the library does not tell.
    CString GetInstalledVoiceName(int language, int program) const;

    /// The first voice; 0 when there is none.
    int GetDefaultVariation() const;
    /// The first voice of a language; without one there the first of all.
    int GetDefaultVariation(int language) const;

    /// The user's voices: each call asks the library and reads the voices anew when it agrees. 1, or 0 with the
    /// library's answer in GetLastStatus.
    int CreateVoice(int language, int installedVoice, const char* name, int* program);
    /// Of a voice that a user made, by its two numbers: a copy under the next free program, another name, other
    /// numbers, other settings, its end. Voices that came with the library can only be copied.
    /// @{
    int CopyVoice(int language, int program, const char* name, int* newProgram);
    int RenameVoice(int language, int program, const char* name);
    int MoveVoice(int language, int program, int toLanguage, int toProgram);
    int SetVoiceParameters(int language, int program, const tagVoiceChangeParam& parameters);
    int DeleteVoice(int language, int program);
    /// @}
    /// What the library answered last.
    int GetLastStatus() const { return m_status; }

private:
    struct Voice {
        CString name;
        CString installed;
        tagVoiceChangeParam parameters;
    };

    bool Ask(int status);
    void AddVoice(const DBMVoice& listed, torv::ReportLimit& reports);
    Voice ReadVoice(const DBMVoice& listed);

    torv::DatabaseLibrary* m_library = nullptr;
    std::map<int, Voice> m_voices; ///< by variation
    int m_status = 0;
};
