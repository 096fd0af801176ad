#include "app/extended_fields.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "sim/ril_ext_phonebook.h"
#include "tests/card/soft_card.h"
#include "tests/flow/program_on_card.h"

// What a deletion clears beside name and number, on the sample card with every kind of file.
namespace kelpin::app {
namespace {

using sim::FieldSlot;

constexpr std::uint32_t kEntry = 12;
constexpr std::uint32_t kNeighbour = 9;

class ExtendedFieldsTest : public testing::Test {
 protected:
  void SetUp() override {
    state.settings.Enable_SNE = 1;
    ASSERT_TRUE(state.extPhonebook.Open(0));
    LoadExtendedLayout(state);
    ASSERT_TRUE(state.extPhonebook.Loaded());
    for (const std::uint32_t index : {kEntry, kNeighbour}) {
      Write(FieldSlot::kEmail, index, u"ana@example.org");
      Write(FieldSlot::kNickname, index, u"Ana");
      WriteNumber(FieldSlot::kSecondNumber, index, u"+4930231251231234567890123");
      WriteNumber(FieldSlot::kThirdNumber, index, u"112");
      ASSERT_TRUE(state.extPhonebook.WriteGroup(index, std::vector<std::uint8_t>{1, 2}));
    }
  }

  // The record that holds the field now, as an editor finds it before it writes.
  std::uint32_t Existing(FieldSlot slot, std::uint32_t index) {
    std::uint32_t existing = sim::kNoRecord;
    sim::NumberField number;
    std::u16string text;
    const bool isNumber = slot == FieldSlot::kSecondNumber || slot == FieldSlot::kThirdNumber;
    static_cast<void>(isNumber
                          ? state.extPhonebook.ReadNumberField(slot, index, existing, number)
                          : state.extPhonebook.ReadTextField(slot, index, false, existing, text));
    return existing;
  }
  void Write(FieldSlot slot, std::uint32_t index, const std::u16string& text) {
    std::uint32_t existing = Existing(slot, index);
    ASSERT_EQ(state.extPhonebook.WriteTextField(slot, index, text, existing), sim::kFieldWritten);
  }
  void WriteNumber(FieldSlot slot, std::uint32_t index, const std::u16string& number) {
    std::uint32_t existing = Existing(slot, index);
    ASSERT_EQ(state.extPhonebook.WriteNumberField(slot, index, {number, 0}, false, existing),
              sim::kFieldWritten);
  }
  std::u16string Text(FieldSlot slot, std::uint32_t index) {
    std::uint32_t existing = sim::kNoRecord;
    std::u16string text;
    static_cast<void>(state.extPhonebook.ReadTextField(slot, index, false, existing, text));
    return text;
  }
  std::u16string Number(FieldSlot slot, std::uint32_t index) {
    std::uint32_t existing = sim::kNoRecord;
    sim::NumberField field;
    static_cast<void>(state.extPhonebook.ReadNumberField(slot, index, existing, field));
    return field.number;
  }
  std::vector<std::uint8_t> Groups(std::uint32_t index) {
    std::vector<std::uint8_t> groups;
    EXPECT_EQ(state.extPhonebook.ReadGroup(index, groups), sim::FieldResult::kRead);
    return groups;
  }
  void ClearAll(std::uint32_t index) {
    for (const ExtendedField field :
         {ExtendedField::kNumber2, ExtendedField::kNumber3, ExtendedField::kEmail,
          ExtendedField::kNickname, ExtendedField::kGroup}) {
      ClearExtendedField(state, index, field);
    }
  }
  void ExpectKept(std::uint32_t index) {
    EXPECT_EQ(Text(FieldSlot::kEmail, index), u"ana@example.org");
    EXPECT_EQ(Text(FieldSlot::kNickname, index), u"Ana");
    EXPECT_EQ(Number(FieldSlot::kSecondNumber, index), u"+4930231251231234567890123");
    EXPECT_EQ(Number(FieldSlot::kThirdNumber, index), u"112");
    EXPECT_EQ(Groups(index), (std::vector<std::uint8_t>{1, 2}));
  }

  device::card::SoftCard card{"usim"};
  test::ProgramOnCard program{card.Channel()};
  AppState& state = program.state;
};

TEST_F(ExtendedFieldsTest, ClearingAnEntryLeavesNothingForTheNextAtItsPlace) {
  ExpectKept(kEntry);
  ClearAll(kEntry);
  LoadExtendedLayout(state);
  EXPECT_EQ(Text(FieldSlot::kEmail, kEntry), u"");
  EXPECT_EQ(Text(FieldSlot::kNickname, kEntry), u"");
  EXPECT_EQ(Number(FieldSlot::kSecondNumber, kEntry), u"");
  EXPECT_EQ(Number(FieldSlot::kThirdNumber, kEntry), u"");
  EXPECT_EQ(Groups(kEntry), std::vector<std::uint8_t>{});
  ExpectKept(kNeighbour);
}

TEST_F(ExtendedFieldsTest, ClearingTwiceChangesNoOtherEntry) {
  ClearAll(kEntry);
  ClearAll(kEntry);
  LoadExtendedLayout(state);
  ExpectKept(kNeighbour);
}

TEST_F(ExtendedFieldsTest, ALocationBeyondTheFourthSetIsLeftAlone) {
  const auto before = card.Channel().CommandCount();
  ClearAll(1001);
  EXPECT_EQ(card.Channel().CommandCount(), before);
  ExpectKept(kEntry);
}

TEST_F(ExtendedFieldsTest, ACardWithoutSuchFilesIsNotAskedForThem) {
  device::card::SoftCard plain("sim-250");
  std::string error;
  const std::string file = plain.File() + ".copy";  // the other channel has the file itself
  std::filesystem::copy_file(plain.File(), file);
  ASSERT_TRUE(card.Channel().Insert(file, error)) << error;
  LoadExtendedLayout(state);
  EXPECT_FALSE(state.extPhonebook.HasGroups());
  const auto before = card.Channel().CommandCount();
  ClearAll(kEntry);
  EXPECT_EQ(card.Channel().CommandCount(), before);
}

TEST_F(ExtendedFieldsTest, ACardThatIsGoneIsNotToldOf) {
  card.Channel().Remove();
  ClearAll(kEntry);
  card.Channel().Insert();
  LoadExtendedLayout(state);
  ExpectKept(kEntry);
  ExpectKept(kNeighbour);
}

}  // namespace
}  // namespace kelpin::app
