#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// What the benchmarks of files share. What is measured stands in functions named "Measured...", never inlined, so that
/// a profiler can be told to count in them alone.
namespace bench {

/// A file of this name among the temporary ones (TMPDIR chooses the disk), gone at the program's end.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& name) : m_path(std::filesystem::temp_directory_path() / name) {}
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string Path() const { return m_path.string(); }
    std::string Bytes() const {
        std::ifstream file(m_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path m_path;
};

/// An order-sensitive sum of what was read, cheap beside reading it.
class Digest {
public:
    void Add(uint64_t value) { m_value = (m_value ^ value) * 0x9E3779B97F4A7C15ULL + 1; }
    bool operator==(const Digest&) const = default;

private:
    uint64_t m_value = 0;
};

/// Every side of a row must have come to the expected result; one that has not is no row at all.
inline void Expect(benchmark::State& state, bool equal) {
    if (!equal)
        state.SkipWithError("the result differs from the expected one");
}

/// The time for each of `count` things that one iteration does, shown in seconds (a "n" behind it: nanoseconds).
inline void CountEach(benchmark::State& state, const char* name, double count) {
    state.counters[name] =
        benchmark::Counter(count, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

} // namespace bench
