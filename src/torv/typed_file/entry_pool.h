#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace torv {

/// Where the entries of a file's sections stand, and the text that they were read from. A file has hundreds of
/// thousands of entries, so one is small: it goes by a number, and its key and value are parts of that text, or of a
/// text of its own where it was set singly. Memory that cannot be had throws std::bad_alloc and has changed nothing.
class EntryPool {
public:
    using Place = std::uint32_t;
    static constexpr Place kNone = 0xFFFFFFFF;

    struct Entry {
        const char* text; ///< begins with the key
        std::uint32_t keySize;
        std::uint32_t valueAt; ///< where in the text the value begins
        std::uint32_t valueSize : 31;
        std::uint32_t hasOwnText : 1;
        Place next; ///< of a free entry: the next free one
        Place previous;

        std::string_view Key() const { return {text, keySize}; }
        std::string_view Value() const { return {text + valueAt, valueSize}; }
    };

    /// A text that lasts as long as the pool, so that entries can be parts of it.
    std::string_view Keep(std::unique_ptr<char[]> text, std::size_t size);

    Entry& At(Place place) const { return m_blocks[place / kInBlock][place % kInBlock]; }

    /// An entry of these texts, without links. With `areKept` the value stands behind the key in a text that is kept.
    Place Add(std::string_view key, std::string_view value, bool areKept);
    void SetTexts(Entry& entry, std::string_view key, std::string_view value, bool areKept);
    /// Takes back a chain of entries.
    void Remove(Place first, Place last);

private:
    static constexpr std::size_t kInBlock = 64;

    void MakeFree();
    void DeleteOwnText(Entry& entry);

    std::vector<std::unique_ptr<Entry[]>> m_blocks;
    std::vector<std::unique_ptr<char[]>> m_kept;
    std::size_t m_ownTexts = 0;
    Place m_free = kNone;
};

} // namespace torv
