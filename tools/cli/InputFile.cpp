// Reading the input whole, held once and not copied.
#include "cli/InputFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <iterator>
#include <limits>

namespace TimelineConvert {

namespace {

// Closes the descriptor however the reading ends; a mapping outlives it.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) {
      ::close(number_);
    }
  }
  int Number() const { return number_; }

 private:
  int number_;
};

// Reads to the end of `file` into `text`, which holds `filled` bytes read so
// far; sized first by `expected`.
bool ReadAll(int file, std::size_t expected, std::size_t filled, std::string& text,
             std::string& problem) {
  text.resize(std::max(expected, filled + 1));
  for (;;) {
    if (filled == text.size()) {
      text.resize(text.size() * 2);
    }
    const ssize_t got = ::read(file, &text[filled], text.size() - filled);
    if (got < 0) {
      if (errno == EINTR) {
        continue;
      }
      problem = std::strerror(errno);
      std::string().swap(text);
      return false;
    }
    if (got == 0) {
      break;
    }
    filled += static_cast<std::size_t>(got);
  }
  text.resize(filled);
  problem.clear();
  return true;
}

// Reads `file` into `block` (of `capacity` bytes) until it is full or the
// file ends; the bytes read, or -1 with errno.
ssize_t ReadInto(int file, char* block, std::size_t capacity) {
  std::size_t filled = 0;
  while (filled < capacity) {
    const ssize_t got = ::read(file, block + filled, capacity - filled);
    if (got < 0) {
      if (errno == EINTR) {
        continue;
      }
      return -1;
    }
    if (got == 0) {
      break;
    }
    filled += static_cast<std::size_t>(got);
  }
  return static_cast<ssize_t>(filled);
}

}  // namespace

std::string InputName(const std::string& path) {
  return path == "-" ? "standard input" : path;
}

std::string_view InputText::View() const {
  return mapped_ != nullptr ? std::string_view(mapped_, mappedSize_) : std::string_view(read_);
}

void InputText::Release() {
  if (mapped_ != nullptr) {
    ::munmap(mapped_, mappedCapacity_);
    mapped_ = nullptr;
    mappedSize_ = 0;
    mappedCapacity_ = 0;
  }
  std::string().swap(read_);
}

bool ReadInput(const std::string& path, InputText& text, std::string& problem) {
  text.Release();
  if (path == "-") {
    text.read_.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    problem = std::cin.bad() ? std::strerror(errno) : "";
    return problem.empty();
  }
  struct stat status;
  if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
    problem = "it is a directory";
    return false;
  }
  const Descriptor file(::open(path.c_str(), O_RDONLY));
  if (file.Number() < 0) {
    problem = std::strerror(errno);
    return false;
  }
  // A size that does not fit the address space (a 32-bit build) is neither
  // mapped nor trusted for the reading's first size.
  const bool regular =
      ::fstat(file.Number(), &status) == 0 && S_ISREG(status.st_mode) &&
      static_cast<std::uintmax_t>(status.st_size) < std::numeric_limits<std::size_t>::max();
  if (regular && status.st_size > 0) {
    // Memory filled in one go by the system, not page by page as the reading
    // first touches it; one byte over, so that the end shows. The file itself
    // is not mapped: one cut short by another program while it is read would
    // end the process instead of being reported.
    const std::size_t capacity = static_cast<std::size_t>(status.st_size) + 1;
    void* block = ::mmap(nullptr, capacity, PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (block != MAP_FAILED) {
      char* bytes = static_cast<char*>(block);
      const ssize_t got = ReadInto(file.Number(), bytes, capacity);
      if (got < 0) {
        problem = std::strerror(errno);
        ::munmap(block, capacity);
        return false;
      }
      const auto filled = static_cast<std::size_t>(got);
      if (filled < capacity) {
        text.mapped_ = bytes;
        text.mappedSize_ = filled;
        text.mappedCapacity_ = capacity;
        problem.clear();
        return true;
      }
      // The file grew while it was read: the rest goes on in a string.
      text.read_.assign(bytes, filled);
      ::munmap(block, capacity);
      return ReadAll(file.Number(), filled * 2, filled, text.read_, problem);
    }
  }
  // Read straight into the text, sized up front where the size is known (one
  // byte over, so that the end shows without growing it).
  const std::size_t expected = regular ? static_cast<std::size_t>(status.st_size) + 1 : 1 << 16;
  return ReadAll(file.Number(), expected, 0, text.read_, problem);
}

}  // namespace TimelineConvert
