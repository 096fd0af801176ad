#include "editor/entry_editor.h"
#include "editor/saved_rows.h"
#include "res/templates.h"
#include "tests/editor/entry_editor_fixture.h"

// The card's names in the two forms: of a number, and of groups.
namespace kelpin::editor {
namespace {

class PickTest : public EntryEditorTest {
 protected:
  PickTest() {
    device.sim.SetEntry(2, u"Anna", u"111");
    PutNames();
  }

  struct Call {
    int button = 0;
    ui::WindowHandle owner = 0;
    GroupSelection current;
  };

  void Run(const EntryControls& controls, const Script& script) {
    device.screen.ScriptDialog(controls.dialog, [&](ui::Dialog& dialog) {
      Serve();
      script(dialog);
      Serve();
      if (!dialog.Ended()) dialog.Close();
    });
    const auto handler = std::make_shared<EntryEditor>(*state, controls, editor_, pickers_, *rows_);
    device.screen.DialogBox(*res::FindDialog(controls.dialog), state->mainDialog, *handler);
    Serve();
  }
  void Prepare() {
    Open();
    Select(0);
    rows_ = std::make_unique<SavedRows>(*state, *theCommands);
  }

  std::vector<Call> calls_;
  std::optional<NumberName> name_;
  std::optional<GroupSelection> groups_;
  EntryEditorState editor_;
  std::unique_ptr<SavedRows> rows_;
  const NamePickers pickers_ = {
      [this](int button, ui::WindowHandle owner) {
        calls_.push_back({button, owner, {}});
        return name_;
      },
      [this](int button, ui::WindowHandle owner, const GroupSelection& current) {
        calls_.push_back({button, owner, current});
        return groups_;
      }};
};

TEST_F(PickTest, ANumbersNameIsItsLabelAndIsSaved) {
  Prepare();
  Run(kNewEntryControls, [this](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    Type(dialog, 1062, u"55");
    Type(dialog, 1066, u"66");
    name_ = NumberName{2, u"Desk2"};
    dialog.PressButton(2012);
    name_ = NumberName{3, u"Desk3"};
    dialog.PressButton(2011);
    ASSERT_EQ(calls_.size(), 2u);
    EXPECT_EQ(calls_[0].button, 2012);
    EXPECT_EQ(calls_[0].owner, dialog.Handle());
    EXPECT_EQ(calls_[1].button, 2011);
    EXPECT_EQ(dialog.Text(1061), u"Desk2");
    EXPECT_EQ(dialog.Text(1065), u"Desk3");
    EXPECT_EQ(dialog.Text(1062), u"55");
    EXPECT_EQ(editor_.number2NameId, 2u);
    EXPECT_EQ(editor_.number3NameId, 3u);
    Done(dialog);
  });
  EXPECT_EQ(Record(6, 1), Padded({2, 2, 0x81, 0x55}, 15));
  EXPECT_EQ(Record(7, 1), Padded({3, 2, 0x81, 0x66}, 17));
}

TEST_F(PickTest, TheUsualLabelTakesTheNameAway) {
  SetRecord(6, 2, {3, 2, 0x81, 0x55});
  Prepare();
  Run(kEditEntryControls, [this](ui::Dialog& dialog) {
    EXPECT_EQ(dialog.Text(1057), u"Desk3");
    name_ = NumberName{0, u"Phone Number 2:"};
    dialog.PressButton(2013);
    EXPECT_EQ(calls_.back().button, 2013);
    EXPECT_EQ(dialog.Text(1057), u"Phone Number 2:");
    dialog.PressButton(2014);
    EXPECT_EQ(calls_.back().button, 2014);
    Done(dialog);
  });
  EXPECT_EQ(Record(6, 2), Padded({0, 2, 0x81, 0x55}, 15));
}

TEST_F(PickTest, NothingPickedChangesNothing) {
  SetRecord(6, 2, {3, 2, 0x81, 0x55});
  SetRecord(3, 2, {2, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  Prepare();
  Run(kEditEntryControls, [this](ui::Dialog& dialog) {
    dialog.PressButton(2013);
    dialog.PressButton(2017);
    EXPECT_EQ(dialog.Text(1057), u"Desk3");
    EXPECT_EQ(editor_.number2NameId, 3u);
    EXPECT_EQ(dialog.Text(2016), u"Group2");
  });
}

TEST_F(PickTest, GroupsAreShownAndSaved) {
  SetRecord(3, 2, {2, 1, 0, 0, 0, 0, 0, 0, 0, 0});
  Prepare();
  Run(kEditEntryControls, [this](ui::Dialog& dialog) {
    groups_ = GroupSelection{{3, 1}, u"Group3, Group1"};
    dialog.PressButton(2017);
    ASSERT_EQ(calls_.size(), 1u);
    EXPECT_EQ(calls_[0].button, 2017);
    EXPECT_EQ(calls_[0].owner, dialog.Handle());
    EXPECT_EQ(calls_[0].current, (GroupSelection{{2, 1}, u"Group2, Group1"}));
    EXPECT_EQ(dialog.Text(2016), u"Group3, Group1");
    Done(dialog);
  });
  EXPECT_EQ(Record(3, 2), (Bytes{3, 1, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(PickTest, NoGroupsAreSaidToBeNone) {
  Prepare();
  Run(kNewEntryControls, [this](ui::Dialog& dialog) {
    groups_ = GroupSelection{{3}, u"Group3"};
    dialog.PressButton(2010);
    EXPECT_EQ(calls_[0].current, GroupSelection());
    EXPECT_EQ(dialog.Text(2009), u"Group3");
    groups_ = GroupSelection{};
    dialog.PressButton(2010);
    EXPECT_EQ(dialog.Text(2009), u"<No Group>");
  });
}

TEST_F(PickTest, TheFocusedFieldIsFilteredOnceMoreBeforeItIsSaved) {
  Prepare();
  Run(kNewEntryControls, [this](ui::Dialog& dialog) {
    TypeNewBasics(dialog);
    editor_.suppressNumber2 = 1;
    Type(dialog, 1062, u"5a5");
    EXPECT_EQ(dialog.Text(1062), u"5a5");
    editor_.suppressNumber2 = 0;
    Done(dialog);
  });
  EXPECT_EQ(Record(6, 1), Padded({0, 2, 0x81, 0x55}, 15));
}

TEST_F(PickTest, EveryOpeningStartsAfresh) {
  Prepare();
  name_ = NumberName{2, u"Desk2"};
  groups_ = GroupSelection{{3}, u"Group3"};
  Run(kNewEntryControls, [](ui::Dialog& dialog) {
    dialog.PressButton(2012);
    dialog.PressButton(2010);
  });
  Run(kNewEntryControls, [this](ui::Dialog& dialog) {
    EXPECT_EQ(editor_.number2NameId, 0u);
    EXPECT_EQ(editor_.groups, GroupSelection());
    EXPECT_EQ(dialog.Text(1061), u"Phone Number 2:");
    EXPECT_EQ(dialog.Text(2009), u"<No Group>");
  });
}

}  // namespace
}  // namespace kelpin::editor
