#include "app/list_turn.h"
#include "tests/editor/entry_editor_fixture.h"

// What a save writes, in which order, and what becomes of the list and of the dialog.
namespace kelpin::editor {
namespace {

class SaveEntryTest : public EntryEditorTest {
 protected:
  SaveEntryTest() { PutNames(); }

  static void TypeNew(ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    Type(dialog, res::kNewNumber2, u"+4955");
    Type(dialog, res::kNewNumber3, u"66");
    Type(dialog, res::kNewEmail, u"d@e.f");
    Type(dialog, res::kNewNickname, u"Do");
  }
  int sleeps_ = 0;
  // An entry at location 2 with every field, in the first records of their files.
  void PutEntry() {
    device.sim.SetEntry(2, u"Anna", u"111");
    SetRecord(6, 2, {3, 3, 0x81, 0x21, 0xF3});
    SetRecord(7, 1, {1, 2, 0x81, 0x5A});
    SetRecord(2, 1, Letters("a@b.c"));
    SetRecord(40, 1, Letters("Ann"));
    SetRecord(1, 2, {1, 1, 1});
    SetRecord(3, 2, {2, 3, 0, 1, 0, 0, 0, 0, 0, 0});
  }
};

TEST_F(SaveEntryTest, ANewEntryIsWrittenFieldByFieldInOrder) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeNew(dialog);
    Forget();
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
    EXPECT_EQ(dialog.Result(), 16);
    EXPECT_EQ(dialog.Bar(), nullptr);
    // Entry, number 2; number 3, e-mail and nickname each with the entry's index record; group.
    EXPECT_EQ(Written(), (Strings{"entry 1", "write 6 1", "write 7 1", "write 1 1", "write 2 1",
                                  "write 1 1", "write 40 1", "write 1 1", "write 3 1"}));
  });
  EXPECT_EQ(device.sim.Name(1), u"Dora");
  EXPECT_EQ(device.sim.Number(1), u"+49444");
  // Name id 0; 2 bytes of BCD and the type; 0x91 international; digits swapped.
  EXPECT_EQ(Record(6, 1), Padded({0, 3, 0x91, 0x94, 0x55}, 15));
  EXPECT_EQ(Record(7, 1), Padded({0, 2, 0x81, 0x66}, 17));
  EXPECT_EQ(Record(2, 1), Padded({'d', 0x00, 'e', '.', 'f'}, 30));
  EXPECT_EQ(Record(40, 1), Padded({'D', 'o'}, 12));
  EXPECT_EQ(Record(1, 1), (Bytes{1, 1, 1}));
  EXPECT_EQ(Record(3, 1), Bytes(10, 0x00));
  EXPECT_TRUE(Boxes().empty());
  EXPECT_FALSE(device.screen.WaitCursor());
}

TEST_F(SaveEntryTest, AnEntryThatIsChangedKeepsItsRecords) {
  PutEntry();
  Open();
  InEdit(2, [this](ui::Dialog& dialog) {
    Type(dialog, res::kEditName, u"Anne");
    Type(dialog, res::kEditNumber, u"112");
    Type(dialog, res::kEditNumber2, u"45");
    Type(dialog, res::kEditNumber3, u"#6");
    Type(dialog, res::kEditEmail, u"b@b.c");
    Type(dialog, res::kEditNickname, u"Nan");
    Forget();
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
    EXPECT_EQ(Written(), (Strings{"entry 2", "write 6 2", "write 7 1", "write 2 1", "write 40 1",
                                  "write 3 2"}));
  });
  EXPECT_EQ(device.sim.Name(2), u"Anne");
  EXPECT_EQ(device.sim.Number(2), u"112");
  EXPECT_EQ(Record(6, 2), Padded({3, 2, 0x81, 0x54}, 15));  // the number's name stays
  EXPECT_EQ(Record(7, 1), Padded({1, 2, 0x81, 0x6B}, 17));
  EXPECT_EQ(Record(2, 1), Padded({'b', 0x00, 'b', '.', 'c'}, 30));
  EXPECT_EQ(Record(40, 1), Padded({'N', 'a', 'n'}, 12));
  EXPECT_EQ(Record(1, 2), (Bytes{1, 1, 1}));
  EXPECT_EQ(Record(3, 2), (Bytes{2, 3, 0, 1, 0, 0, 0, 0, 0, 0}));  // as it was, byte for byte
}

