// Loading, letting go of, looking up in and saving a sectioned text file of 5 MB: CxTypedFile, GLib's GKeyFile,
// SimpleIni, Boost's property tree and inih's INIReader (which does not save). Every reader keeps what it has read, so
// that any key can be asked for.
#include "bench_file.h"

#include "torv/typed_file/typed_file.h"

#include <malloc.h>

#include <cstdio>
#include <memory>
#include <random>
#include <string_view>
#include <vector>

#ifdef TORV_HAS_GLIB
#include <glib.h>
#endif
#ifdef TORV_HAS_INIH
#include <INIReader.h>
#endif
#ifdef TORV_HAS_SIMPLEINI
#define SI_NO_CONVERSION
#include <SimpleIni.h>
#endif
#ifdef TORV_HAS_BOOST
#include <boost/property_tree/ini_parser.hpp>
#endif

namespace {

constexpr int kLookUps = 100000;
constexpr int kSections = 2000;
constexpr int kEntries = 155;

struct Section {
    std::string name;
    std::vector<std::pair<std::string, std::string>> entries;
};

std::string Word(std::mt19937& random, size_t least, size_t most) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789_";
    std::string word(least + random() % (most - least + 1), ' ');
    for (char& c : word)
        c = kLetters[random() % kLetters.size()];
    return word;
}

const std::vector<Section>& Sections() {
    static const std::vector<Section> sections = [] {
        std::mt19937 random(20);
        std::vector<Section> made(kSections);
        for (int s = 0; s < kSections; ++s) {
            Section& section = made[static_cast<size_t>(s)];
            section.name = "section_" + std::to_string(s);
            for (int e = 0; e < kEntries; ++e)
                section.entries.emplace_back("k" + std::to_string(e) + "_" + Word(random, 1, 2), Word(random, 3, 8));
        }
        return made;
    }();
    return sections;
}

using Asked = std::vector<std::pair<std::string, std::string>>; // sections and keys

/// The text as CxTypedFile saves it; the others read it all the same.
const std::string& Text() {
    static const std::string text = [] {
        std::string made;
        for (const Section& section : Sections()) {
            made += "[" + section.name + "]\r\n";
            for (const auto& [key, value] : section.entries)
                made += key + " = " + value + "\r\n";
            made += "\r\n";
        }
        return made;
    }();
    return text;
}

const std::string& LoadPath() {
    static const bench::TemporaryFile file("torv_typed_bench_read.ini");
    static const std::string path = [] {
        std::ofstream(file.Path(), std::ios::binary) << Text();
        return file.Path();
    }();
    return path;
}

/// Whether every entry reads as it was made.
template <class ReadAt>
bool HoldsAll(ReadAt readAt) {
    for (const Section& section : Sections())
        for (const auto& [key, value] : section.entries)
            if (readAt(section.name, key) != value)
                return false;
    return true;
}

/// A reader: Load, ReadAt and Save.
struct Typed {
    CxTypedFile file;
    void Load(const std::string& path) { file.Load(path.c_str()); }
    std::string ReadAt(const std::string& section, const std::string& key) const {
        return file.ReadAt(section.c_str(), key.c_str(), nullptr).GetStdString();
    }
    void Save(const std::string& path) { file.SaveAs(path.c_str()); }
};

#ifdef TORV_HAS_GLIB
struct Glib {
    GKeyFile* file = g_key_file_new();
    Glib() = default;
    Glib(const Glib&) = delete;
    Glib& operator=(const Glib&) = delete;
    ~Glib() { g_key_file_free(file); }
    void Load(const std::string& path) { g_key_file_load_from_file(file, path.c_str(), G_KEY_FILE_NONE, nullptr); }
    std::string ReadAt(const std::string& section, const std::string& key) const {
        char* const value = g_key_file_get_value(file, section.c_str(), key.c_str(), nullptr);
        std::string text(value ? value : "");
        g_free(value);
        return text;
    }
    /// Its own way to a file waits for the disk, which the others do not.
    void Save(const std::string& path) {
        gsize size = 0;
        char* const text = g_key_file_to_data(file, &size, nullptr);
        std::ofstream(path, std::ios::binary).write(text, static_cast<std::streamsize>(size));
        g_free(text);
    }
};
#endif

#ifdef TORV_HAS_SIMPLEINI
/// It tells letters by their case here, as the others do.
struct Simple {
    CSimpleIniCaseA file;
    void Load(const std::string& path) { file.LoadFile(path.c_str()); }
    std::string ReadAt(const std::string& section, const std::string& key) const {
        return file.GetValue(section.c_str(), key.c_str(), "");
    }
    void Save(const std::string& path) { file.SaveFile(path.c_str(), false); }
};
#endif

