#include "app/delete_entries.h"

#include <string>
#include <utility>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/commands.h"
#include "app/list_loader.h"
#include "app/readiness.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"

namespace kelpin::app {
namespace {

constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;

ui::ListView& List(const AppState& state) {
  return *state.dialog->List(res::kMainList);
}

void ClearFields(const AppSettings& settings, std::uint32_t index, const ClearField& clearField) {
  const auto clearIf = [&](bool wanted, ExtendedField field) {
    if (wanted) {
      clearField(index, field);
    }
  };
  clearIf(settings.Disable_ANR == 0, ExtendedField::kNumber2);
  clearIf(settings.Disable_ANRA == 0, ExtendedField::kNumber3);
  clearIf(settings.Disable_EMAIL == 0, ExtendedField::kEmail);
  clearIf(settings.Enable_SNE != 0, ExtendedField::kNickname);
  clearIf(settings.Enable_GAS != 0, ExtendedField::kGroup);
}

}  // namespace

platform::SimResult DeleteFromCard(AppState& state, std::uint32_t index,
                                   const sim::SimPhonebook::KnownTexts& known,
                                   const ClearField& clearField) {
  const platform::SimResult result = state.simPhonebook.DeleteEntry(index, known);
  if (!Succeeded(result)) {
    return result;
  }
  state.simPhonebook.MarkSlot(index, 0);
  if (clearField) {
    ClearFields(state.settings, index, clearField);
  }
  return result;
}

EntryDeletion::EntryDeletion(AppState& state, Commands& commands, const ListLoader& loader,
                             ClearField clearField)
    : state_(state),
      loader_(loader),
      clearField_(std::move(clearField)),
      run_(state, commands, res::kCommandDeleteNext) {}

void EntryDeletion::Start() {
  const ui::ListView& list = List(state_);
  if (!run_.IsFree() || list.SelectedCount() == 0 || !CardIsReady(state_)) {
    return;
  }
  chosen_.clear();
  for (int row = list.NextItem(-1, ui::kItemSelected); row >= 0;
       row = list.NextItem(row, ui::kItemSelected)) {
    chosen_.push_back(list.ItemData(row));
  }
  if (Ask()) {
    Begin();
  } else {
    chosen_.clear();
  }
}

bool EntryDeletion::Ask() {
  const EntryRun::Asking asking(run_);
  const ui::BoxAnswer answer = state_.ports.screen.MessageBox(
      state_.mainDialog, res::LoadString(res::kStringDeleteFromSimQuestion),
      res::LoadString(res::kStringWarning), ui::kBoxQuestion);
  return answer == ui::BoxAnswer::kYes && !state_.dialog->Ended();
}

void EntryDeletion::Begin() {
  chosenCount_ = chosen_.size();
  deletedCount_ = 0;
  // The notices of these deletions are not for the watcher, which would do the rows again.
  state_.simPhonebook.SetCollectDeletions(0);
  run_.Begin();
}

void EntryDeletion::Continue() {
  if (!run_.IsDue()) {
    return;
  }
  if (loader_.IsWaiting()) {
    End();
    TellStopped();
    return;
  }
  // Rows that others took away since the question are nobody's choice any more.
  while (!chosen_.empty() && chosen_.front() != nullptr && FirstRow() < 0) {
    chosen_.pop_front();
  }
  if (!chosen_.empty()) {
    DeleteFirst();
    return;
  }
  SelectMarkedRow();
  End();
}

void EntryDeletion::DeleteFirst() {
  const int row = chosen_.front() == nullptr ? -1 : FirstRow();
  std::uint32_t index = 0;
  std::u16string name;
  std::u16string number;
  if (GetListRow(state_, row, &index, &name, &number) == 0) {
    End();
    return;
  }
  const platform::SimResult result = DeleteFromCard(state_, index, {name, number}, clearField_);
  if (result == platform::SimResult::kEntryChanged) {
    // Another program put something else there; what is listed is not what would go.
    End();
    state_.dialog->PostCommand(res::kCommandRefresh);
    TellStopped();
    return;
  }
  if (!Succeeded(result)) {
    End();
    ShowCardError(state_, state_.mainDialog, result);
    return;
  }
  List(state_).DeleteItem(row);
  chosen_.pop_front();
  ++deletedCount_;
  run_.PostNext();
}

int EntryDeletion::FirstRow() const {
  const ui::ListView& list = List(state_);
  // Nearly always the first selected row; the user may have selected another meanwhile.
  const int selected = list.NextItem(-1, ui::kItemSelected);
  if (selected >= 0 && list.ItemData(selected) == chosen_.front()) {
    return selected;
  }
  for (int row = 0; row < list.ItemCount(); ++row) {
    if (list.ItemData(row) == chosen_.front()) {
      return row;
    }
  }
  return -1;
}

void EntryDeletion::SelectMarkedRow() {
  ui::ListView& list = List(state_);
  // To the list, row -1 is every row.
  if (const int mark = list.SelectionMark(); mark >= 0) {
    list.SetItemState(mark, kSelectedFocused, kSelectedFocused);
    list.EnsureVisible(0);
  }
}

void EntryDeletion::End() {
  chosen_.clear();
  state_.simPhonebook.SetCollectDeletions(1);
  run_.End();
}

void EntryDeletion::TellStopped() {
  state_.ports.screen.MessageBox(
      state_.mainDialog,
      res::Format(res::LoadString(res::kTextDeletionStopped), {deletedCount_, chosenCount_}),
      res::LoadString(res::kStringWarning), ui::kBoxWarning);
}

bool EntryDeletion::MayClose() {
  if (!run_.IsRunning()) {
    return true;
  }
  if (!run_.MayClose(res::Format(res::LoadString(res::kTextDeletionCloseQuestion),
                                 {deletedCount_, chosenCount_}))) {
    return false;
  }
  End();
  return true;
}

void RegisterDelete(AppState& state, Commands& commands, const ListLoader& loader,
                    ClearField clearField) {
  const auto deletion =
      std::make_shared<EntryDeletion>(state, commands, loader, std::move(clearField));
  commands.Register(res::kCommandDelete, [deletion] { deletion->Start(); });
  commands.Register(res::kCommandDeleteNext, [deletion] { deletion->Continue(); });
  state.mayClose = [deletion] { return deletion->MayClose(); };
}

}  // namespace kelpin::app
