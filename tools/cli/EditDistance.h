// EditDistance: how far apart two words are, to suggest the word meant (a
// command, a finding kind) only when the slip is small.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace TimelineConvert {

// Levenshtein distance: insertions, deletions and substitutions of one byte.
std::size_t EditDistance(const std::string& from, const std::string& to);

// The candidate nearest to `word` when it is close enough to be a slip (an
// edit distance of at most 2, and `word` at least 3 long); empty otherwise.
std::string NearestWord(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace TimelineConvert
