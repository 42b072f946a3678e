#pragma once

#include "spectral_shape.h"

#include <istream>
#include <map>
#include <string>
#include <vector>

/// What is added to the cepstra of a phone, by its name.
using Colours = std::map<std::string, Cepstrum, std::less<>>;

/// Reads colours: a line a phone, its name and then hundredths for the coefficients after the first, which is the level
/// and stays; those that are not given are zero. Lines that begin with # and empty ones are passed over. Throws
/// std::runtime_error, which names the line, for a phone that is none of `phones` or stands there twice, for what is no
/// number, and for too many.
Colours ReadColours(std::istream& text, const std::vector<std::string>& phones);
