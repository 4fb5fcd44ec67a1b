// The streaming reader. The first fault of each list is kept and raised at the
// point where a reading of the whole tree would have met it, so the
// document's faults are reported in the same order either way.
#include "document/DocumentStream.h"

#include <initializer_list>
#include <set>

#include "document/RecordReaders.h"

namespace TimelineConvert {

namespace {

// Reads the document while the parser runs. The elements of the playlist's
// track and the assets are turned into records as soon as each one is parsed,
// and their JSON is dropped, so that memory grows with the records and never
// with a tree of the whole document. The first fault of each list is kept and
// raised at the point where a reading of the whole tree would have met it, so
// the document's faults are reported in the same order either way.
// The stream also refuses a key given twice in one object (the parser would
// keep the last one without a word), naming the place by its own path.
class DocumentStream {
 public:
  bool operator()(int /*depth*/, Json::parse_event_t event, Json& parsed) {
    switch (event) {
      case Json::parse_event_t::object_start:
      case Json::parse_event_t::array_start:
        frames_.push_back(Frame{event == Json::parse_event_t::object_start, {}, {}, 0});
        return true;
      case Json::parse_event_t::key: {
        const auto& key = parsed.get_ref<const std::string&>();
        if (!frames_.back().keys.insert(key).second) {
          throw DocumentError(ParentPath() + PointerStep(key), "the field is given twice");
        }
        frames_.back().currentKey = key;
        return true;
      }
      case Json::parse_event_t::object_end:
      case Json::parse_event_t::array_end:
        frames_.pop_back();
        return Completed(parsed);
      case Json::parse_event_t::value:
        return Completed(parsed);
    }
    return true;
  }

  explicit DocumentStream(StreamedRecords& records) : records_(records) {}

  std::string PlaceOfValue() const { return frames_.empty() ? "/" : CurrentPath(); }

 private:
  struct Frame {
    bool isObject;
    std::set<std::string> keys;
    std::string currentKey;
    std::size_t index;
  };

  // A value is complete; false drops it from the tree once it has been read.
  bool Completed(const Json& value) {
    bool keep = true;
    if (IsInArrayAt({"playlist", "audioVideoTrack", "elements"})) {
      keep = false;
      if (!records_.elementFault) {
        try {
          records_.elements.push_back(ReadElement(Node(value, CurrentPath())));
        } catch (const DocumentError& fault) {
          records_.elementFault = fault;
        }
      }
    } else if (IsInArrayAt({"assets"})) {
      keep = false;
      if (!records_.assetFault) {
        try {
          AddAsset(Node(value, CurrentPath()), records_);
        } catch (const DocumentError& fault) {
          records_.assetFault = fault;
        }
      }
    }
    if (!frames_.empty() && !frames_.back().isObject) {
      ++frames_.back().index;
    }
    return keep;
  }

  // True when the value just completed is an element of the array found by
  // following these keys from the document's root object.
  bool IsInArrayAt(std::initializer_list<const char*> keys) const {
    if (frames_.size() != keys.size() + 1 || frames_.back().isObject) {
      return false;
    }
    std::size_t level = 0;
    for (const char* key : keys) {
      if (!frames_[level].isObject || frames_[level].currentKey != key) {
        return false;
      }
      ++level;
    }
    return true;
  }

  std::string Step(const Frame& frame) const {
    return frame.isObject ? PointerStep(frame.currentKey) : "/" + std::to_string(frame.index);
  }

  std::string ParentPath() const {
    std::string path;
    for (std::size_t i = 0; i + 1 < frames_.size(); ++i) {
      path += Step(frames_[i]);
    }
    return path;
  }

  // The place of the value being parsed: also that of a number too large to hold.
  std::string CurrentPath() const {
    std::string path;
    for (const Frame& frame : frames_) {
      path += Step(frame);
    }
    return path;
  }

  StreamedRecords& records_;
  std::vector<Frame> frames_;
};

}  // namespace

Json ParseStreaming(std::string_view jsonText, StreamedRecords& records) {
  DocumentStream stream(records);
  try {
    return Json::parse(jsonText.begin(), jsonText.end(),
                       [&stream](int depth, Json::parse_event_t event, Json& parsed) {
                         return stream(depth, event, parsed);
                       });
  } catch (const Json::out_of_range& error) {
    // "[json.exception.out_of_range.406] number overflow parsing '1e999'"
    const std::string text = error.what();
    const auto end = text.find("] ");
    throw DocumentError(stream.PlaceOfValue(),
                        end == std::string::npos ? text : text.substr(end + 2));
  } catch (const Json::parse_error& error) {
    // "[json.exception.parse_error.101] parse error at line 2, column 5: <problem>"
    const std::string text = error.what();
    const auto at = text.find(" at line ");
    const auto colon = text.find(": ", at == std::string::npos ? 0 : at);
    if (at == std::string::npos || colon == std::string::npos) {
      throw DocumentError("byte " + std::to_string(error.byte), text);
    }
    throw DocumentError(text.substr(at + 4, colon - at - 4), text.substr(colon + 2));
  }
}

}  // namespace TimelineConvert
