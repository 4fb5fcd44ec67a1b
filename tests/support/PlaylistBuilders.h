// Builders shared by the tests, the reliability checks and the fuzzers: assets
// with recorded ranges given in fields, elements, conversion contexts, the
// asset key of a clip, the named kinds of transitions, the
// highlight sequence worked out by hand, and a short text form of track items,
// so that a whole track is compared in one line. Free of the test framework.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace testing_support {

namespace Data = Kov::Replivo::Data;
namespace Sequences = Kov::Replivo::Data::Sequences;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Engine = Kov::TimelineEngineModel;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Kov::BusinessEntityModel::BaseTypes::Identifier;

// At the 50/1 rate one field is 100,000 ticks; tests count time in fields.
constexpr std::int64_t kTicksPerField = 100000;

// Sequence-side transition kinds, named by where the effect lies against the
// cut. Video kinds 2 to 11 all overlap; 12 to 20 repeat the three alignments.
namespace VideoTransition {
constexpr std::int32_t kNone = 0;
constexpr std::int32_t kCut = 1;
constexpr std::int32_t kOverlapping = 2;
constexpr std::int32_t kEndingAtCut = 12;
constexpr std::int32_t kStartingAtCut = 13;
constexpr std::int32_t kCentredOnCut = 14;
}  // namespace VideoTransition
// Audio kinds 1 and 4 have fixed lengths; 3 to 5 overlap; 6 to 8 align as 12 to 14.
namespace AudioTransition {
constexpr std::int32_t kNone = 0;
constexpr std::int32_t kOverlapping = 3;
constexpr std::int32_t kOverlappingFixed = 4;
constexpr std::int32_t kEndingAtCut = 6;
constexpr std::int32_t kStartingAtCut = 7;
constexpr std::int32_t kCentredOnCut = 8;
}  // namespace AudioTransition

Kov::TimePoints::TimeBounds FieldRange(std::int64_t startField, std::int64_t endField);
// A range that starts at a field and is still being recorded.
Kov::TimePoints::TimeBounds OpenRange(std::int64_t startField);

// The text of a GUID, and the asset key of a clip as the conversion makes it:
// the one place of the tests that knows the text's buffer size.
std::string GuidText(const Data::Guid& guid);
Identifier AssetIdOf(const char* umIdText);

// An asset keyed by its clip's id, with its recorded ranges.
Assets::MediaAsset AssetWithRanges(const char* umIdText,
                                   std::initializer_list<Kov::TimePoints::TimeBounds> ranges);

// An audio-video element playing the same part of its clip on both sides.
Sequences::AudioVideoElement AvElement(const char* umIdText, std::int32_t inKind,
                                       std::int32_t outKind, std::int64_t inValue,
                                       std::int64_t outValue);

// A video or audio element playing a part of its clip.
template <typename ElementT>
ElementT SingleSidedElement(const char* umIdText, std::int32_t inKind, std::int32_t outKind,
                            std::int64_t inValue, std::int64_t outValue) {
  ElementT element;
  element.umId = Data::Clips::UmId(umIdText);
  element.inBoundaryKind = inKind;
  element.outBoundaryKind = outKind;
  element.inValue = inValue;
  element.outValue = outValue;
  return element;
}

// A context at 50/1 holding the given assets.
Conversion::ExternalSequenceInfo InfoWith(std::initializer_list<Assets::MediaAsset> assets,
                                          Identifier timelineId = "TIMELINE00");

// A playlist of the given elements, numbered from 1 in playlist PL3.
Sequences::Playlist PlaylistOf(std::vector<Sequences::AudioVideoElement> elements,
                               const char* auxClip = "");

// The highlight: CAM-A of 1000 + 200 frames (the second range's odd field is
// lost), CAM-B of 500 frames whose layout lists sound, picture and sound
// tracks, AUX with a short range 50 frames in and 200 long; four elements with
// overlapping transitions, a centred one, a speed change and the aux clip.
std::shared_ptr<Assets::MediaAssetMap> HighlightAssets();
Sequences::Playlist HighlightPlaylist();

// "M videoIn+length audioIn+length | mediaVideoIn+length mediaAudioIn+length"
// for a media item (timeline first, then media), "V kind offset/duration" for
// a video transition item (A for audio).
std::string Describe(const Engine::TrackItem& item);
std::vector<std::string> Describe(const Engine::Track& track);

}  // namespace testing_support
