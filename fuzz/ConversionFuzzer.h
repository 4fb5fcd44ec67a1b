// What the parts of the conversion fuzzer share: the promises every call is
// held to (ConversionPromises.cpp), the inputs made from the fuzzer's bytes
// (ConversionInputs.cpp), and the properties checked on them
// (ConversionProperties.cpp); ConversionFuzzer.cpp runs them in turn.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

#include "ModelText.h"
#include "support/PlaylistBuilders.h"

namespace conversion_fuzzer {

namespace Data = Kov::Replivo::Data;
namespace Sequences = Kov::Replivo::Data::Sequences;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Engine = Kov::TimelineEngineModel;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Kov::BusinessEntityModel::BaseTypes::Identifier;
using Kov::TimePoints::Rate;
using Kov::TimePoints::TimeBoundary;

constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int32_t kMax32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin32 = std::numeric_limits<std::int32_t>::min();
// One field at 50/1, in ticks of 100 ns.
constexpr std::int64_t kTicksPerField = 100000;

// Promises. A breach stops the run with its description.
[[noreturn]] void Fail(const std::string& what);
void Require(bool condition, const char* what);
void RequireSame(const std::string& expected, const std::string& actual, const char* what);

// The error must be one the library documents. Only the track conversions may
// refuse a transition; they pass the number the refusal must name.
void RequireDocumentedRefusal(const std::exception& error,
                              std::optional<std::int32_t> playlistNumber);

// Runs an operation that returns the text of its result. The outcome is that
// text, or the refusal, which must be a documented one.
template <typename Operation>
std::string Attempt(Operation&& operation,
                    std::optional<std::int32_t> playlistNumber = std::nullopt) {
  try {
    return "done " + operation();
  } catch (const std::exception& error) {
    RequireDocumentedRefusal(error, playlistNumber);
    return std::string("refused ") + typeid(error).name() + ": " + error.what();
  }
}

template <typename ElementT>
std::optional<std::int32_t> FirstPlaylistNumber(const std::vector<ElementT>& elements) {
  if (elements.empty()) {
    return std::nullopt;
  }
  return elements.front().playlistNumber;
}

// Everything one run converts. The tracks are owned here so that layouts can
// point at tracks that no resource holds; declared first, they die last.
struct Inputs {
  std::vector<std::shared_ptr<Assets::Track>> mediaTracks;
  Sequences::Playlist playlist;
  Sequences::Track<Sequences::VideoElement> videoTrack;
  Sequences::AudioTrack audioTrack;
  std::vector<std::unique_ptr<Sequences::Element>> reportingElements;
  std::shared_ptr<Assets::MediaAssetMap> assets = std::make_shared<Assets::MediaAssetMap>();
};

// The text of every input: equal texts mean unchanged bytes, shared objects
// and owners.
std::string Describe(const Inputs& inputs);

// Turns bytes into inputs. Values are drawn from small ranges, from the edges
// of their types and from raw bytes, so that both plausible sequences and
// hostile ones come up often.
class InputBuilder {
 public:
  explicit InputBuilder(FuzzedDataProvider& bytes) : bytes_(bytes) {}

  Inputs Build();

  std::int64_t Int64();

  std::int32_t Int32();

  Rate PickRate();

  Data::Clips::UmId PickClip();

  // An element kind, mostly a handled one.
  Sequences::Element::Type Kind();

  Conversion::CurrentSequencePlayStatus PickStatus();

  int Count(int most);

  // Texts of the clips that elements and assets draw from, so that most
  // look-ups succeed; "" is the empty clip id, the last one is as long as a
  // clip id can be.
  static constexpr const char* kClipTexts[] = {"", "A", "CAM-A-0031", "CAM-A-003", "12345678901"};

  static Identifier AssetKey(const char* clipText);

  Data::Channels::Speed PickSpeed();

  std::int32_t BoundaryKind();

  // A few values of a few elements changed to values of the fuzzer's choosing.
  void Tweak(Sequences::Playlist& playlist);

 private:
  std::int32_t TransitionKind(std::int32_t last);

  std::int32_t TransitionDuration();

  template <std::size_t N>
  void FillOpaque(std::uint8_t (&opaque)[N]);

  void FillBase(Sequences::Element& element);

  template <typename ElementT>
  ElementT SingleSide();

  void FillAudioVideo(Sequences::AudioVideoElement& element);

  void FillPlaylist(Sequences::Playlist& playlist);

  // A time boundary; an end may be the open end of material still recorded.
  TimeBoundary Boundary(bool mayBeOpen);

  void AddProfiles(Assets::MediaAsset& asset);

  // Insertion into the sorted containers refuses duplicates and null items;
  // such an item is simply left out of the input.
  template <typename Container, typename Item>
  static void InsertIfAccepted(Container& container, const Item& item);

  std::shared_ptr<Assets::TrackLayout> Layout(
      const std::vector<std::shared_ptr<Assets::Track>>& tracks);

  std::shared_ptr<Assets::MediaResource> Resource(
      std::vector<std::shared_ptr<Assets::Track>>& mediaTracks);

  void AddAsset(Assets::MediaAssetMap& assets,
                std::vector<std::shared_ptr<Assets::Track>>& mediaTracks);

  FuzzedDataProvider& bytes_;
};

// Properties, each over every public operation it names.
void ConvertWholePlaylist(const Inputs& inputs, std::int32_t arbitraryMode);
void ConvertParts(const Inputs& inputs, InputBuilder& builder, FuzzedDataProvider& bytes);
void ConvertIdentifiers(FuzzedDataProvider& bytes);
void ConvertGeneratedSequence(InputBuilder& builder, FuzzedDataProvider& bytes);

}  // namespace conversion_fuzzer
