// Findings of the assets: recorded ranges that cannot be what was recorded,
// and the aux item that plays nothing.
#include <algorithm>

#include "analysis/FindingList.h"
#include "document/AssetKeys.h"

namespace TimelineConvert {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
namespace Data = Kov::Replivo::Data;
namespace Engine = Kov::TimelineEngineModel;

// Ranges held sorted by their start: a reversed or empty one, and one that
// starts before an earlier one ends. The values are in 100 ns ticks.
void CheckRecordedRanges(FindingList& findings) {
  const auto& document = findings.Document();
  for (std::size_t position = 0; position < document.assetOrder.size(); ++position) {
    const auto found = document.assets->find(document.assetOrder[position].key);
    if (found == document.assets->end()) {
      continue;
    }
    bool seen = false;
    std::int64_t reach = 0;
    for (const auto& range : found->second.timeBounds) {
      const std::int64_t start = range.start.value;
      const std::int64_t end = range.end.value;
      const Numbers numbers = {{"start", start}, {"end", end}};
      if (end < start) {
        findings.InAsset(position, "reversed-recorded-range",
                         "a recorded range ends (" + std::to_string(end) + ") before it starts (" +
                             std::to_string(start) + ")",
                         numbers, "/timeBounds");
      } else if (end == start) {
        findings.InAsset(position, "empty-recorded-range",
                         "a recorded range starts and ends at " + std::to_string(start), numbers,
                         "/timeBounds");
      } else if (seen && start < reach) {
        findings.InAsset(position, "overlapping-recorded-ranges",
                         "the recorded range from " + std::to_string(start) + " to " +
                             std::to_string(end) + " starts before an earlier one ends (" +
                             std::to_string(reach) + ")",
                         numbers, "/timeBounds");
      }
      if (end > start) {
        reach = seen ? std::max(reach, end) : end;
        seen = true;
      }
    }
  }
}

void CheckAuxItem(FindingList& findings, const Engine::Timeline& timeline) {
  const auto& document = findings.Document();
  const auto& aux = document.playlist.auxTrackUmId;
  if (aux == Data::Clips::UmId::Empty() || timeline.tracks.size() < 2 ||
      timeline.tracks.back().items.empty()) {
    return;
  }
  const auto& item =
      static_cast<const Engine::MediaSummaryItem&>(*timeline.tracks.back().items.front());
  if (item.timelineAudioDuration != 0) {
    return;
  }
  const auto& asset = document.assets->at(AssetKeyOfClip(aux.GetUmId()));
  const bool wholeMaterial = asset.assetKind == 1;
  const auto marked =
      Conversion::TimeConverter::GetShortInAndDurationFromMediaAsset(asset, document.playlist.rate);
  const std::int64_t start = asset.shortBounds.start.value;
  std::string why;
  if (marked.duration == -1) {
    why = wholeMaterial ? "the asset's material has an open end"
                        : "the asset's marked range (shortBounds) has an open end";
  } else if (!wholeMaterial && start == asset.shortBounds.end.value) {
    why = "the asset has no marked range (shortBounds)";
  } else {
    why = std::string("it plays half of the asset's ") +
          (wholeMaterial ? "material" : "marked range") + ", which is " +
          std::to_string(marked.duration) + " frames long";
  }
  findings.InAuxTrack("empty-aux-item", kAuxItemEmpty + why, {{"marked", marked.duration}});
}

}  // namespace TimelineConvert
