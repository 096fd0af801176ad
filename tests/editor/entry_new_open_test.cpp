#include "tests/editor/entry_editor_fixture.h"

// What the dialog for a new entry shows when it opens.
namespace kelpin::editor {
namespace {

using NewEntryTest = EntryEditorTest;

TEST_F(NewEntryTest, OpensFullScreenWithItsTitleItsKeysAndItsLabels) {
  Open();
  InNew([&](ui::Dialog& dialog) {
    EXPECT_TRUE(dialog.HasDoneButton());
    EXPECT_EQ(dialog.Owner(), state->mainDialog);
    EXPECT_EQ(dialog.Title(), u"Kelpin");
    EXPECT_EQ(dialog.Bar()->Resource(), res::kBarNewEntry);
    EXPECT_EQ(dialog.Bar()->KeyAt(0).text, u"Done");
    EXPECT_EQ(dialog.Bar()->KeyAt(0).command, 326);
    EXPECT_TRUE(dialog.Bar()->KeyAt(0).enabled);
    EXPECT_EQ(dialog.Bar()->KeyAt(1).text, u"Cancel");
    EXPECT_EQ(dialog.Bar()->KeyAt(1).command, 327);
    EXPECT_EQ(dialog.Text(1002), u"Name:");
    EXPECT_EQ(dialog.Text(2004), u"Nickname:");
    EXPECT_EQ(dialog.Text(1003), u"Phone Number:");
    EXPECT_EQ(dialog.Text(1061), u"Phone Number 2:");
    EXPECT_EQ(dialog.Text(1065), u"Phone Number 3:");
    EXPECT_EQ(dialog.Text(1063), u"E-mail:");
    EXPECT_EQ(dialog.Text(2008), u"Group:");
    EXPECT_EQ(dialog.Text(2009), u"<No Group>");
    for (const int button : {2012, 2011, 2010}) EXPECT_EQ(dialog.Text(button), u"...") << button;
    for (const int edit : {1004, 2005, 1005, 1062, 1066, 1064}) {
      EXPECT_EQ(dialog.Text(edit), u"") << edit;
      EXPECT_TRUE(dialog.Enabled(edit)) << edit;
    }
    EXPECT_EQ(dialog.Focus(), 1004);
  });
}

TEST_F(NewEntryTest, EveryFieldIsNamedByItsLabel) {
  Open();
  InNew([](ui::Dialog& dialog) {
    const int pairs[][2] = {{1004, 1002}, {2005, 2004}, {1005, 1003}, {1062, 1061}, {1066, 1065},
                            {1064, 1063}, {2009, 2008}, {2012, 1061}, {2011, 1065}, {2010, 2008}};
    for (const auto& [control, label] : pairs) {
      EXPECT_EQ(dialog.Control(control)->labelledBy, label) << control;
    }
  });
}

TEST_F(NewEntryTest, LeavesOutWhatTheSettingsSwitchOff) {
  for (const char16_t* const name : {u"Disable_ANR", u"Disable_ANRA", u"Disable_EMAIL"}) {
    SetSwitch(name, 1);
  }
  for (const char16_t* const name : {u"Enable_SNE", u"Enable_AAS", u"Enable_GAS"}) {
    SetSwitch(name, 0);
  }
  Open();
  InNew([](ui::Dialog& dialog) {
    for (const int control :
         {2004, 2005, 1061, 1062, 2012, 1065, 1066, 2011, 1063, 1064, 2008, 2009, 2010}) {
      EXPECT_FALSE(dialog.Shown(control)) << control;
    }
    for (const int control : {1002, 1004, 1003, 1005}) EXPECT_TRUE(dialog.Shown(control));
  });
}

TEST_F(NewEntryTest, WithoutNumberNamesTheNumbersHaveNoButton) {
  SetSwitch(u"Enable_AAS", 0);
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_TRUE(dialog.Shown(1062));
    EXPECT_TRUE(dialog.Shown(1066));
    EXPECT_FALSE(dialog.Shown(2012));
    EXPECT_FALSE(dialog.Shown(2011));
    EXPECT_TRUE(dialog.Shown(2010));
  });
}

