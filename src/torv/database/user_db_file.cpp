#include "torv/database/error_report.h"
#include "torv/database/user_db.h"
#include "torv/icons/icon_factory.h"
#include "torv/typed_file/typed_file.h"

#include <algorithm>

namespace {

/// In the order of the file.
constexpr struct {
    int status;
    int articulation;
} kArticulations[] = {{torv::kStatusAttack, 1},
                      {torv::kStatusRelease, 2},
                      {torv::kStatusTransit, 3},
                      {torv::kStatusVibrato, 4},
                      {torv::kStatusDynamics, torv::kDynaff},
                      {torv::kStatusDynamics, torv::kCrescendo},
                      {torv::kStatusDynamics, torv::kDecrescendo}};
constexpr int kMostReports = 10;

bool IsArticulation(const CString& section) {
    return std::any_of(std::begin(kArticulations), std::end(kArticulations), [&section](const auto& known) {
        return section == torv::IconArticulationName(known.status, known.articulation);
    });
}

CString Number(int value) {
    CString text;
    text.Format("%d", value);
    return text;
}

} // namespace

bool CUserDB::MayReport() { return m_reports++ < kMostReports; }

int CUserDB::LoadDatabase(const char* path) {
    CloseDatabase();
    m_strPath = path;
    m_reports = 0;
    if (torv::CheckFolder(path, false)) {
        m_isUnreadable = true;
        torv::ReportError(torv::kMsgFunctionError, "CUserDB::LoadDatabase");
        return 0;
    }
    if (!torv::CheckFile(path, false))
        return 1;
    CxTypedFile file;
    m_isUnreadable = !file.Load(path) || !LoadUserDBFile(file);
    if (m_isUnreadable)
        torv::ReportError(torv::kMsgFunctionError, "CUserDB::LoadUserDBFile");
    return !m_isUnreadable;
}

int CUserDB::LoadUserDBFile(CxTypedFile& file) {
    SectionNames visited;
    for (const auto& known : kArticulations)
        LoadArticulation(file, known.status, known.articulation, visited);
    CString name;
    CxEntryMap* section = nullptr;
    for (POSITION at = file.GetSectionMap()->GetStartPosition(); at;) {
        file.GetSectionMap()->GetNextAssoc(at, name, section);
        if (IsArticulation(name) || visited.contains(name.GetStdString()))
            continue;
        if (MayReport())
            torv::ReportError(torv::kMsgInvalidSection, name, m_strPath);
        KeepUnread(*section, "");
    }
    return 1;
}

void CUserDB::LoadArticulation(CxTypedFile& file, int status, int articulation, SectionNames& visited) {
    const char* const name = torv::IconArticulationName(status, articulation);
    const CxEntryMap* const entries = file.GetEntryMap(name);
    if (!entries)
        return;
    CString key;
    CString value;
    for (POSITION at = entries->GetStartPosition(); at;) {
        entries->GetNextAssoc(at, key, value);
        CxEntryMap* const section = IsArticulation(value) ? nullptr : file.GetEntryMap(value);
        if (!section || !visited.insert(value.GetStdString()).second) {
            if (MayReport())
                torv::ReportError(torv::kMsgInvalidLine, m_strPath, torv::DescribeEntry(name, key, value));
            continue;
        }
        // The icon tells its number itself, so that it is not lost for a bad key.
        if (torv::ParseInteger(key) < 1 && MayReport())
            torv::ReportError(torv::kMsgInvalidKey, key);
        if (!LoadUserModelIcon(file, value, status, articulation)) {
            if (MayReport())
                torv::ReportError(torv::kMsgInvalidSection, value, m_strPath);
            KeepUnread(*section, name);
        }
    }
}

bool CUserDB::LoadUserModelIcon(CxTypedFile& file, const char* section, int status, int articulation) {
    const CString text = file.ReadAt(section, "IconID", nullptr);
    const auto id = static_cast<DWORD>(CxTypedFile::ahextol(text));
    if (text[0] != '$' || torv::StatusFromID(id) != status || torv::ArticulationFromID(id) != articulation)
        return false;
    std::unique_ptr<CIconObject> icon = torv::MakeIcon(status, articulation, torv::VariationFromID(id));
    icon->SetIDString(file.ReadAt(section, "IDS", nullptr));
    icon->SetOriginalVariation(static_cast<DWORD>(torv::ParseInteger(file.ReadAt(section, "Original", nullptr))));
    if (!icon->ConstructParameter(&file, section)) {
        if (MayReport())
            torv::ReportError(torv::kMsgFunctionError, "CQuillDBIF::LoadUserModelIcon");
        return false;
    }
    return AdoptIcon(icon) != nullptr;
}

void CUserDB::KeepUnread(CxEntryMap& section, const char* articulation) {
    Unread unread{section.GetSectionName(), articulation, {}};
    for (POSITION at = section.GetStartPosition(); at;) {
        auto& entry = unread.entries.emplace_back();
        section.GetNextAssoc(at, entry.first, entry.second);
    }
    m_unread.push_back(std::move(unread));
}

int CUserDB::SaveDatabase() {
    if (m_isUnreadable || m_strPath.IsEmpty()) // what is there was not seen, so it must not be written over
        return 0;
    CxTypedFile file;
    SectionNames unread;
    for (const Unread& section : m_unread)
        unread.insert(section.section.GetStdString());
    int number = 0;
    for (const auto& known : kArticulations)
        WriteArticulation(file, known.status, known.articulation, unread, number);
    for (const Unread& section : m_unread) {
        file.AddSection(section.section);
        for (const auto& [key, value] : section.entries)
            file.WriteAt(section.section, key, value);
    }
    if (!file.SaveAs(m_strPath))
        return 0;
    m_isModified = false;
    return 1;
}

void CUserDB::WriteArticulation(CxTypedFile& file, int status, int articulation, const SectionNames& unread,
                                int& number) const {
    const char* const name = torv::IconArticulationName(status, articulation);
    std::vector<std::pair<CString, CIconObject*>> sections;
    std::unordered_set<int> keys;
    for (CIconObject* const icon : GetModels(status, articulation)) {
        CString section;
        do
            section.Format("#USER%04d", ++number);
        while (unread.contains(section.GetStdString()));
        const int key = static_cast<int>(icon->GetIconID() & ~torv::kUserIconBit & 0xFFFF);
        keys.insert(key);
        file.WriteAt(name, Number(key), section);
        sections.emplace_back(section, icon);
    }
    int key = 1;
    for (const Unread& section : m_unread) {
        if (section.articulation != name)
            continue;
        while (!keys.insert(key).second)
            ++key;
        file.WriteAt(name, Number(key), section.section);
    }
    for (const auto& [section, icon] : sections) {
        CString id;
        id.Format("%c%08x", '$', static_cast<unsigned>(icon->GetIconID()));
        file.WriteAt(section, "IconID", id);
        file.WriteAt(section, "IDS", icon->GetIDString());
        file.WriteAt(section, "Original", Number(static_cast<int>(icon->GetOriginalVariation())));
        icon->DescribeParameter(&file, section);
    }
}
