#include "editor/entry_form.h"
#include "editor/entry_writer.h"
#include "tests/editor/entry_editor_fixture.h"

// What a form is checked for before anything is written, and what is told when a write fails.
namespace kelpin::editor {
namespace {

std::u16string Text(std::size_t length, char16_t letter = u'a') {
  return std::u16string(length, letter);
}

TEST(EntryRules, ANameBeyondTheAlphabetTakesTwoBytesALetterAndOneMore) {
  EXPECT_TRUE(NameFits(Text(7, u'я'), 16, false));   // 14 of 16
  EXPECT_FALSE(NameFits(Text(8, u'я'), 16, false));  // 16 of 16, and the mark
  EXPECT_TRUE(NameFits(Text(8, u'я'), 16, true));    // the mark does not count
  EXPECT_FALSE(NameFits(Text(9, u'я'), 16, true));
  EXPECT_TRUE(NameFits(Text(7, u'я'), 15, false));
  EXPECT_FALSE(NameFits(Text(8, u'я'), 15, true));
}

TEST(EntryRules, ANameInTheAlphabetFitsWhateverItsLength) {
  EXPECT_TRUE(NameFits(Text(14), 14, false));
  EXPECT_TRUE(NameFits(Text(14, u'€'), 14, false));
  EXPECT_TRUE(NameFits(u"", 0, false));
  EXPECT_FALSE(NameFits(Text(13) + u"я", 14, false));
}

TEST(EntryRules, ALongNicknameIsAscii) {
  EXPECT_TRUE(NicknameFits(Text(10), 10));
  EXPECT_TRUE(NicknameFits(Text(4) + u"é", 11));
  EXPECT_FALSE(NicknameFits(Text(4) + u"é", 10));
  EXPECT_FALSE(NicknameFits(Text(4, u'я') + u"a", 10));
  EXPECT_TRUE(NicknameFits(u"", 0));
}

TEST(EntryRules, ThePlusOfANumberTakesNoRoom) {
  EXPECT_TRUE(NumberFits(Text(20, u'1'), 20));
  EXPECT_FALSE(NumberFits(Text(21, u'1'), 20));
  EXPECT_TRUE(NumberFits(u"+" + Text(20, u'1'), 20));
  EXPECT_TRUE(NumberFits(u"*21#+" + Text(20, u'1'), 20));
  EXPECT_FALSE(NumberFits(u"1+" + Text(20, u'1'), 20));
}

TEST(EntryRules, EveryFieldHasItsFileInEverySet) {
  const std::uint32_t codes[][4] = {
      {6, 16, 26, 36}, {7, 17, 27, 37}, {2, 12, 22, 32}, {40, 41, 42, 43}};
  const std::uint32_t types[] = {4, 12, 10, 3};
  for (std::size_t i = 0; i < kExtendedFieldCount; ++i) {
    const sim::FieldSlot slot = ExtendedFields()[i].slot;
    for (std::uint32_t set = 0; set < 4; ++set) {
      EXPECT_EQ(sim::FieldFileCode(slot, set), codes[i][set]) << i << " " << set;
    }
    EXPECT_EQ(sim::FieldFileCode(slot, 4), 0u);
    EXPECT_EQ(sim::TypeOf(slot), types[i]);
  }
  const std::uint32_t groups[] = {3, 13, 23, 33, 0};
  for (std::uint32_t set = 0; set < 5; ++set) EXPECT_EQ(sim::GroupFileCode(set), groups[set]);
  EXPECT_EQ(sim::kNumberNameFile, 5u);
  EXPECT_EQ(sim::kGroupNameFile, 4u);
  EXPECT_EQ(sim::kExtensionFile, 44u);
}

class RefusedEntryTest : public EntryEditorTest {
 protected:
  // Tries to save the form and finds this box, this focus, and nothing written.
  void ExpectRefused(ui::Dialog& dialog, std::u16string_view text, int focus) {
    const std::size_t boxes = Boxes().size();
    Forget();
    Done(dialog);
    EXPECT_TRUE(Written().empty());
    EXPECT_FALSE(dialog.Ended());
    EXPECT_FALSE(device.screen.WaitCursor());
    ASSERT_EQ(Boxes().size(), boxes + 1);
    EXPECT_EQ(Boxes().back().text, text);
    EXPECT_EQ(Boxes().back().caption, u"Error");
    EXPECT_EQ(Boxes().back().style, ui::kBoxError);
    EXPECT_EQ(Boxes().back().owner, dialog.Handle());
    EXPECT_EQ(dialog.Focus(), focus);
  }
};

TEST_F(RefusedEntryTest, ANameThatDoesNotFit) {
  device.sim.SetLengths(20, 16);
  Open();
  InNew([this](ui::Dialog& dialog) {
    Type(dialog, res::kNewNumber, u"1");
    Type(dialog, res::kNewName, Text(8, u'я'));
    dialog.SetFocus(res::kNewNumber);
    ExpectRefused(dialog, u"Maximum length for names has been exceeded.", res::kNewName);
    Type(dialog, res::kNewName, Text(7, u'я'));
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(device.sim.Name(1), Text(7, u'я'));
}

TEST_F(RefusedEntryTest, WithoutTheSchemeByteOneLetterMoreFits) {
  SetSwitch(u"Dismiss_NameScheme", 1);
  device.sim.SetLengths(20, 16);
  Open();
  InNew([this](ui::Dialog& dialog) {
    Type(dialog, res::kNewNumber, u"1");
    Type(dialog, res::kNewName, Text(9, u'я'));
    ExpectRefused(dialog, u"Maximum length for names has been exceeded.", res::kNewName);
    Type(dialog, res::kNewName, Text(8, u'я'));
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
}

TEST_F(RefusedEntryTest, ANameAsLongAsTheCardTakes) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    Type(dialog, res::kNewNumber, u"1");
    Type(dialog, res::kNewName, Text(15));
    EXPECT_EQ(dialog.Text(res::kNewName), Text(14));  // no more can be typed
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(device.sim.Name(1), Text(14));
}

TEST_F(RefusedEntryTest, ANicknameThatDoesNotFit) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    Type(dialog, res::kNewNickname, u"aaaaé");  // 10 bytes are for text
    ExpectRefused(dialog, u"Maximum length for names has been exceeded.", res::kNewNickname);
    Type(dialog, res::kNewNickname, Text(10));
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(Record(40, 1), Padded(Bytes(10, 'a'), 12));
}

TEST_F(RefusedEntryTest, NoNumber) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    Type(dialog, res::kNewName, u"Dora");
    ExpectRefused(dialog, u"Phone number cannot be left empty.", res::kNewNumber);
  });
}

TEST_F(RefusedEntryTest, ANumberThatIsTooLong) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    Type(dialog, res::kNewNumber, Text(21, u'1'));
    ExpectRefused(dialog, u"Maximum length for phone numbers has been exceeded.", res::kNewNumber);
    Type(dialog, res::kNewNumber, u"+" + Text(20, u'1'));
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(device.sim.Number(1), u"+" + Text(20, u'1'));
}

TEST_F(RefusedEntryTest, TheNameIsLookedAtFirst) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    Type(dialog, res::kNewName, Text(14, u'я'));
    Type(dialog, res::kNewNickname, Text(10, u'я'));
    ExpectRefused(dialog, u"Maximum length for names has been exceeded.", res::kNewName);
    Type(dialog, res::kNewName, u"я");
    ExpectRefused(dialog, u"Maximum length for names has been exceeded.", res::kNewNickname);
    Type(dialog, res::kNewNickname, u"я");
    ExpectRefused(dialog, u"Phone number cannot be left empty.", res::kNewNumber);
  });
}

}  // namespace
}  // namespace kelpin::editor
