#include "tests/editor/entry_editor_fixture.h"

// Typing, input modes, pop-ups and the panel in the two forms.
namespace kelpin::editor {
namespace {

class EntryInputTest : public EntryEditorTest {
 protected:
  EntryInputTest() {
    device.sim.SetEntry(2, u"Anna", u"111");
    PutNames();
  }
};

TEST_F(EntryInputTest, NumbersTakeWhatCanBeDialled) {
  Open();
  InNew([](ui::Dialog& dialog) {
    for (const int edit : {1005, 1062, 1066}) {
      Type(dialog, edit, u"a1w2-*3#+4p5P6 ");
      EXPECT_EQ(dialog.Text(edit), u"12*3#+4p56") << edit;
      const auto control = dialog.Control(edit);
      EXPECT_EQ(control->selectionStart, 10);  // the caret is at the end
      EXPECT_EQ(control->selectionEnd, 10);
    }
  });
  InEdit(2, [](ui::Dialog& dialog) {
    for (const int edit : {1018, 1058, 1068}) {
      Type(dialog, edit, u"(030) 12w3");
      EXPECT_EQ(dialog.Text(edit), u"030123") << edit;
    }
  });
}

TEST_F(EntryInputTest, NamesTakeEverything) {
  Open();
  InNew([](ui::Dialog& dialog) {
    Type(dialog, 1004, u"Zoë я 中");
    EXPECT_EQ(dialog.Text(1004), u"Zoë я 中");
    Type(dialog, 2005, u"я中");
    EXPECT_EQ(dialog.Text(2005), u"я中");
  });
}

TEST_F(EntryInputTest, AnEmailCountsExtensionLettersTwice) {
  SetFile(2, 12, 5);  // ten of them for text
  Open();
  InNew([](ui::Dialog& dialog) {
    Type(dialog, 1064, u"a[b]c~deя");  // 1 2 1 2 1 2 are 9; one more letter fits
    EXPECT_EQ(dialog.Text(1064), u"a[b]c~d");
    Type(dialog, 1064, u"aaaaaaaaa{b");  // 9, no room for two, room for one
    EXPECT_EQ(dialog.Text(1064), u"aaaaaaaaa");
  });
  InEdit(2, [](ui::Dialog& dialog) {
    Type(dialog, 1060, u"aaaaaaaa[b");
    EXPECT_EQ(dialog.Text(1060), u"aaaaaaaa[");
  });
}

TEST_F(EntryInputTest, TextThatIsKeptKeepsItsCaret) {
  Open();
  InNew([](ui::Dialog& dialog) {
    Type(dialog, 1005, u"123");
    dialog.SetSelection(1005, 1, 1);
    dialog.ReplaceSelection(1005, u"9");
    EXPECT_EQ(dialog.Text(1005), u"1923");
    EXPECT_EQ(dialog.Control(1005)->selectionStart, 2);
  });
}

TEST_F(EntryInputTest, FieldsSwitchTheInputMethodToTheirMode) {
  SetSwitch(u"Enable_ASCII", 1);
  Open();
  InNew([this](ui::Dialog& dialog) {
    const auto after = [&](std::uint32_t before, int edit) {
      dialog.SetFocus(2009);  // the group has no mode of its own
      device.shell.SetInputMethod({before, 7});
      dialog.SetFocus(edit);
      EXPECT_EQ(device.shell.InputMethod().sentence, 7u);
      return device.shell.InputMethod().conversion;
    };
    EXPECT_EQ(after(0x20003, 1004), 0x10001u);
    EXPECT_EQ(after(0x10003, 1004), 0x10003u);
    for (const int number : {1005, 1062, 1066}) {
      EXPECT_EQ(after(0x10003, number), 0x50003u) << number;
      EXPECT_EQ(after(0x50009, number), 0x50009u) << number;
    }
    EXPECT_EQ(after(0x10003, 1064), 0x20000u);
    EXPECT_EQ(after(0x20003, 1064), 0x20003u);
    EXPECT_EQ(after(0x30003, 2005), 0x30003u);
    EXPECT_EQ(after(0x30003, 2012), 0x30003u);
  });
}

TEST_F(EntryInputTest, OtherwiseTheInputMethodIsLeftAlone) {
  Open();
  Forget();
  InNew([this](ui::Dialog& dialog) {
    for (const int edit : {1005, 1064, 1004}) dialog.SetFocus(edit);
    EXPECT_EQ(Calls("Imm"), 0u);
  });
}

TEST_F(EntryInputTest, EveryEditHasItsPopUp) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    std::size_t popups = 0;
    for (const int edit : {1004, 2005, 1005, 1062, 1066, 1064, 2009}) {
      dialog.LongPressEdit(edit, {3, 4});
      EXPECT_EQ(device.screen.Popups().size(), ++popups) << edit;
      device.screen.DismissPopup();
    }
    Type(dialog, 1005, u"123");
    device.screen.SetClipboardText(u"(0)4");
    dialog.LongPressEdit(1005, {3, 4});
    EXPECT_TRUE(device.screen.ChoosePopup(res::kCommandEditSelectAll));
    dialog.LongPressEdit(1005, {3, 4});
    EXPECT_TRUE(device.screen.ChoosePopup(res::kCommandEditPaste));
    EXPECT_EQ(dialog.Text(1005), u"04");  // filtered like what is typed
  });
  InEdit(2, [this](ui::Dialog& dialog) {
    const std::size_t popups = device.screen.Popups().size();
    dialog.LongPressEdit(1012, {3, 4});
    EXPECT_EQ(device.screen.Popups().size(), popups + 1);
  });
}

