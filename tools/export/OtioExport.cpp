// Builds the OpenTimelineIO document from the engine model: per engine track
// one track for the picture and one for the sound. This part writes the
// timeline and its metadata and runs the checks; OtioPlacement.cpp places the
// items on the tracks and OtioObjects.cpp writes the format's objects. The
// text is written straight into one string as the walk goes, so the export
// costs little more than its output.
#include "export/OtioExport.h"

#include <algorithm>
#include <cstdint>
#include <sstream>

#include "document/PlaylistDocument.h"
#include "export/EdlInput.h"
#include "export/OtioDocumentWriter.h"

namespace TimelineConvert {
namespace OtioWriting {

using Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;

// Writes into `sink` when given, a block at a time; only checks otherwise.
DocumentWriter::DocumentWriter(const Engine::Timeline& timeline, const OtioExportOptions& options,
                               std::vector<OtioNote>* approximations, std::ostream* sink)
    : timeline_(timeline),
      options_(options),
      approximations_(approximations),
      sink_(sink),
      json_(buffer_, options.compact, sink == nullptr),
      rate_(static_cast<double>(options.rate.numerator) /
            static_cast<double>(options.rate.denominator)) {
  for (const auto& info : timeline.mediaInfos) {
    mediaInfos_.emplace(info.id.Text(), &info);  // the first of equal ids wins
  }
}

void DocumentWriter::Document() {
  std::vector<SideTrackPlan> plans;
  std::int64_t longest = 0;
  for (std::size_t index = 0; index < timeline_.tracks.size(); ++index) {
    for (const Side side : {Side::Picture, Side::Sound}) {
      if (const auto end = SideEnd(timeline_.tracks[index], side)) {
        plans.push_back({index, side, *end});
        longest = std::max(longest, *end);
      }
    }
  }
  // Every track lasts as long as the engine's timeline, so that its
  // duration (and the duration mode behind it) travels; a track that is
  // longer sets the length instead.
  length_ = std::max(longest, timeline_.duration);
  const bool fromItems = options_.durationMode == TimelineConverter::FromTrackItems;
  json_.BeginObject().Member("OTIO_SCHEMA", "Timeline.1").Key("metadata").BeginObject();
  json_.Key(kEngineFields).BeginObject();
  json_.Member("id", timeline_.id.Text())
      .Member("duration", timeline_.duration)
      .Member("durationMode", fromItems ? "FromTrackItems" : "FromPlaylist");
  if (length_ != timeline_.duration) {
    json_.Member("trackLength", length_);
  }
  json_.Key("rate")
      .BeginObject()
      .Member("numerator", options_.rate.numerator)
      .Member("denominator", options_.rate.denominator)
      .EndObject();
  json_.EndObject().EndObject();
  json_.Member("name", options_.timelineName.empty() ? timeline_.id.Text() : options_.timelineName);
  json_.Key("global_start_time");
  Time(0);
  json_.Key("tracks").BeginObject().Member("OTIO_SCHEMA", "Stack.1");
  json_.Key("metadata").BeginObject().EndObject().Member("name", "tracks");
  json_.Key("source_range").Null();
  json_.Key("effects").BeginArray().EndArray().Key("markers").BeginArray().EndArray();
  json_.Key("enabled").Bool(true).Key("children").BeginArray();
  for (const auto& plan : plans) {
    SideTrack(timeline_.tracks[plan.index], plan.index, plan.side);
  }
  json_.EndArray().EndObject().EndObject();
  buffer_ += '\n';
  Drain(0);
}

// Hands the text written so far to the sink once it holds `atLeast` bytes.
void DocumentWriter::Drain(std::size_t atLeast) {
  if (sink_ != nullptr && buffer_.size() >= atLeast) {
    sink_->write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    buffer_.clear();
  }
}

void DocumentWriter::Approximate(const std::string& itemId, std::optional<std::uint32_t> element,
                                 std::string text) {
  if (approximations_ != nullptr) {
    approximations_->push_back({itemId, std::move(text), element, aux_});
  }
}

}  // namespace OtioWriting

namespace {

namespace Engine = Kov::TimelineEngineModel;
using Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;
using OtioWriting::DocumentWriter;
using OtioWriting::Refuse;

}  // namespace

OtioExportOptions OtioOptionsFromDocument(const PlaylistDocument& document,
                                          TimelineConverter::DurationMode mode) {
  OtioExportOptions options;
  options.rate = document.playlist.rate;
  options.durationMode = mode;
  options.timelineName = document.playlist.umId.GetUmId();
  EdlExportInput input = EdlInputFromDocument(document);
  options.assetNames = std::move(input.clipNames);
  options.elements = std::move(input.elements);
  options.auxTrack = input.auxTrack;
  return options;
}

namespace {

void CheckRate(const OtioExportOptions& options) {
  if (options.rate.numerator <= 0 || options.rate.denominator <= 0) {
    Refuse("the rate " + std::to_string(options.rate.numerator) + "/" +
           std::to_string(options.rate.denominator) + " is not a positive frame rate.");
  }
}

}  // namespace

std::string TimelineToOtioText(const Engine::Timeline& timeline, const OtioExportOptions& options,
                               std::vector<OtioNote>* approximations) {
  CheckRate(options);
  DocumentWriter(timeline, options, approximations, nullptr).Document();
  std::ostringstream text;
  DocumentWriter(timeline, options, nullptr, &text).Document();
  return text.str();
}

void WriteOtio(std::ostream& out, const Engine::Timeline& timeline,
               const OtioExportOptions& options) {
  CheckRate(options);
  DocumentWriter(timeline, options, nullptr, nullptr).Document();
  DocumentWriter(timeline, options, nullptr, &out).Document();
}

void CheckOtio(const Outcome& outcome, const Findings& findings, const OtioExportOptions& options,
               std::vector<OtioNote>* approximations) {
  for (const auto& finding : findings) {
    if (finding.severity == Severity::BlocksOtio) {
      throw OtioExportRefusal("Cannot export to OpenTimelineIO: " + findings.Message(finding),
                              findings.Place(finding));
    }
  }
  CheckRate(options);
  DocumentWriter(outcome.timeline, options, approximations, nullptr).Document();
}

}  // namespace TimelineConvert
