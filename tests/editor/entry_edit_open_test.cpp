#include "editor/entry_editor.h"
#include "editor/saved_rows.h"
#include "res/templates.h"
#include "tests/editor/entry_editor_fixture.h"

// What the dialog for an existing entry shows when it opens.
namespace kelpin::editor {
namespace {

// Locations 2 (first set, record 2) and 6 (second set, record 2).
constexpr std::uint32_t kFirst = 2;
constexpr std::uint32_t kSecond = 6;

class EditEntryTest : public EntryEditorTest {
 protected:
  EditEntryTest() {
    device.sim.SetEntry(kFirst, u"Anna", u"+4911122");
    device.sim.SetEntry(kSecond, u"Bert", u"222");
    PutNames();
  }

  // Everything that an entry can have: second number 123 named Desk3, third number *5 named Desk1,
  // an e-mail, a nickname, groups 2 and 3.
  void PutFields() {
    SetRecord(6, 2, {3, 3, 0x81, 0x21, 0xF3});
    SetRecord(7, 3, {1, 2, 0x81, 0x5A});
    SetRecord(2, 4, Letters("a@b.c"));
    SetRecord(40, 2, Letters("Ann"));
    // Types in the order of the reference: e-mail, third number, nickname.
    SetRecord(1, 2, {4, 3, 2});
    SetRecord(3, 2, {2, 3, 0, 0, 0, 0, 0, 0, 0, 0});
  }
};

TEST_F(EditEntryTest, ShowsTheEntryWithItsLocationThatCannotBeChanged) {
  Open();
  InEdit(kFirst, [&](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Resource(), 203);
    EXPECT_EQ(dialog.Title(), u"Kelpin");
    EXPECT_EQ(dialog.Bar()->Resource(), res::kBarEditEntry);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).command, 330);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).text, u"Done");
    EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_EQ(dialog.Bar()->KeyAt(1).command, 331);
    EXPECT_EQ(dialog.Text(1055), u"No.:");
    EXPECT_EQ(dialog.Text(1056), u"2");
    EXPECT_FALSE(dialog.Enabled(1056));
    EXPECT_EQ(dialog.Text(1007), u"Name:");
    EXPECT_EQ(dialog.Text(1012), u"Anna");
    EXPECT_EQ(dialog.Text(1009), u"Phone Number:");
    EXPECT_EQ(dialog.Text(1018), u"+4911122");
    EXPECT_EQ(dialog.Text(1057), u"Phone Number 2:");
    EXPECT_EQ(dialog.Text(1067), u"Phone Number 3:");
    EXPECT_EQ(dialog.Text(1059), u"E-mail:");
    EXPECT_EQ(dialog.Text(2006), u"Nickname:");
    EXPECT_EQ(dialog.Text(2015), u"Group:");
    EXPECT_EQ(dialog.Text(2016), u"<No Group>");
    for (const int edit : {1012, 1018, 1058, 1068, 1060, 2007}) {
      EXPECT_TRUE(dialog.Enabled(edit)) << edit;
    }
    EXPECT_EQ(dialog.Limit(1012), 14);
    EXPECT_EQ(dialog.Limit(1018), 21);
    EXPECT_EQ(dialog.Limit(1060), 28);
    EXPECT_EQ(dialog.Limit(2007), 10);
    EXPECT_EQ(dialog.Focus(), 1012);
    EXPECT_EQ(dialog.Control(1012)->selectionStart, 4);  // behind "Anna"
    EXPECT_EQ(dialog.Control(1012)->selectionEnd, 4);
    EXPECT_FALSE(device.screen.WaitCursor());
  });
}

TEST_F(EditEntryTest, ShowsWhatTheCardHasNow) {
  Open();
  device.sim.SetEntry(kFirst, u"Anne", u"333");
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1012), u"Anne");
    EXPECT_EQ(dialog.Text(1018), u"333");
  });
}

TEST_F(EditEntryTest, ShowsTheExtendedFields) {
  PutFields();
  Open();
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1057), u"Desk3");
    EXPECT_EQ(dialog.Text(1058), u"123");
    EXPECT_EQ(dialog.Text(1067), u"Desk1");
    EXPECT_EQ(dialog.Text(1068), u"*5");
    EXPECT_EQ(dialog.Text(1060), u"a@b.c");
    EXPECT_EQ(dialog.Text(2007), u"Ann");
    EXPECT_EQ(dialog.Text(2016), u"Group2, Group3");
    for (const int button : {2013, 2014, 2017}) EXPECT_TRUE(dialog.Enabled(button)) << button;
  });
}

