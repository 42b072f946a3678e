#pragma once

#include "torv/database/aicon_db.h"
#include "torv/database/expression_db.h"
#include "torv/database/user_db.h"
#include "torv/database/voice_db.h"
#include "torv/icons/icon_catalogue.h"
#include "torv/icons/icon_id.h"

#include <memory>

class CCrossReferenceMap;
class CIconSinger;

namespace torv {

class VoiceEditorLibrary;

} // namespace torv

/// What a host shows of an icon without making one. No pointer in it is the host's to free.
struct tagQuillIconOverview {
    /// As the icon has them.
    /// @{
    DWORD iconId;
    DWORD originalVariation;
    /// @}
    DWORD length;         ///< ticks
    BOOL isUserIcon;      ///< TRUE for an icon that a user made
    HBITMAP button;       ///< the databases'; valid until they close
    char idString[129];   ///< cut to 128 bytes
    char caption[129];    ///< cut to 128 bytes
    char singerName[129]; ///< of an expression, the singer that it was made with
};

/// The catalogue of every icon and voice that a song can use: preset dynamics, expressions, the user's icons, and the
/// singers. One thread at a time. Before it is opened everything answers 0 or null; so does what memory is refused for.
class TORV_API CQuillDBManager : public CObject, private torv::IconCatalogue {
public:
    /// Not open.
    CQuillDBManager();
    ~CQuillDBManager() override;
    CQuillDBManager(const CQuillDBManager&) = delete;
    CQuillDBManager& operator=(const CQuillDBManager&) = delete;

    /// Loads the external libraries, opens the voices, the expressions, the preset icons and the user's icons, and
    /// loads the phoneme converters. 0, with nothing left open, when a library or one of the first two databases fails,
    /// and when it is open already. Broken presets, user icons and converters are told and leave it open.
    int OpenDatabase();
    /// Saves the user's icons when they changed, and undoes the opening. Harmless when it is not open.
    void CloseDatabase();
    /// Between an OpenDatabase that answered 1 and CloseDatabase.
    bool IsOpen() const { return m_isOpen; }

    /// The id's parts, as torv::MakeIconID and its fellows; the singer's from language (high) and program (low).
    /// @{
    static DWORD MakeIconID(int status, int articulation, int variation);
    static DWORD MakeSingerIconID(int high, int low);
    static int StatusFromID(DWORD id);
    static int ArticulationFromID(DWORD id);
    static int VariationFromID(DWORD id);
    /// @}
    /// With the default variation of the voice database.
    DWORD MakeDefaultIconID(int status, int articulation) const;

    /// New icons, the caller's to delete; null when there is no such model.
    CIconObject* CreateIconObject(DWORD id) const;
    /// The same by its parts; a copy of any icon, null for null.
    /// @{
    CIconObject* CreateIconObject(int status, int articulation, int variation) const;
    static CIconObject* CreateIconObject(CIconObject* model);
    /// @}
    /// The database's own icon, or null.
    CIconObject* GetModelIconObject(DWORD id) const;
    /// Gives an icon the parameters of the model with its id; 0 when there is none.
    int LoadIconParameter(CIconObject* icon) const;
    /// Makes a singer icon the singer of these two codes, as the voices stand now; 0 when there is none.
    int ReloadSingerIcon(CIconSinger* icon, int language, int program) const;

    /// Takes the icon into its database as a new one of the user's and returns its new id. 0: when no variation is left
    /// for it the icon has been destroyed, so that the caller must not use it; when the database refuses it, and for a
    /// status that users have no icons of, it is still the caller's.
    DWORD RegisterIconObject(CIconObject* icon);
    /// Takes the user's icon out of its database; the caller owns it then. Null when there is none.
    CIconObject* UnregisterIconObject(DWORD id);
    /// Gives the user's icon of the same id the parameters of this one, which stays the caller's.
    int ReplaceIconObject(CIconObject* icon);
    /// Takes a user's icon back under the id that it has, which must be free; with 1 it is the database's.
    int RestoreUserIconObject(CIconObject* icon);

