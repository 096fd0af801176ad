#include "views/mark_editor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "res/ids.h"
#include "res/templates.h"
#include "tests/views/views_fixture.h"

namespace kelpin::views {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kOptions = 206;
constexpr int kEditor = 211;
constexpr int kTypes = 1017;
constexpr int kType = 1033;
constexpr int kMark = 1038;

class NoHandler : public ui::DialogHandler {
 public:
  void OnInit(ui::Dialog& /*dialog*/) override {}
};

class MarkEditorTest : public ViewsTest {
 protected:
  void SetUp() override {
    Open();
    options = device.screen.CreateDialog(*res::FindDialog(kOptions), state->mainDialog, handler);
    Types().SetExtendedStyle(ui::kListCheckBoxes);
    Types().InsertRow(0, {u"Mobile tel", u"/M"}, nullptr);
    Types().InsertRow(1, {u"Work tel", u"/W"}, nullptr, ui::kItemChecked);
    device.journal.Clear();
  }
  ui::ListView& Types() { return *options->List(kTypes); }
  void Edit(int row, const std::function<void(ui::Dialog&)>& script) {
    Types().Click(row, 0, ui::kNoModifier);
    device.screen.ScriptDialog(kEditor, [&](ui::Dialog& editor) {
      script(editor);
      if (!editor.Ended()) editor.Close();
    });
    EditMark(*state, *options, kTypes);
  }
  static void Type(ui::Dialog& editor, std::u16string_view text) {
    editor.EditByUser(kMark, text, static_cast<int>(text.size()));
  }

