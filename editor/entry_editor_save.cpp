// How an entry's dialog saves.
#include <cstddef>
#include <utility>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/main_list.h"
#include "editor/entry_editor.h"
#include "editor/saved_rows.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"

namespace kelpin::editor {
namespace {

constexpr std::uint32_t kLoadPoll = 500;  // milliseconds

}  // namespace

void EntryEditor::StartSave() {
  if (hold_.Holds() || saving_) {
    return;
  }
  saving_ = true;
  troublesBefore_ = state_.troubles.Count();
  SetWaiting(true);
  // The load counts the free locations anew.
  if (IsNew() && app::IsListLoading(state_)) {
    AwaitLoad();
  } else {
    ContinueSave();
  }
}

void EntryEditor::AwaitLoad() {
  hold_.Begin(*dialog_, DialogHold::Keys::kAll);
  const bool started = OnThread([this] {
    while (app::IsListLoading(state_) && !state_.closing) {
      state_.ports.clock.Sleep(kLoadPoll);
    }
    OnScreen([this] { ContinueSave(); });
  });
  if (!started) {
    LetGo();
    Tell(res::kStringErrorOccurs);
  }
}

void EntryEditor::ContinueSave() {
  if (!Open()) {
    return;
  }
  const int focus = hold_.Holds() ? hold_.Focus() : dialog_->Focus();
  if (IsFiltered(focus)) {
    Filter(focus);
  }
  EntryInput input = Input();
  if (!Accept(input)) {
    return;
  }
  hold_.Begin(*dialog_, DialogHold::Keys::kAll);
  const auto save = [this, input = std::move(input)] {
    const SaveOutcome outcome = SaveEntry(state_, input, [&](std::uint32_t location) {
      OnScreen([this, location, name = input.name, number = input.number] {
        savedRows_.Add(location, name, number);
      });
    });
    OnScreen([this, input, outcome] { FinishSave(input, outcome); });
  };
  if (!OnThread(save)) {
    save();
  }
}

EntryInput EntryEditor::Input() const {
  EntryInput input;
  input.isNew = IsNew();
  input.location = editor_.location;
  input.knownName = editor_.name;
  input.knownNumber = editor_.number;
  input.known = known_;
  input.generation = generation_;
  input.name = dialog_->Text(controls_.name.edit).substr(0, kEntryTextLimit);
  input.number = dialog_->Text(controls_.number.edit).substr(0, kEntryTextLimit);
  for (std::size_t i = 0; i < kExtendedFieldCount; ++i) {
    const ExtendedField& field = ExtendedFields()[i];
    FieldInput& into = input.fields[i];
    into.text = dialog_->Text((controls_.*field.controls).edit);
    into.nameId = field.nameId == nullptr ? 0 : editor_.*field.nameId;
    into.record = IsNew() ? sim::kNoRecord : editor_.*field.record;
    // What could not be read is not cleared just because nothing is to be seen of it.
    const bool untouched = unread_[i] && into.text.empty();
    into.write =
        IsShown(field, state_.settings) && editor_.available.*field.available != 0 && !untouched;
  }
  input.writeGroup = state_.settings.Enable_GAS != 0 && editor_.available.group != 0;
  input.groups = editor_.groups.ids;
  return input;
}

bool EntryEditor::Accept(const EntryInput& input) {
  const app::AppSettings& settings = state_.settings;
  const sim::SimPhonebook& sim = state_.simPhonebook;
  if (!NameFits(input.name, sim.MaxNameLength(), settings.Dismiss_NameScheme != 0)) {
    Refuse(res::kStringNameTooLong, controls_.name.edit);
    return false;
  }
  const int nickname = controls_.nickname.edit;
  if (settings.Enable_SNE != 0 && editor_.available.nickname != 0 &&
      !NicknameFits(dialog_->Text(nickname), dialog_->Limit(nickname))) {
    Refuse(res::kStringNameTooLong, nickname);
    return false;
  }
  if (input.number.empty()) {
    Refuse(res::kStringNumberEmpty, controls_.number.edit);
    return false;
  }
  if (!NumberFits(input.number, sim.MaxNumberLength())) {
    Refuse(res::kStringNumberTooLong, controls_.number.edit);
    return false;
  }
  return true;
}

void EntryEditor::Refuse(int text, int edit) {
  LetGo();
  Tell(text);
  if (Open()) {
    dialog_->SetFocus(edit);
  }
}

void EntryEditor::Tell(int text) {
  state_.ports.screen.MessageBox(editor_.owner, res::LoadString(text),
                                 res::LoadString(res::kStringError), ui::kBoxError);
}

void EntryEditor::LetGo() {
  saving_ = false;
  SetWaiting(false);
  hold_.End(*dialog_);
}

void EntryEditor::FinishSave(const EntryInput& input, const SaveOutcome& outcome) {
  if (!Open()) {
    return;
  }
  if (outcome.stored && !IsNew()) {
    editor_.name = input.name;
    editor_.number = input.number;
    // The next save begins from what this one wrote.
    for (std::size_t i = 0; known_ != nullptr && i < outcome.field; ++i) {
      if (input.fields[i].write) {
        known_->fields[i].text = input.fields[i].text;
        known_->fields[i].nameId = input.fields[i].nameId;
      }
    }
  }
  for (std::size_t i = 0; i < kExtendedFieldCount; ++i) {
    editor_.*ExtendedFields()[i].record = outcome.records[i];
  }
  LetGo();
  if (outcome.code == static_cast<std::uint32_t>(platform::SimResult::kEntryChanged)) {
    OfferToReadAgain();
    return;
  }
  if (!outcome.silent) {
    app::ShowCardError(state_, editor_.owner, outcome.code, troublesBefore_);
  }
  if (!Open()) {
    return;
  }
  if (outcome.done) {
    Close();
  } else if (outcome.field != SaveOutcome::kNoField) {
    dialog_->SetFocus((controls_.*ExtendedFields()[outcome.field].controls).edit);
  }
}

void EntryEditor::OfferToReadAgain() {
  const ui::BoxAnswer answer =
      state_.ports.screen.MessageBox(editor_.owner, res::LoadString(res::kTextEntryChangedQuestion),
                                     res::LoadString(res::kStringWarning), ui::kBoxQuestion);
  if (answer == ui::BoxAnswer::kYes && Open()) {
    ShowAnew();
    StartReading();
  }
}

}  // namespace kelpin::editor
