// How an entry's dialog comes to show what it shows.
#include <algorithm>
#include <cstddef>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/card_hold.h"
#include "app/main_list.h"
#include "editor/entry_editor.h"
#include "editor/entry_layout.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/menus.h"
#include "res/strings.h"

namespace kelpin::editor {
namespace {

constexpr int kNumberLimit = 20;      // what a number's record takes
constexpr int kLongNumberLimit = 40;  // with an extension record
constexpr int kEntryLink = 2;         // bytes at the end of a type-2 record

// How much text a record of this file takes.
int TextLimit(const sim::SlotLayout& file) {
  const int length = static_cast<int>(file.recordLength);
  return std::max(0, file.fileClass == sim::kClassType1 ? length : length - kEntryLink);
}

}  // namespace

void EntryEditor::OnInit(ui::Dialog& dialog) {
  dialog_ = dialog.shared_from_this();
  dialog.SetFullScreen(true, false);
  ShowFields(dialog, controls_, state_.settings);
  OnSize(dialog, dialog.ClientSize());
  dialog.SetTitle(state_.appTitle);
  if (const ui::MenuBarTemplate* const bar = res::FindMenuBar(controls_.bar)) {
    dialog.CreateMenuBar(*bar);
  }
  SetTexts();
  SetBasicLimits();
  editor_ = EntryEditorState();
  editor_.owner = dialog.Handle();
  SetInputModes();
  if (IsNew()) {
    StartReading();
  } else {
    TakeSelectedRow();
  }
}

void EntryEditor::SetTexts() {
  const auto set = [this](int control, int text) {
    dialog_->SetText(control, res::LoadString(text));
  };
  const app::AppSettings& settings = state_.settings;
  set(controls_.location.label, res::kStringLocationLabel);
  set(controls_.name.label, res::kStringNameLabel);
  set(controls_.number.label, res::kStringNumberLabel);
  for (const ExtendedField& field : ExtendedFields()) {
    const FieldControls& place = controls_.*field.controls;
    if (IsShown(field, settings)) {
      set(place.label, field.labelText);
    }
    if (settings.Enable_AAS != 0) {
      set(place.button, res::kStringEllipsis);
    }
  }
  if (settings.Enable_GAS != 0) {
    set(controls_.group.label, res::kStringGroupLabel);
    set(controls_.group.edit, res::kStringNoGroup);
    set(controls_.group.button, res::kStringEllipsis);
  }
}

void EntryEditor::SetBasicLimits() {
  const sim::SimPhonebook& sim = state_.simPhonebook;
  dialog_->SetLimit(controls_.name.edit, static_cast<int>(sim.MaxNameLength()));
  // Room for a leading '+'.
  dialog_->SetLimit(controls_.number.edit, static_cast<int>(sim.MaxNumberLength()) + 1);
}

void EntryEditor::SetExtendedLimits(const EntryContent& content) {
  const auto numberLimit = [](std::uint32_t extension) {
    return extension != 0 ? kLongNumberLimit : kNumberLimit;
  };
  const sim::RilExtPhonebook& book = state_.extPhonebook;
  dialog_->SetLimit(controls_.number2.edit, numberLimit(content.firstExtension));
  dialog_->SetLimit(controls_.number3.edit, numberLimit(content.secondExtension));
  dialog_->SetLimit(controls_.email.edit, TextLimit(book.Slot(0, sim::FieldSlot::kEmail)));
  dialog_->SetLimit(controls_.nickname.edit, TextLimit(book.Slot(0, sim::FieldSlot::kNickname)));
}

void EntryEditor::SetInputModes() {
  for (const int edit : {controls_.name.edit, controls_.email.edit, controls_.nickname.edit}) {
    dialog_->SetInputMode(edit, ui::InputMode::kSpell);
  }
  for (const int edit : {controls_.number.edit, controls_.number2.edit, controls_.number3.edit}) {
    dialog_->SetInputMode(edit, ui::InputMode::kNumbers);
  }
}

void EntryEditor::TakeSelectedRow() {
  const ui::ListView* const list = state_.dialog->List(res::kMainList);
  editor_.row = list == nullptr ? -1 : list->NextItem(-1, ui::kItemSelected);
  if (app::GetListRow(state_, editor_.row, &editor_.location, &editor_.name, &editor_.number) ==
      0) {
    SetExtendedLimits(PrepareNoEntry(state_));
    return;
  }
  dialog_->SetText(controls_.location.edit, res::Format(u"%d", {editor_.location}));
  dialog_->SetText(controls_.name.edit, editor_.name);
  dialog_->SetText(controls_.number.edit, editor_.number);
  StartReading();
}

void EntryEditor::StartReading() {
  hold_.Begin(*dialog_, DialogHold::Keys::kAllButLast);
  SetWaiting(true);
  const std::uint32_t location = editor_.location;
  generation_ = app::CardGeneration(state_);
  const auto read = [this, location] {
    return IsNew() ? PrepareNewEntry(state_) : ReadEntryContent(state_, location, stop_);
  };
  const bool started = OnThread([this, read] {
    const EntryContent content = read();
    OnScreen([this, content] { ShowRead(content); });
  });
  if (!started) {
    ShowRead(read());
  }
}

void EntryEditor::ShowAnew() {
  menus_.clear();
  SetTexts();
  editor_.available = {};
  editor_.number2NameId = 0;
  editor_.number3NameId = 0;
  editor_.groups = {};
  editor_.groupCount = 0;
  for (const ExtendedField& field : ExtendedFields()) {
    const FieldControls& place = controls_.*field.controls;
    if (IsShown(field, state_.settings)) {
      editor_.*field.record = sim::kNoRecord;
      dialog_->Enable(place.edit, true);
      dialog_->Enable(place.button, true);
    }
  }
  dialog_->Enable(controls_.group.button, true);
}

void EntryEditor::ShowRead(const EntryContent& content) {
  if (!Open()) {
    return;
  }
  hold_.End(*dialog_);
  SetWaiting(false);
  if (content.hasBasics) {
    editor_.name = content.name;
    editor_.number = content.number;
    dialog_->SetText(controls_.name.edit, editor_.name);
    dialog_->SetText(controls_.number.edit, editor_.number);
  }
  known_ = content.complete ? std::make_shared<EntryContent>(content) : nullptr;
  ShowContent(content);
}

void EntryEditor::ShowContent(const EntryContent& content) {
  SetExtendedLimits(content);
  for (std::size_t i = 0; i < kExtendedFieldCount; ++i) {
    const ExtendedField& field = ExtendedFields()[i];
    if (IsShown(field, state_.settings)) {
      ShowField(field, content.fields[i], content.numberNames);
      unread_[i] = content.fields[i].unread;
    }
  }
  if (state_.settings.Enable_AAS != 0) {
    editor_.available.numberName = content.numberNames ? 1 : 0;
  }
  if (state_.settings.Enable_GAS != 0) {
    ShowGroup(content.group);
  }
  if (!content.complete) {
    app::ShowCardError(state_, editor_.owner, content.failure);
    return;
  }
  // Where one goes on writing.
  const int end = static_cast<int>(dialog_->Text(controls_.name.edit).size());
  dialog_->SetSelection(controls_.name.edit, end, end);
  // After what is still to be done for the opening.
  OnScreen([this] { FocusName(); });
  if (state_.isSmartphone == 0) {
    AttachMenus();
  }
}

void EntryEditor::ShowField(const ExtendedField& field, const FieldContent& content,
                            bool numberNames) {
  const FieldControls& place = controls_.*field.controls;
  if (!content.available) {
    SetUnavailable(field);
    return;
  }
  editor_.available.*field.available = 1;
  editor_.*field.record = content.record;
  if (field.nameId != nullptr) {
    editor_.*field.nameId = content.nameId;
    dialog_->Enable(place.button, numberNames);
    if (content.text.size() > static_cast<std::size_t>(kNumberLimit)) {
      dialog_->SetLimit(place.edit, kLongNumberLimit);
    }
  }
  if (!content.label.empty()) {
    dialog_->SetText(place.label, content.label);
  }
  dialog_->SetText(place.edit, content.text);
}

void EntryEditor::SetUnavailable(const ExtendedField& field) {
  const FieldControls& place = controls_.*field.controls;
  if (field.suppressed != nullptr) {
    editor_.*field.suppressed = 1;
  }
  dialog_->SetUnavailableText(place.edit, res::LoadString(res::kStringNotAvailable));
  if (field.suppressed != nullptr) {
    editor_.*field.suppressed = 0;
  }
  dialog_->Enable(place.button, false);
}

void EntryEditor::ShowGroup(const GroupContent& group) {
  dialog_->Enable(controls_.group.button, group.available);
  if (!group.available) {
    return;
  }
  editor_.available.group = 1;
  editor_.groups = group.groups;
  editor_.groupCount = group.count;
  if (!group.groups.text.empty()) {
    dialog_->SetText(controls_.group.edit, group.groups.text);
  }
}

void EntryEditor::FocusName() {
  if (Open() && !hold_.Holds()) {
    dialog_->SetFocus(controls_.name.edit);
  }
}

void EntryEditor::AttachMenus() {
  const auto attach = [this](int edit) {
    menus_.push_back(std::make_unique<app::EditContextMenu>(state_.ports.screen));
    menus_.back()->Attach(*dialog_, edit);
  };
  attach(controls_.name.edit);
  attach(controls_.number.edit);
  for (const ExtendedField& field : ExtendedFields()) {
    if (IsShown(field, state_.settings)) {
      attach((controls_.*field.controls).edit);
    }
  }
  if (state_.settings.Enable_GAS != 0) {
    attach(controls_.group.edit);
  }
}

}  // namespace kelpin::editor