TEST_F(EditEntryTest, WithoutNumberNamesTheLabelsStay) {
  SetSwitch(u"Enable_AAS", 0);
  PutFields();
  Open();
  Forget();
  InEdit(kFirst, [this](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1057), u"Phone Number 2:");
    EXPECT_EQ(dialog.Text(1058), u"123");
    EXPECT_EQ(device.journal.Count("RIL_DevSpecific(2, 128, 2, 5,"), 0u);
  });
}

TEST_F(EditEntryTest, WhatIsSwitchedOffIsNotRead) {
  for (const char16_t* const name : {u"Disable_ANR", u"Disable_ANRA", u"Disable_EMAIL"}) {
    SetSwitch(name, 1);
  }
  for (const char16_t* const name : {u"Enable_SNE", u"Enable_AAS", u"Enable_GAS"}) {
    SetSwitch(name, 0);
  }
  PutFields();
  Open();
  Forget();
  InEdit(kFirst, [this](ui::Dialog& dialog) {
    for (const int control :
         {2006, 2007, 1057, 1058, 2013, 1067, 1068, 2014, 1059, 1060, 2015, 2016, 2017}) {
      EXPECT_FALSE(dialog.Shown(control)) << control;
    }
    EXPECT_EQ(device.journal.Count("RIL_DevSpecific"), 1u);  // the free extensions
  });
}

TEST_F(EditEntryTest, TheSecondSetHasItsOwnFiles) {
  SetRecord(16, 2, {0xFF, 2, 0x81, 0x77});
  SetRecord(17, 1, {0xFF, 2, 0x81, 0x88});
  SetRecord(2, 5, Letters("b@c.d"));  // shared: the first set's file
  SetRecord(41, 3, Letters("Bo"));
  SetRecord(11, 2, {5, 1, 3});
  SetRecord(13, 2, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  Open();
  InEdit(kSecond, [](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1056), u"6");
    EXPECT_EQ(dialog.Text(1058), u"77");
    EXPECT_EQ(dialog.Text(1068), u"88");
    EXPECT_EQ(dialog.Text(1060), u"b@c.d");
    EXPECT_EQ(dialog.Text(2007), u"Bo");
    EXPECT_EQ(dialog.Text(2016), u"Group1");
  });
}

TEST_F(EditEntryTest, GroupsEndAtTheFirstEmptySlot) {
  SetRecord(3, 2, {2, 1, 0, 3, 0, 0, 0, 0, 0, 0});
  Open();
  InEdit(kFirst, [](ui::Dialog& dialog) { EXPECT_EQ(dialog.Text(2016), u"Group2, Group1"); });
}

TEST_F(EditEntryTest, ABlankGroupRecordIsNoGroup) {
  SetRecord(3, 2, Bytes(10, 0xFF));
  Open();
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(2016), u"<No Group>");
    EXPECT_TRUE(dialog.Enabled(2017));
  });
}

TEST_F(EditEntryTest, ALongSecondNumberRaisesItsLimit) {
  device.radio.SetExtensionBitmap(16, {0xFF, 0xFF});  // none is free
  SetRecord(
      6, 2,
      {0xFF, 0x0B, 0x81, 0x21, 0x43, 0x65, 0x87, 0x09, 0x21, 0x43, 0x65, 0x87, 0x09, 0xFF, 1});
  SetRecord(44, 1, {2, 1, 0xF7});
  Open();
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1058), u"123456789012345678907");
    EXPECT_EQ(dialog.Limit(1058), 40);
    EXPECT_EQ(dialog.Limit(1068), 20);
  });
}

TEST_F(EditEntryTest, AFileWithoutRecordsMakesItsFieldUnavailable) {
  SetFile(6, 15, 0);
  SetFile(40, 12, 0);
  Open();
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_TRUE(IsUnavailable(dialog, 1058));
    EXPECT_FALSE(dialog.Enabled(2013));
    EXPECT_TRUE(IsUnavailable(dialog, 2007));
    EXPECT_TRUE(dialog.Enabled(1068));
  });
}

TEST_F(EditEntryTest, AFieldThatIsNotThereNeedsAFreeRecord) {
  FillFile(7);
  FillFile(2);
  FillFile(40);
  Open();
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_TRUE(IsUnavailable(dialog, 1068));
    EXPECT_FALSE(dialog.Enabled(2014));
    EXPECT_TRUE(IsUnavailable(dialog, 1060));
    EXPECT_TRUE(IsUnavailable(dialog, 2007));
    EXPECT_TRUE(dialog.Enabled(1058));
  });
}

