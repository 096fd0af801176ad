#include <gmock/gmock.h>

#include "tests/editor/name_list_fixture.h"

// One of the card's names: what may be saved, what is written and what the list shows then.
namespace kelpin::editor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using NameEditTest = NameListTest;

INSTANTIATE_TEST_SUITE_P(Families, NameEditTest, testing::ValuesIn(kFamilyCases), NameOfCase);

Bytes Padded20(Bytes bytes) {
  bytes.resize(20, 0xFF);
  return bytes;
}

TEST_P(NameEditTest, OpensWithTheRowsNameItsLimitAndItsKeys) {
  Put({"Home", "Work"});
  Open();
  Forget();
  InList([&](ui::Dialog& dialog, ui::ListView&) {
    EditRow(dialog, 1, [&](ui::Dialog& name) {
      EXPECT_EQ(name.Owner(), dialog.Handle());
      EXPECT_EQ(name.Title(), u"Kelpin");
      EXPECT_TRUE(name.HasDoneButton());
      EXPECT_FALSE(name.InputPanelDown());
      EXPECT_EQ(name.Bar()->Resource(), F().nameBar);
      EXPECT_EQ(name.Bar()->KeyAt(0).command, F().save);
      EXPECT_EQ(name.Bar()->KeyAt(0).text, u"Save");
      EXPECT_EQ(name.Bar()->KeyAt(1).command, F().cancel);
      EXPECT_EQ(name.Bar()->KeyAt(1).text, u"Cancel");
      EXPECT_EQ(name.Text(F().label), u"Name:");
      EXPECT_EQ(name.Control(F().text)->labelledBy, F().label);
      EXPECT_EQ(name.Text(F().text), u"Work");
      EXPECT_EQ(name.Limit(F().text), 20);
      EXPECT_EQ(name.Control(F().text)->inputMode, ui::InputMode::kSpell);
      EXPECT_EQ(name.Focus(), F().text);
      EXPECT_EQ(device.journal.Entries("ShowInputPanel").back(), "ShowInputPanel(up)");
    });
    EXPECT_EQ(device.journal.Entries("ShowInputPanel"),
              (Strings{"ShowInputPanel(up)", "ShowInputPanel(down)"}));
  });
}

TEST_P(NameEditTest, AnInputPanelOfItsOwnWillIsLeftAlone) {
  Put({"Home"});
  Open();
  state->sipAutoDeployOff = 1;
  Forget();
  InList([&](ui::Dialog& dialog, ui::ListView&) { EditRow(dialog, 0, [](ui::Dialog&) {}); });
  EXPECT_EQ(Calls("ShowInputPanel"), 0u);
}

TEST_P(NameEditTest, EnterADoubleTapATapAndF2EditToo) {
  Put({"Home", "Work"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    const auto expectEdited = [&](const std::u16string& text, const std::function<void()>& how) {
      const int before = opened[F().nameDialog];
      Expect(F().nameDialog, [&](ui::Dialog& name) { EXPECT_EQ(name.Text(F().text), text); });
      how();
      EXPECT_EQ(opened[F().nameDialog], before + 1) << testing::PrintToString(text);
    };
    SelectRow(list, 1);
    expectEdited(u"Work", [&] { EXPECT_TRUE(dialog.KeyDown({ui::Key::kEnter})); });
    expectEdited(u"Work", [&] { EXPECT_TRUE(dialog.KeyDown({ui::Key::kF2})); });
    expectEdited(u"Home", [&] { list.Click(0, 1, ui::kNoModifier); });
    expectEdited(u"Work", [&] { list.DoubleClick(1); });
    // A press that leaves two rows selected opens nothing.
    list.Click(0, 1, ui::kControl);
    EXPECT_EQ(list.SelectedCount(), 2);
    EXPECT_EQ(opened[F().nameDialog], 4);
  });
}

TEST_P(NameEditTest, TheMarkedRowIsEdited) {
  Put({"Home", "Work", "Lake"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    list.SetItemState(-1, ui::kItemSelected, ui::kItemSelected);
    list.SetSelectionMark(1);
    Expect(F().nameDialog, [&](ui::Dialog& name) { EXPECT_EQ(name.Text(F().text), u"Work"); });
    dialog.PressSoftKey(0);
  });
  EXPECT_EQ(opened[F().nameDialog], 1);
}

TEST_P(NameEditTest, ACardThatDoesNotAnswerIsToldAndNothingOpens) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView&) {
    SetReadiness(SimResult::kSimBusy);
    for (const int command : {F().edit, F().erase}) dialog.Command(command);
    EXPECT_EQ(opened[F().nameDialog], 0);
    ASSERT_THAT(BoxTexts(), ElementsAre(u"SIM is busy.", u"SIM is busy."));
    EXPECT_EQ(Boxes()[0].owner, dialog.Handle());
  });
  EXPECT_EQ(CardRecord(1), Padded20(Letters("Home")));
}