  NoHandler handler;
  std::shared_ptr<ui::Dialog> options;
};

TEST_F(MarkEditorTest, WithoutASelectedRowNothingOpens) {
  EditMark(*state, *options, kTypes);
  Types().SetItemState(0, ui::kItemFocused, ui::kItemFocused);  // focused, and not selected
  EditMark(*state, *options, kTypes);
  EXPECT_THAT(device.journal.Entries("DialogBox"), IsEmpty());
}

TEST_F(MarkEditorTest, ItShowsThePhoneTypeAndItsMark) {
  Edit(1, [&](ui::Dialog& editor) {
    EXPECT_EQ(editor.Owner(), options->Handle());
    EXPECT_EQ(editor.Title(), u"Kelpin");
    EXPECT_TRUE(editor.HasDoneButton());
    EXPECT_EQ(editor.Text(1030), u"Phone Type:");
    EXPECT_EQ(editor.Text(kType), u"Work tel");
    EXPECT_TRUE(editor.Control(kType)->readOnly);
    EXPECT_EQ(editor.Text(1036), u"Mark:");
    EXPECT_EQ(editor.Text(kMark), u"/W");
    EXPECT_EQ(editor.Limit(kMark), 4);
    EXPECT_EQ(editor.Focus(), kMark);
    EXPECT_EQ(editor.SelectedText(kMark), u"/W");
    EXPECT_EQ(editor.Bar()->KeyAt(0).command, 343);
    EXPECT_EQ(editor.Bar()->KeyAt(0).text, u"Save");
    EXPECT_EQ(editor.Bar()->KeyAt(1).command, 344);
    EXPECT_EQ(editor.Bar()->KeyAt(1).text, u"Cancel");
  });
}

TEST_F(MarkEditorTest, AFifthCharacterIsRefused) {
  Edit(0, [&](ui::Dialog& editor) {
    Type(editor, u"/Mob");
    Type(editor, u"/Mobi");
    EXPECT_EQ(editor.Text(kMark), u"/Mob");
  });
}

TEST_F(MarkEditorTest, SaveAndOkWriteTheMarkToTheRow) {
  for (const int command : {343, 1}) {
    Edit(1, [&](ui::Dialog& editor) {
      Type(editor, command == 1 ? u"ok" : u"save");
      editor.Command(command);
      EXPECT_TRUE(editor.Ended());
      EXPECT_EQ(editor.Result(), 16);
    });
    EXPECT_EQ(Types().ItemText(1, 1), command == 1 ? u"ok" : u"save");
    EXPECT_EQ(Types().ItemText(0, 1), u"/M");
    EXPECT_TRUE(Types().Checked(1));
    EXPECT_FALSE(device.screen.WaitCursor());
  }
  EXPECT_THAT(device.journal.Entries("SetValue"), IsEmpty());
}

TEST_F(MarkEditorTest, CancelEscapeAndTheCloseBoxLeaveTheRow) {
  const std::vector<std::function<void(ui::Dialog&)>> ways = {
      [](ui::Dialog& editor) { editor.Command(344); },
      [](ui::Dialog& editor) { editor.KeyDown({ui::Key::kEscape}); },
      [](ui::Dialog& editor) { editor.Close(); }};
  for (const auto& leave : ways) {
    Edit(0, [&](ui::Dialog& editor) {
      Type(editor, u"x");
      leave(editor);
      EXPECT_TRUE(editor.Ended());
    });
    EXPECT_EQ(Types().ItemText(0, 1), u"/M");
  }
}

TEST_F(MarkEditorTest, AnEmptyMarkClearsTheColumnAndNotTheBox) {
  Edit(1, [&](ui::Dialog& editor) {
    Type(editor, u"");
    editor.Command(343);
  });
  EXPECT_EQ(Types().ItemText(1, 1), u"");
  EXPECT_TRUE(Types().Checked(1));
}

TEST_F(MarkEditorTest, TheRowIsTheOneItWasOpenedOn) {
  Edit(0, [&](ui::Dialog& editor) {
    Types().Click(1, 0, ui::kNoModifier);
    Type(editor, u"x");
    editor.Command(343);
  });
  EXPECT_EQ(Types().ItemText(0, 1), u"x");
  EXPECT_EQ(Types().ItemText(1, 1), u"/W");
}

TEST_F(MarkEditorTest, OtherCommandsAreIgnored) {
  Edit(0, [](ui::Dialog& editor) {
    editor.Command(337);
    EXPECT_FALSE(editor.Ended());
  });
}

TEST_F(MarkEditorTest, OnlyTheFirstCharactersOfTheRowAreRead) {
  Types().SetItemText(0, 0, std::u16string(200, u't'));
  Types().SetItemText(0, 1, std::u16string(20, u'm'));
  Edit(0, [](ui::Dialog& editor) {
    EXPECT_EQ(editor.Text(kType), std::u16string(130, u't'));
    EXPECT_EQ(editor.Text(kMark), std::u16string(10, u'm'));
    editor.Command(343);
  });
  EXPECT_EQ(Types().ItemText(0, 1), u"mmmm");
}

TEST_F(MarkEditorTest, TheInputPanelComesAndGoesUnlessItIsLeftAlone) {
  Edit(0, [&](ui::Dialog& editor) {
    EXPECT_THAT(device.journal.Entries("ShowInputPanel"), ElementsAre("ShowInputPanel(up)"));
    editor.Command(344);
    EXPECT_THAT(device.journal.Entries("ShowInputPanel"),
                ElementsAre("ShowInputPanel(up)", "ShowInputPanel(down)"));
  });
  device.journal.Clear();
  state->sipAutoDeployOff = 1;
  Edit(0, [](ui::Dialog& editor) { editor.Command(344); });
  EXPECT_THAT(device.journal.Entries("ShowInputPanel"), IsEmpty());
}

TEST_F(MarkEditorTest, TheMarkHasTheEditMenuOnPocketPcAlone) {
  Edit(0, [&](ui::Dialog& editor) {
    editor.LongPressEdit(kMark, {10, 20});
    EXPECT_EQ(device.screen.Popups().size(), 1u);
    EXPECT_TRUE(device.screen.ChoosePopup(768));  // Cut: all of it is selected
    EXPECT_EQ(editor.Text(kMark), u"");
  });
  state->isSmartphone = 1;
  Edit(0, [&](ui::Dialog& editor) {
    editor.LongPressEdit(kMark, {10, 20});
    EXPECT_EQ(device.screen.Popups().size(), 1u);
  });
}

TEST_F(MarkEditorTest, TheBackKeyIsTheShells) {
  Edit(0, [&](ui::Dialog& editor) {
    EXPECT_TRUE(editor.HotKey(ui::kVirtualKeyBack, ui::kNoModifier));
    EXPECT_FALSE(editor.HotKey(ui::kVirtualKeyTalk, ui::kNoModifier));
  });
  EXPECT_THAT(device.journal.Entries("SendBackKey"), ElementsAre("SendBackKey()"));
}

TEST_F(MarkEditorTest, HelpShowsTheProgramsHelp) {
  Edit(0, [](ui::Dialog& editor) { editor.Help(); });
  EXPECT_EQ(Calls(kHelp), 1u);
}

}  // namespace
}  // namespace kelpin::views
