// A database manager and a voice editor in one library, which answer what a test told them.
#include "fake_database.h"

#include "torv/abi/vedit.h"

#include <cstdio>
#include <cstring>

#if defined(_WIN32)
#define ENTRY extern "C" __declspec(dllexport)
#else
#define ENTRY extern "C" __attribute__((visibility("default")))
#endif

namespace {

FakeDatabase g_state;
DBMVoiceList g_voices;
DBMVoiceParameters g_parameters;
DBMExpression g_expressions[6];
DBMExpInfo g_info;
DBMExpItems g_items[6];
constexpr DBMExpDatabase kDatabase{1, 0, "Fake"};
constexpr DBMExpDatabaseList kDatabases{1, &kDatabase};

int32_t Called(const char* name, int32_t status = DBM_OK) {
    if (std::strlen(g_state.calls) + std::strlen(name) + 2 < sizeof g_state.calls)
        std::strcat(std::strcat(g_state.calls, name), " ");
    return status;
}

template <class Type>
int32_t List(const char* name, int32_t status, const Type** result) {
    static constexpr Type kHollow{1, nullptr};
    if (status < 0)
        *result = status == -1 ? nullptr : &kHollow;
    return Called(name, status < 0 ? DBM_OK : status);
}

} // namespace

ENTRY FakeDatabase* DBM_CALL FakeDatabaseState() { return &g_state; }

