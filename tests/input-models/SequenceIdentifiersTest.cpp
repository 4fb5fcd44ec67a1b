// GUID families and the clip id: the text form and how it fits a buffer of any
// size, one GUID per input within a family, no text shared between families,
// and the limits of the id record.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "support/PlaylistBuilders.h"
#include "support/Refusals.h"

namespace {

using namespace testing_support;
using Data::Servers::ServerId;
using ElementGuid = Data::Sequences::Elements::Guid;

TEST(SequenceIdentifiers, GuidTextIsLowerCaseAndCutToTheBufferWithNothingWrittenPastIt) {
  // Number and server id in big-endian words after the family tag; every hex digit occurs.
  const ElementGuid guid(0xabcdef01, ServerId(0x23456789));
  const std::string full = "e1e00003-abcd-ef01-2345-678900000000";
  EXPECT_EQ(full, GuidText(guid));
  struct SizeCase {
    const char* name;
    unsigned size;
  };
  for (const SizeCase c : {SizeCase{"room for the NUL only", 1},
                           {"one character", 2},
                           {"first group", 9},
                           {"first group and dash", 10},
                           {"one character short", 36},
                           {"exact", 37},
                           {"larger", 64}}) {
    SCOPED_TRACE(c.name);
    std::vector<char> buffer(65, 'x');
    EXPECT_EQ(buffer.data(), guid.ToString(buffer.data(), c.size));
    const std::size_t written = std::min<std::size_t>(c.size - 1, full.size());
    EXPECT_EQ(full.substr(0, written), buffer.data());
    EXPECT_EQ('x', buffer[written + 1]);
  }
  char untouched = 'x';
  EXPECT_EQ(&untouched, guid.ToString(&untouched, 0));
  EXPECT_EQ('x', untouched);
}

TEST(SequenceIdentifiers, GuidsAreDistinctPerInputAndAcrossFamilies) {
  std::set<std::string> texts;
  std::size_t made = 0;
  const auto add = [&](const Data::Guid& guid) {
    texts.insert(GuidText(guid));
    ++made;
  };
  // Texts that differ only in length, trailing characters or high bytes.
  for (const char* umId : {"", "A", "A ", "AB", "\x01", "\xff", "ABCDEFGHIJK", "ABCDEFGHIJ"}) {
    add(Data::Clips::Guid(umId));
    add(Data::Sequences::Guid(umId));
  }
  // Number and server id swapped, no category against every category.
  for (const auto& [number, server] : {std::pair{1u, 2u}, std::pair{2u, 1u}, std::pair{0u, 0u}}) {
    add(ElementGuid(number, ServerId(server)));
    for (const auto category :
         {ElementGuid::AuxTrack, ElementGuid::AudioTransition, ElementGuid::VideoTransition,
          static_cast<ElementGuid::Category>(0)}) {
      add(ElementGuid(number, ServerId(server), category));
    }
  }
  EXPECT_EQ(made, texts.size());
}

TEST(SequenceIdentifiers, UmIdHoldsElevenCharactersAndComparesByText) {
  EXPECT_STREQ("ABCDEFGHIJK", Data::Clips::UmId("ABCDEFGHIJK").GetUmId());
  ExpectRefused([] { Data::Clips::UmId("ABCDEFGHIJKL"); }, kUmIdTooLong);
  EXPECT_EQ(Data::Clips::UmId::Empty(), Data::Clips::UmId(nullptr));
  EXPECT_EQ(Data::Clips::UmId::Empty(), Data::Clips::UmId(""));
  EXPECT_NE(Data::Clips::UmId("A"), Data::Clips::UmId("AB"));
  // Texts that no UmId can hold are refused by the GUID families.
  ExpectRefused([] { Data::Clips::Guid(std::string("A\0B", 3)); }, kGuidTextInvalid);
  ExpectRefused([] { Data::Sequences::Guid("ABCDEFGHIJKL"); }, kGuidTextInvalid);
}

}  // namespace
