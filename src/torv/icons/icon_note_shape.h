#pragma once

#include "torv/icons/icon_expression.h"

namespace torv {

/// What attacks and releases have in common: a duration and a depth, 0..127 by intention, 64 at first.
class TORV_API NoteShape : public CIconExpression {
public:
    /// As newly made: duration and depth 64.
    NoteShape(int status, int articulation, int variation);
    NoteShape(const NoteShape&) = default;

    int LoadPreset(const char* path) override;
    /// From and into a host's record; 0 for null. The second allocates texts: torv::ReleaseIconRecord.
    /// @{
    using CIconExpression::ConstructParameter;
    using CIconExpression::DescribeParameter;
    int ConstructParameter(const tagNoteIconObject* record);
    int DescribeParameter(tagNoteIconObject* record) const;
    /// @}

    int GetDuration() const override { return m_nDuration; }
    /// How far it reaches in pitch or loudness; what the engine makes of the two is its own affair.
    int GetDepth() const override { return m_nDepth; }
    /// Any value is stored and answered with 1: hosts pass values of their own beyond the range.
    int SetDuration(int duration);
    /// See SetDuration.
    int SetDepth(int depth);

protected:
    int ReadKeys(CxTypedFile* file, const char* section) override;
    int WriteKeys(CxTypedFile* file, const char* section) const override;
    void TakeAll(CIconExpression& from) noexcept override;
    /// Unlike other icons, a note icon takes over the other's variation too. `shape` is `other` when it is of the same
    /// kind, else null: then only what all expressions share is taken.
    int ReplaceShape(CIconObject* other, NoteShape* shape);

private:
    int m_nDuration = kDefaultShape;
    int m_nDepth = kDefaultShape;
};

} // namespace torv
