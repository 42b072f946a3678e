#include "session.h"

#include "folders.h"

#include <algorithm>
#include <cstring>

namespace dbm {

namespace {

std::unique_ptr<Session> g_session;
int g_uses = 0;

} // namespace

Session::Session() : voices(OwnFolder(), UserFolder()), expressions(OwnFolder(), UserFolder()) {}

Session* Current() { return g_session.get(); }

void CopyText(const std::string& text, char* buffer, int32_t size) {
    Require(buffer && size > 0, DBM_BAD_ARGUMENT);
    const size_t length = std::min(text.size(), static_cast<size_t>(size) - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
}

} // namespace dbm

using namespace dbm;

DBM_EXPORT int32_t DBM_CALL DBM_Init(void) {
    return Answer([] {
        if (!g_session)
            g_session = std::make_unique<Session>();
        ++g_uses;
    });
}

DBM_EXPORT int32_t DBM_CALL DBM_Delete(void) {
    if (!g_session)
        return DBM_NOT_READY;
    if (--g_uses == 0)
        g_session.reset();
    return DBM_OK;
}

DBM_EXPORT int32_t DBM_CALL DBM_ActivateDialog(void*) {
    return WithSession([](Session&) { Fail(DBM_NO_DIALOG); });
}

DBM_EXPORT int32_t DBM_CALL DBM_GetVersionString(char* buffer, int32_t size) {
    return Answer([&] { CopyText("DBM reference 1.0", buffer, size); });
}