#ifdef TORV_HAS_BOOST
struct Boost {
    boost::property_tree::ptree tree;
    void Load(const std::string& path) { boost::property_tree::read_ini(path, tree); }
    std::string ReadAt(const std::string& section, const std::string& key) const {
        return tree.get<std::string>(section + "." + key);
    }
    void Save(const std::string& path) { boost::property_tree::write_ini(path, tree); }
};
#endif

#ifdef TORV_HAS_INIH
struct Inih {
    INIReader reader{std::string()};
    void Load(const std::string& path) { reader = INIReader(path); }
    std::string ReadAt(const std::string& section, const std::string& key) const {
        return reader.Get(section, key, "");
    }
};
#endif

template <class Reader>
[[gnu::noinline]] void MeasuredLoad(Reader& reader, const std::string& path) {
    reader.Load(path);
    benchmark::ClobberMemory();
}

template <class Reader>
[[gnu::noinline]] void MeasuredFree(std::unique_ptr<Reader>& reader) {
    reader.reset();
}

template <class Reader>
[[gnu::noinline]] size_t MeasuredLookUp(const Reader& reader, const Asked& asked) {
    size_t bytes = 0;
    for (const auto& [section, key] : asked)
        bytes += reader.ReadAt(section, key).size();
    return bytes;
}

template <class Reader>
[[gnu::noinline]] void MeasuredSave(Reader& reader, const std::string& path) {
    reader.Save(path);
}

size_t BytesTaken() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

template <class Reader>
void Load(benchmark::State& state) {
    const std::string& path = LoadPath();
    auto reader = std::make_unique<Reader>();
    const size_t before = BytesTaken();
    reader->Load(path);
    state.counters["memory/file"] = static_cast<double>(BytesTaken() - before) / static_cast<double>(Text().size());
    bench::Expect(state, HoldsAll([&](const auto& section, const auto& key) { return reader->ReadAt(section, key); }));
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        reader.reset();
        reader = std::make_unique<Reader>();
        state.ResumeTiming();
        MeasuredLoad(*reader, path);
    }
    state.counters["MB"] = static_cast<double>(Text().size()) / 1e6;
}

template <class Reader>
void Free(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        auto reader = std::make_unique<Reader>();
        reader->Load(LoadPath());
        state.ResumeTiming();
        MeasuredFree(reader);
    }
}

template <class Reader>
void LookUp(benchmark::State& state) {
    std::mt19937 random(21);
    Asked asked;
    size_t expected = 0;
    for (int i = 0; i < kLookUps; ++i) {
        const Section& section = Sections()[random() % kSections];
        const auto& [key, value] = section.entries[random() % kEntries];
        asked.emplace_back(section.name, key);
        expected += value.size();
    }
    Reader reader;
    reader.Load(LoadPath());
    size_t bytes = expected;
    for ([[maybe_unused]] auto _ : state)
        bytes = MeasuredLookUp(reader, asked);
    bench::Expect(state, bytes == expected);
}

template <class Reader>
void Save(benchmark::State& state) {
    const bench::TemporaryFile file("torv_typed_bench_written.ini");
    Reader reader;
    reader.Load(LoadPath());
    for ([[maybe_unused]] auto _ : state)
        MeasuredSave(reader, file.Path());
    // The forms differ in blanks and line ends; what they hold must not.
    Typed again;
    again.Load(file.Path());
    bench::Expect(state, HoldsAll([&](const auto& section, const auto& key) { return again.ReadAt(section, key); }));
}

void CopyBytes(benchmark::State& state) {
    const bench::TemporaryFile file("torv_typed_bench_copied.ini");
    for ([[maybe_unused]] auto _ : state) {
        CFile written(file.Path().c_str(), CFile::modeCreate | CFile::modeWrite);
        written.Write(Text().data(), static_cast<UINT>(Text().size()));
    }
}

BENCHMARK_TEMPLATE(Load, Typed)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Free, Typed)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(LookUp, Typed)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Save, Typed)->Unit(benchmark::kMillisecond);
#ifdef TORV_HAS_GLIB
BENCHMARK_TEMPLATE(Load, Glib)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Free, Glib)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(LookUp, Glib)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Save, Glib)->Unit(benchmark::kMillisecond);
#endif
#ifdef TORV_HAS_SIMPLEINI
BENCHMARK_TEMPLATE(Load, Simple)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Free, Simple)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(LookUp, Simple)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Save, Simple)->Unit(benchmark::kMillisecond);
#endif
#ifdef TORV_HAS_BOOST
BENCHMARK_TEMPLATE(Load, Boost)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Free, Boost)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(LookUp, Boost)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Save, Boost)->Unit(benchmark::kMillisecond);
#endif
#ifdef TORV_HAS_INIH
BENCHMARK_TEMPLATE(Load, Inih)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Free, Inih)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(LookUp, Inih)->Unit(benchmark::kMillisecond);
#endif
BENCHMARK(CopyBytes)->Unit(benchmark::kMillisecond);

} // namespace
