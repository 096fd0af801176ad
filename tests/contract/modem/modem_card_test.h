#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <future>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
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

// UPDATE RECORD, as DC in an APDU behind class and quotes or as 220 of the file commands.
inline bool IsUpdate(std::string_view command) {
  if (command.starts_with("AT+CRSM=")) return command.starts_with("AT+CRSM=220,");
  if (!command.starts_with("AT+CGLA=") && !command.starts_with("AT+CSIM=")) return false;
  const std::size_t quote = command.find('"');
  return quote != std::string_view::npos && command.substr(quote + 3, 2) == "DC";
}

// A modem that is pulled out at the next update, which the card has then or not. It is gone when
// the object is.
class PulledOutAtUpdate {
 public:
  PulledOutAtUpdate(TestModem& modem, bool carriedOut) : modem_(modem) {
    modem_.SetBetween([this, carriedOut](std::string_view command, const TestModem::Rest& rest) {
      if (!IsUpdate(command)) return rest();
      if (carriedOut) rest();
      ++updates_;
      Reach();
      return std::string();
    });
    hand_ = std::thread([this] {
      reached_.get_future().wait();
      modem_.PullOut();
    });
  }
  ~PulledOutAtUpdate() {
    EXPECT_NE(updates_, 0);
    Reach();
    hand_.join();
    modem_.SetBetween(nullptr);
  }
  PulledOutAtUpdate(const PulledOutAtUpdate&) = delete;
  PulledOutAtUpdate& operator=(const PulledOutAtUpdate&) = delete;
  int Updates() const { return updates_; }

 private:
  void Reach() {
    if (!told_.exchange(true)) reached_.set_value();
  }

  TestModem& modem_;
  std::atomic<int> updates_ = 0;
  std::atomic<bool> told_ = false;
  std::promise<void> reached_;
  std::thread hand_;
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
