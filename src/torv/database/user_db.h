#pragma once

#include "torv/database/quill_db_if.h"
#include <unordered_set>
#include <vector>

class CxEntryMap;
class CxTypedFile;

/// The icons that the user made, of statuses 1 to 5, as "User.def" describes them. It owns them for the databases that
/// they extend.
///
/// The file has a section for each articulation that has user icons, whose entries lead from a slot's number (its
/// variation without the user bit) to a section for the icon. Sections that cannot be read are told and kept: a save
/// writes them back as they were.
class TORV_API CUserDB : public CQuillDBIF {
public:
    ~CUserDB() override;

    /// Empties the database and reads the file; one that does not exist yet is an empty database. 0, after a message,
    /// when it cannot be read: then it is not written either.
    int LoadDatabase(const char* path);
    /// Writes the file anew; it takes the old one's place when it is whole.
    int SaveDatabase();
    void CloseDatabase();
    /// Whether an icon came, went or changed since it was loaded or saved.
    bool IsModified() const { return m_isModified; }

    bool HasArticulation(int status, int articulation) const override;

    /// The lowest variation, with the user bit, that no icon of the articulation has; 0 when there is none.
    int GetNewVariation(int status, int articulation) const;
    /// Makes an icon such as the file gives it back: texts without ";", control bytes and blanks around them, numbers
    /// in their ranges, and points at places that six decimals hold exactly, at most a few ten-thousandths away.
    static void MakeStorable(CIconObject& icon);
    /// Takes an icon under its id, a user's one that must be free, and makes it storable. Null, and the icon stays the
    /// caller's, when it is refused.
    CIconObject* AddIcon(std::unique_ptr<CIconObject>& icon);
    std::unique_ptr<CIconObject> RemoveIcon(DWORD id);
    /// Gives the icon of the same id another's parameters and original variation. 0 when there is none.
    int ReplaceIcon(CIconObject* icon);
    /// As AddIcon, for what an external library has kept: that alone is nothing to save.
    CIconObject* AdoptIcon(std::unique_ptr<CIconObject>& icon);

private:
    /// A section that could not be read, as it is to be written back.
    struct Unread {
        CString section;
        CString articulation; ///< the section whose entry leads there; empty when none does
        std::vector<std::pair<CString, CString>> entries;
    };
    using SectionNames = std::unordered_set<std::string>;

    int LoadUserDBFile(CxTypedFile& file);
    void LoadArticulation(CxTypedFile& file, int status, int articulation, SectionNames& visited);
    bool LoadUserModelIcon(CxTypedFile& file, const char* section, int status, int articulation);
    void KeepUnread(CxEntryMap& section, const char* articulation);
    void WriteArticulation(CxTypedFile& file, int status, int articulation, const SectionNames& unread,
                           int& number) const;
    /// Whether one more message may be shown: a damaged file must not keep the user pressing OK for ever.
    bool MayReport();

    CString m_strPath;
    std::vector<Unread> m_unread;
    mutable std::map<DWORD, int> m_lowestFree; ///< by articulation: every number below is taken
    int m_reports = 0;
    bool m_isModified = false;
    bool m_isUnreadable = false;
};
