// Cards whose EF_PBR names one file for two uses: what is written as the one is never the other.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/card/ext_card.h"
#include "tests/card/sim_client.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;
using sim::FieldSlot;
using sim::kNoRecord;

constexpr std::uint32_t kWithEmail = 4;  // its e-mail is in the first record of EF_EMAIL
constexpr char16_t kLong[] = u"1234567890123456789012345";

// The sample card, with a file id in its two reference records replaced.
class Conflict {
 public:
  Conflict(std::uint8_t tag, std::uint16_t id) : card_("usim") {
    card_.Image().Find("3F00/7F10/5F3A/4F30")->update = softcard::Access::kPin1;
    std::vector<std::uint8_t>& bytes = File("4F30");
    for (std::size_t at = 0; at + 3 < bytes.size(); ++at) {
      if (bytes[at] != tag || bytes[at + 1] != 2 || bytes[at + 2] != 0x4F) continue;
      bytes[at + 2] = static_cast<std::uint8_t>(id >> 8);
      bytes[at + 3] = static_cast<std::uint8_t>(id & 0xFF);
    }
    references_ = bytes;
    entries_ = File("4F3A");
  }

  MemoryCard& Card() { return card_; }
  std::vector<std::uint8_t>& File(const std::string& id) {
    return card_.Image().Find("3F00/7F10/5F3A/" + id)->content->bytes;
  }
  void ExpectUntouched() {
    EXPECT_EQ(File("4F30"), references_);
    EXPECT_EQ(File("4F3A"), entries_);
  }

 private:
  MemoryCard card_;
  std::vector<std::uint8_t> references_;
  std::vector<std::uint8_t> entries_;
};

TEST(ConflictingFiles, AnEmailIsNeverErasedFromTheReferences) {
  Conflict conflict(0xCA, 0x4F30);
  ExtStack stack(conflict.Card());
  EXPECT_EQ(stack.book.SlotInUse(0, FieldSlot::kEmail).recordCount, 0U);
  std::uint32_t existing = kNoRecord;
  std::u16string text;
  static_cast<void>(stack.book.ReadTextField(FieldSlot::kEmail, kWithEmail, false, existing, text));
  static_cast<void>(stack.book.WriteTextField(FieldSlot::kEmail, kWithEmail, u"", existing));
  conflict.ExpectUntouched();
}

TEST(ConflictingFiles, ASecondNumberIsNeverWrittenOverAnEntry) {
  Conflict conflict(0xC4, 0x4F3A);
  ExtStack stack(conflict.Card());
  EXPECT_EQ(stack.book.SlotInUse(0, FieldSlot::kSecondNumber).recordCount, 0U);
  std::uint32_t existing = kNoRecord;
  static_cast<void>(stack.book.WriteNumberField(FieldSlot::kSecondNumber, kWithEmail, {u"112", 0},
                                                false, existing));
  conflict.ExpectUntouched();
}

TEST(ConflictingFiles, NamesOfNumbersAreNeverEntries) {
  Conflict conflict(0xC7, 0x4F3A);
  ExtStack stack(conflict.Card());
  EXPECT_FALSE(stack.book.HasNumberNames());
}

TEST(ConflictingFiles, TheRestOfALongNumberIsNeverKeptAmongTheEntries) {
  Conflict conflict(0xC2, 0x4F3A);
  ExtStack stack(conflict.Card());
  SimClient sim(stack.service);
  EXPECT_EQ(sim.Write(1, u"Long", kLong), SimResult::kBadParameter);
  conflict.ExpectUntouched();
}

// The same with the entries of the second set, which the first one's references name.
TEST(ConflictingFiles, EntriesOfAnotherSetAreNobodysExtensions) {
  Conflict conflict(0xC2, 0x4F3B);
  const std::vector<std::uint8_t> others = conflict.File("4F3B");
  ExtStack stack(conflict.Card());
  SimClient sim(stack.service);
  EXPECT_EQ(sim.Write(1, u"Long", kLong), SimResult::kBadParameter);
  EXPECT_EQ(conflict.File("4F3B"), others);
  conflict.ExpectUntouched();
}

// EF_PBC is written to with every entry: its first byte would be a tag of the references.
TEST(ConflictingFiles, TheMarkOfAChangeIsNeverSetAmongTheReferences) {
  Conflict conflict(0xC5, 0x4F30);
  const std::vector<std::uint8_t> references = conflict.File("4F30");
  ExtStack stack(conflict.Card());
  SimClient sim(stack.service);
  ASSERT_EQ(sim.Delete(1), SimResult::kOk);
  ASSERT_EQ(sim.WriteFree(1, u"New", u"112"), SimResult::kOk);
  EXPECT_EQ(sim.Text(1), u"New|112");
  EXPECT_EQ(conflict.File("4F30"), references);
}

}  // namespace
}  // namespace kelpin::device::card
