#pragma once

#include "torv/database/quill_db_if.h"

#include <unordered_set>
#include <vector>

class CxEntryMap;
class CxTypedFile;

/// "User.def", the file of the icons that the user made, of statuses 1 to 5. Between loading and saving the icons are
/// with the databases that they extend (TakeUserIcons).
///
/// The file has a section for each articulation that has user icons, whose entries lead from a slot's number (its
/// variation without the user bit) to a section for the icon. Sections that cannot be read are told and kept: a save
/// writes them back as they were.
class TORV_API CUserDB : public CQuillDBIF {
public:
    ~CUserDB() override;

    /// Empties the database and reads the file; one that does not exist yet is an empty database. 0, after a message,
    /// when it cannot be read.
    int LoadDatabase(const char* path);
    /// Writes the file anew; it takes the old one's place when it is whole. When the file is no longer what was loaded,
    /// what others put in or changed since is read first and kept: a number that is taken twice goes to the icon of the
    /// file, ours gets a new one, and the user is told. 0, and the file is as it was, when there is one that cannot be
    /// read, or when it cannot be written.
    int SaveDatabase();
    /// Forgets every icon and the file.
    void CloseDatabase();

    bool HasArticulation(int status, int articulation) const override;

private:
    /// A section that could not be read, as it is to be written back.
    struct Unread {
        CString section;
        CString articulation; ///< the section whose entry leads there; empty when none does
        std::vector<std::pair<CString, CString>> entries;
    };
    using SectionNames = std::unordered_set<std::string>;

    bool Parse(const std::string& content, torv::ReportLimit& reports);
    void LoadUserDBFile(CxTypedFile& file, torv::ReportLimit& reports);
    void LoadArticulation(CxTypedFile& file, int status, int articulation, SectionNames& visited,
                          torv::ReportLimit& reports);
    bool LoadUserModelIcon(CxTypedFile& file, const char* section, int status, int articulation);
    void KeepUnread(CxEntryMap& section, const char* articulation);
    /// Takes in what others made of the file that was loaded.
    bool Merge(const std::string& content);
    void Describe(CxTypedFile& file) const;
    void DescribeArticulation(CxTypedFile& file, int status, int articulation, const SectionNames& unread,
                              int& number) const;

    CString m_strPath;
    std::string m_loaded; ///< the file as it was loaded or saved last
    std::vector<Unread> m_unread;
};