    /// Non-zero when there is such an icon.
    int VerifyIconID(DWORD id) const;
    /// Whether there is such an icon; a record that is not null is then filled.
    int LookupIconOverview(DWORD id, tagQuillIconOverview* overview) const;
    /// The same by the id's parts.
    int LookupIconOverview(int status, int articulation, int variation, tagQuillIconOverview* overview) const;
    /// The id that stands in for one that is missing: the first variation of the articulation, or of the singers the
    /// default one of the same language. 0 when that is missing too. A status without icons is answered with its
    /// variation 1 of articulation 1, which is not looked up: hosts use it as a number only.
    DWORD ConvertToDefaultIconID(DWORD id) const;
    /// The same by the id's parts.
    DWORD ConvertToDefaultIconID(int status, int articulation, int variation) const;
    /// Language x 256 + program of the first singer of the language, else of the first of all.
    int GetDefaultSingerVariation(int language) const;

    /// The picture on the icon's button, or null for an id that is not there: its own; for a user's icon that of the
    /// one it was made from; else the library's. It stays the databases'.
    HBITMAP GetButtonBitmap(DWORD id) const;
    /// The same by the id's parts.
    HBITMAP GetButtonBitmap(int status, int articulation, int variation) const;
    /// The size of the library's picture, for which hosts lay their buttons out.
    int GetButtonBitmapSize(SIZE& size) const;

    /// Calls back in ascending order until 0 comes back; returns the last call's answer, 0 without a call. With a null
    /// callback 1 when there is anything.
    int EnumIconStatus(QuillEnumStatusProc callback, LPARAM data) const;
    /// See EnumIconStatus.
    /// @{
    int EnumIconArticulation(int status, QuillEnumArticulationProc callback, LPARAM data) const;
    int EnumIconVariation(int status, int articulation, QuillEnumVariationProc callback, LPARAM data) const;
    /// @}
    /// The same into a map of number and name, which is emptied first. 0 when there is nothing.
    int GetStatusReferenceMap(CCrossReferenceMap& map) const;
    /// See GetStatusReferenceMap.
    /// @{
    int GetArticulationReferenceMap(int status, CCrossReferenceMap& map) const;
    int GetVariationReferenceMap(int status, int articulation, CCrossReferenceMap& map) const;
    /// @}

    /// The databases behind this one, which stay its own; empty while it is not open.
    /// @{
    CVoiceDB* GetVoiceDB() { return &m_voices; }
    CExpressionDB* GetExpressionDB() { return &m_expressions; }
    /// @}
    /// Has the user edit the voice that the two codes name, which come back as the one chosen. 1 when voices changed;
    /// they have been read anew then.
    int OpenVoiceEditDialog(int* language, int* program);

    /// Where the databases are: the folder of the library's own file, with a separator at its end; or ../share/torv
    /// beside it when that has the definition file and the library's folder has none.
    static CString GetModuleFolderPath();

private:
    int OpenDatabases();
    /// Whatever is open of them.
    void CloseDatabases();
    int LoadLibraryA();
    void FreeLibraries();
    int IndexOf(const CIconObject& icon) const override;
    /// The database of a status's icons, or null.
    const CQuillDBIF* DatabaseOf(int status) const;
    /// The same, of a status that users have icons of.
    CQuillDBIF* UserDatabaseOf(int status);
    CQuillDBIF* UserDatabaseOf(const CIconObject* icon);

    std::unique_ptr<torv::DatabaseLibrary> m_database;
    std::unique_ptr<torv::VoiceEditorLibrary> m_editor;
    CVoiceDB m_voices;
    CExpressionDB m_expressions;
    CAiconDB m_presets;
    CUserDB m_users;
    torv::ButtonBitmap m_defaultButton;
    bool m_isOpen = false;
};
