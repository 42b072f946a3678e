#include "torv/lyrics/phoneme_converter.h"

#include "torv/lyrics/converter_modules.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/platform/language.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

namespace torv {
namespace {

constexpr int kGotOutput = 0;
constexpr int kNothingForNow = 1;
constexpr int kPhonemeBytes = 256;
/// A converter that never says "nothing for now" would hold the song for ever.
constexpr int kMostOutputsAtOnce = 100000;

/// Appends a slot, which may lack its terminator, as far as there is room.
int AppendSlot(const char* slot, char* buffer, int length, int size) {
    const int slotLength = static_cast<int>(strnlen(slot, G2PA_SLOT_BYTES));
    const int count = std::min(slotLength, size - 1 - length);
    std::memcpy(buffer + length, slot, static_cast<size_t>(count));
    return length + count;
}

} // namespace

int JoinSymbols(const G2paOutput& output, const char* separator, char* buffer, int size) {
    int length = 0;
    const int count = std::min<int>(output.count, G2PA_MAX_SLOTS);
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            length = AppendSlot(separator, buffer, length, size);
        length = AppendSlot(output.slots[i], buffer, length, size);
    }
    buffer[length] = '\0';
    return length;
}

PhonemeConverter::~PhonemeConverter() {
    if (m_handle < 0)
        return;
    m_put(m_handle, nullptr);
    m_delete(m_handle);
}

bool PhonemeConverter::Bind() {
    const HMODULE module = ConverterModule(m_language);
    if (!module)
        return false;
    m_create = EntryPoint<G2paCreateProc>(module, "g2paCreate");
    m_delete = m_create ? EntryPoint<G2paDeleteProc>(module, "g2paDelete") : nullptr;
    m_put = m_delete ? EntryPoint<G2paPutProc>(module, "g2paPut") : nullptr;
    m_get = m_put ? EntryPoint<G2paGetProc>(module, "g2paGet") : nullptr;
    return m_get != nullptr;
}

int PhonemeConverter::Create(DWORD beats) {
    m_handle = m_create(beats);
    return std::min(m_handle, 0);
}

int PhonemeConverter::Put(DWORD position, DWORD length, const CString& text) {
    const auto textBytes = static_cast<size_t>(text.GetLength());
    m_input.assign(offsetof(G2paInput, text) + std::max<size_t>(textBytes + 1, G2PA_MIN_TEXT_BYTES), 0);
    std::memcpy(m_input.data() + offsetof(G2paInput, position), &position, sizeof position);
    std::memcpy(m_input.data() + offsetof(G2paInput, length), &length, sizeof length);
    std::memcpy(m_input.data() + offsetof(G2paInput, text), static_cast<const char*>(text), textBytes);
    const int code = m_put(m_handle, m_input.data());
    return code ? code : CollectOutputs();
}

int PhonemeConverter::EndInput() {
    const int code = m_put(m_handle, nullptr);
    return code ? code : CollectOutputs();
}

int PhonemeConverter::Delete() { return m_delete(std::exchange(m_handle, -1)); }

int PhonemeConverter::CollectOutputs() {
    for (int taken = 0; taken < kMostOutputsAtOnce; ++taken) {
        G2paOutput output = {};
        const int code = m_get(m_handle, &output);
        if (code != kGotOutput)
            return code == kNothingForNow ? 0 : code;
        char text[kPhonemeBytes];
        const int length = JoinSymbols(output, m_language == kEnglish ? " " : "", text, sizeof text);
        m_results.emplace_back(length > 0 ? text : CLyricObject::GetDefaultPhoneme(m_language));
    }
    return -1; // no code of the library's: it would go on for ever
}

CString PhonemeConverter::TakeResult() {
    if (m_results.empty())
        return {};
    CString result = std::move(m_results.front());
    m_results.pop_front();
    return result;
}

} // namespace torv
