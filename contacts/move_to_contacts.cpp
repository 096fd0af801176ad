#include "contacts/move_to_contacts.h"

#include <algorithm>
#include <string>

#include "app/app_state.h"
#include "app/commands.h"
#include "app/delete_entries.h"
#include "app/extended_fields.h"
#include "app/list_loader.h"
#include "app/list_turn.h"
#include "app/readiness.h"
#include "app/sim_error.h"
#include "contacts/marked_row.h"
#include "contacts/run_counters.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"

namespace kelpin::contacts {
namespace {

ui::ListView& List(const app::AppState& state) {
  return *state.dialog->List(res::kMainList);
}

// The list and the card write an international number's '+' in different places.
std::u16string WithoutPlus(std::u16string number) {
  std::erase(number, u'+');
  return number;
}

}  // namespace

void MoveToContacts::Start() {
  if (running_ || asking_) {
    return;
  }
  chosen_.emplace(List(state_));
  if (chosen_->Count() == 0 || !app::CardIsReady(state_)) {
    return;
  }
  running_ = true;
  kept_ = 0;
  state_.ports.screen.SetWaitCursor(true);
  commands_.EnableSoftKeys(false);
  PostNext();
}

void MoveToContacts::PostNext() {
  if (!nextIsDue_) {
    nextIsDue_ = true;
    state_.dialog->PostCommand(res::kCommandMoveNext);
  }
}

void MoveToContacts::Continue() {
  nextIsDue_ = false;
  if (!running_ || asking_) {
    return;
  }
  if (!hasList_) {
    hasList_ = app::TakeListOrAsk(state_, res::kCommandMoveNext);
    if (!hasList_) {
      nextIsDue_ = true;
      return;
    }
  }
  if (!run_.has_value() && !Begin()) {
    return;
  }
  // A card that is to be read again may be another one, with other entries at these locations.
  if (loader_.IsWaiting()) {
    TellStopped();
    return;
  }
  MoveNext();
}

bool MoveToContacts::Begin() {
  chosen_->Place(List(state_));
  run_.emplace(state_, *chosen_, prompt_);
  if (run_->Open() == 0) {
    run_.reset();
    End();
    return false;
  }
  // The notices of these deletions are not for the watcher, which would do the rows again.
  state_.simPhonebook.SetCollectDeletions(0);
  return true;
}

void MoveToContacts::MoveNext() {
  EntryCopy entry;
  asking_ = true;  // a prompt serves the screen
  const SimToContacts::Step step = run_->CopyNext(state_.mainDialog, entry);
  asking_ = false;
  if (state_.closing || step == SimToContacts::Step::kUnreadable) {
    End();
    return;
  }
  if (step == SimToContacts::Step::kExchanged) {
    TellStopped();
    return;
  }
  if (step == SimToContacts::Step::kNoneLeft) {
    Tell();
    return;
  }
  if (entry.saved) {
    const Removal removal = Remove(entry);
    if (removal == Removal::kStopped) {
      return;
    }
    kept_ += removal == Removal::kKept ? 1 : 0;
  }
  PostNext();
}

MoveToContacts::Removal MoveToContacts::Remove(const EntryCopy& entry) {
  if (!entry.wholeRead || !run_->IsInContacts(entry)) {
    return Removal::kKept;
  }
  std::u16string name;
  std::u16string number;
  platform::SimResult result = state_.simPhonebook.ReadEntry(entry.index, &name, &number);
  if (Succeeded(result)) {
    if (name != entry.name || WithoutPlus(number) != WithoutPlus(entry.number)) {
      return Removal::kKept;
    }
    result = app::DeleteFromCard(state_, entry.index, {name, number},
                                 [this](std::uint32_t index, app::ExtendedField field) {
                                   app::ClearExtendedField(state_, index, field);
                                 });
  }
  if (result == platform::SimResult::kEntryChanged) {
    return Removal::kKept;
  }
  if (!Succeeded(result)) {
    End();
    app::ShowSimError(state_.ports.screen, state_.mainDialog, result);
    return Removal::kStopped;
  }
  run_->NoteMoved(entry);
  List(state_).DeleteItem(entry.row);
  chosen_->Deleted();
  return Removal::kGone;
}

void MoveToContacts::Tell() {
  std::u16string summary = run_->Summary();
  if (kept_ > 0) {
    summary += u"\n\n";
    summary += res::Format(res::LoadString(res::kTextSimEntriesKept), {kept_});
  }
  CloseRun();
  asking_ = true;
  ShowSummary(state_, summary);
  asking_ = false;
  SelectMarkedRow(List(state_));
  End();
}

void MoveToContacts::TellStopped() {
  const std::u16string text =
      res::Format(res::LoadString(res::kTextCopyFromSimStopped),
                  {run_->Counters().processed, chosen_->Count()}, kSummaryLimit);
  End();
  state_.ports.screen.MessageBox(state_.mainDialog, text, res::LoadString(res::kStringWarning),
                                 ui::kBoxWarning);
}

void MoveToContacts::CloseRun() {
  state_.simPhonebook.SetCollectDeletions(1);
  if (run_.has_value()) {
    run_->Close();
    run_.reset();
  }
  state_.ports.screen.SetWaitCursor(false);
}

void MoveToContacts::End() {
  running_ = false;
  CloseRun();
  commands_.EnableSoftKeys(true);
  if (hasList_) {
    hasList_ = false;
    app::GiveListBack(state_);
  }
  commands_.FollowSelection();
}

bool MoveToContacts::MayClose() {
  if (!running_) {
    return true;
  }
  if (asking_) {
    return false;
  }
  const int processed = run_.has_value() ? run_->Counters().processed : 0;
  asking_ = true;
  const ui::BoxAnswer answer = state_.ports.screen.MessageBox(
      state_.mainDialog,
      res::Format(res::LoadString(res::kTextCopyFromSimCloseQuestion),
                  {processed, chosen_->Count()}),
      res::LoadString(res::kStringWarning), ui::kBoxQuestion);
  asking_ = false;
  if (answer == ui::BoxAnswer::kYes) {
    End();
    return true;
  }
  PostNext();
  return false;
}

}  // namespace kelpin::contacts
