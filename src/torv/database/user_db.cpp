#include "torv/database/user_db.h"

#include "torv/icons/icon_factory.h"
#include "torv/platform/afx/mem_file.h"
#include "torv/typed_file/typed_file.h"

#include <algorithm>

namespace {

constexpr int kLastNumber = 0x7FFF;
constexpr size_t kLongestText = 4096;

/// A text that the file gives back as it was: a value there ends at ";" or a control byte and has no blanks around.
CString Storable(const CString& text) {
    std::string bytes = text.GetStdString().substr(0, kLongestText);
    std::replace(bytes.begin(), bytes.end(), ';', ',');
    std::replace_if(
        bytes.begin(), bytes.end(), [](unsigned char c) { return c < ' '; }, ' ');
    CString storable(std::move(bytes));
    storable.TrimLeft();
    storable.TrimRight();
    return storable;
}

constexpr const char* kSection = "Icon";
constexpr int kMostRounds = 16;

} // namespace

CUserDB::~CUserDB() = default;

void CUserDB::MakeStorable(CIconObject& icon) {
    icon.SetIDString(Storable(icon.GetIDString()));
    icon.SetCaption(Storable(icon.GetCaption()));
    // A curve's points are written as fractions and cut when they are read, which can move them. Moved until they stay,
    // they do not creep from one session to the next.
    std::string before;
    for (int round = 0; round < kMostRounds; ++round) {
        CxTypedFile file;
        CMemFile text;
        if (!icon.DescribeParameter(&file, kSection) || !file.Save(&text) || text.GetBytes() == before)
            return;
        before = text.GetBytes();
        file.Load(reinterpret_cast<const unsigned char*>(before.data()), static_cast<DWORD>(before.size()));
        icon.ConstructParameter(&file, kSection);
    }
}

bool CUserDB::HasArticulation(int status, int articulation) const {
    return status >= torv::kStatusAttack && status <= torv::kStatusVibrato
               ? articulation == status
               : status == torv::kStatusDynamics && *torv::IconArticulationName(status, articulation);
}

void CUserDB::CloseDatabase() {
    RemoveModels();
    m_unread.clear();
    m_lowestFree.clear();
    m_strPath.Empty();
    m_isModified = m_isUnreadable = false;
}

int CUserDB::GetNewVariation(int status, int articulation) const {
    if (!HasArticulation(status, articulation))
        return 0;
    int& number = m_lowestFree.try_emplace(torv::MakeIconID(status, articulation, 0), 1).first->second;
    const auto idOf = [&] { return torv::MakeIconID(status, articulation, number) | torv::kUserIconBit; };
    while (number <= kLastNumber && Contains(idOf()))
        ++number;
    return number <= kLastNumber ? torv::VariationFromID(idOf()) : 0;
}

CIconObject* CUserDB::AdoptIcon(std::unique_ptr<CIconObject>& icon) {
    const DWORD id = icon ? icon->GetIconID() : 0;
    if (!CIconObject::IsUserIcon(id) || (id & kLastNumber) == 0 || Contains(id) ||
        !HasArticulation(torv::StatusFromID(id), torv::ArticulationFromID(id)))
        return nullptr;
    MakeStorable(*icon);
    return AddModel(std::move(icon));
}

CIconObject* CUserDB::AddIcon(std::unique_ptr<CIconObject>& icon) {
    CIconObject* const added = AdoptIcon(icon);
    m_isModified = m_isModified || added;
    return added;
}

std::unique_ptr<CIconObject> CUserDB::RemoveIcon(DWORD id) {
    std::unique_ptr<CIconObject> icon = TakeModel(id);
    if (icon) {
        m_lowestFree.erase(id & 0xFFFF0000);
        m_isModified = true;
    }
    return icon;
}

int CUserDB::ReplaceIcon(CIconObject* icon) {
    CIconObject* const model = icon ? GetModelIconObject(icon->GetIconID()) : nullptr;
    if (!model || !torv::IsSameClass(*model, *icon) || !model->ReplaceParameter(icon))
        return 0;
    model->SetOriginalVariation(icon->GetOriginalVariation());
    MakeStorable(*model);
    ForgetPlaces();
    m_isModified = true;
    return 1;
}
