#include "torv/icons/icon_object.h"

#include "torv/typed_file/typed_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr size_t kMaxIDString = sizeof(tagIconHeader::idString) - 1;

void TellPresetError(const char* format, const char* path) {
    MessageBeep(MB_ICONEXCLAMATION);
    CString text(format);
    text.Replace("%s", path);
    AfxMessageBox(text, MB_ICONEXCLAMATION | MB_OK);
}

} // namespace

namespace torv {

char* NewText(const char* text) {
    const size_t size = std::strlen(text ? text : "") + 1;
    char* const copy = new char[size];
    std::memcpy(copy, text ? text : "", size);
    return copy;
}

void ReleaseIconRecord(tagIconHeader* record) {
    if (!record)
        return;
    delete[] record->caption;
    record->caption = nullptr;
}

} // namespace torv

CIconObject::CIconObject(int status, int articulation, int variation)
    : m_nStatus(status), m_nArticulation(articulation), m_nVariation(variation) {}

CIconObject::CIconObject(CIconObject* other) : CIconObject(torv::OrEmpty(other)) {}

CIconObject::~CIconObject() = default;

int CIconObject::IsContinuance() { return 0; }
int CIconObject::TrimIconHead(DWORD) { return 0; }
int CIconObject::TrimIconTail(DWORD) { return 0; }

int CIconObject::LoadPreset(const char* path) {
    CxTypedFile file;
    return OpenPresetFile(file, path) &&
           ChangeWhole(*this, [&file](CIconObject& icon) { return icon.ReadPreset(file); });
}

int CIconObject::ReadPreset(CxTypedFile& file) {
    return ReadGlobalSection(&file, kGlobalSection) && ReadParameterSection(&file, kParameterSection);
}

int CIconObject::ReadSection(CxTypedFile* file, const char* section) {
    return file && ReadGlobalSection(file, section) && ReadParameterSection(file, section);
}

int CIconObject::WriteSection(CxTypedFile* file, const char* section) const {
    return file && WriteGlobalSection(file, section) && WriteParameterSection(file, section);
}

int CIconObject::ConstructParameter(CxTypedFile* file, const char* section) {
    return ChangeWhole(*this, [&](CIconObject& icon) { return icon.ReadSection(file, section); });
}

int CIconObject::DescribeParameter(CxTypedFile* file, const char* section) {
    return torv::OrZero([&] { return WriteSection(file, section); });
}

void CIconObject::TakeAll(CIconObject& from) noexcept {
    m_nStatus = from.m_nStatus;
    m_nArticulation = from.m_nArticulation;
    m_nVariation = from.m_nVariation;
    m_strID = std::move(from.m_strID);
    m_dwOriginalVariation = from.m_dwOriginalVariation;
    m_strCaption = std::move(from.m_strCaption);
    m_dwLength = from.m_dwLength;
}

int CIconObject::ReplaceParameter(CIconObject* other) {
    if (!other)
        return 0;
    return torv::OrZero([&] {
        CString id = other->m_strID;
        m_strCaption = CString(other->m_strCaption);
        m_strID = std::move(id);
        m_dwLength = other->m_dwLength;
        return 1;
    });
}

int CIconObject::ConstructParameter(const tagIconHeader* record) {
    return ChangeWhole(*this, [record](CIconObject& icon) { return icon.ReadRecord(record); });
}

int CIconObject::ReadRecord(const tagIconHeader* record) {
    if (!record)
        return 0;
    m_nStatus = torv::StatusFromID(record->iconId);
    m_nArticulation = torv::ArticulationFromID(record->iconId);
    m_nVariation = torv::VariationFromID(record->iconId);
    m_strID = CString(record->idString, static_cast<int>(strnlen(record->idString, kMaxIDString)));
    m_dwOriginalVariation = record->originalVariation;
    m_strCaption = record->caption;
    return 1;
}

int CIconObject::DescribeParameter(tagIconHeader* record) const {
    char* const caption = record ? torv::OrZero([&] { return torv::NewText(m_strCaption); }) : nullptr;
    if (!caption)
        return 0;
    record->iconId = GetIconID();
    record->originalVariation = m_dwOriginalVariation;
    const size_t length = std::min<size_t>(static_cast<size_t>(m_strID.GetLength()), kMaxIDString);
    std::memcpy(record->idString, static_cast<const char*>(m_strID), length);
    record->idString[length] = '\0';
    record->caption = caption;
    return 1;
}

int CIconObject::SetIDString(const char* text) {
    return torv::OrZero([&] {
        m_strID = text;
        return 1;
    });
}

int CIconObject::SetCaption(const char* text) {
    return torv::OrZero([&] {
        m_strCaption = text;
        return 1;
    });
}

int CIconObject::SetLength(DWORD length) {
    if (length == 0)
        return 0;
    m_dwLength = length;
    return 1;
}

int CIconObject::IsUserIcon() const { return (static_cast<DWORD>(m_nVariation) & torv::kUserIconBit) != 0; }
int CIconObject::IsUserIcon(DWORD id) { return (id & torv::kUserIconBit) != 0; }

int CIconObject::OpenPresetFile(CxTypedFile& file, const char* path) {
    path = path ? path : "";
    return torv::OrZero([&] {
        CFileFind search;
        if (!search.FindFile(path) || (search.FindNextFile(), search.IsDirectory())) {
            TellPresetError("Cannot find Icon File \"%s\" ! ", path);
            return 0;
        }
        if (!file.Load(path)) {
            TellPresetError("Cannot read Icon File \"%s\" ! ", path);
            return 0;
        }
        return 1;
    });
}

int CIconObject::ReadGlobalSection(CxTypedFile* file, const char* section) {
    m_strCaption = file->ReadAt(section, "Caption", nullptr);
    if (m_strCaption.IsEmpty())
        m_strCaption = file->ReadAt(section, "Articulation", nullptr);
    return 1;
}

int CIconObject::WriteGlobalSection(CxTypedFile* file, const char* section) const {
    return file->WriteAt(section, "Caption", m_strCaption);
}

int CIconObject::ReadParameterSection(CxTypedFile* file, const char* section) {
    const int length = torv::ParseInteger(file->ReadAt(section, "Length", nullptr));
    m_dwLength = static_cast<DWORD>(length > 0 ? length : kDefaultLength);
    return 1;
}

int CIconObject::WriteParameterSection(CxTypedFile* file, const char* section) const {
    return WriteNumber(file, section, "Length", static_cast<int>(m_dwLength));
}

int CIconObject::WriteNumber(CxTypedFile* file, const char* section, const char* key, int value) {
    CString text;
    text.Format("%d", value);
    return file->WriteAt(section, key, text);
}
