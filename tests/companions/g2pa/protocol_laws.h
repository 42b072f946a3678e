/// What holds of every converter library, whatever its language.
#pragma once

#include "allocation_failure.h"
#include "companions/g2pa/converter_library.h"
#include "torv/lyrics/phonetic_dic.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <thread>

namespace g2pa_test {

/// The same row of numbers on every system.
struct Random {
    uint32_t Below(uint32_t limit) { return static_cast<uint32_t>(numbers()) % limit; }
    std::mt19937 numbers{20};
};

/// Whether the library knows it.
inline bool IsSymbol(const std::string& text, int language) {
    for (unsigned i = 0; const char* const symbol = CxPhoneticDic::GetSAMPAString(i, language); ++i)
        if (text == symbol)
            return true;
    return false;
}

/// Songs of random bytes, and of pieces of `words` (text, hyphens, marks), up to well past the declared text size.
inline Texts RandomSong(Random& random, const Texts& words) {
    Texts song(1 + random.Below(12));
    for (std::string& element : song) {
        const uint32_t kind = random.Below(40);
        const uint32_t size = kind == 0 ? 1000 : random.Below(8);
        for (uint32_t i = 0; i < size; ++i) {
            if (kind < 12)
                element.push_back(static_cast<char>(1 + random.Below(255)));
            else
                element += words[random.Below(static_cast<uint32_t>(words.size()))];
        }
    }
    return song;
}

inline void CheckHandles(const ConverterLibrary& library) {
    const int32_t first = library.create(0);
    const int32_t second = library.create(0xFFFFFFFFu);
    CHECK(first > 0);
    CHECK(second > 0);
    CHECK(first != second);
    G2paOutput output;
    CHECK(library.get(first, &output) == G2PA_NO_OUTPUT_NOW); // nothing was put
    CHECK(library.Put(first, "a") == G2PA_OK);
    CHECK(library.put(first, nullptr) == G2PA_OK);
    CHECK(library.Put(first, "a") == G2PA_INPUT_ENDED);
    CHECK(library.put(first, nullptr) == G2PA_INPUT_ENDED);
    CHECK(library.get(first, nullptr) == G2PA_BAD_RECORD); // and the output is still there
    CHECK(library.get(second, &output) == G2PA_NO_OUTPUT_NOW);
    CHECK(library.get(first, &output) == G2PA_OK);
    CHECK(output.count == 1);
    CHECK(library.get(first, &output) == G2PA_NO_OUTPUT_NOW);
    CHECK(library.remove(first) == G2PA_OK);
    for (const int32_t handle : {first, 0, -1, INT32_MIN, INT32_MAX}) {
        CHECK(library.Put(handle, "a") == G2PA_BAD_HANDLE);
        CHECK(library.put(handle, nullptr) == G2PA_BAD_HANDLE);
        CHECK(library.get(handle, &output) == G2PA_BAD_HANDLE);
        CHECK(library.remove(handle) == G2PA_BAD_HANDLE);
    }
    CHECK(library.Put(second, "a") == G2PA_OK);
    CHECK(library.remove(second) == G2PA_OK); // with an element held back, and its output not taken
}

/// One output for each element, of known symbols only; and when the host takes them changes nothing.
inline void CheckRandomSongs(const ConverterLibrary& library, const Texts& words, int language) {
    Random random;
    for (int round = 0; round < 400; ++round) {
        const Texts song = RandomSong(random, words);
        const Texts eager = Convert(library, song, " ");
        const Texts late = Convert(library, song, " ", [&] { return random.Below(3) == 0; });
        CHECK(late == eager);
        std::string unknown;
        for (const std::string& output : eager)
            for (const std::string& symbol : Split(output))
                if (!IsSymbol(symbol, language))
                    unknown += symbol + " ";
        CHECK(unknown == "");
    }
}

/// What there is no memory for is refused and has not happened: put again, the song comes out the same.
inline void CheckRefusedMemory(const ConverterLibrary& library, const Texts& song) {
    const Texts whole = Convert(library, song, " ");
    FailEachAllocation([&](AllocationFailure& failure) {
        const int32_t handle = library.create(1);
        for (size_t i = 0; i <= song.size(); ++i) {
            G2paInput record{};
            if (i < song.size())
                song[i].copy(record.text, sizeof record.text);
            const auto put = [&] { return library.put(handle, i < song.size() ? &record : nullptr); };
            const int32_t code = failure.During(put);
            const bool isTakenInTheEnd = code == G2PA_OK || (code == G2PA_NO_MEMORY && put() == G2PA_OK);
            CHECK(isTakenInTheEnd);
        }
        CHECK(library.Take(handle, " ") == whole);
        library.remove(handle);
    });
}

/// Converters in four threads at once give what one alone gives.
inline void CheckThreads(const ConverterLibrary& library, const Texts& song, const char* separator) {
    const Texts alone = Convert(library, song, separator);
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round)
                CHECK(Convert(library, song, separator) == alone);
        });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace g2pa_test