TEST_F(EditEntryTest, AFieldThatIsThereNeedsNone) {
  PutFields();
  for (const std::uint32_t record : {1u, 2u}) SetRecord(7, record, {0, 2, 0x81, 0x11});
  Open();
  InEdit(kFirst, [](ui::Dialog& dialog) { EXPECT_EQ(dialog.Text(1068), u"*5"); });
}

TEST_F(EditEntryTest, AFieldThatCannotBeReadIsEmptyWhereThereIsRoom) {
  PutFields();
  Open();
  FailReads(7);
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1068), u"");
    EXPECT_TRUE(dialog.Enabled(1068));
    EXPECT_EQ(dialog.Text(1060), u"a@b.c");  // the others are read
    EXPECT_EQ(dialog.Text(2016), u"Group2, Group3");
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(EditEntryTest, AFieldThatCannotBeReadIsUnavailableWhereThereIsNone) {
  PutFields();
  for (const std::uint32_t record : {1u, 2u}) SetRecord(7, record, {0, 2, 0x81, 0x11});
  Open();
  FailReads(7);
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_TRUE(IsUnavailable(dialog, 1068));
    EXPECT_FALSE(dialog.Enabled(2014));
  });
}

TEST_F(EditEntryTest, WithoutGroupNamesNeitherGroupsNorNumberNamesCanBeSelected) {
  SetFile(sim::kGroupNameFile, 16, 0);
  SetRecord(6, 2, {3, 3, 0x81, 0x21, 0xF3});
  Open();
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1057), u"Desk3");
    EXPECT_FALSE(dialog.Enabled(2013));
    EXPECT_FALSE(dialog.Enabled(2014));
    EXPECT_FALSE(dialog.Enabled(2017));
    EXPECT_EQ(dialog.Text(2016), u"<No Group>");
  });
}

TEST_F(EditEntryTest, WithoutNumberNamesTheyCanStillBeAskedFor) {
  SetFile(sim::kNumberNameFile, 14, 0);
  Open();
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_TRUE(dialog.Enabled(2013));
    EXPECT_TRUE(dialog.Enabled(2014));
  });
}