TEST_F(SaveEntryTest, EmptyFieldsAreWrittenToo) {
  PutEntry();
  Open();
  InEdit(2, [this](ui::Dialog& dialog) {
    for (const int edit : {1058, 1068, 1060, 2007}) Type(dialog, edit, u"");
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(Record(6, 2), Bytes(15, 0xFF));
  EXPECT_EQ(Record(7, 1), Bytes(17, 0xFF));
  EXPECT_EQ(Record(2, 1), Bytes(30, 0xFF));
  EXPECT_EQ(Record(40, 1), Bytes(12, 0xFF));
  EXPECT_EQ(Record(1, 2), (Bytes{0xFF, 0xFF, 0xFF}));
}

TEST_F(SaveEntryTest, WhatIsSwitchedOffOrUnavailableIsNotWritten) {
  SetSwitch(u"Disable_ANR", 1);
  SetSwitch(u"Enable_GAS", 0);
  FillFile(7);
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    Type(dialog, res::kNewEmail, u"d@e.f");
    Forget();
    Done(dialog);
    EXPECT_EQ(Written(), (Strings{"entry 1", "write 2 1", "write 1 1"}));
  });
}

TEST_F(SaveEntryTest, WhatCouldNotBeReadIsNotClearedUnseen) {
  PutEntry();
  Open();
  FailReads(6);
  InEdit(2, [this](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kEditNumber2), u"");
    HealRadio();
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(Record(6, 2), Padded({3, 3, 0x81, 0x21, 0xF3}, 15));
}

