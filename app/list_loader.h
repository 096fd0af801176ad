#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <utility>

#include "platform/mutex.h"
#include "platform/sim_result.h"

namespace kelpin::app {

struct AppState;
class Commands;

// Fills the main list from the card, each time on a thread of its own. A load that is asked for
// while another runs waits for it, then starts over with an empty list.
class ListLoader {
 public:
  // `loadLayout` may be empty.
  ListLoader(AppState& state, Commands& commands, std::function<void(AppState&)> loadLayout)
      : state_(state), commands_(commands), loadLayout_(std::move(loadLayout)) {}

  // 1 when a thread was made for it, else 0; then the list says that it was not read.
  int StartLoad();
  // Reads the whole list again, if the card is ready. Screen thread.
  void Refresh();

 private:
  struct Outcome {
    bool failed = false;
    std::uint32_t code = 0;  // 0 when only the radio failed
  };

  void Load();
  Outcome ReadCard();
  template <typename Entry>
  Outcome ReadEntries(std::uint32_t used, std::uint32_t total);
  void ShowProgress(std::uint32_t done, std::uint32_t used);
  void ShowOutcome(const Outcome& outcome);
  Outcome Fail(platform::SimResult result);
  void CopyNewSim();

  AppState& state_;
  Commands& commands_;
  const std::function<void(AppState&)> loadLayout_;
  std::atomic<bool> queued_ = false;  // a load was asked for and has not begun
  Mutex running_;                     // held by the load that runs
};

}  // namespace kelpin::app
