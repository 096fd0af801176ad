#include "views/own_number_editor.h"

#include "tests/views/own_numbers_fixture.h"

namespace kelpin::views {
namespace {

using platform::SimResult;
using testing::ElementsAre;

class OwnNumberEditorTest : public OwnNumbersTest {
 protected:
  void SetUp() override { SetRecords(kFile, {Record("Home", {}), Record("Work", kNumber01234)}); }

  // Opens the editor of row 1 and runs `script` in it; the list's rows afterwards.
  std::vector<std::u16string> Edit(const std::function<void(ui::Dialog&)>& script) {
    std::vector<std::u16string> rows;
    ShowList(2, [&](ui::Dialog& dialog, ui::ListView& list) {
      SelectRow(list, 1);
      InEditor(dialog, script);
      rows = RowsOf(list);
    });
    return rows;
  }
  // Every update of the card fails; its status is this from then on.
  void FailUpdates(SimResult status) {
    device.radio.SetResponder([this, status](const test::FakeRadio::Command& command) {
      std::optional<test::FakeRadio::Answer> answer;
      if (command.simCommand == platform::kRilSimUpdateRecord) {
        device.sim.SetResult("SimGetPhonebookStatus", status);
        answer.emplace().code = platform::kRilResultError;
      }
      return answer;
    });
  }
};

TEST_F(OwnNumberEditorTest, ItOpensWithTheRowsTextsLimitsAndModes) {
  OpenMain();
  Edit([&](ui::Dialog& editor) {
    EXPECT_EQ(editor.Title(), u"Kelpin");
    EXPECT_TRUE(editor.HasDoneButton());
    EXPECT_EQ(editor.Owner(), device.screen.Find(kDialog)->Handle());
    EXPECT_EQ(editor.Bar()->Resource(), 306);
    EXPECT_EQ(editor.Bar()->KeyAt(0).command, 340);
    EXPECT_EQ(editor.Bar()->KeyAt(0).text, u"Save");
    EXPECT_EQ(editor.Bar()->KeyAt(1).command, 341);
    EXPECT_EQ(editor.Bar()->KeyAt(1).text, u"Cancel");
    EXPECT_EQ(editor.Text(1021), u"Name:");
    EXPECT_EQ(editor.Text(1025), u"Phone Number:");
    EXPECT_EQ(editor.Text(1023), u"Work");
    EXPECT_EQ(editor.Text(1026), u"01234");
    EXPECT_EQ(editor.Limit(1023), 14);  // 28 - 14
    EXPECT_EQ(editor.Limit(1026), 20);
    EXPECT_EQ(editor.Control(1023)->inputMode, ui::InputMode::kSpell);
    EXPECT_EQ(editor.Control(1026)->inputMode, ui::InputMode::kNumbers);
    EXPECT_EQ(device.journal.Entries("ShowInputPanel"),
              std::vector<std::string>{"ShowInputPanel(up)"});
  });
  EXPECT_EQ(device.journal.Entries("ShowInputPanel").back(), "ShowInputPanel(down)");
}

TEST_F(OwnNumberEditorTest, AnInputPanelOfItsOwnWillIsLeftAlone) {
  OpenMain();
  state->sipAutoDeployOff = 1;
  Edit([&](ui::Dialog&) {});
  EXPECT_EQ(Calls("ShowInputPanel"), 0u);
}

TEST_F(OwnNumberEditorTest, ANameFromTheSettingsIsCutToTheRecord) {
  SetRecords(kFile, {Record("", {}), Record("", kNumber01234)});
  device.registry.PutString(platform::RegistryRoot::kLocalMachine, kProgramKey, u"OwnNo_Record2",
                            u"abcdefghijklmnopqrst");
  OpenMain();
  Edit([&](ui::Dialog& editor) { EXPECT_EQ(editor.Text(1023), u"abcdefghijklmn"); });
}

TEST_F(OwnNumberEditorTest, TheNumberTakesDialCharactersAndAPlusInFrontAlone) {
  OpenMain();
  Edit([&](ui::Dialog& editor) {
    editor.EditByUser(1026, u"+49 (0)17+1x*#p", 15);
    EXPECT_EQ(editor.Text(1026), u"+490171*#p");
    EXPECT_EQ(editor.Control(1026)->selectionStart, 10);
    EXPECT_EQ(editor.Control(1026)->selectionEnd, 10);
    editor.EditByUser(1023, u"Any (text)", 10);
    EXPECT_EQ(editor.Text(1023), u"Any (text)");
  });
}

TEST_F(OwnNumberEditorTest, SaveWritesTheRecordAndTheRow) {
  OpenMain();
  const std::size_t told = Calls("DeviceControl");
  const auto rows = Edit([&](ui::Dialog& editor) {
    Save(editor, u"Zoë", u"+4917");
    EXPECT_TRUE(editor.Ended());
    EXPECT_EQ(editor.Result(), 16);
    EXPECT_EQ(editor.Bar(), nullptr);
  });
  EXPECT_THAT(rows, ElementsAre(u"1|Home|", u"2|Zoë|+4917"));
  // 'ë' is in no GSM table, so the name is UCS-2: 0x80 and two bytes a character.
  std::vector<std::uint8_t> expected(28, 0xFF);
  const std::vector<std::uint8_t> name = {0x80, 0x00, 0x5A, 0x00, 0x6F, 0x00, 0xEB};
  std::copy(name.begin(), name.end(), expected.begin());
  const std::vector<std::uint8_t> number = {0x03, 0x91, 0x94, 0x71};
  std::copy(number.begin(), number.end(), expected.begin() + 14);
  EXPECT_EQ(CardRecord(2), expected);
  EXPECT_EQ(CardRecord(1), Record("Home", {}));
  EXPECT_EQ(Calls("DeviceControl"), told + 1);  // the radio driver hears of it
  EXPECT_FALSE(device.screen.WaitCursor());
}

TEST_F(OwnNumberEditorTest, APlusInsideANumberIsDroppedWhoeverPutItThere) {
  OpenMain();
  const auto rows = Edit([&](ui::Dialog& editor) {
    editor.SetText(1026, u"1+2");
    EXPECT_EQ(editor.Text(1026), u"12");
    editor.Command(1);
  });
  EXPECT_EQ(rows[1], u"2|Work|12");
}

TEST_F(OwnNumberEditorTest, AnEmptyNumberIsRefused) {
  OpenMain();
  const auto rows = Edit([&](ui::Dialog& editor) {
    Type(editor, u"Work", u"");
    editor.SetFocus(1023);
    editor.Command(340);
    EXPECT_FALSE(editor.Ended());
    EXPECT_EQ(editor.Focus(), 1026);
  });
  ExpectErrorBox(u"Phone number cannot be left empty.");
  EXPECT_EQ(rows[1], u"2|Work|01234");
}

TEST_F(OwnNumberEditorTest, AnAsciiNameMayFillTheRecordAnotherMayNot) {
  OpenMain();
  const auto ascii = Edit([&](ui::Dialog& editor) {
    Save(editor, u"abcdefghijklmn", u"1");
    EXPECT_TRUE(editor.Ended());
  });
  EXPECT_EQ(ascii[1], u"2|abcdefghijklmn|1");
  Edit([&](ui::Dialog& editor) {
    Type(editor, u"абвгдеж", u"1");  // 2 * 7 reaches 14
    editor.SetFocus(1026);
    editor.Command(340);
    EXPECT_FALSE(editor.Ended());
    EXPECT_EQ(editor.Focus(), 1023);
  });
  ExpectErrorBox(u"Maximum length for names has been exceeded.");
  const auto cyrillic = Edit([&](ui::Dialog& editor) {
    Save(editor, u"абвгде", u"1");
    EXPECT_TRUE(editor.Ended());
  });
  EXPECT_EQ(cyrillic[1], u"2|абвгде|1");
}

TEST_F(OwnNumberEditorTest, AnEmptyNameIsSaved) {
  OpenMain();
  const auto rows = Edit([&](ui::Dialog& editor) { Save(editor, u"", u"77"); });
  EXPECT_EQ(rows[1], u"2||77");
}

TEST_F(OwnNumberEditorTest, ANameThatCannotBeEncodedStaysWithoutAWord) {
  OpenMain();
  Edit([&](ui::Dialog& editor) {
    // Twelve ASCII characters of which four take two septets: sixteen bytes for fourteen.
    Type(editor, u"{}[]abcdefgh", u"1");
    editor.SetFocus(1026);
    editor.Command(340);
    EXPECT_FALSE(editor.Ended());
    EXPECT_EQ(editor.Focus(), 1023);  // where it has to be shortened
    EXPECT_FALSE(device.screen.WaitCursor());
  });
  EXPECT_TRUE(Boxes().empty());
  EXPECT_EQ(CardRecord(2), Record("Work", kNumber01234));
}

TEST_F(OwnNumberEditorTest, AFailedUpdateStaysOpenWhenTheCardFails) {
  OpenMain();
  FailUpdates(SimResult::kSimBusy);
  const auto rows = Edit([&](ui::Dialog& editor) {
    Save(editor, u"New", u"77");
    EXPECT_FALSE(editor.Ended());
    EXPECT_EQ(editor.Text(1023), u"New");
    EXPECT_FALSE(device.screen.WaitCursor());
  });
  EXPECT_THAT(BoxTexts(), ElementsAre(u"SIM is busy."));
  EXPECT_EQ(rows[1], u"2|Work|01234");
}

TEST_F(OwnNumberEditorTest, AFailedUpdateOnACardThatIsReadyGoesOnAsWritten) {
  OpenMain();
  FailUpdates(SimResult::kOk);
  const auto rows = Edit([&](ui::Dialog& editor) {
    Save(editor, u"New", u"77");
    EXPECT_TRUE(editor.Ended());
    EXPECT_TRUE(Boxes().empty());
  });
  EXPECT_EQ(rows[1], u"2|New|77");
}

TEST_F(OwnNumberEditorTest, CancelWritesNothing) {
  OpenMain();
  for (const int command : {2, 341}) {
    const auto rows = Edit([&](ui::Dialog& editor) {
      Type(editor, u"New", u"77");
      editor.Command(command);
      EXPECT_TRUE(editor.Ended());
    });
    EXPECT_EQ(rows[1], u"2|Work|01234");
  }
  EXPECT_EQ(CardRecord(2), Record("Work", kNumber01234));
}

TEST_F(OwnNumberEditorTest, TheBackKeyGoesToTheShellAndHelpToTheViewer) {
  OpenMain();
  Edit([&](ui::Dialog& editor) {
    EXPECT_TRUE(editor.HotKey(27, ui::kNoModifier));
    EXPECT_EQ(Calls("SendBackKey"), 1u);
    EXPECT_FALSE(editor.HotKey(0x72, ui::kNoModifier));
    editor.Help();
    EXPECT_EQ(Calls(kHelp), 1u);
  });
}

TEST_F(OwnNumberEditorTest, OnAPocketPcBothEditsHaveTheirMenu) {
  OpenMain();
  for (const bool smartphone : {false, true}) {
    state->isSmartphone = smartphone ? 1 : 0;
    const std::size_t before = device.screen.Popups().size();
    Edit([&](ui::Dialog& editor) {
      for (const int control : {1023, 1026}) {
        editor.SetFocus(control);
        editor.LongPressEdit(control, {10, 10});
        device.screen.RunPending();
        device.screen.DismissPopup();
      }
    });
    EXPECT_EQ(device.screen.Popups().size(), before + (smartphone ? 0u : 2u));
  }
}

}  // namespace
}  // namespace kelpin::views
