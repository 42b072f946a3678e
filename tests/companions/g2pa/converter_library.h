/// A converter library as a host meets it: loaded from the program's own folder and bound by its entry points' names.
#pragma once

#include "companions/companion_module.h"
#include "torv/abi/g2pa.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace g2pa_test {

using Texts = std::vector<std::string>;

class ConverterLibrary {
public:
    explicit ConverterLibrary(const std::string& name) : m_module(name) {
        m_module.Bind(create, "g2paCreate");
        m_module.Bind(put, "g2paPut");
        m_module.Bind(get, "g2paGet");
        m_module.Bind(remove, "g2paDelete");
        m_module.Bind(version, "g2paGetVersionString");
    }

    G2paCreateProc create = nullptr;
    G2paPutProc put = nullptr;
    G2paGetProc get = nullptr;
    G2paDeleteProc remove = nullptr;
    G2paGetVersionStringProc version = nullptr;

    /// Puts one element. The record is exactly as long as the text asks for, so that a read past it is seen.
    int32_t Put(int32_t handle, std::string_view text) const {
        const size_t bytes = offsetof(G2paInput, text) + text.size() + 1;
        const auto record = std::make_unique<char[]>(bytes);
        std::memset(record.get(), 0, bytes);
        std::memcpy(record.get() + offsetof(G2paInput, text), text.data(), text.size());
        return put(handle, record.get());
    }

    /// Every output that is ready, the slots' bytes joined with `separator`. Fails on anything malformed.
    Texts Take(int32_t handle, const char* separator) const {
        Texts outputs;
        G2paOutput record;
        for (;;) {
            std::memset(static_cast<void*>(&record), 0x55, sizeof record);
            const int32_t result = get(handle, &record);
            if (result == G2PA_NO_OUTPUT_NOW)
                return outputs;
            const bool isWhole = result == G2PA_OK && record.count >= 0 && record.count <= G2PA_MAX_SLOTS;
            if (!isWhole)
                FAIL("result ", result, ", count ", record.count);
            std::string joined;
            for (int32_t i = 0; i < record.count; ++i) {
                const char* slot = record.slots[i];
                joined.append(i ? separator : "").append(slot, std::find(slot, slot + G2PA_SLOT_BYTES, '\0'));
            }
            outputs.push_back(joined);
        }
    }

private:
    CompanionModule m_module;
};

/// A whole song through one converter; outputs are taken after each put for which `takesNow`, and at the end.
template <class Takes>
Texts Convert(const ConverterLibrary& library, const Texts& elements, const char* separator, Takes takesNow) {
    const int32_t handle = library.create(4);
    REQUIRE(handle > 0);
    Texts outputs;
    const auto collect = [&] {
        for (std::string& output : library.Take(handle, separator))
            outputs.push_back(std::move(output));
    };
    bool onePutOneOutput = true;
    size_t puts = 0;
    for (const std::string& element : elements) {
        onePutOneOutput &= library.Put(handle, element) == G2PA_OK;
        if (takesNow())
            collect();
        onePutOneOutput &= outputs.size() <= ++puts;
    }
    CHECK(library.put(handle, nullptr) == G2PA_OK);
    collect();
    CHECK(library.remove(handle) == G2PA_OK);
    CHECK(onePutOneOutput);
    CHECK(outputs.size() == elements.size());
    return outputs;
}
inline Texts Convert(const ConverterLibrary& library, const Texts& elements, const char* separator) {
    return Convert(library, elements, separator, [] { return true; });
}

/// The pieces of a text between blanks.
inline Texts Split(const std::string& text) {
    Texts pieces;
    for (size_t at = text.find_first_not_of(' '); at != text.npos; at = text.find_first_not_of(' ', at)) {
        const size_t end = std::min(text.find(' ', at), text.size());
        pieces.push_back(text.substr(at, end - at));
        at = end;
    }
    return pieces;
}

} // namespace g2pa_test
