// The edit distance in one row of the table at a time.
#include "cli/EditDistance.h"

#include <algorithm>
#include <vector>

namespace TimelineConvert {

std::size_t EditDistance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  for (std::size_t j = 0; j <= to.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= from.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t above = row[j];
      row[j] =
          std::min({row[j] + 1, row[j - 1] + 1, diagonal + (from[i - 1] == to[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[to.size()];
}

std::string NearestWord(const std::string& word, const std::vector<std::string>& candidates) {
  constexpr std::size_t kLargestSlip = 2;
  constexpr std::size_t kShortestWord = 3;
  std::string nearest;
  std::size_t best = kLargestSlip + 1;
  if (word.size() < kShortestWord) {
    return nearest;
  }
  for (const std::string& candidate : candidates) {
    const std::size_t distance = EditDistance(word, candidate);
    if (distance < best) {
      best = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace TimelineConvert
