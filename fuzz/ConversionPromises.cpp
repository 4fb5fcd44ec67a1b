// The conversion fuzzer's promises: a breach aborts the run with what was
// promised; a refusal must be one that the library documents, as listed in
// the refusal table that the tests use too.
#include <cstdio>
#include <cstdlib>

#include "ConversionFuzzer.h"
#include "support/RefusalTexts.h"

namespace conversion_fuzzer {

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "ConversionFuzzer: %s\n", what.c_str());
  std::abort();
}

void Require(bool condition, const char* what) {
  if (!condition) {
    Fail(what);
  }
}

void RequireSame(const std::string& expected, const std::string& actual, const char* what) {
  if (expected != actual) {
    Fail(std::string(what) + "\n  expected: " + expected + "\n  actual:   " + actual);
  }
}

void RequireDocumentedRefusal(const std::exception& error,
                              std::optional<std::int32_t> playlistNumber) {
  if (!testing_support::IsConversionRefusal(error, playlistNumber)) {
    Fail(std::string("undocumented refusal ") + typeid(error).name() + ": " + error.what());
  }
}

std::string Describe(const Inputs& inputs) {
  std::string out = ModelText::Describe(inputs.playlist) + ModelText::Describe(inputs.videoTrack) +
                    ModelText::Describe(inputs.audioTrack) + ModelText::Describe(*inputs.assets);
  for (const auto& element : inputs.reportingElements) {
    const auto* audioVideo = dynamic_cast<const Sequences::AudioVideoElement*>(element.get());
    out += audioVideo != nullptr ? ModelText::Describe(*audioVideo) : ModelText::Describe(*element);
  }
  ModelText::Number(out, "mapOwners", inputs.assets.use_count());
  return out;
}

}  // namespace conversion_fuzzer
