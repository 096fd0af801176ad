#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/app_state.h"
#include "app/ports.h"
#include "sim/ril_client.h"
#include "sim/sim_phonebook.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_contacts.h"
#include "tests/support/fake_kernel.h"
#include "tests/support/fake_log.h"
#include "tests/support/fake_programs.h"
#include "tests/support/fake_registry.h"
#include "tests/support/fake_shell.h"
#include "tests/support/fake_telephone.h"
#include "tests/support/headless_screen.h"

namespace kelpin::test {

// The fakes of all that a device has beside its card and its radio.
template <class Screen = HeadlessScreen>
struct FakeDevice {
  void SetSwitch(std::u16string_view name, std::uint32_t value) {
    registry.PutDword(platform::RegistryRoot::kLocalMachine, u"Software\\OEM\\KELPIN", name, value);
  }
  std::vector<std::u16string> BoxTexts() const {
    std::vector<std::u16string> texts;
    for (const ShownBox& box : screen.Boxes()) texts.push_back(box.text);
    return texts;
  }
  // Of the own numbers the open list of them has a watcher too.
  bool EveryWatcherWaits() const {
    for (const std::u16string_view name : {sim::kStoredEventName, sim::kDeletedEventName,
                                           sim::kOwnNumbersEventName, sim::kPhonebookEventName}) {
      if (kernel.Waiters(name) == 0) return false;
    }
    return true;
  }
  // Ends what is open, as the program's end does.
  void Leave(app::AppState& state) {
    if (state.dialog != nullptr && !state.dialog->Ended()) {
      state.dialog->PostClose();
      screen.RunMessageLoop();
    }
    kernel.EndThreads();
  }

  // With this card.
  app::Ports PortsTo(platform::SimInterface& sim, platform::RadioInterface& radio,
                     platform::Devices& devices, platform::ContactsStore& store,
                     platform::CardLock* cardLock = nullptr, platform::CardUse* cardUse = nullptr) {
    return {sim,   radio, devices, registry, kernel,   shell, programs, telephone,
            store, clock, log,     screen,   cardLock, true,  cardUse};
  }

  Journal journal;
  FailPlan failures;
  FakeClock clock{journal};
  Screen screen{journal, failures};
  FakeRegistry registry{journal, failures};
  FakeShell shell{journal, failures};
  FakePrograms programs{journal, failures};
  FakeTelephone telephone{journal, failures};
  FakeContacts contacts{journal, failures};
  FakeLog log;
  FakeKernel kernel{journal, failures, &clock};
};

}  // namespace kelpin::test
