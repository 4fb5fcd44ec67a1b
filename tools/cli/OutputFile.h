// OutputFile: how timeline-convert writes its result, so that a failed run
// never destroys what the output path held. A regular file (or a path that does
// not exist yet) is written to a temporary file beside it and renamed over it
// once complete; anything else (a device, a FIFO, the tool's own descriptors)
// is written in place and never removed. The full rule is in docs/cli.md.
#pragma once

#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>

namespace TimelineConvert {

// How a path is named in messages: "-" is "standard output".
std::string OutputName(const std::string& path);

// An output that could not be written; what() says which and why, and the
// target is as it was before (a device or FIFO may have taken part of it).
class OutputError : public std::runtime_error {
 public:
  OutputError(const std::string& path, const std::string& reason)
      : std::runtime_error("cannot write " + OutputName(path) + ": " + reason),
        path_(path),
        reason_(reason) {}
  const std::string& Path() const { return path_; }
  const std::string& Reason() const { return reason_; }

 private:
  std::string path_;
  std::string reason_;
};

// Writes what `write` puts into the stream to `path` ("-": standard output).
// Throws OutputError.
void WriteOutput(const std::string& path, const std::function<void(std::ostream&)>& write);

}  // namespace TimelineConvert
