#include "torv/database/user_db.h"

#include "torv/database/error_report.h"
#include "torv/database/file_text.h"
#include "torv/database/report_limit.h"
#include "torv/icons/icon_factory.h"
#include "torv/icons/storable.h"
#include "torv/platform/afx/mem_file.h"
#include "torv/platform/new_file.h"
#include "torv/platform/save_turn.h"
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

/// The slot of a user's icon.
int NumberOf(DWORD id) { return static_cast<int>(id & ~torv::kUserIconBit & 0xFFFF); }

void DescribeIcon(CxTypedFile& file, const char* section, CIconObject& icon) {
    CString id;
    id.Format("%c%08x", '$', static_cast<unsigned>(icon.GetIconID()));
    torv::WriteEntry(file, section, "IconID", id);
    torv::WriteText(file, section, "IDS", icon.GetIDString());
    torv::WriteEntry(file, section, "Original", Number(static_cast<int>(icon.GetOriginalVariation())));
    torv::OrBadAlloc(icon.DescribeParameter(&file, section));
    torv::WriteText(file, section, "Caption", icon.GetCaption());
}

std::string Bytes(CxTypedFile& file) {
    CMemFile text;
    torv::OrBadAlloc(file.Save(&text));
    return text.GetBytes();
}

/// Whether a file has the same of both; null is no icon.
bool IsSame(CIconObject* a, CIconObject* b) {
    if (!a || !b)
        return a == b;
    CxTypedFile ofA;
    CxTypedFile ofB;
    DescribeIcon(ofA, "Icon", *a);
    DescribeIcon(ofB, "Icon", *b);
    return Bytes(ofA) == Bytes(ofB);
}

/// Empty when there is no such file; false when there is something that cannot be read.
bool ReadContent(const char* path, std::string& content) {
    content.clear();
    if (torv::CheckFolder(path, false))
        return false;
    if (!torv::CheckFile(path, false))
        return true;
    try {
        CFile file;
        if (!file.Open(path, CFile::modeRead))
            return false;
        content.resize(static_cast<size_t>(file.GetLength()));
        const UINT count = file.Read(content.data(), static_cast<UINT>(content.size()));
        return count == content.size();
    } catch (const CFileException&) {
        return false;
    }
}

} // namespace

CUserDB::~CUserDB() = default;

bool CUserDB::HasArticulation(int status, int articulation) const {
    return status >= torv::kStatusAttack && status <= torv::kStatusVibrato
               ? articulation == status
               : status == torv::kStatusDynamics && *torv::IconArticulationName(status, articulation);
}

void CUserDB::CloseDatabase() {
    RemoveModels();
    m_unread.clear();
    m_loaded.clear();
    m_strPath.Empty();
}

int CUserDB::LoadDatabase(const char* path) {
    CloseDatabase();
    return torv::OrZero([&] {
        m_strPath = path;
        std::string content;
        torv::ReportLimit reports;
        if (!torv::OrZero([&] { return ReadContent(path, content) && Parse(content, reports); })) {
            RemoveModels(); // what is there is still there when it is saved
            m_unread.clear();
            torv::ReportError(torv::kMsgFunctionError,
                              torv::CheckFolder(path, false) ? "CUserDB::LoadDatabase" : "CUserDB::LoadUserDBFile");
            return 0;
        }
        m_loaded = std::move(content);
        reports.TellRest(m_strPath);
        return 1;
    });
}

bool CUserDB::Parse(const std::string& content, torv::ReportLimit& reports) {
    CxTypedFile file;
    if (!file.Load(reinterpret_cast<const unsigned char*>(content.data()), static_cast<DWORD>(content.size())))
        return false;
    LoadUserDBFile(file, reports);
    return true;
}

void CUserDB::LoadUserDBFile(CxTypedFile& file, torv::ReportLimit& reports) {
    SectionNames visited;
    for (const auto& known : kArticulations)
        LoadArticulation(file, known.status, known.articulation, visited, reports);
    CString name;
    CxEntryMap* section = nullptr;
    for (POSITION at = file.GetSectionMap()->GetStartPosition(); at;) {
        file.GetSectionMap()->GetNextAssoc(at, name, section);
        if (IsArticulation(name) || visited.contains(name.GetStdString()))
            continue;
        if (reports.MayReport())
            torv::ReportError(torv::kMsgInvalidSection, name, m_strPath);
        KeepUnread(*section, "");
    }
}

