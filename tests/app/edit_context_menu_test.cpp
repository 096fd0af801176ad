#include "app/edit_context_menu.h"

#include <gtest/gtest.h>

#include "res/ids.h"
#include "res/templates.h"
#include "tests/support/headless_screen.h"

// The pop-up of an edit, driven through a dialog with two edits.
namespace kelpin::app {
namespace {

constexpr int kCut = 768;
constexpr int kCopy = 769;
constexpr int kPaste = 770;
constexpr int kClear = 771;
constexpr int kSelectAll = 0x7400;
constexpr int kName = res::kOwnNumberName;
constexpr int kNumber = res::kOwnNumberNumber;

class TwoEdits : public ui::DialogHandler {
 public:
  explicit TwoEdits(ui::Screen& screen) : name(screen), number(screen) {}
  void OnInit(ui::Dialog& dialog) override {
    name.Attach(dialog, kName);
    number.Attach(dialog, kNumber);
  }
  void OnNotify(ui::Dialog& /*dialog*/, const ui::Notification& notification) override {
    if (!name.OnNotify(notification) && !number.OnNotify(notification)) ++othersNotified;
  }
  void OnCommand(ui::Dialog& /*dialog*/, int command) override {
    if (!name.OnCommand(command) && !number.OnCommand(command)) ++othersGiven;
  }
  void OnDestroy(ui::Dialog& /*dialog*/) override {
    name.Detach();
    number.Detach();
  }

  EditContextMenu name;
  EditContextMenu number;
  int othersNotified = 0;
  int othersGiven = 0;
};

class EditContextMenuTest : public testing::Test {
 protected:
  EditContextMenuTest() {
    dialog = screen.CreateDialog(*res::FindDialog(res::kDialogEditOwnNumber), 0, handler);
    screen.ShowDialog(*dialog);
    dialog->SetText(kName, u"Anna");
    dialog->SetText(kNumber, u"12345");
  }

  ~EditContextMenuTest() override {
    dialog->End(0);
    screen.RunPending();
  }

  // What a long press on the edit opens: "Cut-", with a minus for what is greyed.
  std::vector<std::string> Press(int control) {
    dialog->LongPressEdit(control, {30, 40});
    std::vector<std::string> items;
    const test::ShownPopup popup = screen.Popups().back();
    for (const ui::MenuItem& item : popup.items) {
      items.push_back(
          item.IsSeparator() ? "|" : std::to_string(item.command) + (item.enabled ? "" : "-"));
    }
    return items;
  }
  using Items = std::vector<std::string>;

