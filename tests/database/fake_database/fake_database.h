#pragma once

#include "torv/abi/dbm.h"

/// What the fake database manager answers, and what was asked of it. A test fills it in through FakeDatabaseState().
struct FakeDatabase {
    int32_t initStatus;
    int32_t voiceStatus; ///< of DBM_GetAllVoice; -1 for success without a list, -2 for a list that lacks its array
    int32_t expStatus;   ///< of DBM_GetExpDB, likewise
    int32_t createStatus;
    int32_t deleteStatus;
    int32_t dialogStatus; ///< of VEDIT_OpenDialog

    DBMVoice voices[8];
    int32_t voiceCount;
    DBMTextPair pairs[8]; ///< of every voice; ended by a null name

    struct Expression {
        DBMExpression about;
        DBMExpItem items[6];
        int32_t itemCount;
    } expressions[6];
    int32_t expressionCount;

    char calls[65536];     ///< the entry points that were called, without their prefix, each followed by a blank
    char handedOver[4096]; ///< the file that the last DBM_CreateVirtualExpItem named, as it was then
    char fileName[512];
    int32_t deletedValue;
    int32_t listsOut; ///< item lists that were not given back
    int32_t mostListsOut;
    int32_t infosOut;
};

using FakeDatabaseStateProc = FakeDatabase*(DBM_CALL*)();
