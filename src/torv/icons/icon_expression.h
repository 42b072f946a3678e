#pragma once

#include "torv/icons/icon_object.h"

#include <functional>
#include <memory>

/// The identity of an expression item in the database it comes from.
struct tagExpressionEntry {
    int database;    ///< number of the expression database
    int idHigh;      ///< the two parts of the expression id, of which the low 8 bits count
    int idLow;       ///< see idHigh
    DWORD itemValue; ///< the database's own, passed back unchanged
};
static_assert(sizeof(tagExpressionEntry) == 16);

/// Host record of the note icons. Null names leave the icon's names unchanged.
struct tagNoteIconObject {
    tagIconHeader header; ///< what every icon record begins with
    /// As tagExpressionEntry has them.
    /// @{
    DWORD database;
    DWORD idHigh;
    DWORD idLow;
    DWORD itemValue;
    /// @}
    /// NUL-terminated; described ones are new[].
    /// @{
    char* originalSingerName;
    char* developerName;
    /// @}
    BYTE duration; ///< low 8 bits
    BYTE depth;    ///< low 8 bits; unused by transitions
};
static_assert(sizeof(void*) != 4 ||
              (offsetof(tagNoteIconObject, database) == 148 && offsetof(tagNoteIconObject, itemValue) == 160 &&
               offsetof(tagNoteIconObject, originalSingerName) == 164 && offsetof(tagNoteIconObject, duration) == 172 &&
               offsetof(tagNoteIconObject, depth) == 173));

namespace torv {

/// What a shape has whose file does not say: the middle of 0..127.
inline constexpr int kDefaultShape = 64;

/// As for tagIconHeader, with the two names.
TORV_API void ReleaseIconRecord(tagNoteIconObject* record);

} // namespace torv

/// An icon from the expression database: the note shapes and the vibrato.
class TORV_API CIconExpression : public CIconObject {
public:
    /// The icon as newly made, of no item in the database.
    CIconExpression(int status, int articulation, int variation);
    /// Copies id and all; null as an icon of id 0.
    explicit CIconExpression(CIconExpression* other);
    CIconExpression(const CIconExpression&) = default;

    /// Expressions of no kind have no preset files: 0.
    int LoadPreset(const char* path) override;
    int ConstructParameter(CxTypedFile* file, const char* section) override;
    /// Writes what ConstructParameter reads.
    int DescribeParameter(CxTypedFile* file, const char* section) override;
    int ReplaceParameter(CIconObject* other) override;
    /// Writes the icon as a user's expression file: its articulation's name and its caption into "Common", its numbers
    /// into "Parameter".
    virtual int DescribeUserExpression(CxTypedFile* file);
    /// What the encoder sends; 64 where a kind has none.
    virtual int GetDuration() const;
    /// See GetDuration.
    virtual int GetDepth() const;

    /// From and into a host's record; 0 for null. The second allocates texts: torv::ReleaseIconRecord.
    /// @{
    using CIconObject::ConstructParameter;
    using CIconObject::DescribeParameter;
    int ConstructParameter(const tagNoteIconObject* record);
    int DescribeParameter(tagNoteIconObject* record) const;
    /// @}

    /// The icon's own, to read and to change.
    tagExpressionEntry* GetExpressionEntry() { return &m_entry; }
    /// The engine's code: both id parts as bytes of 16 bits.
    int GetExpressionID() const { return (m_entry.idHigh & 0xFF) << 8 | (m_entry.idLow & 0xFF); }
    /// Who sang the expression, who made it: texts for the user, kept in files. Setting one throws std::bad_alloc.
    /// @{
    CString GetOriginalSingerName() const { return m_strSinger; }
    CString GetDevelopperName() const { return m_strDeveloper; }
    void SetOriginalSingerName(const char* name) { m_strSinger = name; }
    void SetDevelopperName(const char* name) { m_strDeveloper = name; }
    /// @}

protected:
    /// The keys that a kind has beside those of all icons, in a section that exists.
    virtual int ReadKeys(CxTypedFile* file, const char* section);
    virtual int WriteKeys(CxTypedFile* file, const char* section) const;
    /// Takes everything from an icon of the same kind that is given up.
    virtual void TakeAll(CIconExpression& from) noexcept;

    /// The change of CIconObject::ChangeWhole, made to a copy of the icon's own kind.
    int Change(const std::function<int(CIconExpression& copy)>& work);
    /// Loads an icon file with the kind's own keys.
    int LoadExpression(const char* path);
    int ReplaceExpression(CIconObject* other);
    /// What the host records of all kinds of expression have.
    template <class Record>
    void ReadRecord(const Record& record);
    template <class Record>
    int WriteRecord(Record& record) const;
    /// One shape number: the default when the key is missing or empty, 0 when its value is no number.
    static int ReadShape(CxTypedFile* file, const char* section, const char* key);

    tagExpressionEntry m_entry{};
    CString m_strSinger;
    CString m_strDeveloper;
};

template <class Record>
void CIconExpression::ReadRecord(const Record& record) {
    CIconObject::ReadRecord(&record.header);
    m_entry = {static_cast<int>(record.database), static_cast<int>(record.idHigh), static_cast<int>(record.idLow),
               record.itemValue};
    if (record.originalSingerName)
        m_strSinger = record.originalSingerName;
    if (record.developerName)
        m_strDeveloper = record.developerName;
}

template <class Record>
int CIconExpression::WriteRecord(Record& record) const {
    std::unique_ptr<char[]> singer(torv::OrZero([&] { return torv::NewText(m_strSinger); }));
    std::unique_ptr<char[]> developer(torv::OrZero([&] { return torv::NewText(m_strDeveloper); }));
    if (!singer || !developer || !CIconObject::DescribeParameter(&record.header))
        return 0;
    record.database = static_cast<DWORD>(m_entry.database);
    record.idHigh = static_cast<DWORD>(m_entry.idHigh);
    record.idLow = static_cast<DWORD>(m_entry.idLow);
    record.itemValue = m_entry.itemValue;
    record.originalSingerName = singer.release();
    record.developerName = developer.release();
    return 1;
}