TEST_F(EditEntryTest, AGroupRecordThatCannotBeReadLeavesTheGroupAlone) {
  PutFields();
  Open();
  FailReads(3);
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_FALSE(dialog.Enabled(2017));
    EXPECT_EQ(dialog.Text(2016), u"<No Group>");
    EXPECT_EQ(dialog.Text(1060), u"a@b.c");
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_F(EditEntryTest, ANumberNameThatCannotBeReadEndsTheOpening) {
  PutFields();
  Open();
  FailReads(sim::kNumberNameFile);
  device.sim.SetResult("SimGetDevCaps", SimResult::kSimFailure);
  InEdit(kFirst, [this](ui::Dialog& dialog) {
    EXPECT_EQ(BoxTexts(), Texts{u"SIM failure was detected. "});
    EXPECT_FALSE(dialog.Ended());
    EXPECT_EQ(dialog.Text(1012), u"Anna");
    // What was not read can be neither seen nor overwritten.
    for (const int edit : {1058, 1068, 1060, 2007}) {
      EXPECT_TRUE(IsUnavailable(dialog, edit)) << edit;
    }
    dialog.LongPressEdit(1012, {5, 5});
    EXPECT_TRUE(device.screen.Popups().empty());
    Forget();
    Done(dialog);
    EXPECT_EQ(Written(), Strings{"entry 2"});
  });
}

TEST_F(EditEntryTest, OnACardThatIsReadyItEndsSilently) {
  PutFields();
  Open();
  FailReads(sim::kNumberNameFile);
  Forget();
  InEdit(kFirst, [this](ui::Dialog&) {
    EXPECT_TRUE(BoxTexts().empty());
    EXPECT_EQ(Calls("SimGetDevCaps"), 1u);
  });
}

TEST_F(EditEntryTest, AGroupNameThatCannotBeReadEndsTheOpening) {
  PutFields();
  Open();
  FailReads(sim::kGroupNameFile);
  device.sim.SetResult("SimGetDevCaps", SimResult::kSimBusy);
  InEdit(kFirst, [this](ui::Dialog& dialog) {
    EXPECT_EQ(BoxTexts(), Texts{u"SIM is busy."});
    EXPECT_EQ(dialog.Text(1060), u"a@b.c");
    EXPECT_EQ(dialog.Text(2016), u"<No Group>");
    EXPECT_FALSE(dialog.Enabled(2017));
  });
}

TEST_F(EditEntryTest, AnEntryThatCannotBeReadShowsWhatTheListHas) {
  PutFields();
  Open();
  device.sim.SetResult("SimReadPhonebookEntry", SimResult::kSimFailure);
  InEdit(kFirst, [this](ui::Dialog& dialog) {
    EXPECT_EQ(BoxTexts(), Texts{u"SIM failure was detected. "});
    EXPECT_EQ(dialog.Text(1012), u"Anna");
    EXPECT_EQ(dialog.Text(1018), u"+4911122");
    EXPECT_TRUE(IsUnavailable(dialog, 1060));
  });
}

TEST_F(EditEntryTest, WithoutASelectionNothingIsFilledIn) {
  Open();
  bool opened = false;
  device.screen.ScriptDialog(res::kDialogEditEntry, [&](ui::Dialog& dialog) {
    opened = true;
    Serve();
    EXPECT_EQ(dialog.Text(1007), u"Name:");
    EXPECT_EQ(dialog.Bar()->Resource(), res::kBarEditEntry);
    EXPECT_EQ(dialog.Limit(1012), 14);
    EXPECT_EQ(dialog.Limit(1058), 40);
    EXPECT_EQ(dialog.Limit(1060), 28);
    for (const int edit : {1056, 1012, 1018, 1058, 1060}) EXPECT_EQ(dialog.Text(edit), u"");
    dialog.Close();
  });
  // The selection goes between the check and the opening.
  EntryEditorState editor;
  SavedRows rows(*state, *theCommands);
  const NamePickers pickers;
  List().SetItemState(-1, 0, ui::kItemSelected);
  const auto handler =
      std::make_shared<EntryEditor>(*state, kEditEntryControls, editor, pickers, rows);
  device.screen.DialogBox(*res::FindDialog(res::kDialogEditEntry), state->mainDialog, *handler);
  EXPECT_TRUE(opened);
}

TEST_F(EditEntryTest, OfSeveralSelectedRowsTheFirstIsEdited) {
  Open();
  List().SetItemState(0, ui::kItemSelected, ui::kItemSelected);
  List().SetItemState(1, ui::kItemSelected, ui::kItemSelected);
  In(kEditEntryControls, res::kCommandEdit,
     [](ui::Dialog& dialog) { EXPECT_EQ(dialog.Text(1012), u"Anna"); });
}

TEST_F(EditEntryTest, WhileItIsReadTheDialogTakesNothingButCancel) {
  PutFields();
  Open();
  bool looked = false;
  device.screen.ScriptDialog(res::kDialogEditEntry, [&](ui::Dialog& dialog) {
    looked = true;
    EXPECT_EQ(dialog.Text(1012), u"Anna");  // what the list has is shown at once
    EXPECT_TRUE(device.screen.WaitCursor());
    for (const int control : {1012, 1018, 1058, 1068, 1060, 2007, 2013, 2014, 2017}) {
      EXPECT_FALSE(dialog.Enabled(control)) << control;
    }
    EXPECT_FALSE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_TRUE(dialog.Bar()->KeyAt(1).enabled);
    Forget();
    dialog.KeyDown({ui::Key::kEnter});
    EXPECT_TRUE(Written().empty());
    dialog.PressSoftKey(1);
    EXPECT_TRUE(dialog.Ended());
  });
  Select(0);
  theCommands->Run(res::kCommandEdit);
  EXPECT_FALSE(device.screen.WaitCursor());
  // The reading that nobody waits for any more sends no more than it has begun.
  device.journal.Clear();
  Serve();
  EXPECT_LE(device.journal.Count("RIL_"), 1u);
  EXPECT_TRUE(looked);
  // The next one finds all in order.
  InEdit(kFirst, [](ui::Dialog& dialog) { EXPECT_EQ(dialog.Text(1060), u"a@b.c"); });
}

TEST_F(EditEntryTest, WithoutAThreadItIsReadAllTheSame) {
  PutFields();
  Open();
  device.failures.FailCallOf("CreateThread", 1);
  InEdit(kFirst, [](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1060), u"a@b.c");
    EXPECT_TRUE(dialog.Enabled(1060));
  });
}

}  // namespace
}  // namespace kelpin::editor
