#include "boxes.h"

#include "torv/lyrics/converter_modules.h"
#include "torv/lyrics/sampa_transformer.h"
#include "values.h"

#include <doctest/doctest.h>

#if !defined(_WIN32)
#include <sys/resource.h>
#endif

#if !defined(_WIN32) && !defined(__SANITIZE_ADDRESS__) // which opens files of its own to look at memory
TEST_CASE("converters: the first that cannot be loaded is reported, and ends it") {
    const Boxes boxes;
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none{0, files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none); // nothing can be opened: this is the first test to load them
    CHECK(torv::LoadConverters() == 0);
    setrlimit(RLIMIT_NOFILE, &files);
    CHECK(boxes.texts == Texts{"Could not load \"G2PA_JPN.DLL\" !"});
    CHECK(boxes.types == std::vector<UINT>{MB_ICONEXCLAMATION | MB_OK});
    CHECK(torv::ConverterModule(0) == nullptr);
}
#endif

TEST_CASE("converters: what was loaded is freed, what a host puts in its place is not") {
    const HMODULE host = LoadLibraryA("FAKE_G2PA_GOOD.DLL");
    REQUIRE(bool(host));
    torv::SetConverterModule(1, host);
    CHECK(torv::LoadConverters() == 1); // the place is taken
    CHECK(Values(torv::ConverterModule(0) != nullptr, torv::ConverterModule(1) == host) == "1 1");
    CHECK(CxSampaTransformer::GetG2PAVersionString(0) == "G2PA_JPN 1.0");
    for (int i = 0; i < 2; ++i) { // a second time does nothing
        torv::FreeConverters();
        for (const int language : {-1, 0, 1, 2})
            CHECK(torv::ConverterModule(language) == nullptr);
    }
    CHECK(bool(torv::EntryPoint<FARPROC>(host, "g2paCreate"))); // the host's is still there
    CHECK(torv::LoadConverters() == 1);
    const HMODULE own = torv::ConverterModule(1);
    torv::SetConverterModule(1, host);
    CHECK_FALSE(bool(torv::EntryPoint<FARPROC>(own, "g2paCreate"))); // and ours has gone
    torv::SetConverterModule(1, nullptr);
    torv::SetConverterModule(2, host);
    CHECK(torv::ConverterModule(2) == nullptr);
    torv::FreeConverters();
    FreeLibrary(host);
}
