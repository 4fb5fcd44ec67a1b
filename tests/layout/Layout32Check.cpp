// Compiled for 32-bit x86 only: the sequence records keep the byte layout that
// the server's data library shares with this one (pointers and std::string 4
// bytes, std::vector 12, 64-bit integers aligned to 4 inside records).
#include <cstddef>

#include "input-models/MediaAsset.h"
#include "input-models/Sequence.h"
#include "input-models/TimePoints.h"

using namespace Kov::Replivo::Data::Sequences;
namespace Data = Kov::Replivo::Data;

static_assert(sizeof(void*) == 4, "this check is compiled for a 32-bit target");
// TimeBounds of 18 with its end at 9 also fixes TimeBoundary at 9.

static_assert(sizeof(Data::Servers::ServerId) == 4, "ServerId");
static_assert(sizeof(Data::Clips::UmId) == 12, "UmId");
static_assert(sizeof(Data::Channels::Speed) == 8, "Speed");
static_assert(sizeof(Kov::TimePoints::Rate) == 16, "Rate");
static_assert(sizeof(Kov::TimePoints::TimeBounds) == 18, "TimeBounds");
static_assert(offsetof(Kov::TimePoints::TimeBounds, end) == 9, "TimeBounds::end");

// The element base: the virtual table pointer, then its fields.
static_assert(offsetof(Element, number) == 4, "Element::number");
static_assert(offsetof(Element, serverId) == 8, "Element::serverId");
static_assert(offsetof(Element, playlistNumber) == 12, "Element::playlistNumber");
static_assert(offsetof(Element, itemNumber) == 16, "Element::itemNumber");
static_assert(offsetof(Element, umId) == 20, "Element::umId");
static_assert(offsetof(Element, inBoundaryKind) == 32, "Element::inBoundaryKind");
static_assert(offsetof(Element, outBoundaryKind) == 36, "Element::outBoundaryKind");
static_assert(offsetof(Element, speed) == 64, "Element::speed");
static_assert(offsetof(Element, transitionType) == 80, "Element::transitionType");
static_assert(sizeof(Element) == 84, "Element");

static_assert(offsetof(VideoElement, transitionDuration) == 84, "VideoElement::transitionDuration");
static_assert(offsetof(VideoElement, inValue) == 88, "VideoElement::inValue");
static_assert(offsetof(VideoElement, outValue) == 96, "VideoElement::outValue");
static_assert(sizeof(VideoElement) == 104, "VideoElement");
static_assert(offsetof(AudioElement, inValue) == 88, "AudioElement::inValue");
static_assert(sizeof(AudioElement) == 104, "AudioElement");

static_assert(offsetof(AudioVideoElement, audioTransitionType) == 84, "audioTransitionType");
static_assert(offsetof(AudioVideoElement, videoTransitionDuration) == 88, "videoDuration");
static_assert(offsetof(AudioVideoElement, audioTransitionDuration) == 92, "audioDuration");
static_assert(offsetof(AudioVideoElement, videoInValue) == 96, "videoInValue");
static_assert(offsetof(AudioVideoElement, videoOutValue) == 104, "videoOutValue");
static_assert(offsetof(AudioVideoElement, audioInValue) == 112, "audioInValue");
static_assert(offsetof(AudioVideoElement, audioOutValue) == 120, "audioOutValue");
static_assert(sizeof(AudioVideoElement) == 128, "AudioVideoElement");

// Every track is one template: its layout does not depend on the element.
static_assert(sizeof(Track<AudioVideoElement>) == 16, "Track<AudioVideoElement>");
static_assert(offsetof(Track<AudioVideoElement>, elements) == 4, "Track::elements");

static_assert(offsetof(Playlist, serverId) == 4, "Playlist::serverId");
static_assert(offsetof(Playlist, number) == 8, "Playlist::number");
static_assert(offsetof(Playlist, umId) == 12, "Playlist::umId");
static_assert(offsetof(Playlist, durationInFields) == 128, "Playlist::durationInFields");
static_assert(offsetof(Playlist, rate) == 144, "Playlist::rate");
static_assert(offsetof(Playlist, audioVideoTrack) == 168, "Playlist::audioVideoTrack");
static_assert(offsetof(Playlist, auxTrackUmId) == 184, "Playlist::auxTrackUmId");
static_assert(sizeof(Playlist) == 196, "Playlist");
