// Writes the tool's output whole or not at all. The content is streamed
// through a small buffer straight into its destination, so an output of any
// size costs no more memory than the buffer.
#include "OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <streambuf>
#include <vector>

namespace TimelineConvert {

namespace {

// A stream buffer over a file descriptor that remembers the first failure.
class DescriptorBuffer : public std::streambuf {
 public:
  explicit DescriptorBuffer(int descriptor) : descriptor_(descriptor), buffer_(1 << 16) {
    setp(buffer_.data(), buffer_.data() + buffer_.size());
  }

  // 0 when everything so far reached the descriptor, else the errno.
  int Flush() {
    sync();
    return error_;
  }

 protected:
  int_type overflow(int_type next) override {
    if (sync() != 0) {
      return traits_type::eof();
    }
    if (!traits_type::eq_int_type(next, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(next);
      pbump(1);
    }
    return traits_type::not_eof(next);
  }

  int sync() override {
    const char* from = pbase();
    while (error_ == 0 && from < pptr()) {
      const ssize_t written = ::write(descriptor_, from, static_cast<std::size_t>(pptr() - from));
      if (written < 0 && errno != EINTR) {
        error_ = errno;
      } else if (written > 0) {
        from += written;
      }
    }
    setp(buffer_.data(), buffer_.data() + buffer_.size());
    return error_ == 0 ? 0 : -1;
  }

 private:
  int descriptor_;
  std::vector<char> buffer_;
  int error_ = 0;
};

[[noreturn]] void Refuse(const std::string& path, const std::string& reason) {
  throw OutputError(path, reason);
}

[[noreturn]] void RefuseErrno(const std::string& path, int error) {
  Refuse(path, std::strerror(error));
}

// Streams the content into an open descriptor; the errno of a failure, or 0.
int WriteTo(int descriptor, const std::function<void(std::ostream&)>& write) {
  DescriptorBuffer buffer(descriptor);
  std::ostream stream(&buffer);
  write(stream);
  return buffer.Flush();
}

// The descriptor that a name of the tool's own open descriptors stands for
// (/dev/stdout, /dev/fd/1, /proc/self/fd/1...), or -1. These are written as
// they are, so that a shell's redirection (appending, a pipe) keeps its way.
int OwnDescriptor(const std::string& path) {
  if (path == "/dev/stdout") return STDOUT_FILENO;
  if (path == "/dev/stderr") return STDERR_FILENO;
  for (const std::string prefix : {"/dev/fd/", "/proc/self/fd/"}) {
    if (path.rfind(prefix, 0) == 0 && path.size() > prefix.size() &&
        path.size() - prefix.size() <= 9 &&
        path.find_first_not_of("0123456789", prefix.size()) == std::string::npos) {
      return std::stoi(path.substr(prefix.size()));
    }
  }
  return -1;
}

std::string DirectoryOf(const std::string& path) {
  const auto slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// Follows a chain of symbolic links to the path they finally name, which may
// not exist yet (a link to a file still to be made).
std::string FinalTarget(const std::string& path) {
  std::string current = path;
  for (int hop = 0; hop < 40; ++hop) {
    struct stat status;
    if (::lstat(current.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
      return current;
    }
    std::vector<char> target(PATH_MAX + 1);
    const ssize_t length = ::readlink(current.c_str(), target.data(), PATH_MAX);
    if (length < 0) {
      RefuseErrno(path, errno);
    }
    const std::string next(target.data(), static_cast<std::size_t>(length));
    current = next.front() == '/' ? next : DirectoryOf(current) + "/" + next;
  }
  RefuseErrno(path, ELOOP);
}

mode_t CreationMode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

// A regular file, new or replaced: a temporary file in the same folder,
// written, flushed to disk, closed, then renamed over the target. On any
// failure the temporary file goes and the target is untouched.
void ReplaceFile(const std::string& path, const std::string& target, const struct stat* existing,
                 const std::function<void(std::ostream&)>& write) {
  if (existing != nullptr && ::access(target.c_str(), W_OK) != 0) {
    RefuseErrno(path, errno);  // no more allowed than writing it in place would be
  }
  const auto slash = target.find_last_of('/');
  const std::string name = slash == std::string::npos ? target : target.substr(slash + 1);
  std::string temporary = DirectoryOf(target) + "/." + name + ".XXXXXX";
  const int descriptor = ::mkstemp(&temporary[0]);
  if (descriptor < 0) {
    Refuse(path,
           "cannot make a temporary file in " + DirectoryOf(target) + ": " + std::strerror(errno));
  }
  int error = 0;
  if (existing != nullptr) {
    // The owner is kept where this user may give it; the mode bits always.
    (void)!::fchown(descriptor, existing->st_uid, existing->st_gid);
    error = ::fchmod(descriptor, existing->st_mode & 07777) == 0 ? 0 : errno;
  } else {
    error = ::fchmod(descriptor, CreationMode()) == 0 ? 0 : errno;
  }
  if (error == 0) {
    try {
      error = WriteTo(descriptor, write);
    } catch (...) {  // out of memory while making the content
      ::close(descriptor);
      ::unlink(temporary.c_str());
      throw;
    }
  }
  if (error == 0 && ::fsync(descriptor) != 0) error = errno;
  if (::close(descriptor) != 0 && error == 0) error = errno;
  if (error == 0 && ::rename(temporary.c_str(), target.c_str()) != 0) error = errno;
  if (error != 0) {
    ::unlink(temporary.c_str());
    RefuseErrno(path, error);
  }
}

}  // namespace

std::string OutputName(const std::string& path) {
  return path == "-" ? "standard output" : path;
}

void WriteOutput(const std::string& path, const std::function<void(std::ostream&)>& write) {
  const int own = path == "-" ? STDOUT_FILENO : OwnDescriptor(path);
  if (own >= 0) {
    if (const int error = WriteTo(own, write)) {
      RefuseErrno(path, error);
    }
    return;
  }
  const std::string target = FinalTarget(path);
  struct stat status;
  if (::stat(target.c_str(), &status) != 0) {
    if (errno != ENOENT) {
      RefuseErrno(path, errno);
    }
    ReplaceFile(path, target, nullptr, write);
  } else if (S_ISDIR(status.st_mode)) {
    Refuse(path, "it is a directory");
  } else if (S_ISREG(status.st_mode)) {
    ReplaceFile(path, target, &status, write);
  } else {
    // A device or a FIFO: written in place, never truncated nor removed.
    const int descriptor = ::open(target.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
      RefuseErrno(path, errno);
    }
    int error = WriteTo(descriptor, write);
    if (::close(descriptor) != 0 && error == 0) error = errno;
    if (error != 0) {
      RefuseErrno(path, error);
    }
  }
}

}  // namespace TimelineConvert
