#pragma once

#include <string>
#include <vector>

/// An option whose number may be left out, as in "--normalize" and "--normalize -3".
struct OptionalValue {
    const char* option;
    const char* value; ///< that it then has
};

/// Joins such options with the numbers that follow them, or with their own values: "--normalize=-3". A file that is
/// called like a number has to be written with its folder, as in ./3.
std::vector<std::string> WithOptionalValues(const std::vector<std::string>& arguments,
                                            const std::vector<OptionalValue>& options);
