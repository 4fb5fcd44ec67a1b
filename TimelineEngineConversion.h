// SPDX-License-Identifier: Apache-2.0
// The umbrella header: every public type and operation of the library. Include
// it as <TimelineEngineConversion/TimelineEngineConversion.h>.
#pragma once

#include "input-models/ClipMediaTimeConverter.h"
#include "input-models/Identifier.h"
#include "input-models/MediaAsset.h"
#include "input-models/MetadataProfile.h"
#include "input-models/Sequence.h"
#include "input-models/SequenceIdentifiers.h"
#include "input-models/SharedReference.h"
#include "input-models/SortedVector.h"
#include "input-models/TimePoints.h"
#include "input-models/Version.h"

#include "engine-model/FxTransitionItem.h"
#include "engine-model/MediaInfo.h"
#include "engine-model/MediaSummaryItem.h"
#include "engine-model/Timeline.h"
#include "engine-model/Track.h"
#include "engine-model/TrackItem.h"
#include "engine-model/TransitionEffect.h"

#include "conversion/MediaInfoConverter.h"
#include "conversion/TimeConverter.h"
#include "conversion/TimelineConverter.h"
#include "conversion/TrackConverter.h"