TEST_F(EntryInputTest, ASmartphoneHasNoPopUpsAndPassesTheBackKeyOn) {
  device.shell.SetPlatformType(u"Smartphone");
  bool opened = false;
  device.screen.ScriptDialog(res::kDialogMain, [&](ui::Dialog&) {
    Serve();
    InNew([&](ui::Dialog& dialog) {
      opened = true;
      dialog.LongPressEdit(1004, {3, 4});
      EXPECT_TRUE(device.screen.Popups().empty());
      EXPECT_TRUE(dialog.HotKey(ui::kVirtualKeyBack, 0));
      EXPECT_EQ(Calls("SendBackKey"), 1u);
      EXPECT_FALSE(dialog.Ended());
    });
    Dialog().Close();
  });
  Start();
  EXPECT_TRUE(opened);
}

TEST_F(EntryInputTest, APocketPcLeavesTheBackKeyAlone) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    EXPECT_FALSE(dialog.HotKey(ui::kVirtualKeyBack, 0));
    EXPECT_FALSE(dialog.HotKey(ui::kVirtualKeyTalk, 0));
    EXPECT_EQ(Calls("SendBackKey"), 0u);
  });
}

TEST_F(EntryInputTest, TheInputPanelFollowsTheDialog) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    EXPECT_TRUE(device.shell.InputPanelUp());
    dialog.Activate(false);
    EXPECT_FALSE(device.shell.InputPanelUp());
    dialog.Activate(true);
    EXPECT_TRUE(device.shell.InputPanelUp());
    dialog.Close();
    EXPECT_FALSE(device.shell.InputPanelUp());
  });
}

TEST_F(EntryInputTest, WhereThatIsSwitchedOffThePanelIsLeftAlone) {
  device.registry.PutDword(platform::RegistryRoot::kCurrentUser, u"ControlPanel\\Sip",
                           u"TurnOffAutoDeploy", 1);
  Open();
  InNew([](ui::Dialog&) {});
  EXPECT_EQ(Calls("ShowInputPanel"), 0u);
}

TEST_F(EntryInputTest, HelpOpensTheHelp) {
  Open();
  InNew([this](ui::Dialog& dialog) {
    dialog.KeyDown({ui::Key::kF1});
    EXPECT_EQ(Calls("StartProgram(peghelp, Kelpin.htm"), 1u);
  });
}

TEST_F(EntryInputTest, ANoticeOfThePanelShowsTheLastFieldOnce) {
  Open();
  InNew([](ui::Dialog& dialog) {
    static_cast<void>(dialog.TakeScrollIntoView());
    dialog.SettingsChanged();
    EXPECT_EQ(dialog.TakeScrollIntoView(), 2009);
    dialog.SettingsChanged();
    EXPECT_EQ(dialog.TakeScrollIntoView(), 0);
  });
  state->settings.Enable_GAS = 0;
  InEdit(2, [](ui::Dialog& dialog) {
    static_cast<void>(dialog.TakeScrollIntoView());
    dialog.SettingsChanged();
    EXPECT_EQ(dialog.TakeScrollIntoView(), 1060);
  });
}

}  // namespace
}  // namespace kelpin::editor
