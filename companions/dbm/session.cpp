#include "session.h"

#include "folders.h"

namespace dbm {

namespace {

std::unique_ptr<Session> g_session;
int g_uses = 0;

} // namespace

Session::Session() : voices(OwnFolder(), UserFolder()), expressions(OwnFolder(), UserFolder()) {}

Session* Current() { return g_session.get(); }

} // namespace dbm

using namespace dbm;

COMPANION_EXPORT int32_t DBM_CALL DBM_Init(void) {
    return Answer([] {
        if (!g_session)
            g_session = std::make_unique<Session>();
        ++g_uses;
    });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_Delete(void) {
    if (!g_session)
        return DBM_NOT_READY;
    if (--g_uses == 0)
        g_session.reset();
    return DBM_OK;
}

COMPANION_EXPORT int32_t DBM_CALL DBM_ActivateDialog(void*) {
    return WithSession([](Session&) { Fail(DBM_NO_DIALOG); });
}

COMPANION_EXPORT int32_t DBM_CALL DBM_GetVersionString(char* buffer, int32_t size) {
    return Answer([&] { CopyText("DBM reference 1.0", buffer, size); });
}
