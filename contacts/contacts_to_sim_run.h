#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <unordered_set>

#include "contacts/contact_picker_fill.h"
#include "contacts/contacts_connection.h"
#include "contacts/main_list_names.h"
#include "contacts/not_all_prompt.h"
#include "contacts/overwrite_prompt.h"
#include "contacts/run_counters.h"
#include "platform/sim_result.h"
#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
class Commands;
class ListLoader;
}  // namespace kelpin::app

namespace kelpin::contacts {

// One run of Contacts to SIM, or of the move: writes what is checked in the picker to the card, row
// after row. Meanwhile nobody else works on the main list. A list that is to be read again, since
// the card was changed or replaced, ends the run.
//
// A move takes a contact out of Contacts when the card was read again and has what was written; a
// contact of which the card could not take all stays, and that is told.
//
// Reading what became of it is for after Run.
class ContactsToSimRun {
 public:
  ContactsToSimRun(app::AppState& state, app::Commands& commands, const app::ListLoader& loader,
                   bool move);

  // On a thread of its own, once. `stop` ends it after the row it is at.
  void Run(ui::Dialog& picker, const std::atomic<bool>& stop);

  // Run has returned, whatever came of it.
  bool Done() const { return done_; }
  const RunCounters& Counters() const { return counters_; }

 private:
  struct Entry {
    std::u16string name;
    std::u16string number;
    const ContactPickRow* more = nullptr;
    bool nameCut = false;
  };
  enum class Next { kGoOn, kStop };

  void Copy(ui::Dialog& picker, const std::atomic<bool>& stop);
  void CopyRows(ui::Dialog& picker, const std::atomic<bool>& stop);
  Next CopyRow(ui::Dialog& picker, const Entry& chosen);
  // The name as the card takes it, after the warning that goes with it.
  void CutName(const ui::Dialog& picker, std::u16string& name);
  // False when the user wants this contact left out.
  bool Wanted(const ui::Dialog& picker, const std::u16string& name);
  Next WriteNew(const Entry& entry, std::uint32_t& index);
  Next Overwrite(const Entry& entry, int row, std::uint32_t index);
  void WriteFields(const Entry& entry, std::uint32_t index, bool isNew);
  void NoteField(bool written, std::uint32_t code);
  // The move's second half.
  void TakeFromContacts(const Entry& entry, std::uint32_t index);
  Next Fail(platform::SimResult result);
  // The card did not take this entry.
  Next Refused(const Entry& entry, platform::SimResult result);
  void SelectNewest();
  void Tell(const ui::Dialog& picker);

  app::AppState& state_;
  app::Commands& commands_;
  const app::ListLoader& loader_;
  const bool move_;
  ContactsConnection connection_;
  MainListNames names_;
  OverwritePrompt overwrite_;
  NotAllAnswers notAll_;
  RunCounters counters_;
  // Locations of entries whose contacts are deleted: no contact of the same name overwrites one in
  // this run, it counts as existing without a question.
  std::unordered_set<std::uint32_t> onlyCopies_;
  platform::SimResult error_ = platform::SimResult::kOk;
  std::u16string refused_;        // what the contact is called that does not fit the card
  std::uint32_t fieldError_ = 0;  // the first one
  int chosen_ = 0;                // rows checked
  int kept_ = 0;                  // contacts of a move that are still in Contacts
  bool inserted_ = false;
  bool cardChanged_ = false;
  std::atomic<bool> done_ = false;
};

}  // namespace kelpin::contacts
