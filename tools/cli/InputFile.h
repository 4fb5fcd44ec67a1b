// InputFile: the whole input of a command, from a file or standard input ("-").
#pragma once

#include <string>

namespace TimelineConvert {

// How a path is named in messages: "-" is "standard input".
std::string InputName(const std::string& path);

// The whole input into `text`, or false and the reason in `problem`.
bool ReadInput(const std::string& path, std::string& text, std::string& problem);

}  // namespace TimelineConvert
