// The places of the document and their text.
#include "document/DocumentPlace.h"

#include <cstdio>

#include "document/PlaylistDocument.h"

namespace TimelineConvert {

namespace {

// The length of the valid UTF-8 sequence at `at`, or 0 when it is not one
// (overlong forms, surrogates and values past U+10FFFF are not).
std::size_t Utf8Length(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(at);
  std::size_t length = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    low = lead == 0xE0 ? 0xA0 : 0x80;
    high = lead == 0xED ? 0x9F : 0xBF;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    low = lead == 0xF0 ? 0x90 : 0x80;
    high = lead == 0xF4 ? 0x8F : 0xBF;
  } else {
    return 0;
  }
  if (at + length > text.size() || byte(at + 1) < low || byte(at + 1) > high) {
    return 0;
  }
  for (std::size_t i = 2; i < length; ++i) {
    if (byte(at + i) < 0x80 || byte(at + i) > 0xBF) {
      return 0;
    }
  }
  return length;
}

}  // namespace

std::string EscapedText(const std::string& text) {
  std::string shown;
  shown.reserve(text.size());
  char escape[8];
  for (std::size_t at = 0; at < text.size();) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte >= 0x80) {
      const std::size_t length = Utf8Length(text, at);
      if (length == 0) {
        std::snprintf(escape, sizeof escape, "\\x%02x", byte);
        shown += escape;
        ++at;
      } else {
        shown.append(text, at, length);
        at += length;
      }
      continue;
    }
    if (byte == '\\') {
      shown += "\\\\";
    } else if (byte == '\n') {
      shown += "\\n";
    } else if (byte == '\t') {
      shown += "\\t";
    } else if (byte == '\r') {
      shown += "\\r";
    } else if (byte < 0x20 || byte == 0x7F) {
      std::snprintf(escape, sizeof escape, "\\u%04x", byte);
      shown += escape;
    } else {
      shown += static_cast<char>(byte);
    }
    ++at;
  }
  return shown;
}

DocumentPlace DocumentPlace::Element(const PlaylistDocument& document, std::size_t index,
                                     const std::string& field) {
  const auto& element = document.playlist.audioVideoTrack.elements.at(index);
  DocumentPlace place;
  place.source = Source::Element;
  place.element = index;
  place.itemNumber = element.itemNumber;
  place.clip = element.umId.GetUmId();
  place.pointer = "/playlist/audioVideoTrack/elements/" + std::to_string(index) + field;
  return place;
}

DocumentPlace DocumentPlace::Asset(const DocumentAsset& asset, std::size_t position) {
  DocumentPlace place;
  place.source = Source::Asset;
  place.asset = asset.key.Text();
  place.clip = asset.umId;
  place.pointer = "/assets/" + std::to_string(position);
  return place;
}

DocumentPlace DocumentPlace::AuxTrack(const PlaylistDocument& document) {
  DocumentPlace place;
  place.auxTrack = true;
  place.clip = document.playlist.auxTrackUmId.GetUmId();
  place.pointer = "/playlist/auxTrackUmId";
  return place;
}

std::string DescribePlace(const DocumentPlace& place) {
  switch (place.source) {
    case DocumentPlace::Source::Element:
      return "at element " + std::to_string(place.element) + " (item " +
             std::to_string(place.itemNumber) + ", clip " + EscapedText(place.clip) + ")";
    case DocumentPlace::Source::Asset:
      return "in asset " + EscapedText(place.asset) +
             (place.clip.empty() ? std::string() : " (clip " + EscapedText(place.clip) + ")");
    case DocumentPlace::Source::Playlist:
      break;
  }
  if (place.auxTrack) {
    return "in the aux track (clip " + EscapedText(place.clip) + ")";
  }
  return place.pointer.empty() ? std::string() : "at " + EscapedText(place.pointer);
}

}  // namespace TimelineConvert
