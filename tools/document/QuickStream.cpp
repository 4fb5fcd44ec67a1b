// The fast reading of a document: the JSON library's SAX parser feeds a
// handler directly (no callback object per event, no tree of the whole
// document) that builds a tree only of the document's small top and of one
// element or asset at a time, which the record readers read and drop as soon
// as it is complete. The parser is the one ParseStreaming runs, so both accept
// and refuse the same texts; a text the parser refuses is handed to that
// careful reader, which words the fault as the tool always has.
#include <algorithm>
#include <string>
#include <unordered_set>
#include <vector>

#include "document/DocumentStream.h"
#include "document/RecordReaders.h"

namespace TimelineConvert {

namespace {

enum class StreamedList { None, Elements, Assets };

// Objects with more keys than this look their keys up in a hash set.
constexpr std::size_t kLinearKeySearch = 16;

class QuickStream {
 public:
  explicit QuickStream(StreamedRecords& records, Json& root) : records_(records), root_(root) {}

  // The SAX events, as the JSON library names them.
  bool null() { return Value(Json(nullptr)); }
  bool boolean(bool value) { return Value(Json(value)); }
  bool number_integer(std::int64_t value) { return Value(Json(value)); }
  bool number_unsigned(std::uint64_t value) { return Value(Json(value)); }
  bool number_float(double value, const std::string&) { return Value(Json(value)); }
  bool string(std::string& value) { return Value(Json(std::move(value))); }
  bool binary(Json::binary_t&) { return false; }  // JSON text holds none
  bool start_object(std::size_t) { return Open(Json::object()); }
  bool key(std::string& name) {
    Frame& frame = frames_[depth_ - 1];
    frame.currentKey = std::move(name);
    if (!AddKey(frame)) {
      throw DocumentError(ParentPath() + PointerStep(frame.currentKey), "the field is given twice");
    }
    frame.slot = &(*frame.value)[frame.currentKey];
    return true;
  }
  bool end_object() { return Close(); }
  bool start_array(std::size_t) { return Open(Json::array()); }
  bool end_array() { return Close(); }
  // The careful reader words the fault.
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) {
    return false;
  }

 private:
  struct Frame {
    Json* value = nullptr;
    Json* slot = nullptr;  // the member the object's next value goes to
    bool isObject = false;
    StreamedList list = StreamedList::None;
    std::vector<std::string> keys;
    std::unordered_set<std::string> manyKeys;
    std::string currentKey;
    std::size_t index = 0;
  };

  bool AddKey(Frame& frame) {
    if (frame.keys.size() < kLinearKeySearch) {
      if (std::find(frame.keys.begin(), frame.keys.end(), frame.currentKey) != frame.keys.end()) {
        return false;
      }
      frame.keys.push_back(frame.currentKey);
      return true;
    }
    if (frame.manyKeys.empty()) {
      frame.manyKeys.insert(frame.keys.begin(), frame.keys.end());
    }
    return frame.manyKeys.insert(frame.currentKey).second;
  }

  // Puts a value where the parser is, and returns where it went.
  Json* Place(Json&& value) {
    if (depth_ == 0) {
      root_ = std::move(value);
      return &root_;
    }
    Frame& frame = frames_[depth_ - 1];
    if (frame.isObject) {
      *frame.slot = std::move(value);
      return frame.slot;
    }
    frame.value->push_back(std::move(value));
    return &frame.value->back();
  }

  bool Value(Json&& value) {
    Place(std::move(value));
    Completed();
    return true;
  }

  bool Open(Json&& container) {
    const bool isObject = container.is_object();
    Json* placed = Place(std::move(container));
    if (depth_ == frames_.size()) {
      frames_.emplace_back();
    }
    Frame& frame = frames_[depth_++];
    frame.value = placed;
    frame.slot = nullptr;
    frame.isObject = isObject;
    frame.keys.clear();
    frame.manyKeys.clear();
    frame.currentKey.clear();
    frame.index = 0;
    frame.list = isObject ? StreamedList::None : ListHere();
    return true;
  }

  bool Close() {
    --depth_;
    Completed();
    return true;
  }

  // Which streamed list the array just opened is, by the keys that lead to it.
  StreamedList ListHere() const {
    const auto keyAt = [this](std::size_t level, const char* key) {
      return frames_[level].isObject && frames_[level].currentKey == key;
    };
    if (depth_ == 2 && keyAt(0, "assets")) {
      return StreamedList::Assets;
    }
    if (depth_ == 4 && keyAt(0, "playlist") && keyAt(1, "audioVideoTrack") &&
        keyAt(2, "elements")) {
      return StreamedList::Elements;
    }
    return StreamedList::None;
  }

  // A value is complete: a streamed list's member is read, then dropped.
  void Completed() {
    if (depth_ == 0) {
      return;
    }
    Frame& frame = frames_[depth_ - 1];
    if (frame.isObject) {
      return;
    }
    if (frame.list == StreamedList::Elements) {
      if (!records_.elementFault) {
        try {
          records_.elements.push_back(ReadElement(Node(frame.value->back(), CurrentPath())));
        } catch (const DocumentError& fault) {
          records_.elementFault = fault;
        }
      }
      frame.value->get_ref<Json::array_t&>().pop_back();
    } else if (frame.list == StreamedList::Assets) {
      if (!records_.assetFault) {
        try {
          AddAsset(Node(frame.value->back(), CurrentPath()), records_);
        } catch (const DocumentError& fault) {
          records_.assetFault = fault;
        }
      }
      frame.value->get_ref<Json::array_t&>().pop_back();
    }
    ++frame.index;
  }

  static std::string Step(const Frame& frame) {
    return frame.isObject ? PointerStep(frame.currentKey) : "/" + std::to_string(frame.index);
  }

  std::string ParentPath() const {
    std::string path;
    for (std::size_t level = 0; level + 1 < depth_; ++level) {
      path += Step(frames_[level]);
    }
    return path;
  }

  std::string CurrentPath() const {
    std::string path;
    for (std::size_t level = 0; level < depth_; ++level) {
      path += Step(frames_[level]);
    }
    return path;
  }

  StreamedRecords& records_;
  Json& root_;
  std::vector<Frame> frames_;  // kept when closed, so that their buffers are reused
  std::size_t depth_ = 0;
};

}  // namespace

bool ParseQuickly(std::string_view jsonText, StreamedRecords& records, Json& document) {
  QuickStream stream(records, document);
  return Json::sax_parse(jsonText.begin(), jsonText.end(), &stream);
}

}  // namespace TimelineConvert