TEST_F(SaveEntryTest, ATextInAFormThatIsNotReadStaysUntilAnotherIsTyped) {
  PutEntry();
  // "Zo" and an e with two dots: the base is 0x80, the last character 0x6B above it.
  const std::vector<std::uint8_t> nickname = {0x81, 3, 1, 0x5A, 0x6F, 0xEB};
  SetRecord(40, 1, nickname);
  Open();
  InEdit(2, [this](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(res::kEditNickname), u"");
    EXPECT_TRUE(dialog.Enabled(res::kEditNickname));
    Type(dialog, res::kEditNumber2, u"9");
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(Record(6, 2), Padded({3, 2, 0x81, 0xF9}, 15));
  EXPECT_EQ(Record(40, 1), Padded(nickname, Record(40, 1).size()));
  EXPECT_EQ(Record(1, 2), Padded({1, 1, 1}, Record(1, 2).size()));
  InEdit(2, [this](ui::Dialog& dialog) {
    Type(dialog, res::kEditNickname, u"Zo");
    Done(dialog);
  });
  EXPECT_EQ(Record(40, 1), Padded(Letters("Zo"), Record(40, 1).size()));
  EXPECT_EQ(Record(1, 2), Padded({1, 1, 1}, Record(1, 2).size()));
}

TEST_F(SaveEntryTest, WhatIsTypedInItsPlaceIsWritten) {
  PutEntry();
  Open();
  FailReads(6);
  InEdit(2, [this](ui::Dialog& dialog) {
    HealRadio();
    Type(dialog, res::kEditNumber2, u"9");
    Done(dialog);
  });
  EXPECT_EQ(Record(6, 2), Padded({0, 2, 0x81, 0xF9}, 15));
}

TEST_F(SaveEntryTest, TheNewEntryIsListedInItsPlaceAndSelected) {
  PutThree();  // Anna, Bert, Cem
  Open();
  InNew([this](ui::Dialog& dialog) {
    Type(dialog, res::kNewName, u"Bea");
    Type(dialog, res::kNewNumber, u"+49444");
    Done(dialog);
    EXPECT_EQ(Rows(), (Texts{u"1|Anna|111", u"4|Bea|+49444", u"2|Bert|222", u"3|Cem|333"}));
  });
  EXPECT_EQ(List().SelectedCount(), 1);
  EXPECT_EQ(List().NextItem(-1, ui::kItemSelected), 1);
  EXPECT_EQ(List().FocusedItem(), 1);
  EXPECT_EQ(state->simPhonebook.FirstFreeSlot(), 5u);
  EXPECT_EQ(state->simPhonebook.CollectStores(), 1u);
  ExpectAtRest();
}

TEST_F(SaveEntryTest, TheChangedEntryReplacesItsRow) {
  PutThree();
  Open();
  InEdit(1, [this](ui::Dialog& dialog) {
    Type(dialog, res::kEditName, u"Zoe");
    Done(dialog);
  });
  EXPECT_EQ(Rows(), (Texts{u"2|Bert|222", u"3|Cem|333", u"1|Zoe|111"}));
  EXPECT_EQ(List().NextItem(-1, ui::kItemSelected), 2);
  EXPECT_EQ(List().SelectedCount(), 1);
  ExpectAtRest();
}

TEST_F(SaveEntryTest, TheListShowsAnEntryWhoseFieldFailed) {
  Open();
  FailWrites(6);
  InNew([this](ui::Dialog& dialog) {
    TypeNew(dialog);
    Done(dialog);
    EXPECT_FALSE(dialog.Ended());
    EXPECT_EQ(Rows(), Texts{u"1|Dora|+49444"});
    EXPECT_EQ(state->simPhonebook.Slot(1), 1u);
  });
}

TEST_F(SaveEntryTest, WhileSomebodyWorksOnTheRowsTheEntryWaits) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    ASSERT_TRUE(app::TakeListOrAsk(*state, 0));
    // The load flag is on: the save waits for it in steps, by the clock.
    device.clock.OnAdvance([this] {
      if (app::IsListLoading(*state) && ++sleeps_ == 3) app::GiveListBack(*state);
    });
    Forget();
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
    EXPECT_EQ(device.journal.Entries("Sleep"), (Strings(3, "Sleep(500)")));
    EXPECT_LT(Position("Sleep"), Position("SimWritePhonebookEntry"));
  });
  EXPECT_EQ(Rows(), Texts{u"1|Dora|+49444"});
}

TEST_F(SaveEntryTest, AChangeDoesNotWaitButItsRowDoes) {
  PutThree();
  Open();
  InEdit(1, [this](ui::Dialog& dialog) {
    Type(dialog, res::kEditName, u"Zoe");
    ASSERT_TRUE(app::TakeListOrAsk(*state, 0));
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
    EXPECT_EQ(device.sim.Name(1), u"Zoe");
    EXPECT_EQ(Rows().front(), u"1|Anna|111");
    app::GiveListBack(*state);
  });
  EXPECT_EQ(Rows().back(), u"1|Zoe|111");
}

