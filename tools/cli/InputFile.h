// InputFile: the whole input of a command, from a file or standard input ("-").
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace TimelineConvert {

// How a path is named in messages: "-" is "standard input".
std::string InputName(const std::string& path);

// The whole text of an input, held once. A regular file is read into memory
// of its size that the system fills in one go rather than a fault per page;
// anything else (standard input, a pipe, a file that grows while it is read)
// is read into a string.
class InputText {
 public:
  InputText() = default;
  InputText(const InputText&) = delete;
  InputText& operator=(const InputText&) = delete;
  ~InputText() { Release(); }

  std::string_view View() const;
  // Gives the text's memory back before the holder goes.
  void Release();

 private:
  friend bool ReadInput(const std::string& path, InputText& text, std::string& problem);

  char* mapped_ = nullptr;
  std::size_t mappedSize_ = 0;
  std::size_t mappedCapacity_ = 0;
  std::string read_;
};

// The whole input into `text`, or false and the reason in `problem`.
bool ReadInput(const std::string& path, InputText& text, std::string& problem);

}  // namespace TimelineConvert
