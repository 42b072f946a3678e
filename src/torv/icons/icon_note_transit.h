#pragma once

#include "torv/icons/icon_expression.h"

/// How one note passes into the next: status 3. It has a duration only.
class TORV_API CIconNoteTransit : public CIconExpression {
public:
    /// As newly made: duration 64.
    CIconNoteTransit(int status, int articulation, int variation);
    /// Copies id and all; null as an icon of id 0.
    explicit CIconNoteTransit(CIconNoteTransit* other);

    int LoadPreset(const char* path) override;
    /// Takes over the other transition's variation too.
    int ReplaceParameter(CIconObject* other) override;
    /// From and into a host's record; 0 for null. The second allocates texts: torv::ReleaseIconRecord.
    /// @{
    using CIconExpression::ConstructParameter;
    using CIconExpression::DescribeParameter;
    int ConstructParameter(const tagNoteIconObject* record);
    int DescribeParameter(tagNoteIconObject* record) const;
    /// @}

    int GetDuration() const override { return m_nDuration; }
    /// Any value is stored and answered with 1.
    int SetDuration(int duration);

protected:
    int ReadKeys(CxTypedFile* file, const char* section) override;
    int WriteKeys(CxTypedFile* file, const char* section) const override;
    void TakeAll(CIconExpression& from) noexcept override;

private:
    int m_nDuration = torv::kDefaultShape;
};
