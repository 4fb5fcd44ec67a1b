// The benchmarks' inputs from the shared generator, with one fixed seed.
#include "SyntheticInput.h"

#include <stdexcept>
#include <utility>

#include "support/SequenceGenerator.h"

namespace TimelineEngineBench {

namespace {

constexpr std::uint64_t kSeed = 42;

}  // namespace

SyntheticInput MakeSyntheticInput(std::size_t elementCount, std::size_t rangesPerAsset) {
  if (rangesPerAsset == 0 || rangesPerAsset > static_cast<std::size_t>(kAssetFrames)) {
    throw std::invalid_argument("an asset holds 1 to kAssetFrames ranges");
  }
  testing_support::SequenceShape shape;
  shape.elements = elementCount;
  shape.clips = kAssetCount;
  shape.minRanges = shape.maxRanges = rangesPerAsset;
  shape.assetFrames = kAssetFrames;
  shape.trackLayouts = true;
  testing_support::GeneratedSequence generated = testing_support::GenerateSequence(kSeed, shape);
  return {std::move(generated.playlist), std::move(generated.assets)};
}

}  // namespace TimelineEngineBench
