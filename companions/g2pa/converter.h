/// What the two converters share: the life of an element between put and get. Each language derives one class and
/// defines the functions at the end; entry_points.cpp turns them into the library's entry points.
#pragma once

#include <list>
#include <memory>
#include <string_view>
#include <vector>

namespace g2pa {

/// One element's phonemes in order: views of static tables.
using Symbols = std::vector<std::string_view>;
/// Of several elements in a row. A list: whole rows change hands without an allocation.
using Outputs = std::list<Symbols>;

/// One conversion. Delivers exactly one output for each element put, in order. No locks: the caller serialises. A put
/// or an end for which there is no memory throws std::bad_alloc and has not happened.
class Converter {
public:
    Converter() = default;
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    virtual ~Converter() = default;

    /// Takes the next element; any bytes but NUL.
    virtual void Put(std::string_view text) = 0;
    /// The input has ended: everything held back becomes ready.
    virtual void Finish() = 0;

    bool HasOutput() const { return !m_ready.empty(); }
    const Symbols& NextOutput() const { return m_ready.front(); }
    void DropOutput() { m_ready.pop_front(); }

protected:
    void Deliver(Outputs&& outputs) noexcept { m_ready.splice(m_ready.end(), outputs); }

private:
    Outputs m_ready;
};

// What a language's library defines.

std::unique_ptr<Converter> MakeConverter();
extern const char* const versionText;
/// A value of G2PA_WORD_...: where the sounds of a text come from, of several words those of the least known.
int FindWord(std::string_view text);
/// True when every slot but the last of an output ends with a blank: the host then joins slots without a separator.
extern const bool slotsEndWithBlank;

} // namespace g2pa
