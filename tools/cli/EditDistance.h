// EditDistance: how far apart two words are, to suggest the command meant.
#pragma once

#include <cstddef>
#include <string>

namespace TimelineConvert {

// Levenshtein distance: insertions, deletions and substitutions of one byte.
std::size_t EditDistance(const std::string& from, const std::string& to);

}  // namespace TimelineConvert
