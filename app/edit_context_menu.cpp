#include "app/edit_context_menu.h"

#include <optional>
#include <string>

#include "res/ids.h"
#include "res/menus.h"
#include "ui/dialog.h"
#include "ui/menu.h"
#include "ui/screen.h"

namespace kelpin::app {

void EditContextMenu::Attach(ui::Dialog& dialog, int control) {
  dialog_ = &dialog;
  control_ = control;
}

void EditContextMenu::Detach() {
  dialog_ = nullptr;
  control_ = 0;
}

bool EditContextMenu::OnNotify(const ui::Notification& notification) {
  if (dialog_ == nullptr || notification.code != ui::NotifyCode::kEditPress ||
      notification.control != control_) {
    return false;
  }
  dialog_->ShowPopup(MakeMenu(), notification.point);
  return true;
}

std::shared_ptr<ui::Menu> EditContextMenu::MakeMenu() const {
  const std::u16string text = dialog_->Text(control_);
  const std::u16string selected = dialog_->SelectedText(control_);
  auto menu = std::make_shared<ui::Menu>(res::EditMenu());
  menu->EnableItem(res::kCommandEditCut, !selected.empty());
  menu->EnableItem(res::kCommandEditCopy, !selected.empty());
  menu->EnableItem(res::kCommandEditClear, !selected.empty());
  menu->EnableItem(res::kCommandEditPaste, screen_.HasClipboardText());
  menu->EnableItem(res::kCommandEditSelectAll, !text.empty() && selected.size() < text.size());
  return menu;
}

bool EditContextMenu::Writable() const {
  const std::optional<ui::ControlState> edit = dialog_->Control(control_);
  return edit && edit->enabled && !edit->readOnly;
}

// An edit has one line: of more lines the first is pasted.
void EditContextMenu::Paste() {
  const std::u16string text = screen_.ClipboardText();
  dialog_->ReplaceSelection(control_, text.substr(0, text.find_first_of(u"\r\n")));
}

bool EditContextMenu::OnCommand(int command) {
  if (dialog_ == nullptr || dialog_->Focus() != control_) {
    return false;
  }
  const std::u16string selected = dialog_->SelectedText(control_);
  switch (command) {
    case res::kCommandEditCut:
      if (!selected.empty() && Writable()) {
        screen_.SetClipboardText(selected);
        dialog_->ReplaceSelection(control_, {});
      }
      return true;
    case res::kCommandEditCopy:
      if (!selected.empty()) {
        screen_.SetClipboardText(selected);
      }
      return true;
    case res::kCommandEditPaste:
      Paste();
      return true;
    case res::kCommandEditClear:
      if (!selected.empty()) {
        dialog_->ReplaceSelection(control_, {});
      }
      return true;
    case res::kCommandEditSelectAll:
      dialog_->SetSelection(control_, 0, -1);
      return true;
    default:
      return false;
  }
}

}  // namespace kelpin::app