TEST_F(SaveEntryTest, TheKeysOfTheFormSaveAndCancel) {
  Open();
  InNew([](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    EXPECT_TRUE(dialog.KeyDown({ui::Key::kEscape}));
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_TRUE(device.sim.Entries().empty());
  InNew([this](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    EXPECT_TRUE(dialog.KeyDown({ui::Key::kEnter}));
    Serve();
    EXPECT_TRUE(dialog.Ended());
    EXPECT_EQ(dialog.Result(), 16);
  });
  EXPECT_EQ(device.sim.Entries().size(), 1u);
  for (const bool close : {true, false}) {
    InNew([close](ui::Dialog& dialog) {
      close ? dialog.Close() : dialog.PressSoftKey(1);
      EXPECT_TRUE(dialog.Ended());
      EXPECT_EQ(dialog.Result(), 16);
      EXPECT_EQ(dialog.Bar(), nullptr);
    });
  }
  EXPECT_EQ(device.sim.Entries().size(), 1u);
}

TEST_F(SaveEntryTest, WhileItIsSavedTheDialogTakesNothingAndStaysOpen) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeNew(dialog);
    Type(dialog, res::kNewNumber, u"+49444");  // has the focus
    Forget();
    dialog.PressSoftKey(0);
    EXPECT_TRUE(device.screen.WaitCursor());
    for (const int control : {1004, 1005, 1062, 1066, 1064, 2005, 2009, 2012, 2011, 2010}) {
      EXPECT_FALSE(dialog.Enabled(control)) << control;
    }
    EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_FALSE(dialog.Bar()->KeyAt(1).enabled);
    // Whatever is pressed meanwhile.
    dialog.PressSoftKey(0);
    dialog.PressSoftKey(1);
    dialog.PressButton(res::kNewGroupButton);
    dialog.KeyDown({ui::Key::kEnter});
    dialog.KeyDown({ui::Key::kEscape});
    dialog.PostCommand(res::kNewEntryDone);
    dialog.PostCommand(res::kNewEntryCancel);
    dialog.EditByUser(res::kNewName, u"Other", 5);
    dialog.Close();
    device.screen.RunPending();
    EXPECT_FALSE(dialog.Ended());
    EXPECT_TRUE(Written().empty());  // the thread has not begun
    Serve();
    EXPECT_TRUE(dialog.Ended());
    EXPECT_EQ(device.journal.Count("SimWritePhonebookEntry"), 1u);
  });
  EXPECT_EQ(device.sim.Name(1), u"Dora");
  EXPECT_FALSE(device.screen.WaitCursor());
}

TEST_F(SaveEntryTest, AfterASaveThatFailedTheFormIsAsItWas) {
  FillFile(7);
  Open();
  FailWrites(2);
  InNew([this](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    Type(dialog, res::kNewEmail, u"d@e.f");
    dialog.SetFocus(res::kNewNumber);
    Done(dialog);
    for (const int control : {1004, 1005, 1062, 1064, 2005, 2009, 2012, 2010}) {
      EXPECT_TRUE(dialog.Enabled(control)) << control;
    }
    EXPECT_TRUE(IsUnavailable(dialog, 1066));
    EXPECT_FALSE(dialog.Enabled(2011));
    EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_TRUE(dialog.Bar()->KeyAt(1).enabled);
    EXPECT_EQ(dialog.Text(res::kNewName), u"Dora");
    EXPECT_EQ(dialog.Text(res::kNewEmail), u"d@e.f");
    EXPECT_EQ(dialog.Focus(), res::kNewEmail);  // where it failed
    EXPECT_FALSE(device.screen.WaitCursor());
  });
}

TEST_F(SaveEntryTest, WithoutAThreadItIsSavedAllTheSame) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeNew(dialog);
    device.failures.FailCallOf("CreateThread", 1);
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(Rows(), Texts{u"1|Dora|+49444"});
  EXPECT_EQ(Record(40, 1), Padded({'D', 'o'}, 12));
}

TEST_F(SaveEntryTest, WithoutAThreadToWaitForTheLoadTheUserIsTold) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    ASSERT_TRUE(app::TakeListOrAsk(*state, 0));
    device.failures.FailCallOf("CreateThread", 1);
    Done(dialog);
    EXPECT_EQ(BoxTexts(), Texts{u"An error occurs."});
    EXPECT_FALSE(dialog.Ended());
    EXPECT_TRUE(dialog.Enabled(res::kNewName));
    app::GiveListBack(*state);
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(device.sim.Name(1), u"Dora");
}

}  // namespace
}  // namespace kelpin::editor
