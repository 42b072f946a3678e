#pragma once

#include "torv/platform/afx/object.h"
#include "torv/platform/afx/string.h"

#include <cstddef>
#include <vector>

/// A growing array. An index out of range reads an empty element and writes nothing. Copying copies the elements.
/// Pointers and references into it are good until it grows or shrinks. Growing throws std::bad_alloc.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray : public CObject {
public:
    /// Elements.
    int GetSize() const { return static_cast<int>(m_data.size()); }
    int GetCount() const { return GetSize(); }      ///< as GetSize
    BOOL IsEmpty() const { return m_data.empty(); } ///< whether GetSize is 0
    /// -1 for an empty array.
    int GetUpperBound() const { return GetSize() - 1; }
    /// New elements are empty ones; a negative size counts as 0. Growth steps are the array's own affair.
    void SetSize(int size, [[maybe_unused]] int growBy = -1) {
        m_data.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    /// Gives unused memory back.
    void FreeExtra() { m_data.shrink_to_fit(); }
    void RemoveAll() { m_data.clear(); } ///< every element

    /// The element at an index; out of range an empty one.
    const TYPE& GetAt(int index) const { return At(index); }
    TYPE& GetAt(int index) { return At(index); }                  ///< what is written out of range is lost
    TYPE& ElementAt(int index) { return At(index); }              ///< as GetAt
    const TYPE& ElementAt(int index) const { return At(index); }  ///< as GetAt
    TYPE& operator[](int index) { return At(index); }             ///< as GetAt
    const TYPE& operator[](int index) const { return At(index); } ///< as GetAt
    /// Overwrites; an index out of range writes nothing.
    void SetAt(int index, ARG_TYPE element) {
        if (Has(index))
            m_data[static_cast<std::size_t>(index)] = element;
    }
    /// Grows the array when the index lies beyond it; a negative index writes nothing.
    void SetAtGrow(int index, ARG_TYPE element) {
        if (index < 0)
            return;
        TYPE copy(element); // the argument may live in this array
        if (index >= GetSize())
            SetSize(index + 1);
        m_data[static_cast<std::size_t>(index)] = std::move(copy);
    }
    /// The new element's index.
    int Add(ARG_TYPE element) {
        m_data.push_back(element);
        return GetUpperBound();
    }
    /// The index of the first element that was appended.
    int Append(const CArray& other) {
        const int first = GetSize();
        const std::vector<TYPE> copy(other.m_data);
        m_data.insert(m_data.end(), copy.begin(), copy.end());
        return first;
    }
    /// Becomes equal to the other.
    void Copy(const CArray& other) { m_data = other.m_data; }
    /// An index beyond the end fills the gap with empty elements; a negative index or count inserts nothing.
    void InsertAt(int index, ARG_TYPE element, int count = 1) {
        if (index < 0 || count <= 0)
            return;
        const TYPE copy(element);
        if (index > GetSize())
            SetSize(index);
        m_data.insert(m_data.begin() + index, static_cast<std::size_t>(count), copy);
    }
    /// The other array's elements; null inserts nothing.
    void InsertAt(int index, CArray* other) {
        if (index < 0 || !other)
            return;
        const std::vector<TYPE> copy(other->m_data);
        if (index > GetSize())
            SetSize(index);
        m_data.insert(m_data.begin() + index, copy.begin(), copy.end());
    }
    /// Removes as many of `count` elements as there are.
    void RemoveAt(int index, int count = 1) {
        if (!Has(index) || count <= 0)
            return;
        const int rest = GetSize() - index;
        m_data.erase(m_data.begin() + index, m_data.begin() + index + (count < rest ? count : rest));
    }

    /// Null for an empty array.
    TYPE* GetData() { return m_data.empty() ? nullptr : m_data.data(); }
    /// Null for an empty array.
    const TYPE* GetData() const { return m_data.empty() ? nullptr : m_data.data(); }

private:
    bool Has(int index) const { return index >= 0 && static_cast<std::size_t>(index) < m_data.size(); }
    TYPE& At(int index) { return Has(index) ? m_data[static_cast<std::size_t>(index)] : Nothing(); }
    const TYPE& At(int index) const { return Has(index) ? m_data[static_cast<std::size_t>(index)] : Nothing(); }
    TYPE& Nothing() const {
        m_nothing = TYPE(); // whatever was written there through a wrong index is gone
        return m_nothing;
    }

    std::vector<TYPE> m_data;
    mutable TYPE m_nothing{};
};

/// Objects and pointers. The array does not own what its elements point to.
class TORV_API CObArray : public CArray<CObject*, CObject*> {
public:
    ~CObArray() override;
};
/// See CObArray.
class TORV_API CPtrArray : public CArray<void*, void*> {
public:
    ~CPtrArray() override;
};
/// An array of texts, which it holds.
class TORV_API CStringArray : public CArray<CString, LPCSTR> {
public:
    ~CStringArray() override;
};
