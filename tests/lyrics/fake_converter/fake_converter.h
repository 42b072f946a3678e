#pragma once

#include "torv/abi/g2pa.h"

/// What the test tells the fake, and what the fake saw: handed over through its entry point "fakeState".
struct FakeState {
    // how to behave
    int createError = 0; ///< what the create numbered createErrorAt answers, if not 0
    int createErrorAt = 0;
    int putErrorAt = -1; ///< number of the put that fails
    int getResult = 0;   ///< an error code instead of an output
    int deleteResult = 0;
    bool holdBack = false; ///< outputs only after the end of input
    int forgetLast = 0;    ///< outputs that never come
    bool endless = false;  ///< outputs never end
    G2paOutput odd = {};   ///< the output in place of each, if there is anything in it
    // what was seen
    int creates = 0, puts = 0, deletes = 0;
    bool padded = true;  ///< each text had zeroes after it up to the room that is promised
    char log[1024] = {}; ///< every call but the gets: "0 create 3|0 480+100 ab|0 end|0 delete|", the handle first
};
using FakeStateProc = FakeState* (*)();
