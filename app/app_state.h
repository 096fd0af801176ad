#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "app/card_error.h"
#include "app/main_list.h"
#include "app/ports.h"
#include "app/settings.h"
#include "sim/ril_client.h"
#include "sim/ril_ext_phonebook.h"
#include "sim/sim_phonebook.h"
#include "ui/dialog.h"
#include "ui/menu.h"

namespace kelpin::app {

using ModuleHandle = std::uintptr_t;

inline constexpr std::size_t kTitleLimit = 64;  // UTF-16 units

// The one set of values that the whole program shares: made by start-up, handed down by reference.
// Each member is written by its owner alone. What is not atomic is written before the program makes
// its first thread and read only after that.
struct AppState {
  explicit AppState(const Ports& devicePorts)
      : ports(devicePorts),
        simPhonebook(ports.sim, ports.kernel),
        radio(ports.radio, ports.kernel, ports.devices),
        extPhonebook(ports.radio, ports.kernel, ports.devices) {}

  const Ports ports;

  // Start-up.
  ModuleHandle hInstance = 0;
  std::u16string appTitle;
  std::unique_ptr<platform::NamedMutex> instanceMutex;
  ui::WindowHandle mainWindow = 0;     // the anchor window
  std::uint32_t isSmartphone = 0;      // 1 or 0
  std::uint32_t isHighRes = 0;         // 1 when both sides of the screen are over 320 pixels
  std::uint32_t sipAutoDeployOff = 0;  // not 0: the input panel is left alone

  // Settings, read when the main dialog opens. Only its QueryNewSIM changes later: the first load,
  // which acts on it, sets it to 0, and nobody but a load looks at it then.
  AppSettings settings;
  std::uint32_t language = 0;  // settings.CurLang as it was then

  // The main dialog; also there after its end, when nothing is drawn any more.
  ui::WindowHandle mainDialog = 0;
  std::shared_ptr<ui::Dialog> dialog;
  std::shared_ptr<ui::MenuBar> menuBar;
  MainListLayout layout;
  std::atomic<bool> active = false;
  std::atomic<bool> closing = false;  // the sessions are being closed: a failure means nothing
  std::function<bool()> mayClose;     // asked before the window closes; empty is yes

  // The main list.
  std::atomic<bool> loading = false;  // somebody works on its rows
  std::atomic<int> listAsker = 0;     // the command of who waits for them on the screen thread
  std::atomic<int> sortColumn = kColumnName;
  std::atomic<int> sortAscending = 1;  // 1 or 0; one for all columns
  std::atomic<bool> headerUpdating = false;

  // The card.
  std::atomic<bool> cardChanged = false;  // the next reading is the card's wish
  ToldTroubles troubles;
  std::atomic<std::uint32_t> declinedPowerUp = 0;  // when the user would not unlock it; 0: never
  sim::SimPhonebook simPhonebook;
  sim::RilClient radio;               // told of what happens; reads the list and the header
  sim::RilExtPhonebook extPhonebook;  // told of nothing; for the extended fields
};

// The program's name, from the string table.
void LoadTitle(AppState& state);

}  // namespace kelpin::app
