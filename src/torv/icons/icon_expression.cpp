#include "torv/icons/icon_expression.h"

#include "torv/typed_file/typed_file.h"

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

int CIconExpression::ReplaceParameter(CIconObject* other) {
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
    if (!file)
        return 0;
    file->WriteAt(kGlobalSection, "Articulation", torv::IconArticulationName(m_nStatus, m_nArticulation));
    return WriteGlobalSection(file, kGlobalSection) && WriteParameterSection(file, kParameterSection);
}

int CIconExpression::ConstructParameter(const tagNoteIconObject* record) {
    if (!record || !CIconObject::ConstructParameter(&record->header))
        return 0;
    m_entry = {static_cast<int>(record->database), static_cast<int>(record->idHigh), static_cast<int>(record->idLow),
               record->itemValue};
    if (record->originalSingerName)
        m_strSinger = record->originalSingerName;
    if (record->developerName)
        m_strDeveloper = record->developerName;
    return 1;
}

int CIconExpression::DescribeParameter(tagNoteIconObject* record) const {
    if (!record || !CIconObject::DescribeParameter(&record->header))
        return 0;
    record->database = static_cast<DWORD>(m_entry.database);
    record->idHigh = static_cast<DWORD>(m_entry.idHigh);
    record->idLow = static_cast<DWORD>(m_entry.idLow);
    record->itemValue = m_entry.itemValue;
    record->originalSingerName = torv::NewText(m_strSinger);
    record->developerName = torv::NewText(m_strDeveloper);
    return 1;
}

int CIconExpression::ReadShape(CxTypedFile* file, const char* section, const char* key) {
    const CString value = file->ReadAt(section, key, nullptr);
    return value.IsEmpty() ? torv::kDefaultShape : torv::ParseInteger(value);
}
