#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "device/card/sim_service.h"
#include "tests/card/radio_client.h"
#include "tests/card/sim_client.h"
#include "tests/contract/modem/modem_fixture.h"

namespace kelpin::contract {

// The card service on a card in a modem.
class ModemCardTest : public testing::Test {
 protected:
  void TearDown() override {
    if (HasFailure() && modem != nullptr) {
      for (const std::string& command : modem->TakeCommands()) std::cerr << command << '\n';
    }
    Close();
    modem.reset();
  }
  void Close() {
    radio.reset();
    sim.reset();
    service.reset();
    channel.reset();
  }

  // The sample card, changed, in a modem of these abilities.
  void Use(const std::string& sample, const AtModem::Abilities& abilities,
           const device::card::ImageChange& change = nullptr) {
    Close();
    modem.reset();
    card = std::make_unique<device::card::SoftCard>(sample, change);
    modem =
        std::make_unique<TestModem>(card->Channel(), abilities, (folder.Path() / "port").string());
    Open();
  }
  void Open(const device::modem::Patience& patience = LongPatience()) {
    Close();
    channel = OpenModem(modem->Port(), patience);
    ASSERT_NE(channel, nullptr);
    service = std::make_unique<device::card::SimService>(*channel);
    sim = std::make_unique<device::card::SimClient>(*service);
    radio = std::make_unique<device::card::RadioClient>(*service);
  }
  std::string Held(const std::vector<std::string>& path, std::size_t record) {
    nlohmann::json image = card->Image();
    return device::card::ImageRecord(image, path, record);
  }

  device::card::ScratchFolder folder;
  std::unique_ptr<device::card::SoftCard> card;
  std::unique_ptr<TestModem> modem;
  std::unique_ptr<device::modem::ModemChannel> channel;
  std::unique_ptr<device::card::SimService> service;
  std::unique_ptr<device::card::SimClient> sim;
  std::unique_ptr<device::card::RadioClient> radio;
};

struct WayToCard {
  const char* name;
  const char* told;
  AtModem::Abilities abilities;
};
inline std::vector<WayToCard> WaysToCard() {
  return {{"LogicalChannel", "(+CGLA)", LogicalChannels()},
          {"BasicChannel", "(+CSIM)", BasicChannel()},
          {"FileCommands", "(+CRSM)", FileCommands()}};
}

}  // namespace kelpin::contract
