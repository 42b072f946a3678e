#include "torv/database/aicon_db.h"

#include "torv/database/error_report.h"
#include "torv/database/report_limit.h"
#include "torv/icons/icon_dynamics.h"
#include "torv/typed_file/typed_file.h"

namespace {

constexpr int kArticulations[] = {torv::kDynaff, torv::kCrescendo, torv::kDecrescendo};
constexpr int kLastVariation = 0x7FFF; // the bit above marks users' icons

CString TitleOf(const char* path) {
    const CString name = torv::FileNamePart(path);
    const int dot = name.ReverseFind('.');
    return dot < 0 ? name : name.Left(dot);
}

} // namespace

bool CAiconDB::HasArticulation(int status, int articulation) const {
    return status == torv::kStatusDynamics && articulation >= torv::kDynaff && articulation <= torv::kDecrescendo;
}

void CAiconDB::CloseDatabase() {
    RemoveModels();
    m_strPath.Empty();
    m_strName.Empty();
}

int CAiconDB::LoadDatabase(const char* path) {
    CloseDatabase();
    m_strPath = path;
    if (!torv::CheckFile(path, true))
        return 0;
    CxTypedFile file;
    if (!file.Load(path)) {
        torv::ReportError(torv::kMsgFunctionError, "CAiconDB::LoadDatabase");
        return 0;
    }
    m_strName = TitleOf(path);
    const char* const section = torv::IconStatusName(torv::kStatusDynamics);
    CxEntryMap* const entries = file.GetEntryMap(section);
    if (!entries) {
        torv::ReportError(torv::kMsgSectionNotFound, section, path);
        return 0;
    }
    const CString folder = torv::JoinPath(torv::JoinPath(torv::FolderPart(path), m_strName), section);
    if (!torv::CheckFolder(folder, true))
        return 0;
    torv::ReportLimit reports;
    int result = 1;
    for (const int articulation : kArticulations) {
        const char* const key = torv::IconArticulationName(torv::kStatusDynamics, articulation);
        CString names;
        if (!entries->Lookup(key, names)) {
            torv::ReportErrorFormat(torv::kMsgKeyNotFound, key, section, path);
            result = 0;
            break;
        }
        LoadArticulation(articulation, names, folder, reports);
    }
    reports.TellRest(path);
    return result;
}

void CAiconDB::LoadArticulation(int articulation, const char* names, const char* folder, torv::ReportLimit& reports) {
    char name[MAX_PATH];
    int variation = 1;
    while (*names && variation <= kLastVariation) {
        names = CxTypedFile::ExtractString(name, sizeof name, names, ',');
        if (!*name)
            continue;
        std::unique_ptr<CIconObject> icon =
            std::make_unique<CIconDynamics>(torv::kStatusDynamics, articulation, variation);
        // Numbers stay dense: an icon that fails leaves its number to the next.
        if (LoadPresetModelIcon(icon.get(), folder, name, reports)) {
            AddModel(icon);
            ++variation;
        }
    }
}
