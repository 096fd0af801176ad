#include "contacts/run_counters.h"

#include "app/app_state.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"

namespace kelpin::contacts {

std::u16string SummaryText(const RunCounters& counters) {
  return res::Format(res::LoadString(res::kStringContactsAddedWithOverwritten),
                     {counters.created, counters.overwritten, counters.existing}, kSummaryLimit);
}

std::u16string AddedSummaryText(const RunCounters& counters) {
  return res::Format(res::LoadString(res::kStringContactsAdded),
                     {counters.created, counters.processed - counters.created}, kSummaryLimit);
}

void ShowSummary(app::AppState& state, const std::u16string& text) {
  state.ports.screen.MessageBox(state.mainDialog, text, res::LoadString(res::kStringInfo),
                                ui::kBoxNotice);
}

}  // namespace kelpin::contacts