TEST_P(NameEditTest, SaveWritesTheRecordAndTheRow) {
  Put({"Home", "Work"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    EditRow(dialog, 1, [&](ui::Dialog& name) {
      Type(name, u"Lake");
      Forget();
      name.PressSoftKey(0);
      EXPECT_TRUE(name.Ended());
      EXPECT_EQ(name.Result(), 16);
      EXPECT_EQ(name.Bar(), nullptr);
      EXPECT_FALSE(device.screen.WaitCursor());
    });
    EXPECT_THAT(Written(), ElementsAre("write " + std::to_string(F().file) + " 2"));
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home", u"2|Lake"));
  });
  EXPECT_EQ(CardRecord(1), Padded20(Letters("Home")));
  EXPECT_EQ(CardRecord(2), Padded20(Letters("Lake")));
  EXPECT_THAT(device.screen.WaitCursorLog(), testing::Contains(true));
  InList([&](ui::Dialog&, ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home", u"2|Lake"));
  });
}

TEST_P(NameEditTest, DoneAndEnterSaveAndEscapeDoesNot) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, u"One");
      name.Command(1);
      EXPECT_TRUE(name.Ended());
    });
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|One"));
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, u"Two");
      name.KeyDown({ui::Key::kEnter});
      EXPECT_TRUE(name.Ended());
    });
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, u"Three");
      name.KeyDown({ui::Key::kEscape});
      EXPECT_TRUE(name.Ended());
      EXPECT_EQ(name.Bar(), nullptr);
    });
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, u"Four");
      name.PressSoftKey(1);
      EXPECT_TRUE(name.Ended());
    });
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Two"));
  });
  EXPECT_EQ(CardRecord(1), Padded20(Letters("Two")));
}

// GSM where the alphabet has every character, else UCS-2 (TS 51.011 annex B).
TEST_P(NameEditTest, NamesAreWrittenInTheCardsAlphabetOrInUcs2) {
  Put({""});
  Open();
  const std::pair<std::u16string, Bytes> names[] = {
      {u"a@b", {0x61, 0x00, 0x62}},
      {u"\u00C4rzte", {0x5B, 0x72, 0x7A, 0x74, 0x65}},
      {u"[x]", {0x1B, 0x3C, 0x78, 0x1B, 0x3E}},
      {u"\u0414\u043E\u043C", {0x80, 0x04, 0x14, 0x04, 0x3E, 0x04, 0x3C}},
      {u"", {}},
  };
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    for (const auto& [text, bytes] : names) {
      EditRow(dialog, 0, [&, &typed = text](ui::Dialog& name) {
        Type(name, typed);
        name.PressSoftKey(0);
        EXPECT_TRUE(name.Ended());
      });
      EXPECT_EQ(CardRecord(1), Padded20(bytes));
      EXPECT_EQ(list.ItemText(0, 1), text);
    }
  });
  EXPECT_TRUE(Boxes().empty());
}

TEST_P(NameEditTest, AnAsciiNameMayFillTheRecordAndAnAccentHalvesIt) {
  Put({""});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView&) {
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, u"abcdefghijklmnopqrstu");  // one more than the limit takes
      EXPECT_EQ(name.Text(F().text), u"abcdefghijklmnopqrst");
      name.PressSoftKey(0);
      EXPECT_TRUE(name.Ended());
    });
    EXPECT_EQ(CardRecord(1), Letters("abcdefghijklmnopqrst"));
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, u"abcdefghi\u00E9");  // 2 * 10 reaches 20
      name.PressSoftKey(0);
      EXPECT_FALSE(name.Ended());
      EXPECT_EQ(name.Focus(), F().text);
      EXPECT_EQ(name.Text(F().text), u"abcdefghi\u00E9");
      ASSERT_EQ(Boxes().size(), 1u);
      EXPECT_EQ(Boxes()[0].text, u"Maximum length for names has been exceeded.");
      EXPECT_EQ(Boxes()[0].caption, u"Error");
      EXPECT_EQ(Boxes()[0].style, ui::kBoxError);
      EXPECT_EQ(Boxes()[0].owner, name.Handle());
      Type(name, u"abcdefgh\u00E9");
      name.PressSoftKey(0);
      EXPECT_TRUE(name.Ended());
    });
    // 'é' is 05 in the card's alphabet.
    EXPECT_EQ(CardRecord(1), Padded20({0x61, 0x62, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x05}));
  });
}

TEST_P(NameEditTest, ARecordOfOddLengthIsFilledToItsLastByte) {
  Put({""}, 21);
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, std::u16string(10, u'\u0416'));  // 0x80 and ten times two
      name.PressSoftKey(0);
      EXPECT_TRUE(name.Ended());
    });
    Bytes expected = {0x80};
    for (int i = 0; i < 10; ++i) expected.insert(expected.end(), {0x04, 0x16});
    EXPECT_EQ(CardRecord(1), expected);
    EXPECT_EQ(list.ItemText(0, 1), std::u16string(10, u'\u0416'));
  });
  EXPECT_TRUE(Boxes().empty());
}

