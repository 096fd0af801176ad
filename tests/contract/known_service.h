#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "device/card/card_channel.h"
#include "device/card/sim_service.h"

namespace kelpin::contract {

// The makers of the SIM and radio interfaces' suites on the card service. `Card` is the known card
// behind a channel: `CardChannel& Channel()`, and `Reset()` as another program does it.
template <class Card>
class KnownService {
 public:
  device::card::SimService& Service() { return service_; }

  // Another program resets the card while it is in use.
  void Touch() {
    platform::SimHandle sim = 0;
    ASSERT_EQ(service_.SimInitialize(0, nullptr, nullptr, sim), platform::SimResult::kOk);
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(service_.SimGetPhonebookStatus(sim, platform::kSimPhonebookStorageSim, used, total),
              platform::SimResult::kOk);
    EXPECT_EQ(service_.SimDeinitialize(sim), platform::SimResult::kOk);
    card_.Reset();
  }

 private:
  Card card_;
  device::card::SimService service_{card_.Channel()};
};

template <class Card>
class SimMaker {
 public:
  platform::SimInterface& Port() { return service_.Service(); }

 private:
  KnownService<Card> service_;
};

template <class Card>
class RadioMaker {
 public:
  platform::RadioInterface& Port() { return service_.Service(); }
  void TouchCard() { service_.Touch(); }

 private:
  KnownService<Card> service_;
};

}  // namespace kelpin::contract
