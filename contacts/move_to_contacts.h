#pragma once

#include <optional>

#include "app/entry_run.h"
#include "contacts/chosen_rows.h"
#include "contacts/overwrite_prompt.h"
#include "contacts/sim_to_contacts.h"

namespace kelpin::app {
struct AppState;
class Commands;
class ListLoader;
}  // namespace kelpin::app

namespace kelpin::contacts {

// The Move to Contacts command: copies the entries that are selected when it is given and deletes
// those from the card that Contacts has. Before an entry is deleted its contact is read back, and
// so is the entry itself: one whose fields could not all be read, that Contacts does not give back,
// or that another program changed meanwhile stays on the card.
// Screen thread.
class MoveToContacts {
 public:
  MoveToContacts(app::AppState& state, app::Commands& commands, const app::ListLoader& loader,
                 OverwritePrompt& prompt);

  // The command.
  void Start();
  // The next entry; comes by the command kCommandMoveNext.
  void Continue();
  // Whether the window may close: while entries are moved the user is asked, and a Yes ends the
  // work.
  bool MayClose();

 private:
  enum class Removal { kGone, kKept, kStopped };

  // Opens Contacts; false when it ended the run.
  bool Begin();
  void MoveNext();
  SimToContacts::Step CopyNext(EntryCopy& entry);
  // Takes the entry off the card and the list, where it may be.
  Removal Remove(const EntryCopy& entry);
  void Tell();
  void TellStopped();
  // Puts everything back as it was but the list, which others may work on only after the summary.
  void CloseRun();
  void End();

  app::AppState& state_;
  const app::ListLoader& loader_;
  OverwritePrompt& prompt_;
  app::EntryRun work_;

  std::optional<ChosenRows> chosen_;
  std::optional<SimToContacts> run_;
  int kept_ = 0;  // entries saved to Contacts that the card still has
};

}  // namespace kelpin::contacts
