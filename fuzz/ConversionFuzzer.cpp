// libFuzzer harness of the whole library. The fuzzer's bytes become a playlist,
// a video track, an audio track, a few elements of caller-derived classes and a
// shared asset map (recorded ranges with open ends, short ranges, metadata
// profiles of every sort, resources and track layouts with null and empty-key
// references, null track pointers). Every public operation runs on them, and
// the run stops at the first breach of the library's promises: a refusal that
// is not one of its fixed exceptions, an input that differs after the calls, a
// reference to the input kept after a call, or answers of the same question
// that disagree with each other.
// Inputs, promises and properties live in files of their own beside this one.
#include <cstddef>
#include <cstdint>
#include <string>

#include "ConversionFuzzer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace conversion_fuzzer;
  FuzzedDataProvider bytes(data, size);
  InputBuilder builder(bytes);
  const Inputs inputs = builder.Build();
  const std::string before = Describe(inputs);

  ConvertWholePlaylist(inputs, bytes.ConsumeIntegral<std::int32_t>());
  ConvertParts(inputs, builder, bytes);
  ConvertIdentifiers(bytes);

  RequireSame(before, Describe(inputs), "the inputs are unchanged and no longer referenced");
  ConvertGeneratedSequence(builder, bytes);
  return 0;
}
