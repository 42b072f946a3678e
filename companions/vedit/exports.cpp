// The four entry points.
#include "database.h"
#include "editor.h"
#include "failure.h"
#include "temporary_file.h"
#include "voice_text.h"

#include <memory>

using namespace vedit;

namespace {

std::unique_ptr<Database> g_database;
int g_uses = 0;

template <typename Work>
int32_t Answer(Work work) noexcept {
    return companion::Answer(work, VEDIT_NO_MEMORY, VEDIT_BAD_INPUT);
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

COMPANION_EXPORT int32_t VEDIT_CALL VEDIT_Init(void) {
    return Answer([] {
        if (!g_database)
            g_database = Database::Open();
        Require(g_database != nullptr, VEDIT_NOT_READY);
        ++g_uses;
    });
}

COMPANION_EXPORT int32_t VEDIT_CALL VEDIT_Delete(void) {
    if (!g_database)
        return VEDIT_NOT_READY;
    if (--g_uses == 0)
        g_database.reset();
    return VEDIT_OK;
}

COMPANION_EXPORT int32_t VEDIT_CALL VEDIT_OpenDialog(void*, int32_t* language, int32_t* program) {
    return Answer([&] {
        Require(g_database != nullptr, VEDIT_NOT_READY);
        Require(language && program, VEDIT_NO_SUCH);
        Edit(*language, *program);
    });
}

COMPANION_EXPORT int32_t VEDIT_CALL VEDIT_GetVersionString(char* buffer, int32_t size) {
    return Answer([&] { companion::CopyText("VEDIT reference 1.0", buffer, size, VEDIT_BAD_INPUT); });
}
