// Reading the input whole, held once and not copied.
#include "cli/InputFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

namespace TimelineConvert {

std::string InputName(const std::string& path) {
  return path == "-" ? "standard input" : path;
}

bool ReadInput(const std::string& path, std::string& text, std::string& problem) {
  if (path == "-") {
    text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    problem = std::cin.bad() ? std::strerror(errno) : "";
    return problem.empty();
  }
  struct stat status;
  if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
    problem = "it is a directory";
    return false;
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    problem = std::strerror(errno);
    return false;
  }
  // Read straight into the text, sized up front where the size is known.
  if (S_ISREG(status.st_mode)) {
    text.reserve(static_cast<std::size_t>(status.st_size));
  }
  std::vector<char> chunk(1 << 16);
  while (file.read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || file.gcount() > 0) {
    text.append(chunk.data(), static_cast<std::size_t>(file.gcount()));
  }
  problem = file.bad() ? std::strerror(errno) : "";
  return problem.empty();
}

}  // namespace TimelineConvert
