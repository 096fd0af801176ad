#include "contacts/contacts_to_sim_run.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/commands.h"
#include "app/list_loader.h"
#include "app/list_turn.h"
#include "app/main_list.h"
#include "app/sim_error.h"
#include "contacts/card_fields.h"
#include "contacts/contact_list_dialog.h"
#include "contacts/display_name.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "sim/sim_text.h"
#include "ui/screen.h"

namespace kelpin::contacts {
namespace {

using platform::SimResult;

constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;
// The card's own notices of the last writes have come by then.
constexpr std::uint32_t kNoticePause = 1000;  // milliseconds

// So much of a contact's name tells which one it is.
constexpr std::size_t kShownNameLimit = 60;

// Values of CToSim_Type.
constexpr std::uint32_t kEachNumber = 0;
constexpr std::uint32_t kAskEachContact = 1;
constexpr std::uint32_t kAskNothing = 2;

}  // namespace

ContactsToSimRun::ContactsToSimRun(app::AppState& state, app::Commands& commands,
                                   const app::ListLoader& loader, bool move)
    : state_(state),
      commands_(commands),
      loader_(loader),
      move_(move),
      connection_(state.ports.contacts),
      names_(state) {
  overwrite_.Reset(PromptDirection::kIntoSim);
}

void ContactsToSimRun::Run(ui::Dialog& picker, const std::atomic<bool>& stop) {
  Copy(picker, stop);
  done_ = true;
}

void ContactsToSimRun::Copy(ui::Dialog& picker, const std::atomic<bool>& stop) {
  if (move_ && connection_.Open() == 0) {
    return;
  }
  ui::Screen& screen = state_.ports.screen;
  screen.SetWaitCursor(true);
  // The notices of these writes are not for the watcher, which would do the rows again.
  state_.simPhonebook.SetCollectStores(0);
  const bool hasList = app::TakeList(state_);
  if (hasList) {
    CopyRows(picker, stop);
  }
  state_.ports.clock.Sleep(kNoticePause);
  if (hasList) {
    SelectNewest();
    app::SortMainList(state_);
    app::GiveListBack(state_);
    commands_.FollowSelection();
  }
  state_.simPhonebook.SetCollectStores(1);
  if (move_) {
    connection_.Close();
  }
  screen.SetWaitCursor(false);
  Tell(picker);
}

void ContactsToSimRun::CopyRows(ui::Dialog& picker, const std::atomic<bool>& stop) {
  ui::ListView& list = *picker.List(res::kContactPickerList);
  // What is checked from now on was not meant; what is unchecked in time is left out.
  std::vector<int> rows;
  for (int row = 0; row < list.ItemCount(); ++row) {
    if (list.Checked(row)) {
      rows.push_back(row);
    }
  }
  chosen_ = static_cast<int>(rows.size());
  Next next = Next::kGoOn;
  for (const int row : rows) {
    if (next == Next::kStop || stop || state_.closing) {
      return;
    }
    if (!list.Checked(row)) {
      continue;
    }
    cardChanged_ = loader_.IsWaiting();
    if (cardChanged_) {
      return;
    }
    // The row it is at is the selected one, so that the user sees how far it is.
    list.SetItemState(-1, 0, ui::kItemSelected);
    list.SetItemState(row, kSelectedFocused, kSelectedFocused);
    list.EnsureVisible(row);
    const std::shared_ptr<const ui::RowData> data = list.ItemData(row);
    // The picker's rows hold nothing else, and every one of them does.
    const Entry chosen = {list.ItemText(row, kContactColumnName),
                          list.ItemText(row, kContactColumnReach),
                          static_cast<const ContactPickRow*>(data.get())};
    next = CopyRow(picker, chosen);
    counters_.processed += next == Next::kGoOn ? 1 : 0;
  }
}

ContactsToSimRun::Next ContactsToSimRun::CopyRow(ui::Dialog& picker, const Entry& chosen) {
  Entry entry = chosen;
  CutName(picker, entry.name);
  entry.nameCut = entry.name.size() < chosen.name.size();
  std::uint32_t index = 0;
  if (state_.settings.Disable_Prompt_Contact_Exist != 0) {
    return WriteNew(entry, index);
  }
  if (!Wanted(picker, entry.name)) {
    return Next::kGoOn;
  }
  const int row = names_.Find(entry.name, index);
  Next next = Next::kGoOn;
  if (row < 0) {
    next = WriteNew(entry, index);
  } else {
    if (onlyCopies_.contains(index)) {
      ++counters_.existing;
      return Next::kGoOn;
    }
    if (overwrite_.applyToAll == 0) {
      overwrite_.name.clear();
      static_cast<void>(AskOverwrite(state_, picker.Handle(), entry.name, overwrite_));
    }
    if (overwrite_.applyAnswer == 0) {
      ++counters_.existing;
      return Next::kGoOn;
    }
    next = Overwrite(entry, row, index);
  }
  if (next == Next::kStop) {
    return next;
  }
  WriteFields(entry, index, row < 0);
  ++(row < 0 ? counters_.created : counters_.overwritten);
  if (move_ && state_.settings.CToSim_Type != kEachNumber) {
    TakeFromContacts(entry, index);
  }
  return Next::kGoOn;
}

void ContactsToSimRun::CutName(const ui::Dialog& picker, std::u16string& name) {
  const std::size_t most = state_.simPhonebook.MaxNameLength();
  const std::size_t scheme = state_.settings.Dismiss_NameScheme != 0 ? 1 : 0;
  if (state_.settings.Enable_CutName == 0 || name.empty() || sim::IsGsmText(name) != 0 ||
      2 * name.size() < most + scheme) {
    return;
  }
  ui::Screen& screen = state_.ports.screen;
  screen.SetWaitCursor(false);
  screen.MessageBox(picker.Handle(), res::LoadString(res::kStringNameCutNotice),
                    res::LoadString(res::kStringNameCutWarning), ui::kBoxWarning);
  screen.SetWaitCursor(true);
  const std::size_t half = most / 2;
  CutText(name, half - std::min(half, 1 - scheme));
}

bool ContactsToSimRun::Wanted(const ui::Dialog& picker, const std::u16string& name) {
  const std::uint32_t type = state_.settings.CToSim_Type;
  if (type == kAskEachContact && !notAll_.applyToAll) {
    AskNotAll(state_, picker.Handle(), move_, name, notAll_);
  }
  return type == kEachNumber || type == kAskNothing || notAll_.answer;
}

ContactsToSimRun::Next ContactsToSimRun::WriteNew(const Entry& entry, std::uint32_t& index) {
  const SimResult result =
      state_.simPhonebook.WriteNewEntry(index, entry.name.c_str(), entry.number.c_str());
  if (!Succeeded(result)) {
    return Refused(entry, result);
  }
  if (app::InsertListRow(state_, index, entry.number.c_str(), entry.name.c_str()) != 0) {
    names_.Inserted(entry.name);
    inserted_ = true;
  }
  return Next::kGoOn;
}

ContactsToSimRun::Next ContactsToSimRun::Overwrite(const Entry& entry, int row,
                                                   std::uint32_t index) {
  std::u16string name;
  std::u16string number;
  app::GetListRow(state_, row, nullptr, &name, &number);
  const SimResult result = state_.simPhonebook.WriteEntry(index, entry.name.c_str(),
                                                          entry.number.c_str(), {name, number});
  if (result == SimResult::kEntryChanged) {
    // Another program put something else there than what the user let go.
    cardChanged_ = true;
    return Next::kStop;
  }
  if (!Succeeded(result)) {
    return Refused(entry, result);
  }
  app::ReplaceListRow(state_, row, index, entry.name.c_str(), entry.number.c_str());
  names_.Replaced();
  return Next::kGoOn;
}

void ContactsToSimRun::WriteFields(const Entry& entry, std::uint32_t index, bool isNew) {
  // What the card has no place for is an error of the card only when it was to be moved there.
  const auto written = [](FieldOutcome outcome) { return outcome != FieldOutcome::kFailed; };
  if (state_.settings.Disable_ANR == 0) {
    NoteField(written(WriteNumber2(state_, index, entry.more->number2, isNew)),
              app::kNumber2NotWritten);
  }
  if (state_.settings.Disable_EMAIL == 0) {
    NoteField(written(WriteEmail(state_, index, entry.more->email, isNew)), app::kEmailNotWritten);
  }
}

void ContactsToSimRun::NoteField(bool written, std::uint32_t code) {
  if (!written && fieldError_ == 0) {
    fieldError_ = code;
  }
}

void ContactsToSimRun::TakeFromContacts(const Entry& entry, std::uint32_t index) {
  const bool onTheCard =
      !entry.nameCut && CardHasEntry(state_, index, entry.name, entry.number) &&
      (state_.settings.Disable_ANR != 0 || CardHasNumber2(state_, index, entry.more->number2)) &&
      (state_.settings.Disable_EMAIL != 0 || CardHasEmail(state_, index, entry.more->email));
  if (!onTheCard || entry.more->oid == 0 || connection_.DeleteContactByOid(entry.more->oid) == 0) {
    ++kept_;
    return;
  }
  onlyCopies_.insert(index);
}

ContactsToSimRun::Next ContactsToSimRun::Fail(SimResult result) {
  error_ = result;
  return Next::kStop;
}

ContactsToSimRun::Next ContactsToSimRun::Refused(const Entry& entry, SimResult result) {
  // Any other error is the card's, not that of what was to be written.
  if (result == SimResult::kBadParameter) {
    refused_ = !entry.name.empty()     ? entry.name
               : !entry.number.empty() ? entry.number
                                       : entry.more->email;
    if (refused_.size() > kShownNameLimit) {
      CutText(refused_, kShownNameLimit);
      refused_ += u'\u2026';
    }
  }
  return Fail(result);
}

// The entry that was added last is on top until the list is sorted.
void ContactsToSimRun::SelectNewest() {
  ui::ListView& list = *state_.dialog->List(res::kMainList);
  if (inserted_ && list.ItemCount() > 0) {
    list.SetItemState(-1, 0, ui::kItemSelected);
    list.SetItemState(0, kSelectedFocused, kSelectedFocused);
    list.SetSelectionMark(0);
    list.EnsureVisible(0);
  }
}

void ContactsToSimRun::Tell(const ui::Dialog& picker) {
  if (state_.closing) {
    return;
  }
  ui::Screen& screen = state_.ports.screen;
  const auto warn = [&](const std::u16string& text) {
    screen.MessageBox(picker.Handle(), text, res::LoadString(res::kStringWarning), ui::kBoxWarning);
  };
  app::ShowSimError(screen, picker.Handle(), fieldError_);
  if (kept_ > 0) {
    warn(res::Format(res::LoadString(res::kTextContactsKept), {kept_}));
  }
  if (cardChanged_) {
    warn(res::Format(res::LoadString(res::kTextCopyToSimStopped), {counters_.processed, chosen_}));
  }
  if (error_ == SimResult::kBadParameter) {
    warn(res::Format(res::LoadString(res::kTextContactRefused),
                     {counters_.processed, chosen_, refused_}));
  }
  app::ShowCardError(state_, picker.Handle(), error_);
}

}  // namespace kelpin::contacts
