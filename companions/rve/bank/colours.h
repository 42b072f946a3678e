#pragma once

#include "spectral_shape.h"

#include <istream>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// What is added to the cepstra of a phone's state, by the phone's name and the state's number.
using Colours = std::map<std::pair<std::string, int>, Cepstrum>;

/// Reads colours: a line a state of a phone, the phone's name, the state's number from 0 and then hundredths for the
/// coefficients after the first, which is the level and stays; those that are not given are zero. Lines that begin with
/// # and empty ones are passed over. Throws std::runtime_error, which names the line, for a phone that is none of
/// `phones`, a state that it does not have or that stands there twice, for what is no number, and for too many.
Colours ReadColours(std::istream& text, const std::vector<std::string>& phones);
