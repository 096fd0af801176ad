#include "contacts/contacts_to_sim.h"

#include <atomic>
#include <memory>

#include "app/app_state.h"
#include "app/card_hold.h"
#include "app/readiness.h"
#include "contacts/contact_picker.h"
#include "contacts/contacts_to_sim_run.h"
#include "res/ids.h"
#include "views/view_dialog.h"

namespace kelpin::contacts {

void ContactsToSim(app::AppState& state, app::Commands& commands, const app::ListLoader& loader,
                   bool move) {
  if (!app::LimitsAreKnown(state) || !app::CardIsReady(state)) {
    return;
  }
  // The picker was opened for the card that is in now.
  const app::CardHold hold(state);
  // Shared with the thread that works, which a program that ends may leave behind.
  const auto run = std::make_shared<ContactsToSimRun>(state, commands, loader, move);
  ContactPicker picker(state, move, [run](ui::Dialog& dialog, const std::atomic<bool>& stop) {
    run->Run(dialog, stop);
  });
  views::RunDialog(state, res::kDialogContactPicker, state.mainDialog, picker);
  if (run->Done() && state.settings.Disable_Prompt_Contact_Exist == 0) {
    ShowSummary(state, SummaryText(run->Counters()));
  }
}

}  // namespace kelpin::contacts
