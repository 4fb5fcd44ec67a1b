// GUID families and the clip id: canonical text, one GUID per input within a
// family, no text shared between families, and the limits of the id record.
#include "input-models/SequenceIdentifiers.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <stdexcept>
#include <string>

#include "support/PlaylistBuilders.h"

namespace {

namespace Data = Kov::Replivo::Data;
using Data::Servers::ServerId;
using ElementGuid = Data::Sequences::Elements::Guid;

std::string Text(const Data::Guid& guid) {
  char buffer[37];
  return guid.ToString(buffer, sizeof buffer);
}

TEST(SequenceIdentifiers, GuidTextIsCanonicalLowerCase) {
  const std::regex canonical("[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}");
  for (const std::string& text :
       {Text(Data::Clips::Guid("CLIP\xff\x80zZ")), Text(Data::Sequences::Guid("")),
        Text(ElementGuid(0xffffffffu, ServerId(0xffffffffu))),
        Text(ElementGuid(1, ServerId(2), static_cast<ElementGuid::Category>(0xffffffffu)))}) {
    EXPECT_TRUE(std::regex_match(text, canonical)) << text;
  }
}

TEST(SequenceIdentifiers, GuidsAreDistinctPerInputAndAcrossFamilies) {
  std::set<std::string> texts;
  std::size_t made = 0;
  const auto add = [&](const Data::Guid& guid) {
    texts.insert(Text(guid));
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
  // The same input gives the same GUID.
  EXPECT_EQ(Text(Data::Clips::Guid("CLIP01")), Text(Data::Clips::Guid("CLIP01")));
}

TEST(SequenceIdentifiers, UmIdHoldsElevenCharactersAndComparesByText) {
  EXPECT_STREQ("ABCDEFGHIJK", Data::Clips::UmId("ABCDEFGHIJK").GetUmId());
  testing_support::ExpectThrowExactly<std::invalid_argument>(
      [] { Data::Clips::UmId("ABCDEFGHIJKL"); }, "UmId: the text has more than 11 characters");
  EXPECT_EQ(Data::Clips::UmId::Empty(), Data::Clips::UmId(nullptr));
  EXPECT_EQ(Data::Clips::UmId::Empty(), Data::Clips::UmId(""));
  EXPECT_NE(Data::Clips::UmId("A"), Data::Clips::UmId("AB"));
  // Texts that no UmId can hold are refused by the GUID families.
  testing_support::ExpectThrowExactly<std::invalid_argument>(
      [] { Data::Clips::Guid(std::string("A\0B", 3)); },
      "Guid: an id text has at most 11 characters and no NUL");
  testing_support::ExpectThrowExactly<std::invalid_argument>(
      [] { Data::Sequences::Guid("ABCDEFGHIJKL"); },
      "Guid: an id text has at most 11 characters and no NUL");
}

}  // namespace