  test::HeadlessScreen screen;
  TwoEdits handler{screen};
  std::shared_ptr<ui::Dialog> dialog;
};

TEST_F(EditContextMenuTest, OpensWhereThePressIsAndTakesTheFocus) {
  dialog->SetFocus(kName);
  Press(kNumber);
  EXPECT_EQ(dialog->Focus(), kNumber);
  ASSERT_EQ(screen.Popups().size(), 1u);
  EXPECT_EQ(screen.Popups()[0].point, (ui::Point{30, 40}));
  const std::vector<ui::MenuItem> items = screen.Popups()[0].items;
  ASSERT_EQ(items.size(), 6u);
  EXPECT_EQ(items[0].text, u"Cut");
  EXPECT_EQ(items[1].text, u"Copy");
  EXPECT_EQ(items[2].text, u"Paste");
  EXPECT_EQ(items[3].text, u"Clear");
  EXPECT_TRUE(items[4].IsSeparator());
  EXPECT_EQ(items[5].text, u"Select All");
}

TEST_F(EditContextMenuTest, WithoutASelectionThereIsNothingToCutCopyOrClear) {
  EXPECT_EQ(Press(kNumber), (Items{"768-", "769-", "770-", "771-", "|", "29696"}));
}

TEST_F(EditContextMenuTest, ASelectionCanBeCutCopiedAndCleared) {
  dialog->SetSelection(kNumber, 1, 3);
  EXPECT_EQ(Press(kNumber), (Items{"768", "769", "770-", "771", "|", "29696"}));
}

TEST_F(EditContextMenuTest, TextInTheClipboardCanBePasted) {
  screen.SetClipboardText(u"99");
  EXPECT_EQ(Press(kNumber), (Items{"768-", "769-", "770", "771-", "|", "29696"}));
}

TEST_F(EditContextMenuTest, AllOfNothingAndAllOfAllCannotBeSelected) {
  dialog->SetText(kNumber, u"");
  EXPECT_EQ(Press(kNumber).back(), "29696-");
  dialog->SetText(kNumber, u"12345");
  dialog->SetSelection(kNumber, 0, 5);
  EXPECT_EQ(Press(kNumber).back(), "29696-");
  dialog->SetSelection(kNumber, 0, 4);
  EXPECT_EQ(Press(kNumber).back(), "29696");
}

TEST_F(EditContextMenuTest, CutTakesTheSelectionToTheClipboard) {
  dialog->SetSelection(kNumber, 1, 3);
  Press(kNumber);
  EXPECT_TRUE(screen.ChoosePopup(kCut));
  EXPECT_EQ(dialog->Text(kNumber), u"145");
  EXPECT_EQ(screen.ClipboardText(), u"23");
}

TEST_F(EditContextMenuTest, CopyLeavesTheText) {
  dialog->SetSelection(kNumber, 1, 3);
  Press(kNumber);
  EXPECT_TRUE(screen.ChoosePopup(kCopy));
  EXPECT_EQ(dialog->Text(kNumber), u"12345");
  EXPECT_EQ(dialog->SelectedText(kNumber), u"23");
  EXPECT_EQ(screen.ClipboardText(), u"23");
}

TEST_F(EditContextMenuTest, PasteReplacesTheSelection) {
  screen.SetClipboardText(u"+49");
  dialog->SetSelection(kNumber, 1, 3);
  Press(kNumber);
  EXPECT_TRUE(screen.ChoosePopup(kPaste));
  EXPECT_EQ(dialog->Text(kNumber), u"1+4945");
}

TEST_F(EditContextMenuTest, PasteKeepsToTheLimitAndToOneLine) {
  dialog->SetLimit(kNumber, 7);
  screen.SetClipboardText(u"6789");
  dialog->SetSelection(kNumber, 5, 5);
  Press(kNumber);
  EXPECT_TRUE(screen.ChoosePopup(kPaste));
  EXPECT_EQ(dialog->Text(kNumber), u"1234567");
  dialog->SetText(kNumber, u"");
  screen.SetClipboardText(u"11\r\n22");
  Press(kNumber);
  EXPECT_TRUE(screen.ChoosePopup(kPaste));
  EXPECT_EQ(dialog->Text(kNumber), u"11");
}

TEST_F(EditContextMenuTest, ClearLeavesTheClipboardAlone) {
  screen.SetClipboardText(u"kept");
  dialog->SetSelection(kNumber, 0, 2);
  Press(kNumber);
  EXPECT_TRUE(screen.ChoosePopup(kClear));
  EXPECT_EQ(dialog->Text(kNumber), u"345");
  EXPECT_EQ(screen.ClipboardText(), u"kept");
}

TEST_F(EditContextMenuTest, SelectAllSelectsToTheEnd) {
  Press(kNumber);
  EXPECT_TRUE(screen.ChoosePopup(kSelectAll));
  EXPECT_EQ(dialog->SelectedText(kNumber), u"12345");
}

TEST_F(EditContextMenuTest, TheCommandsAreThoseOfThePressedEdit) {
  dialog->SetSelection(kName, 0, 4);
  dialog->SetSelection(kNumber, 0, 5);
  Press(kNumber);
  screen.DismissPopup();
  Press(kName);
  EXPECT_TRUE(screen.ChoosePopup(kCut));
  EXPECT_EQ(dialog->Text(kName), u"");
  EXPECT_EQ(dialog->Text(kNumber), u"12345");
  EXPECT_EQ(screen.ClipboardText(), u"Anna");
}

TEST_F(EditContextMenuTest, AnEditThatCannotBeWrittenKeepsItsText) {
  dialog->SetSelection(kNumber, 0, 5);
  Press(kNumber);
  dialog->Enable(kNumber, false);
  handler.number.OnCommand(kCut);
  handler.number.OnCommand(kClear);
  EXPECT_EQ(dialog->Text(kNumber), u"12345");
  EXPECT_FALSE(screen.HasClipboardText());
}

TEST_F(EditContextMenuTest, OtherPressesAndCommandsAreTheDialogs) {
  handler.othersNotified = 0;
  dialog->SetText(kNumber, u"1");  // an update
  EXPECT_EQ(handler.othersNotified, 1);
  dialog->FocusByUser(kNumber);  // a press that is no gesture
  EXPECT_EQ(dialog->Focus(), kNumber);
  EXPECT_TRUE(screen.Popups().empty());
  dialog->Command(res::kOwnNumberSave);
  EXPECT_EQ(handler.othersGiven, 1);
}

TEST_F(EditContextMenuTest, DetachedItTakesNothing) {
  handler.number.Detach();
  dialog->LongPressEdit(kNumber, {1, 1});
  EXPECT_TRUE(screen.Popups().empty());
  dialog->SetSelection(kNumber, 0, 5);
  EXPECT_FALSE(handler.number.OnCommand(kCut));
  EXPECT_EQ(dialog->Text(kNumber), u"12345");
}

// The menu lives as long as the screen shows it.
TEST_F(EditContextMenuTest, NothingOfTheMenuStaysBehind) {
  Press(kNumber);
  EXPECT_TRUE(screen.ChoosePopup(kSelectAll));
  EXPECT_FALSE(screen.ChoosePopup(kSelectAll));  // gone
}

}  // namespace
}  // namespace kelpin::app
