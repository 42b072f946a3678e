#pragma once

#include <string>

/// What is wrong with an input file, or with what is to be written: one line for the user (what, where, what to do).
struct InputError {
    std::string message;
};

/// What nobody can have meant, whatever the files hold: one line for the user.
struct WrongUse {
    std::string message;
};