ENTRY int32_t DBM_CALL DBM_Init() { return Called("Init", g_state.initStatus); }
ENTRY int32_t DBM_CALL DBM_Delete() { return Called("Delete"); }
#if !defined(FAKE_DBM_LEAN)
ENTRY int32_t DBM_CALL DBM_AddVoice(const char*) { return Called("AddVoice"); }
ENTRY int32_t DBM_CALL DBM_DeleteVoice(int32_t) { return Called("DeleteVoice"); }
#endif
ENTRY int32_t DBM_CALL DBM_ActivateDialog(void*) { return Called("ActivateDialog"); }
ENTRY int32_t DBM_CALL DBM_GetVersionString(char*, int32_t) { return Called("GetVersionString"); }
ENTRY int32_t DBM_CALL DBM_CreateVirtualVoice(int32_t, int32_t, const char*, int32_t*) { return DBM_FULL; }
ENTRY int32_t DBM_CALL DBM_GetVirtualVoiceName(int32_t language, int32_t program, char* buffer, int32_t size) {
    for (int i = 0; i < g_state.voiceCount; ++i)
        if (g_state.voices[i].language == language && g_state.voices[i].program == program) {
            std::snprintf(buffer, static_cast<size_t>(size), "%s", g_state.voices[i].name);
            return DBM_OK;
        }
    return DBM_NO_SUCH;
}
ENTRY int32_t DBM_CALL DBM_DeleteVirtualVoice(int32_t, int32_t) { return DBM_READ_ONLY; }
ENTRY int32_t DBM_CALL DBM_CopyVirtualVoice(int32_t, int32_t, const char*, int32_t*) { return DBM_FULL; }
ENTRY int32_t DBM_CALL DBM_GetVirtualVoiceParameters(int32_t, int32_t, const DBMVoiceParameters** result) {
    g_parameters = {0, g_state.pairs};
    *result = &g_parameters;
    return DBM_OK;
}
ENTRY int32_t DBM_CALL DBM_SetVirtualVoiceParameters(int32_t, int32_t, const DBMTextPair*) { return DBM_READ_ONLY; }
ENTRY int32_t DBM_CALL DBM_MoveVirtualVoice(int32_t, int32_t, int32_t, int32_t) { return DBM_READ_ONLY; }
ENTRY int32_t DBM_CALL DBM_SetVirtualVoiceName(int32_t, int32_t, const char*) { return DBM_READ_ONLY; }
ENTRY int32_t DBM_CALL DBM_GetVoice(int32_t, const DBMInstalledVoice**) { return DBM_NO_SUCH; }
ENTRY int32_t DBM_CALL DBM_GetVoiceParameters(int32_t, const DBMVoiceParameters**) { return DBM_NO_SUCH; }
ENTRY int32_t DBM_CALL DBM_GetAllVoice(const DBMVoiceList** result) {
    g_voices = {g_state.voiceCount, g_state.voices};
    *result = &g_voices;
    return List("GetAllVoice", g_state.voiceStatus, result);
}
ENTRY int32_t DBM_CALL DBM_AddExp(const char*) { return DBM_FULL; }
ENTRY int32_t DBM_CALL DBM_DeleteExp(int32_t) { return DBM_READ_ONLY; }
ENTRY int32_t DBM_CALL DBM_GetExpDB(const DBMExpDatabaseList** result) {
    *result = &kDatabases;
    return List("GetExpDB", g_state.expStatus, result);
}
ENTRY int32_t DBM_CALL DBM_GetVirtualExpInfo(int32_t, const DBMExpInfo** result) {
    for (int i = 0; i < g_state.expressionCount; ++i)
        g_expressions[i] = g_state.expressions[i].about;
    g_info = {g_state.expressionCount, g_expressions};
    *result = &g_info;
    ++g_state.infosOut;
    return DBM_OK;
}
ENTRY int32_t DBM_CALL DBM_DeleteVirtualExpInfo(const DBMExpInfo*) {
    --g_state.infosOut;
    return DBM_OK;
}
ENTRY int32_t DBM_CALL DBM_GetVirtualExpItems(int32_t, int32_t high, int32_t low, const DBMExpItems** result) {
    for (int i = 0; i < g_state.expressionCount; ++i) {
        FakeDatabase::Expression& expression = g_state.expressions[i];
        if (expression.about.high != high || expression.about.low != low)
            continue;
        g_items[i] = {expression.itemCount, expression.items};
        *result = &g_items[i];
        if (++g_state.listsOut > g_state.mostListsOut)
            g_state.mostListsOut = g_state.listsOut;
        return Called("GetVirtualExpItems");
    }
    return DBM_NO_SUCH;
}
ENTRY int32_t DBM_CALL DBM_DeleteVirtualExpItems(const DBMExpItems*) {
    --g_state.listsOut;
    return Called("DeleteVirtualExpItems");
}
ENTRY int32_t DBM_CALL DBM_SetVirtualExpItemCaption(int32_t, int32_t, int32_t, uint32_t, const char*) {
    return Called("SetVirtualExpItemCaption");
}
ENTRY int32_t DBM_CALL DBM_CreateVirtualExpItem(int32_t, int32_t, int32_t, uint32_t value, const char*,
                                                const char* fileName, const char*, const char*, const char*) {
    for (int i = 0; i < g_state.expressionCount; ++i)
        for (int k = 0; k < g_state.expressions[i].itemCount; ++k)
            if (g_state.expressions[i].items[k].user && g_state.expressions[i].items[k].value == value)
                return Called("CreateVirtualExpItem", DBM_EXISTS);
    std::snprintf(g_state.fileName, sizeof g_state.fileName, "%s", fileName);
    std::memset(g_state.handedOver, 0, sizeof g_state.handedOver);
    if (std::FILE* const file = std::fopen(fileName, "rb")) {
        static_cast<void>(std::fread(g_state.handedOver, 1, sizeof g_state.handedOver - 1, file));
        std::fclose(file);
    }
    return Called("CreateVirtualExpItem", g_state.createStatus);
}
#if !defined(FAKE_DBM_INCOMPLETE)
ENTRY int32_t DBM_CALL DBM_DeleteVirtualExpItem(int32_t, int32_t, int32_t, uint32_t value) {
    g_state.deletedValue = static_cast<int32_t>(value);
    return Called("DeleteVirtualExpItem", g_state.deleteStatus);
}
#endif

ENTRY int32_t VEDIT_CALL VEDIT_Init() { return Called("EditorInit", VEDIT_NO_MEMORY); } // nobody is to look at it
ENTRY int32_t VEDIT_CALL VEDIT_Delete() { return Called("EditorDelete"); }
#if !defined(FAKE_DBM_INCOMPLETE)
ENTRY int32_t VEDIT_CALL VEDIT_OpenDialog(void*, int32_t* language, int32_t* program) {
    *language = 1;
    *program = 3;
    return Called("OpenDialog", g_state.dialogStatus);
}
#endif
#if !defined(FAKE_DBM_LEAN)
ENTRY int32_t VEDIT_CALL VEDIT_GetVersionString(char*, int32_t) { return VEDIT_OK; }
#endif
