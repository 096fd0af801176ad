// Every command of saving and of erasing a name of the card's lists goes wrong once, in every way.
// Whatever happens: the record holds the old name or the new one, whole, and not another byte of
// the card changed; what is told as written is on the card, what was refused is not; and once more,
// it is done.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "editor/name_family.h"
#include "editor/name_records.h"
#include "tests/card/ext_card.h"
#include "tests/card/ext_image_check.h"
#include "tests/card/hex.h"
#include "tests/fault/faulty_channel.h"
#include "tests/fault/small_card.h"

namespace kelpin::device::card {
namespace {

constexpr std::uint32_t kNamed = 1;

// On the sample card number names have 14 bytes, group names 16; the first of either has a name.
struct List {
  const char* name;
  const editor::NameFamily& family;
  const char* file;
  std::size_t length;
};
const List kLists[] = {{"NumberNames", editor::kNumberNames, "3F00/7F10/5F3A/4F81", 14},
                       {"Groups", editor::kGroupNames, "3F00/7F10/5F3A/4F82", 16}};

struct Change {
  const char* why;
  std::u16string name;
  std::string hex;  // what the record holds then, up to the padding
};
const Change kChanges[] = {{"a name in the card's alphabet", u"Yacht", "5961636874"},
                           {"a name in another", u"\u4E2D\u6587", "804E2D6587"},
                           {"an erased name", u"", ""}};

class NameListFault : public testing::TestWithParam<List> {
 protected:
  static std::unique_ptr<MemoryCard> NewCard() {
    static const std::string text = SmallCard(SampleCards()[0], false).Text();
    return MemoryCard::FromText(text);
  }
  // The record's bytes on the card, and those of all the other records of the phone book.
  std::vector<std::uint8_t> Record(const MemoryCard& card) const {
    const auto record = card.Image().Find(GetParam().file)->content->Record(kNamed);
    return {record.begin(), record.end()};
  }
  std::vector<std::uint8_t> Others(const MemoryCard& card) const {
    std::vector<std::uint8_t> others;
    const softcard::CardFile* own = card.Image().Find(GetParam().file);
    for (const auto& file : card.Image().Find("3F00/7F10/5F3A")->children) {
      if (file->content == nullptr) continue;
      const std::vector<std::uint8_t>& bytes = file->content->bytes;
      const std::size_t first = file.get() == own ? GetParam().length : 0;
      others.insert(others.end(), bytes.begin() + static_cast<std::ptrdiff_t>(first), bytes.end());
    }
    return others;
  }
  std::vector<std::uint8_t> Wanted(const Change& change) const {
    std::vector<std::uint8_t> bytes = Hex(change.hex);
    bytes.resize(GetParam().length, 0xFF);
    return bytes;
  }
  static bool Write(ExtStack& stack, const editor::NameFamily& family, std::u16string name) {
    return editor::NameRecords(stack.book, family).Write(kNamed, name);
  }

  std::vector<std::uint8_t> RunWell(const Change& change) {
    const auto card = NewCard();
    FaultyChannel channel(*card);
    ExtStack stack(channel);
    channel.Arm(0, Fault::kRefused);
    EXPECT_TRUE(Write(stack, GetParam().family, change.name));
    EXPECT_EQ(Record(*card), Wanted(change));
    return channel.Sent();
  }

  void RunFaulty(const Change& change, std::uint32_t command, Fault fault, bool isUpdate) {
    const auto card = NewCard();
    const std::vector<std::uint8_t> before = Record(*card);
    const std::vector<std::uint8_t> others = Others(*card);
    ASSERT_NE(before, Wanted(change));
    FaultyChannel channel(*card);
    bool written = false;
    {
      ExtStack stack(channel);
      channel.Arm(command, fault);
      written = Write(stack, GetParam().family, change.name);
      ASSERT_TRUE(channel.Fired());
    }
    channel.Disarm();
    EXPECT_EQ(Others(*card), others);
    const std::vector<std::uint8_t> now = Record(*card);
    EXPECT_TRUE(now == before || now == Wanted(change));
    if (written) {
      EXPECT_EQ(now, Wanted(change));
    }
    // Nobody can tell of a card that is gone, nor of one that says that it could not keep it.
    const bool isUntold = (StaysAway(fault) && IsAfter(fault)) || fault == Fault::kNotKept;
    if (!written && !(isUpdate && isUntold)) {
      EXPECT_EQ(now, before);
    }

    ExtStack stack(channel);
    std::u16string read;
    EXPECT_TRUE(editor::NameRecords(stack.book, GetParam().family).Read(kNamed, read));
    EXPECT_EQ(read == change.name, now == Wanted(change));
    EXPECT_TRUE(Write(stack, GetParam().family, change.name));
    EXPECT_EQ(Record(*card), Wanted(change));
    EXPECT_EQ(Others(*card), others);
  }
};

TEST_P(NameListFault, EveryCommandOfEveryChangeMayFail) {
  constexpr std::uint8_t kUpdateRecord = 0xDC;
  for (const Change& change : kChanges) {
    SCOPED_TRACE(change.why);
    const std::vector<std::uint8_t> sent = RunWell(change);
    ASSERT_EQ(std::count(sent.begin(), sent.end(), kUpdateRecord), 1);
    for (std::uint32_t command = 1; command <= sent.size() && !HasFailure(); ++command) {
      for (const Fault fault : kFaults) {
        SCOPED_TRACE("command " + std::to_string(command) + " of " + std::to_string(sent.size()) +
                     ", fault " + std::to_string(static_cast<int>(fault)));
        RunFaulty(change, command, fault, sent[command - 1] == kUpdateRecord);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(SampleCard, NameListFault, testing::ValuesIn(kLists),
                         [](const auto& list) { return list.param.name; });

}  // namespace
}  // namespace kelpin::device::card