void CUserDB::LoadArticulation(CxTypedFile& file, int status, int articulation, SectionNames& visited,
                               torv::ReportLimit& reports) {
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
            if (reports.MayReport())
                torv::ReportError(torv::kMsgInvalidLine, m_strPath, torv::DescribeEntry(name, key, value));
            continue;
        }
        // The icon tells its number itself, so that it is not lost for a bad key.
        if (torv::ParseInteger(key) < 1 && reports.MayReport())
            torv::ReportError(torv::kMsgInvalidKey, key);
        if (!LoadUserModelIcon(file, value, status, articulation)) {
            if (reports.MayReport())
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
    torv::OrBadAlloc(icon);
    torv::OrBadAlloc(icon->ConstructParameter(&file, section));
    torv::OrBadAlloc(icon->SetIDString(torv::ReadText(file, section, "IDS")));
    if (const CString caption = torv::ReadText(file, section, "Caption"); !caption.IsEmpty())
        torv::OrBadAlloc(icon->SetCaption(caption));
    icon->SetOriginalVariation(static_cast<DWORD>(torv::ParseInteger(file.ReadAt(section, "Original", nullptr))));
    if (!MayRestore(*icon))
        return false;
    torv::MakeStorable(*icon);
    AddModel(icon);
    return true;
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
    return torv::OrZero([this] {
        if (m_strPath.IsEmpty())
            return 0;
        const torv::SaveTurn turn(torv::NewFilePath(m_strPath)); // what another host saves meanwhile would be lost
        std::string content;
        if (!ReadContent(m_strPath, content) || (content != m_loaded && !Merge(content)))
            return 0;
        CxTypedFile file;
        Describe(file);
        std::string saved = Bytes(file);
        if (!file.SaveAs(m_strPath))
            return 0;
        m_loaded = std::move(saved);
        return 1;
    });
}

bool CUserDB::Merge(const std::string& content) {
    torv::ReportLimit silent(0); // what cannot be read is told when the file is opened
    CUserDB before;
    CUserDB theirs;
    if (!before.Parse(m_loaded, silent) || !theirs.Parse(content, silent))
        return false;
    std::vector<std::unique_ptr<CIconObject>> moved;
    for (const auto& known : kArticulations) {
        for (CIconObject* const icon : theirs.GetModels(known.status, known.articulation)) {
            const DWORD id = icon->GetIconID();
            CIconObject* const ours = GetModelIconObject(id);
            CIconObject* const loaded = before.GetModelIconObject(id);
            if (IsSame(icon, loaded) || IsSame(icon, ours))
                continue;
            // The external library gives an expression's number once: of the same name it is the same one.
            const bool isSameItem =
                !loaded && ours && known.status != torv::kStatusDynamics && ours->GetIDString() == icon->GetIDString();
            std::unique_ptr<CIconObject> replaced = TakeModel(id);
            if (replaced && !isSameItem && !IsSame(ours, loaded))
                moved.push_back(std::move(replaced));
            std::unique_ptr<CIconObject> taken = theirs.TakeModel(id);
            AddModel(taken);
        }
    }
    for (std::unique_ptr<CIconObject>& icon : moved) {
        const DWORD id = icon->GetIconID();
        torv::ReportError(torv::kMsgKeyUsed, Number(NumberOf(id)),
                          torv::IconArticulationName(torv::StatusFromID(id), torv::ArticulationFromID(id)), m_strPath);
        if (!GiveNewVariation(icon))
            return false;
        AddModel(icon);
    }
    const std::vector<Unread>& seen = theirs.m_unread;
    std::erase_if(m_unread, [&seen](const Unread& kept) {
        return std::any_of(seen.begin(), seen.end(),
                           [&kept](const Unread& section) { return section.section == kept.section; });
    });
    m_unread.insert(m_unread.begin(), seen.begin(), seen.end());
    return true;
}

void CUserDB::Describe(CxTypedFile& file) const {
    SectionNames unread;
    for (const Unread& section : m_unread)
        unread.insert(section.section.GetStdString());
    int number = 0;
    for (const auto& known : kArticulations)
        DescribeArticulation(file, known.status, known.articulation, unread, number);
    for (const Unread& section : m_unread) {
        torv::OrBadAlloc(file.AddSection(section.section));
        for (const auto& [key, value] : section.entries)
            torv::WriteEntry(file, section.section, key, value);
    }
}

void CUserDB::DescribeArticulation(CxTypedFile& file, int status, int articulation, const SectionNames& unread,
                                   int& number) const {
    const char* const name = torv::IconArticulationName(status, articulation);
    std::vector<std::pair<CString, CIconObject*>> sections;
    std::unordered_set<int> keys;
    for (CIconObject* const icon : GetModels(status, articulation)) {
        CString section;
        do
            section.Format("#USER%04d", ++number);
        while (unread.contains(section.GetStdString()));
        const int key = NumberOf(icon->GetIconID());
        keys.insert(key);
        torv::WriteEntry(file, name, Number(key), section);
        sections.emplace_back(section, icon);
    }
    int key = 1;
    for (const Unread& section : m_unread) {
        if (section.articulation != name)
            continue;
        while (!keys.insert(key).second)
            ++key;
        torv::WriteEntry(file, name, Number(key), section.section);
    }
    for (const auto& [section, icon] : sections)
        DescribeIcon(file, section, *icon);
}
