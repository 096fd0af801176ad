#include "contacts/move_to_contacts.h"

#include <algorithm>
#include <string>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/delete_entries.h"
#include "app/extended_fields.h"
#include "app/list_loader.h"
#include "app/readiness.h"
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

MoveToContacts::MoveToContacts(app::AppState& state, app::Commands& commands,
                               const app::ListLoader& loader, OverwritePrompt& prompt)
    : state_(state),
      loader_(loader),
      prompt_(prompt),
      work_(state, commands, res::kCommandMoveNext) {}

void MoveToContacts::Start() {
  if (!work_.IsFree()) {
    return;
  }
  chosen_.emplace(List(state_));
  if (chosen_->Count() == 0 || !app::CardIsReady(state_)) {
    return;
  }
  kept_ = 0;
  work_.Begin();
}

void MoveToContacts::Continue() {
  if (!work_.IsDue()) {
    return;
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
  const SimToContacts::Step step = CopyNext(entry);
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
  work_.PostNext();
}

SimToContacts::Step MoveToContacts::CopyNext(EntryCopy& entry) {
  const app::EntryRun::Asking asking(work_);  // a prompt serves the screen
  return run_->CopyNext(state_.mainDialog, entry);
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
    app::ShowCardError(state_, state_.mainDialog, result);
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
  {
    const app::EntryRun::Asking asking(work_);
    ShowSummary(state_, summary);
  }
  SelectMarkedRow(List(state_));
  End();
}

void MoveToContacts::TellStopped() {
  const std::u16string text = CopyStoppedText(run_->Counters().processed, chosen_->Count());
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
  CloseRun();
  work_.End();
}

bool MoveToContacts::MayClose() {
  if (!work_.IsRunning()) {
    return true;
  }
  const int processed = run_.has_value() ? run_->Counters().processed : 0;
  if (!work_.MayClose(CopyCloseQuestion(processed, chosen_->Count()))) {
    return false;
  }
  End();
  return true;
}

}  // namespace kelpin::contacts
