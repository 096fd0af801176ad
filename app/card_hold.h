#pragma once

#include <cstdint>

namespace kelpin::app {

struct AppState;

// For as long as a dialog is open that changes the card: what the user began for one card never
// goes to another that was put in meanwhile. The other one is read again when the dialog is closed.
// Screen thread.
class CardHold {
 public:
  explicit CardHold(AppState& state);
  ~CardHold();
  CardHold(const CardHold&) = delete;
  CardHold& operator=(const CardHold&) = delete;

 private:
  AppState& state_;
};

// Rises whenever what was read of the card before may be another program's by now. Any thread.
std::uint32_t CardGeneration(const AppState& state);
// Another card is in than the one that the open dialog is for, or that was listed: it takes no
// change. Any thread.
bool CardIsExchanged(const AppState& state);
// The program was told to end and reads the card no more. Any thread.
bool CardIsGivenUp(const AppState& state);

}  // namespace kelpin::app