TEST_F(NewEntryTest, LimitsFollowTheCard) {
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Limit(1004), 14);
    EXPECT_EQ(dialog.Limit(1005), 21);  // a leading '+'
    EXPECT_EQ(dialog.Limit(1062), 40);
    EXPECT_EQ(dialog.Limit(1066), 40);
    EXPECT_EQ(dialog.Limit(1064), 28);  // 30 bytes, two of them no text
    EXPECT_EQ(dialog.Limit(2005), 10);  // 12, the same
  });
}

TEST_F(NewEntryTest, ARecordForEachEntryIsAllText) {
  // E-mail and nickname of type 1, the second number with them.
  SetRecord(0, 1,
            {0xA8, 0x19, 0xC0, 0x03, 0x4F, 0x3A, 0x01, 0xC1, 0x02, 0x4F, 0x60, 0xC4, 0x02, 0x4F,
             0x40, 0xC6, 0x02, 0x4F, 0x70, 0xCA, 0x02, 0x4F, 0x50, 0xC3, 0x02, 0x4F, 0x58});
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Limit(1064), 30);
    EXPECT_EQ(dialog.Limit(2005), 12);
    EXPECT_TRUE(dialog.Enabled(1064));  // what each entry has of its own is never used up
    EXPECT_TRUE(dialog.Enabled(2005));
  });
}

TEST_F(NewEntryTest, OneFreeExtensionMakesRoomInTheSecondNumberAlone) {
  device.radio.SetExtensionBitmap(16, {0xFF, 0xFE});  // record 16 is free
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Limit(1062), 40);
    EXPECT_EQ(dialog.Limit(1066), 20);
  });
}

TEST_F(NewEntryTest, AFreeExtensionBeyondTheFileIsNone) {
  device.radio.SetExtensionBitmap(15, {0xFF, 0xFE});  // record 16 of 15
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Limit(1062), 20);
    EXPECT_EQ(dialog.Limit(1066), 20);
  });
}

TEST_F(NewEntryTest, AsksForTheFreeExtensionsOnce) {
  Open();
  Forget();
  InNew([this](ui::Dialog&) {
    const Strings sent = device.journal.Entries("RIL_");
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(Split(sent[0]).at(2), "4248");
  });
}

TEST_F(NewEntryTest, NamesAreSpeltAndNumbersDialled) {
  Open();
  InNew([](ui::Dialog& dialog) {
    for (const int edit : {1004, 1064, 2005}) {
      EXPECT_EQ(dialog.Control(edit)->inputMode, ui::InputMode::kSpell) << edit;
    }
    for (const int edit : {1005, 1062, 1066}) {
      EXPECT_EQ(dialog.Control(edit)->inputMode, ui::InputMode::kNumbers) << edit;
    }
  });
}

TEST_F(NewEntryTest, AFileWithoutAFreeRecordMakesItsFieldUnavailable) {
  FillFile(7);   // third numbers of the first set
  FillFile(2);   // e-mails
  FillFile(40);  // nicknames of the first set
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_TRUE(dialog.Enabled(1062));
    EXPECT_TRUE(dialog.Enabled(2012));
    EXPECT_TRUE(IsUnavailable(dialog, 1066));
    EXPECT_FALSE(dialog.Enabled(2011));
    EXPECT_TRUE(IsUnavailable(dialog, 1064));  // the text is not filtered down to GSM letters
    EXPECT_TRUE(IsUnavailable(dialog, 2005));
  });
}

TEST_F(NewEntryTest, TheSetOfTheFirstFreeLocationCounts) {
  for (std::uint32_t location = 1; location <= kPerSet; ++location) {
    device.sim.SetEntry(location, u"A", u"1");
  }
  FillFile(7);  // of the first set alone
  FillFile(40);
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_TRUE(dialog.Enabled(1066));
    EXPECT_TRUE(dialog.Enabled(2005));
  });
}

TEST_F(NewEntryTest, ASharedFileCountsForEverySet) {
  for (std::uint32_t location = 1; location <= kPerSet; ++location) {
    device.sim.SetEntry(location, u"A", u"1");
  }
  FillFile(2);
  Open();
  InNew([](ui::Dialog& dialog) { EXPECT_TRUE(IsUnavailable(dialog, 1064)); });
}

