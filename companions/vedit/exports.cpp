// The four entry points.
#include "database.h"
#include "editor.h"
#include "failure.h"
#include "temporary_file.h"
#include "voice_text.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#if defined(_WIN32)
#define VEDIT_EXPORT extern "C" __declspec(dllexport)
#else
#define VEDIT_EXPORT extern "C" __attribute__((visibility("default")))
#endif

using namespace vedit;

namespace {

std::unique_ptr<Database> g_database;
int g_uses = 0;

/// The border between the library and its host: no exception passes it.
template <typename Work>
int32_t Answer(Work work) noexcept {
    try {
        work();
        return VEDIT_OK;
    } catch (const Failure& failure) {
        return failure.status;
    } catch (const std::bad_alloc&) {
        return VEDIT_NO_MEMORY;
    } catch (...) {
        return VEDIT_BAD_INPUT;
    }
}

void Edit(int32_t language, int32_t program) {
    const Settings settings = g_database->Read(language, program);
    const std::string editor = EditorCommand();
    const TemporaryFile file(Write(settings));
    RunEditor(editor, file.Path());
    const Settings changes = ReadChanges(file.Content(), settings);
    Require(!changes.empty(), VEDIT_CANCELLED);
    g_database->Change(language, program, changes);
}

} // namespace

VEDIT_EXPORT int32_t VEDIT_CALL VEDIT_Init(void) {
    return Answer([] {
        if (!g_database)
            g_database = Database::Open();
        Require(g_database != nullptr, VEDIT_NOT_READY);
        ++g_uses;
    });
}

VEDIT_EXPORT int32_t VEDIT_CALL VEDIT_Delete(void) {
    if (!g_database)
        return VEDIT_NOT_READY;
    if (--g_uses == 0)
        g_database.reset();
    return VEDIT_OK;
}

VEDIT_EXPORT int32_t VEDIT_CALL VEDIT_OpenDialog(void*, int32_t* language, int32_t* program) {
    return Answer([&] {
        Require(g_database != nullptr, VEDIT_NOT_READY);
        Require(language && program, VEDIT_NO_SUCH);
        Edit(*language, *program);
    });
}

VEDIT_EXPORT int32_t VEDIT_CALL VEDIT_GetVersionString(char* buffer, int32_t size) {
    constexpr std::string_view version = "VEDIT reference 1.0";
    if (!buffer || size <= 0)
        return VEDIT_BAD_INPUT;
    const size_t length = std::min(version.size(), static_cast<size_t>(size) - 1);
    std::memcpy(buffer, version.data(), length);
    buffer[length] = '\0';
    return VEDIT_OK;
}
