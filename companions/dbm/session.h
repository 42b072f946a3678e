/// Everything that lives from the first DBM_Init to the last DBM_Delete.
#pragma once

#include "expression_store.h"
#include "failure.h"
#include "handed_out.h"
#include "voice_store.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace dbm {

using VoicesOut = HandedOut<DBMVoiceList, DBMVoice, VirtualVoice>;
using ParametersOut = HandedOut<DBMVoiceParameters, DBMTextPair, std::pair<std::string, std::string>>;
struct InstalledVoiceList {
    int32_t count;
    const DBMInstalledVoice* voices;
};
using InstalledOut = HandedOut<InstalledVoiceList, DBMInstalledVoice, InstalledVoice>;
using DatabasesOut = HandedOut<DBMExpDatabaseList, DBMExpDatabase, Database>;
using ExpressionsOut = HandedOut<DBMExpInfo, DBMExpression, Expression>;
using ItemsOut = HandedOut<DBMExpItems, DBMExpItem, Item>;

struct Session {
    Session();

    VoiceStore voices;
    ExpressionStore expressions;

    // The last that each entry point handed out.
    std::unique_ptr<VoicesOut> allVoices;
    std::unique_ptr<InstalledOut> voice;
    std::unique_ptr<ParametersOut> voiceParameters, singerParameters;
    std::unique_ptr<DatabasesOut> databases;
    // Those that the host gives back; what it forgets goes with the session.
    std::vector<std::unique_ptr<ExpressionsOut>> infos;
    std::vector<std::unique_ptr<ItemsOut>> items;
};

/// Null before DBM_Init and after DBM_Delete.
Session* Current();

/// The answer of an entry point.
template <typename Work>
int32_t Answer(Work work) noexcept {
    return companion::Answer(work, DBM_NO_MEMORY, DBM_FILE_ERROR);
}

template <typename Work>
int32_t WithSession(Work work) noexcept {
    Session* const session = Current();
    return session ? Answer([&] { work(*session); }) : static_cast<int32_t>(DBM_NOT_READY);
}

/// Writes a text into a host's buffer, cut to its size.
inline void CopyText(const std::string& text, char* buffer, int32_t size) {
    companion::CopyText(text, buffer, size, DBM_BAD_ARGUMENT);
}

} // namespace dbm
