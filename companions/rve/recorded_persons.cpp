#include "recorded_persons.h"

#include "mapped_file.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace rve {

namespace {

// Without its bank a program folds to the synthetic voice that is nearest: 96 to a soprano, 97 to a tenor, 99 to a
// bass. The woman's held vowels are much better understood with the lower larynx of singers; the men's are not.
// The second man's are with lower peaks, the others' are not.
constexpr RecordedPerson kPersons[] = {
    {96, "slt", Tract::Woman, 0.88F, 1}, {97, "rms", Tract::Man, 1, 1}, {99, "awb", Tract::Man, 1, 0.85F}};

struct LoadedBank {
    std::unique_ptr<MappedFile> file;
    VoiceBank bank;
};

std::array<LoadedBank, std::size(kPersons)>& Banks() {
    static std::array<LoadedBank, std::size(kPersons)> banks;
    return banks;
}

/// The folder of the library, or of the program that this is linked into.
std::filesystem::path OwnFolder() {
#if defined(_WIN32)
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&LoadBanks), &module);
    // Wide: the folder's name may have letters that the code page lacks.
    std::array<wchar_t, 32768> name{};
    const DWORD length = GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
    return std::filesystem::path(std::wstring(name.data(), length)).parent_path();
#else
    Dl_info about{};
    if (dladdr(reinterpret_cast<void*>(&LoadBanks), &about) == 0 || !about.dli_fname)
        return {};
    return std::filesystem::path(about.dli_fname).parent_path();
#endif
}

const char* Told(VoiceBank::Fault fault) {
    switch (fault) {
    case VoiceBank::Fault::NoBank:
        return "is no voice bank";
    case VoiceBank::Fault::WrongVersion:
        return "is a voice bank of another version";
    case VoiceBank::Fault::Cut:
        return "is cut short";
    case VoiceBank::Fault::Damaged:
        return "is damaged";
    case VoiceBank::Fault::None:
        break;
    }
    return "";
}

void Load() {
    const std::filesystem::path folder = OwnFolder() / "rve";
    for (size_t i = 0; i < std::size(kPersons); ++i) {
        const std::filesystem::path path = folder / (std::string(kPersons[i].bank) + ".bank");
        LoadedBank& loaded = Banks()[i];
        loaded.file = std::make_unique<MappedFile>(path);
        const char* fault = "cannot be read";
        if (loaded.file->Bytes())
            fault = Told(loaded.bank.Open(loaded.file->Bytes(), loaded.file->Size()));
        if (!loaded.bank.IsOpen())
            std::fprintf(stderr, "RVE: %s %s: a synthetic voice sings instead; build or install it again\n",
                         reinterpret_cast<const char*>(path.u8string().c_str()), fault);
    }
}

} // namespace

void LoadBanks() {
    static std::once_flag once;
    std::call_once(once, Load);
}

const RecordedPerson* PersonOf(int program, const VoiceBank*& bank) {
    for (size_t i = 0; i < std::size(kPersons); ++i)
        if (kPersons[i].program == program && Banks()[i].bank.IsOpen()) {
            bank = &Banks()[i].bank;
            return &kPersons[i];
        }
    return nullptr;
}

} // namespace rve