// Second and third numbers of type 2, the third ones of both sets in one file.
class SharedThirdNumberTest : public NewEntryTest {
 protected:
  SharedThirdNumberTest() {
    SetRecord(0, 1, {0xA8, 0x09, 0xC0, 0x03, 0x4F, 0x3A, 0x01, 0xC1, 0x02, 0x4F, 0x60,
                     0xA9, 0x08, 0xC4, 0x02, 0x4F, 0x40, 0xC4, 0x02, 0x4F, 0x48});
    SetRecord(0, 2, {0xA8, 0x09, 0xC0, 0x03, 0x4F, 0x3B, 0x02, 0xC1, 0x02, 0x4F, 0x61,
                     0xA9, 0x08, 0xC4, 0x02, 0x4F, 0x41, 0xC4, 0x02, 0x4F, 0x48});
    SetFile(6, 17, 3);
    SetFile(16, 17, 3);
    for (std::uint32_t location = 1; location <= kPerSet; ++location) {
      device.sim.SetEntry(location, u"A", u"1");
    }
  }
};

TEST_F(SharedThirdNumberTest, SecondNumbersInUseCountAgainstIt) {
  FillFile(6);  // three second numbers in the first set, no third number anywhere
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_TRUE(dialog.Enabled(1062));
    EXPECT_TRUE(IsUnavailable(dialog, 1066));
  });
}

TEST_F(SharedThirdNumberTest, ThirdNumbersInUseDoNot) {
  FillFile(7);
  Open();
  InNew([](ui::Dialog& dialog) { EXPECT_TRUE(dialog.Enabled(1066)); });
}

TEST_F(NewEntryTest, AFullCardHasNothingToOffer) {
  for (std::uint32_t location = 1; location <= 2 * kPerSet; ++location) {
    device.sim.SetEntry(location, u"A", u"1");
  }
  Open();
  InNew([](ui::Dialog& dialog) {
    for (const int edit : {1062, 1066, 1064, 2005}) {
      EXPECT_TRUE(IsUnavailable(dialog, edit)) << edit;
    }
    for (const int button : {2012, 2011, 2010}) EXPECT_FALSE(dialog.Enabled(button)) << button;
    EXPECT_EQ(dialog.Text(2009), u"<No Group>");
    EXPECT_TRUE(dialog.Enabled(1004));
    EXPECT_TRUE(dialog.Enabled(1005));
  });
}

TEST_F(NewEntryTest, WithoutNumberNamesOnTheCardNoneCanBeSelected) {
  SetFile(sim::kNumberNameFile, 14, 0);
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_FALSE(dialog.Enabled(2012));
    EXPECT_FALSE(dialog.Enabled(2011));
    EXPECT_TRUE(dialog.Enabled(1062));
    EXPECT_TRUE(dialog.Enabled(2010));
  });
}

TEST_F(NewEntryTest, WithoutGroupNamesOnTheCardNoGroupCanBeSelected) {
  SetFile(sim::kGroupNameFile, 16, 0);
  Open();
  InNew([](ui::Dialog& dialog) {
    EXPECT_FALSE(dialog.Enabled(2010));
    EXPECT_TRUE(dialog.Enabled(2012));
    EXPECT_TRUE(dialog.Enabled(2011));
  });
}

TEST_F(NewEntryTest, ACardWithoutExtendedFilesHasNameAndNumber) {
  device.radio.SetCodedFile(0, {60, {}});
  Open();
  InNew([this](ui::Dialog& dialog) {
    for (const int edit : {1062, 1066, 1064, 2005}) {
      EXPECT_TRUE(IsUnavailable(dialog, edit)) << edit;
    }
    TypeNewBasics(dialog);
    Done(dialog);
    EXPECT_TRUE(dialog.Ended());
  });
  EXPECT_EQ(device.sim.Name(1), u"Dora");
}

TEST_F(NewEntryTest, ACardThatIsNotReadyOpensNothing) {
  Open();
  device.sim.SetResult("SimGetPhonebookStatus", SimResult::kSimBusy);
  theCommands->Run(res::kCommandNew);
  Serve();
  EXPECT_EQ(BoxTexts(), Texts{u"SIM is busy."});
}

TEST_F(NewEntryTest, WhereThatIsDetectedAFullCardOpensNothing) {
  SetSwitch(u"SIM_Full_Detect", 1);
  for (std::uint32_t location = 1; location <= 2 * kPerSet; ++location) {
    device.sim.SetEntry(location, u"A", u"1");
  }
  Open();
  theCommands->Run(res::kCommandNew);
  Serve();
  EXPECT_EQ(BoxTexts(), Texts{u"The SIM is full. Delete some SIM contacts and try again."});
}

}  // namespace
}  // namespace kelpin::editor
