#pragma once

#include "torv/database/quill_db_if.h"

class CxTypedFile;

/// The preset icons: dynamics, listed in a definition file and read from icon files in a folder named after it.
class TORV_API CAiconDB : public CQuillDBIF {
public:
    /// Empties the database and reads it anew. 0 when the definition file cannot be used, which the user is told; what
    /// was read until then stays. An icon that cannot be read is told and passed over.
    int LoadDatabase(const char* path);
    /// Forgets every icon.
    void CloseDatabase();

    /// Of the definition file that was read.
    CString GetPathName() const { return m_strPath; }
    /// The title of the definition file.
    CString GetDatabaseName() const { return m_strName; }

    bool HasArticulation(int status, int articulation) const override;

private:
    void LoadArticulation(int articulation, const char* names, const char* folder, torv::ReportLimit& reports);

    CString m_strPath;
    CString m_strName;
};
