#include "torv/icons/icon_expression.h"

#include "torv/icons/icon_factory.h"
#include "torv/typed_file/typed_file.h"

#include <memory>
#include <utility>

namespace torv {

void ReleaseIconRecord(tagNoteIconObject* record) {
    if (!record)
        return;
    ReleaseIconRecord(&record->header);
    delete[] record->originalSingerName;
    delete[] record->developerName;
    record->originalSingerName = record->developerName = nullptr;
}

} // namespace torv

CIconExpression::CIconExpression(int status, int articulation, int variation)
    : CIconObject(status, articulation, variation) {}

CIconExpression::CIconExpression(CIconExpression* other) : CIconExpression(torv::OrEmpty(other)) {}

int CIconExpression::LoadPreset(const char*) { return 0; }
int CIconExpression::GetDuration() const { return torv::kDefaultShape; }
int CIconExpression::GetDepth() const { return torv::kDefaultShape; }

int CIconExpression::ReadKeys(CxTypedFile*, const char*) { return 1; }
int CIconExpression::WriteKeys(CxTypedFile*, const char*) const { return 1; }

void CIconExpression::TakeAll(CIconExpression& from) noexcept {
    CIconObject::TakeAll(from);
    m_entry = from.m_entry;
    m_strSinger = std::move(from.m_strSinger);
    m_strDeveloper = std::move(from.m_strDeveloper);
}

int CIconExpression::Change(const std::function<int(CIconExpression& copy)>& work) {
    return torv::OrZero([&] {
        const std::unique_ptr<CIconObject> copy = torv::CopyIcon(this);
        auto* const changed = dynamic_cast<CIconExpression*>(copy.get());
        if (!changed || !work(*changed))
            return 0;
        TakeAll(*changed);
        return 1;
    });
}

int CIconExpression::LoadExpression(const char* path) {
    CxTypedFile file;
    return OpenPresetFile(file, path) && Change([&file](CIconExpression& icon) {
               return icon.ReadPreset(file) && icon.ReadKeys(&file, kParameterSection);
           });
}

int CIconExpression::ConstructParameter(CxTypedFile* file, const char* section) {
    return Change(
        [&](CIconExpression& icon) { return icon.ReadSection(file, section) && icon.ReadKeys(file, section); });
}

int CIconExpression::DescribeParameter(CxTypedFile* file, const char* section) {
    return torv::OrZero([&] { return WriteSection(file, section) && WriteKeys(file, section); });
}

int CIconExpression::ReplaceParameter(CIconObject* other) {
    return Change([other](CIconExpression& icon) { return icon.ReplaceExpression(other); });
}

int CIconExpression::ReplaceExpression(CIconObject* other) {
    if (!CIconObject::ReplaceParameter(other))
        return 0;
    if (const auto* const expression = dynamic_cast<CIconExpression*>(other)) {
        m_entry = expression->m_entry;
        m_strSinger = expression->m_strSinger;
        m_strDeveloper = expression->m_strDeveloper;
    }
    return 1;
}

int CIconExpression::DescribeUserExpression(CxTypedFile* file) {
    return torv::OrZero([&] {
        return file &&
               file->WriteAt(kGlobalSection, "Articulation", torv::IconArticulationName(m_nStatus, m_nArticulation)) &&
               WriteGlobalSection(file, kGlobalSection) && WriteParameterSection(file, kParameterSection) &&
               WriteKeys(file, kParameterSection);
    });
}

int CIconExpression::ConstructParameter(const tagNoteIconObject* record) {
    return record && Change([record](CIconExpression& icon) {
               icon.ReadRecord(*record);
               return 1;
           });
}

int CIconExpression::DescribeParameter(tagNoteIconObject* record) const { return record ? WriteRecord(*record) : 0; }

int CIconExpression::ReadShape(CxTypedFile* file, const char* section, const char* key) {
    const CString value = file->ReadAt(section, key, nullptr);
    return value.IsEmpty() ? torv::kDefaultShape : torv::ParseInteger(value);
}
