#include <QAccessible>
#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

#include "app/settings.h"
#include "editor/entry_form.h"
#include "editor/entry_layout.h"
#include "editor/name_family.h"
#include "res/templates.h"
#include "tests/gui/gui_support.h"

// What a screen reader says in the dialogs of an entry and of the card's names, and where Tab goes.
namespace kelpin::test {
namespace {

using Names = std::vector<std::string>;

// An entry's dialog with every field, laid out as the program does.
class EntryForm : public ui::DialogHandler {
 public:
  EntryForm(ui::Screen& screen, const editor::EntryControls& controls)
      : screen_(screen), controls_(controls) {
    settings_.Enable_SNE = 1;
    settings_.Enable_AAS = 1;
    settings_.Enable_GAS = 1;
  }
  void OnInit(ui::Dialog& dialog) override { editor::ShowFields(dialog, controls_, settings_); }
  void OnSize(ui::Dialog& dialog, ui::Size client) override {
    editor::PlaceFields(dialog, controls_, client, screen_.GetMetrics());
  }

 private:
  ui::Screen& screen_;
  const editor::EntryControls& controls_;
  app::AppSettings settings_;
};

class EntryDialogsOnScreen : public GuiTest {
 protected:
  // The name of each control that Tab stops at, from the one that has the focus on.
  static Names Walk() {
    Names names;
    QWidget* const first = QApplication::focusWidget();
    QWidget* at = first;
    do {
      names.push_back(at->accessibleName().toStdString());
      QTest::keyClick(at, Qt::Key_Tab);
      at = QApplication::focusWidget();
    } while (at != nullptr && at != first && names.size() < 20);
    return names;
  }
  std::string NameOf(const ui::Dialog& dialog, int control) {
    return Find<QWidget>(dialog, "c" + std::to_string(control))->accessibleName().toStdString();
  }
};

TEST_F(EntryDialogsOnScreen, ANewEntrysFieldsAreNamedInTheirOrder) {
  EntryForm form(*screen_, editor::kNewEntryControls);
  const auto dialog = Show(*res::FindDialog(res::kDialogNewEntry), form);
  EXPECT_EQ(Walk(),
            (Names{"Name", "Nickname", "Phone Number", "Phone Number 2", "Phone Number 2 ...",
                   "Phone Number 3", "Phone Number 3 ...", "E-mail", "Group", "Group ..."}));
}

TEST_F(EntryDialogsOnScreen, AChangedEntrysFieldsToo) {
  EntryForm form(*screen_, editor::kEditEntryControls);
  const auto dialog = Show(*res::FindDialog(res::kDialogEditEntry), form);
  EXPECT_EQ(NameOf(*dialog, res::kEditLocation), "No.");
  EXPECT_EQ(Walk(),
            (Names{"Name", "Nickname", "Phone Number", "Phone Number 2", "Phone Number 2 ...",
                   "Phone Number 3", "Phone Number 3 ...", "E-mail", "Group", "Group ..."}));
}

TEST_F(EntryDialogsOnScreen, ANumbersNameIsSaidInPlaceOfItsLabel) {
  EntryForm form(*screen_, editor::kEditEntryControls);
  const auto dialog = Show(*res::FindDialog(res::kDialogEditEntry), form);
  dialog->SetText(res::kEditNumber2Label, u"Office");
  Settle();
  EXPECT_EQ(NameOf(*dialog, res::kEditNumber2), "Office");
  EXPECT_EQ(NameOf(*dialog, res::kEditNumber2Button), "Office ...");
  EXPECT_EQ(NameOf(*dialog, res::kEditNumber3), "Phone Number 3");
}

// The names of what labels a control.
Names LabelsOf(QWidget& widget) {
  Names names;
  for (const auto& [other, relation] :
       QAccessible::queryAccessibleInterface(&widget)->relations(QAccessible::Label)) {
    names.push_back(other->text(QAccessible::Name).toStdString());
  }
  return names;
}

TEST_F(EntryDialogsOnScreen, AFieldIsRelatedToItsLabel) {
  EntryForm form(*screen_, editor::kEditEntryControls);
  const auto dialog = Show(*res::FindDialog(res::kDialogEditEntry), form);
  const auto labels = [&](int control) {
    return LabelsOf(*Find<QWidget>(*dialog, "c" + std::to_string(control)));
  };
  EXPECT_EQ(labels(res::kEditName), Names{"Name:"});
  EXPECT_EQ(labels(res::kEditNumber2), Names{"Phone Number 2:"});
}

TEST_F(EntryDialogsOnScreen, ANumbersNameWithAnAndSignIsALabelAndNoShortcut) {
  EntryForm form(*screen_, editor::kEditEntryControls);
  const auto dialog = Show(*res::FindDialog(res::kDialogEditEntry), form);
  dialog->SetText(res::kEditNumber2Label, u"R&D");
  Settle();
  QWidget& edit = *Find<QWidget>(*dialog, "c" + std::to_string(res::kEditNumber2));
  EXPECT_EQ(LabelsOf(edit), Names{"R&D"});
  EXPECT_EQ(edit.accessibleName().toStdString(), "R&D");
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_D, Qt::AltModifier);
  EXPECT_FALSE(edit.hasFocus());
}

TEST_F(EntryDialogsOnScreen, AMessageBoxIsAnAlert) {
  QTimer::singleShot(0, qApp, [] {
    qt::MessageWindow* const box = OpenBox();
    ASSERT_NE(box, nullptr);
    const QAccessibleInterface& alert = *QAccessible::queryAccessibleInterface(box);
    EXPECT_EQ(alert.role(), QAccessible::AlertMessage);
    EXPECT_EQ(alert.text(QAccessible::Name), QStringLiteral("Info"));
    EXPECT_EQ(alert.text(QAccessible::Description), QStringLiteral("Stored."));
    box->reject();
  });
  EXPECT_EQ(screen_->MessageBox(0, u"Stored.", u"Info", ui::kBoxNotice), ui::BoxAnswer::kOk);
}

TEST_F(EntryDialogsOnScreen, TheCardsNamesAreNamed) {
  for (const editor::NameFamily& family : {editor::kNumberNames, editor::kGroupNames}) {
    SampleHandler handler;
    const auto edit = Show(*res::FindDialog(family.nameDialog), handler);
    EXPECT_EQ(NameOf(*edit, family.name), "Name");
    edit->End(ui::kDialogDone);
    const auto list = Show(*res::FindDialog(family.listDialog), handler);
    EXPECT_EQ(NameOf(*list, family.list),
              family.file == 5 ? "Edit Phone No. Name" : "Edit Group Name");
    list->End(ui::kDialogDone);
    const auto picker = Show(*res::FindDialog(family.picker), handler);
    EXPECT_FALSE(NameOf(*picker, family.pickerList).empty());
    picker->End(ui::kDialogDone);
    Settle();
  }
}

TEST_F(EntryDialogsOnScreen, AFormThatTakesNothingMarksNoText) {
  EntryForm form(*screen_, editor::kNewEntryControls);
  const auto dialog = Show(*res::FindDialog(res::kDialogNewEntry), form);
  dialog->SetText(res::kNewEmail, u"d@e.f");
  dialog->SetText(res::kNewGroup, u"Family");
  dialog->SetFocus(res::kNewEmail);
  dialog->SetSelection(res::kNewEmail, 5, 5);
  Settle();
  const auto enable = [&dialog](bool enabled) {
    for (const ui::ControlState& control : dialog->Controls()) {
      if (control.kind != ui::ControlKind::kLabel && control.id != res::kNewEmail) {
        dialog->Enable(control.id, enabled);
      }
    }
    dialog->Enable(res::kNewEmail, enabled);
  };
  enable(false);
  Settle();
  for (QLineEdit* edit : WindowOf(*dialog)->findChildren<QLineEdit*>()) {
    EXPECT_FALSE(edit->hasSelectedText()) << edit->accessibleName().toStdString();
    EXPECT_FALSE(edit->hasFocus());
  }
  enable(true);
  dialog->SetFocus(res::kNewEmail);
  Settle();
  auto* email = Find<QLineEdit>(*dialog, "c" + std::to_string(res::kNewEmail));
  EXPECT_TRUE(email->hasFocus());
  EXPECT_FALSE(email->hasSelectedText());
  EXPECT_EQ(email->cursorPosition(), 5);
}

}  // namespace
}  // namespace kelpin::test
