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
// starts before an earlier one ends. The values are in 100 ns ticks: the
// range's start and end, then how far the earlier ones reach.
constexpr const char* kRangeNumbers[] = {"start", "end", nullptr};

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
      if (end < start) {
        findings.InAsset(position, FindingKind::ReversedRecordedRange, kRangeNumbers, {start, end},
                         "/timeBounds");
      } else if (end == start) {
        findings.InAsset(position, FindingKind::EmptyRecordedRange, kRangeNumbers, {start, end},
                         "/timeBounds");
      } else if (seen && start < reach) {
        findings.InAsset(position, FindingKind::OverlappingRecordedRanges, kRangeNumbers,
                         {start, end, reach}, "/timeBounds");
      }
      if (end > start) {
        reach = seen ? std::max(reach, end) : end;
        seen = true;
      }
    }
  }
}

void RecordedRangeMessage(std::string& out, const Finding& finding, const FindingSource&) {
  const std::string start = std::to_string(finding.values[0]);
  const std::string end = std::to_string(finding.values[1]);
  switch (finding.kind) {
    case FindingKind::ReversedRecordedRange:
      out += "a recorded range ends (" + end + ") before it starts (" + start + ")";
      break;
    case FindingKind::EmptyRecordedRange:
      out += "a recorded range starts and ends at " + start;
      break;
    default:
      out += "the recorded range from " + start + " to " + end +
             " starts before an earlier one ends (" + std::to_string(finding.values[2]) + ")";
      break;
  }
}

// One aux item at most: held in words.
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
  findings.Spelled(FindingKind::EmptyAuxItem, DocumentPlace::AuxTrack(document),
                   kAuxItemEmpty + why, {{"marked", marked.duration}});
}

}  // namespace TimelineConvert