// ASCII passes by its length, whatever it takes on the card: the record's length bounds it.
TEST_P(NameEditTest, WhatTheRecordHasNoRoomForIsNotSent) {
  Put({"", "Next"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, std::u16string(20, u'['));
      name.PressSoftKey(0);
      EXPECT_TRUE(name.Ended());
    });
    Bytes ten;
    for (int i = 0; i < 10; ++i) ten.insert(ten.end(), {0x1B, 0x3C});
    EXPECT_EQ(CardRecord(1), ten);
    // '`' is in no table of the card's alphabet, so the name is UCS-2: nine characters fit.
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, u"`abcdefghijklmnopqrs");
      name.PressSoftKey(0);
      EXPECT_TRUE(name.Ended());
    });
    EXPECT_EQ(CardRecord(1), Padded20({0x80, 0x00, 0x60, 0x00, 0x61, 0x00, 0x62, 0x00, 0x63, 0x00,
                                       0x64, 0x00, 0x65, 0x00, 0x66, 0x00, 0x67, 0x00, 0x68}));
    EXPECT_EQ(list.ItemText(0, 1), u"`abcdefgh");
  });
  EXPECT_EQ(CardRecord(2), Padded20(Letters("Next")));
}

TEST_P(NameEditTest, AFailedWriteOnACardThatDoesNotAnswerStaysOpen) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, u"Lake");
      FailUpdate(F().file);
      SetReadiness(SimResult::kSimBusy);
      name.PressSoftKey(0);
      EXPECT_FALSE(name.Ended());
      EXPECT_EQ(name.Text(F().text), u"Lake");
      EXPECT_FALSE(device.screen.WaitCursor());
      ASSERT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
      EXPECT_EQ(Boxes()[0].owner, name.Handle());
      EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Home"));
      HealRadio();
      name.PressSoftKey(0);  // once more
      EXPECT_TRUE(name.Ended());
    });
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Lake"));
  });
  EXPECT_EQ(CardRecord(1), Padded20(Letters("Lake")));
}

TEST_P(NameEditTest, AFailedWriteOnACardThatAnswersCountsAsWritten) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    FailUpdate(F().file);
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, u"Lake");
      name.PressSoftKey(0);
      EXPECT_TRUE(name.Ended());
    });
    EXPECT_THAT(RowsOf(list), ElementsAre(u"1|Lake"));
  });
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(CardRecord(1), Padded20(Letters("Home")));
}

// The rows of a list that ended early are those of the last records.
TEST_P(NameEditTest, InAListThatEndedEarlyARowIsStillItsOwnRecord) {
  Put({"Home", "Work", "Lake"});
  Open();
  FailRecord(2, F().file, 1);
  InList([&](ui::Dialog& dialog, ui::ListView& list) {
    HealRadio();
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      Type(name, u"Shop");
      name.PressSoftKey(0);
    });
    EXPECT_THAT(RowsOf(list), ElementsAre(u"2|Shop", u"3|Lake"));
  });
  EXPECT_EQ(CardRecord(1), Padded20(Letters("Home")));
  EXPECT_EQ(CardRecord(2), Padded20(Letters("Shop")));
}

TEST_P(NameEditTest, TheEditHasItsMenuOnAPocketPcAndTheBackKeyGoesOnOnASmartphone) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView&) {
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      name.LongPressEdit(F().text, {5, 6});
      ASSERT_EQ(device.screen.Popups().size(), 1u);
      EXPECT_EQ(device.screen.Popups()[0].point, (ui::Point{5, 6}));
      EXPECT_TRUE(device.screen.ChoosePopup(0x7400));
      EXPECT_EQ(name.SelectedText(F().text), u"Home");
      EXPECT_FALSE(name.HotKey(ui::kVirtualKeyBack, ui::kNoModifier));
    });
    EXPECT_EQ(Calls("SendBackKey"), 0u);
    state->isSmartphone = 1;
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      name.LongPressEdit(F().text, {5, 6});
      EXPECT_EQ(device.screen.Popups().size(), 1u);
      EXPECT_TRUE(name.HotKey(ui::kVirtualKeyBack, ui::kNoModifier));
      EXPECT_FALSE(name.HotKey(ui::kVirtualKeyTalk, ui::kNoModifier));
    });
    EXPECT_EQ(Calls("SendBackKey"), 1u);
  });
}

TEST_P(NameEditTest, HelpOpensTheViewer) {
  Put({"Home"});
  Open();
  InList([&](ui::Dialog& dialog, ui::ListView&) {
    EditRow(dialog, 0, [&](ui::Dialog& name) {
      name.Help();
      EXPECT_EQ(Calls("StartProgram(peghelp, Kelpin.htm)"), 1u);
    });
  });
}

}  // namespace
}  // namespace kelpin::editor
