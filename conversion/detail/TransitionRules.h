// How an element's transition becomes an effect: the offset before the cut and
// the length follow from the transition's kind and its duration, by table.
// Shared by TimeConverter's transition bounds and the track conversion, which
// reads the kind and duration straight from its elements. Internal to the
// library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "../../engine-model/TransitionEffect.h"
#include "TimeUnits.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

// How the offset and the length follow from the duration d (frames).
enum class Amount : std::uint8_t { Zero, One, Two, Full, Half };

struct TransitionRule {
  std::int32_t effectKind;
  Amount offset;
  Amount duration;
};

constexpr std::int64_t Resolve(Amount amount, std::int64_t d) {
  switch (amount) {
    case Amount::One:
      return 1;
    case Amount::Two:
      return 2;
    case Amount::Full:
      return d;
    case Amount::Half:
      return d / 2;
    case Amount::Zero:
      break;
  }
  return 0;
}

// Video kinds 1 to 20. Kinds 12 to 20 are three groups of three alignments:
// ending at the cut (offset d), starting at it (0), centred on it (d/2).
constexpr std::array<TransitionRule, 20> kVideoRules = {{
    {1, Amount::Zero, Amount::Zero},  // 1
    {2, Amount::Full, Amount::Full},  // 2
    {2, Amount::Full, Amount::Full},  // 3
    {2, Amount::Full, Amount::Full},  // 4
    {2, Amount::Full, Amount::Full},  // 5
    {2, Amount::Full, Amount::Full},  // 6
    {2, Amount::Full, Amount::Full},  // 7
    {2, Amount::Full, Amount::Full},  // 8
    {2, Amount::Full, Amount::Full},  // 9
    {2, Amount::Full, Amount::Full},  // 10
    {2, Amount::Full, Amount::Full},  // 11
    {1, Amount::Full, Amount::Full},  // 12
    {1, Amount::Zero, Amount::Full},  // 13
    {1, Amount::Half, Amount::Full},  // 14
    {1, Amount::Full, Amount::Full},  // 15
    {1, Amount::Zero, Amount::Full},  // 16
    {1, Amount::Half, Amount::Full},  // 17
    {1, Amount::Full, Amount::Full},  // 18
    {1, Amount::Zero, Amount::Full},  // 19
    {1, Amount::Half, Amount::Full},  // 20
}};

// Audio kinds 1 to 8; kinds 1 and 4 have fixed lengths whatever the duration.
constexpr std::array<TransitionRule, 8> kAudioRules = {{
    {1, Amount::One, Amount::Two},    // 1
    {1, Amount::Zero, Amount::Zero},  // 2
    {2, Amount::Full, Amount::Full},  // 3
    {2, Amount::Zero, Amount::One},   // 4
    {2, Amount::Zero, Amount::Full},  // 5
    {1, Amount::Full, Amount::Full},  // 6
    {1, Amount::Zero, Amount::Full},  // 7
    {1, Amount::Half, Amount::Full},  // 8
}};

// An effect's values without its name, which no table gives.
struct EffectValues {
  std::int32_t kind = 0;
  std::int64_t offset = 0;
  std::int64_t duration = 0;
};

// The values of transition kind k (1-based) with a duration in fields; a kind
// outside the table gives the values of the empty effect.
template <std::size_t N>
EffectValues EffectValuesOf(const std::array<TransitionRule, N>& rules, std::int32_t k,
                            std::int32_t durationInFields) {
  EffectValues values;
  if (k < 1 || static_cast<std::size_t>(k) > N) {
    return values;
  }
  const TransitionRule& rule = rules[static_cast<std::size_t>(k) - 1];
  const std::int64_t d = ToFrames(Fields{durationInFields}).count;
  values.kind = rule.effectKind;
  values.offset = Resolve(rule.offset, d);
  values.duration = Resolve(rule.duration, d);
  return values;
}

// The effect of transition kind k with a duration in fields; a kind outside
// the table gives the empty effect.
template <std::size_t N>
TimelineEngineModel::TransitionEffect ToEffect(const std::array<TransitionRule, N>& rules,
                                               std::int32_t k, std::int32_t durationInFields) {
  const EffectValues values = EffectValuesOf(rules, k, durationInFields);
  TimelineEngineModel::TransitionEffect effect;
  effect.kind = values.kind;
  effect.offset = values.offset;
  effect.duration = values.duration;
  return effect;
}

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
