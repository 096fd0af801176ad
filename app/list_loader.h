#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "app/wiring.h"
#include "platform/mutex.h"
#include "platform/sim_result.h"

namespace kelpin::app {

struct AppState;
class Commands;

// Fills the main list from the card, each time on a thread of its own. A load that is asked for
// while another runs waits for it, then starts over with an empty list.
class ListLoader {
 public:
  // Of `wiring` the hooks of a load count.
  ListLoader(AppState& state, Commands& commands, const Wiring& wiring)
      : state_(state), commands_(commands), wiring_(wiring) {}

  // 1 when a thread was made for it, else 0; then the list says that it was not read.
  int StartLoad();
  // Reads the whole list again, if the card is ready; a card that is locked is asked to be opened
  // first. Screen thread.
  void Refresh();
  // A load was asked for and has not begun. Any thread.
  bool IsWaiting() const { return queued_; }

 private:
  struct Outcome {
    bool failed = false;
    std::uint32_t code = 0;  // 0 when only the radio failed
  };

  void Load();
  Outcome ReadCard();
  template <typename Entry>
  Outcome ReadEntries(std::uint32_t used, std::uint32_t total);
  // What the user sees of a load from its start.
  void ShowLoading();
  void ShowProgress(std::uint32_t done, std::uint32_t used);
  void ShowOutcome(const Outcome& outcome);
  Outcome Fail(platform::SimResult result);
  void CopyNewSim();

  AppState& state_;
  Commands& commands_;
  const Wiring wiring_;
  std::atomic<bool> queued_ = false;  // a load was asked for and has not begun
  Mutex running_;                     // held by the load that runs
  std::uint32_t troublesBefore_ = 0;  // shown of the card's before that load began
};

}  // namespace kelpin::app
