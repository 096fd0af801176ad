#include "tests/editor/entry_editor_fixture.h"

// What is told when a write fails, what is on the card then, and what the next try does.
namespace kelpin::editor {
namespace {

class FailedSaveTest : public EntryEditorTest {
 protected:
  static constexpr char16_t kFull[] = u"The SIM is full. Delete some SIM contacts and try again.";

  static void TypeAll(ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    Type(dialog, res::kNewNumber2, u"55");
    Type(dialog, res::kNewNumber3, u"66");
    Type(dialog, res::kNewEmail, u"d.e");
    Type(dialog, res::kNewNickname, u"Do");
  }
  void FillCard() {
    for (std::uint32_t location = 1; location <= 2 * kPerSet; ++location) {
      device.sim.SetEntry(location, u"A", u"1");
    }
  }
};

struct FailingField {
  std::uint32_t code;
  std::u16string_view text;
  int focus;
  Strings written;  // up to the write that fails, which is told of too
};

class FailingFieldTest : public FailedSaveTest, public testing::WithParamInterface<FailingField> {};

INSTANTIATE_TEST_SUITE_P(
    Fields, FailingFieldTest,
    testing::Values(FailingField{6,
                                 u"Failed to update Phone Number 2 field.",
                                 res::kNewNumber2,
                                 {"entry 1", "write 6 1"}},
                    FailingField{7,
                                 u"Failed to update Phone Number 3 field.",
                                 res::kNewNumber3,
                                 {"entry 1", "write 6 1", "write 7 1"}},
                    FailingField{2,
                                 u"Failed to update Email field.",
                                 res::kNewEmail,
                                 {"entry 1", "write 6 1", "write 7 1", "write 1 1", "write 2 1"}},
                    FailingField{40,
                                 u"Failed to update Nickname field.",
                                 res::kNewNickname,
                                 {"entry 1", "write 6 1", "write 7 1", "write 1 1", "write 2 1",
                                  "write 1 1", "write 40 1"}}),
    [](const auto& field) { return "File" + std::to_string(field.param.code); });

TEST_P(FailingFieldTest, StopsTheSaveAndIsNamed) {
  SetRecord(3, 1, Bytes(10, 0x55));
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeAll(dialog);
    FailWrites(GetParam().code);
    Forget();
    Done(dialog);
    EXPECT_EQ(Written(), GetParam().written);
    ASSERT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(Boxes().back().text, GetParam().text);
    EXPECT_EQ(Boxes().back().caption, u"Error");
    EXPECT_EQ(Boxes().back().owner, dialog.Handle());
    EXPECT_FALSE(dialog.Ended());
    EXPECT_EQ(dialog.Focus(), GetParam().focus);
    EXPECT_EQ(device.sim.Name(1), u"Dora");
    EXPECT_EQ(Record(3, 1), Bytes(10, 0x55));  // the group comes last
    // Once more from the start, which takes the next free location.
    HealRadio();
    Forget();
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_EQ(Written().front(), "entry 2");
    EXPECT_EQ(device.sim.Name(1), u"Dora");  // nothing is taken back
    EXPECT_EQ(device.sim.Name(2), u"Dora");
    EXPECT_EQ(Record(6, 2), Padded({0, 2, 0x81, 0x55}, 15));
    const Bytes references = Record(1, 2);
    EXPECT_EQ(Record(2, references.at(0)), Padded({'d', '.', 'e'}, 30));
    EXPECT_EQ(Record(7, references.at(1)), Padded({0, 2, 0x81, 0x66}, 17));
    EXPECT_EQ(Record(40, references.at(2)), Padded({'D', 'o'}, 12));
    EXPECT_EQ(Record(3, 2), Bytes(10, 0x00));
  });
}

TEST_F(FailedSaveTest, AChangeThatFailedHalfwayIsRepeatedInPlace) {
  device.sim.SetEntry(2, u"Anna", u"111");
  Open();
  InEdit(2, [this](ui::Dialog& dialog) {
    Type(dialog, res::kEditNumber3, u"66");
    Type(dialog, res::kEditEmail, u"d.e");
    FailWrites(2);
    Done(dialog);
    EXPECT_EQ(Boxes().back().text, u"Failed to update Email field.");
    HealRadio();
    Forget();
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
    // The third number is where the first try put it: its record and no other is written again.
    EXPECT_EQ(Written(), (Strings{"entry 2", "write 6 2", "write 7 1", "write 2 1", "write 1 2",
                                  "write 3 2"}));
  });
  EXPECT_EQ(Record(1, 2), (Bytes{1, 1, 0xFF}));
  EXPECT_EQ(Record(7, 2), Bytes(17, 0xFF));
}

TEST_F(FailedSaveTest, AGroupThatFailsIsNotToldOf) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeAll(dialog);
    FailWrites(3);
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(FailedSaveTest, AnEntryThatFailsIsToldByItsCode) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeAll(dialog);
    device.sim.SetResult("SimWritePhonebookEntry", SimResult::kMemoryFailure);
    Forget();
    Done(dialog);
    EXPECT_EQ(Written(), Strings{"entry 1"});
    EXPECT_EQ(BoxTexts(), Texts{u"Storage memory failure."});
    EXPECT_FALSE(dialog.Ended());
    EXPECT_TRUE(Rows().empty());
    EXPECT_EQ(state->simPhonebook.Slot(1), 0u);
  });
}

TEST_F(FailedSaveTest, ACardThatSaysItIsFullIsToldOnlyWhereThatIsWanted) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeAll(dialog);
    device.sim.SetResult("SimWritePhonebookEntry", SimResult::kSimFull);
    Done(dialog);
    EXPECT_EQ(BoxTexts(), Texts{kFull});
    EXPECT_FALSE(dialog.Ended());
    state->settings.Disable_SIMFullMsg = 1;
    Done(dialog);
    EXPECT_EQ(Boxes().size(), 1u);
    EXPECT_FALSE(dialog.Ended());
    EXPECT_TRUE(dialog.Enabled(res::kNewName));
  });
}

TEST_F(FailedSaveTest, AFullCardIsToldOnceAndTheFormCloses) {
  SetSwitch(u"Disable_SIMFullMsg", 1);
  FillCard();
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    Forget();
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
    EXPECT_TRUE(Written().empty());
  });
  EXPECT_EQ(BoxTexts(), Texts{kFull});
}

TEST_F(FailedSaveTest, ACardThatFilledUpMeanwhileIsLikeOneThatWasFull) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeAll(dialog);
    for (std::uint32_t location = 1; location <= 2 * kPerSet; ++location) {
      state->simPhonebook.MarkSlot(location, 1);
    }
    Forget();
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
    EXPECT_TRUE(Written().empty());
  });
  EXPECT_EQ(BoxTexts(), Texts{kFull});
}

TEST_F(FailedSaveTest, TheLocationIsTheOneThatIsFreeWhenItIsSaved) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    state->simPhonebook.MarkSlot(1, 1);
    Done(dialog);
  });
  EXPECT_EQ(device.sim.Name(2), u"Dora");
}

}  // namespace
}  // namespace kelpin::editor
