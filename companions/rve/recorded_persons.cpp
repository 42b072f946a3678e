#include "recorded_persons.h"

#include "mapped_file.h"

#include <array>
#include <cstdio>
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
// bass.
constexpr RecordedPerson kPersons[] = {{96, "slt", Tract::Woman}, {97, "rms", Tract::Man}, {99, "awb", Tract::Man}};

struct LoadedBank {
    std::unique_ptr<MappedFile> file;
    VoiceBank bank;
};

std::array<LoadedBank, std::size(kPersons)>& Banks() {
    static std::array<LoadedBank, std::size(kPersons)> banks;
    return banks;
}

/// The folder of the library, or of the program that this is linked into, with a separator.
std::string OwnFolder() {
    std::string path;
#if defined(_WIN32)
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&LoadBanks), &module);
    char name[MAX_PATH] = {};
    if (GetModuleFileNameA(module, name, MAX_PATH) < MAX_PATH)
        path = name;
#else
    Dl_info about{};
    if (dladdr(reinterpret_cast<void*>(&LoadBanks), &about) != 0 && about.dli_fname)
        path = about.dli_fname;
#endif
    const size_t end = path.find_last_of("/\\");
    return end == std::string::npos ? std::string() : path.substr(0, end + 1);
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
    const std::string folder = OwnFolder() + "rve/";
    for (size_t i = 0; i < std::size(kPersons); ++i) {
        const std::string path = folder + kPersons[i].bank + ".bank";
        LoadedBank& loaded = Banks()[i];
        loaded.file = std::make_unique<MappedFile>(path.c_str());
        const char* fault = "cannot be read";
        if (loaded.file->Bytes())
            fault = Told(loaded.bank.Open(loaded.file->Bytes(), loaded.file->Size()));
        if (!loaded.bank.IsOpen())
            std::fprintf(stderr, "RVE: %s %s: a synthetic voice sings instead; build or install it again\n",
                         path.c_str(), fault);
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
