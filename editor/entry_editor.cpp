#include "editor/entry_editor.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "app/app_state.h"
#include "app/card_hold.h"
#include "app/help.h"
#include "app/readiness.h"
#include "editor/entry_layout.h"
#include "res/ids.h"
#include "res/templates.h"
#include "sim/sim_text.h"
#include "ui/keys.h"

namespace kelpin::editor {
namespace {

// Script modes of the input method, in the high half of its conversion status.
constexpr std::uint32_t kModeShift = 16;
constexpr std::uint32_t kLowHalf = 0xFFFF;
constexpr std::uint32_t kNameMode = 1;
constexpr std::uint32_t kEmailMode = 2;
constexpr std::uint32_t kNumberMode = 5;
constexpr std::uint32_t kNameStatus = 0x10001;
constexpr std::uint32_t kEmailStatus = 0x20000;

}  // namespace

EntryEditor::EntryEditor(app::AppState& state, const EntryControls& controls,
                         EntryEditorState& editorState, const NamePickers& pickers,
                         SavedRows& savedRows)
    : state_(state),
      controls_(controls),
      editor_(editorState),
      pickers_(pickers),
      savedRows_(savedRows) {}

void EntryEditor::OnCommand(ui::Dialog& /*dialog*/, int command) {
  if (command == ui::kCommandOk || command == controls_.done) {
    StartSave();
    return;
  }
  if (command == ui::kCommandCancel || command == controls_.cancel) {
    OnClose(*dialog_);
    return;
  }
  if (hold_.Holds()) {
    return;
  }
  for (const ExtendedField& field : ExtendedFields()) {
    const int button = (controls_.*field.controls).button;
    if (button != 0 && button == command) {
      PickNumberName(field);
      return;
    }
  }
  if (command == controls_.group.button) {
    PickGroup();
    return;
  }
  for (const std::unique_ptr<app::EditContextMenu>& menu : menus_) {
    if (menu->OnCommand(command)) {
      return;
    }
  }
}

void EntryEditor::OnNotify(ui::Dialog& /*dialog*/, const ui::Notification& notification) {
  switch (notification.code) {
    case ui::NotifyCode::kEditUpdate:
      if (IsFiltered(notification.control)) {
        Filter(notification.control);
      }
      break;
    case ui::NotifyCode::kEditFocus:
      SwitchInputMode(notification.control);
      break;
    case ui::NotifyCode::kEditPress:
      std::any_of(menus_.begin(), menus_.end(),
                  [&](const auto& menu) { return menu->OnNotify(notification); });
      break;
    default:
      break;
  }
}

bool EntryEditor::IsFiltered(int edit) const {
  if (edit == controls_.number.edit) {
    return true;
  }
  const ExtendedField* const field = FieldOfEdit(controls_, edit);
  return field != nullptr && field->suppressed != nullptr && editor_.*field->suppressed == 0;
}

void EntryEditor::Filter(int edit) {
  const std::optional<std::u16string> kept =
      sim::FilterEditInput(sim::kEditUpdateNotification, edit, dialog_->Text(edit),
                           static_cast<std::size_t>(dialog_->Limit(edit)));
  if (kept) {
    dialog_->SetText(edit, *kept);
    const int end = static_cast<int>(kept->size());
    dialog_->SetSelection(edit, end, end);
  }
}

void EntryEditor::SwitchInputMode(int edit) {
  if (state_.settings.Enable_ASCII == 0 || hold_.Holds()) {
    return;
  }
  const ExtendedField* const field = FieldOfEdit(controls_, edit);
  const bool isName = edit == controls_.name.edit;
  const bool isNumber = edit == controls_.number.edit || (field != nullptr && field->isNumber);
  const bool isEmail = edit == controls_.email.edit;
  if (!isName && !isNumber && !isEmail) {
    return;
  }
  platform::Shell& shell = state_.ports.shell;
  platform::InputMethodStatus status;
  if (shell.ImmGetConversionStatus(status) == 0) {
    return;
  }
  const std::uint32_t wanted = isName ? kNameMode : isNumber ? kNumberMode : kEmailMode;
  if (status.conversion >> kModeShift == wanted) {
    return;
  }
  status.conversion = isName     ? kNameStatus
                      : isNumber ? (status.conversion & kLowHalf) | kNumberMode << kModeShift
                                 : kEmailStatus;
  // An input method that does not take it stays as the user left it.
  static_cast<void>(shell.ImmSetConversionStatus(status));
}

void EntryEditor::OnSize(ui::Dialog& dialog, ui::Size client) {
  if (client == size_) {
    return;
  }
  size_ = client;
  PlaceFields(dialog, controls_, client, state_.ports.screen.GetMetrics());
}

void EntryEditor::OnActivate(ui::Dialog& /*dialog*/, bool active) {
  RaisePanel(active);
}

bool EntryEditor::OnHotKey(ui::Dialog& /*dialog*/, int virtualKey, unsigned /*modifiers*/) {
  if (state_.isSmartphone == 0 || virtualKey != ui::kVirtualKeyBack) {
    return false;
  }
  state_.ports.shell.SendBackKey();
  return true;
}

void EntryEditor::OnSettingsChange(ui::Dialog& dialog) {
  size_ = dialog.ClientSize();
  PlaceFields(dialog, controls_, size_, state_.ports.screen.GetMetrics());
  const int last = state_.settings.Enable_GAS != 0 ? controls_.group.edit : controls_.email.edit;
  if (!scrolled_ && dialog.Shown(last)) {
    dialog.ScrollIntoView(last);
  }
  scrolled_ = true;
}

void EntryEditor::OnHelp(ui::Dialog& /*dialog*/) {
  app::ShowHelp(state_);
}

// A save that is under way says itself how it ended.
void EntryEditor::OnClose(ui::Dialog& /*dialog*/) {
  if (!saving_) {
    Close();
  }
}

void EntryEditor::Close() {
  Release();
  dialog_->DestroyMenuBar();
  dialog_->End(ui::kDialogDone);
}

void EntryEditor::Release() {
  stop_ = true;
  SetWaiting(false);
  menus_.clear();
  if (panelUp_) {
    RaisePanel(false);
  }
}

void EntryEditor::OnDestroy(ui::Dialog& /*dialog*/) {
  Release();
  dialog_.reset();
}

void EntryEditor::RaisePanel(bool up) {
  if (state_.sipAutoDeployOff == 0) {
    panelUp_ = up;
    state_.ports.shell.ShowInputPanel(up);
  }
}

void EntryEditor::SetWaiting(bool waiting) {
  if (waiting_ != waiting) {
    waiting_ = waiting;
    state_.ports.screen.SetWaitCursor(waiting);
  }
}

bool EntryEditor::OnThread(std::function<void()> work) {
  return state_.ports.kernel.CreateThread(
             [self = shared_from_this(), work = std::move(work)] { work(); }) != 0;
}

void EntryEditor::OnScreen(std::function<void()> work) {
  state_.ports.screen.PostToScreen([self = shared_from_this(), work = std::move(work)] { work(); });
}

// The dialogs ------------------------------------------------------------------------------------

void EntryEditors::OpenNew() {
  // A card whose limits were not told when the list was read may tell them now.
  const bool mayAdd = app::MayAddEntry(state_) &&
                      (state_.simPhonebook.MaxNumberLength() != 0 || app::LimitsAreKnown(state_));
  if (mayAdd) {
    Open(kNewEntryControls, new_);
  }
}

void EntryEditors::OpenEdit() {
  if (app::MayEditEntry(state_)) {
    Open(kEditEntryControls, edit_);
  }
}

void EntryEditors::Open(const EntryControls& controls, EntryEditorState& editorState) {
  const ui::DialogTemplate* const resource = res::FindDialog(controls.dialog);
  if (resource == nullptr) {
    return;
  }
  const auto editor =
      std::make_shared<EntryEditor>(state_, controls, editorState, pickers_, savedRows_);
  const app::CardHold hold(state_);
  state_.ports.screen.DialogBox(*resource, state_.mainDialog, *editor);
}

}  // namespace kelpin::editor
