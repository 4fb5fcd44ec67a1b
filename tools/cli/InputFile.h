// InputFile: the whole input of a command, from a file or standard input ("-").
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace TimelineConvert {

// How a path is named in messages: "-" is "standard input".
std::string InputName(const std::string& path);

// The whole text of an input, held once. A regular file is mapped into
// memory rather than copied: the text is then the file's own pages, with no
// page of the process's to fill and no copy to make. Anything else
// (standard input, a pipe, a file the system will not map) is read.
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

  const char* mapped_ = nullptr;
  std::size_t mappedSize_ = 0;
  std::string read_;
};

// The whole input into `text`, or false and the reason in `problem`.
bool ReadInput(const std::string& path, InputText& text, std::string& problem);

}  // namespace TimelineConvert
