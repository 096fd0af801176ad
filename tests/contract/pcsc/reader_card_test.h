#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "device/card/sim_service.h"
#include "tests/card/radio_client.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"
#include "tests/contract/pcsc/reader_fixture.h"

namespace kelpin::contract {

// The card service on a card in a reader.
class ReaderCardTest : public testing::Test {
 protected:
  void SetUp() override { KELPIN_NEEDS_PCSCD(); }
  void TearDown() override {
    radio.reset();
    sim.reset();
    service.reset();
    channel.reset();
    if (slot != nullptr) slot->Remove();
    slot.reset();
    if (test::PrivatePcscd::Installed()) LastingCard().Use(nullptr);
  }

  // The sample card, changed, in the reader where cards stay.
  void Use(const std::string& sample, const device::card::ImageChange& change = nullptr) {
    card = std::make_unique<device::card::SoftCard>(sample, change);
    LastingCard().Use(&card->Channel());
    Open(LastingCard().Reader());
  }
  // In one where they come and go.
  void Insert(const std::string& sample, const device::card::ImageChange& change = nullptr) {
    card = std::make_unique<device::card::SoftCard>(sample, change);
    slot = std::make_unique<ReaderCard>(1);
    slot->Use(&card->Channel());
    slot->Insert();
    Open(slot->Reader());
  }
  // Another card in its place.
  void Replace(const std::string& sample, const device::card::ImageChange& change = nullptr) {
    slot->Remove();
    card = std::make_unique<device::card::SoftCard>(sample, change);
    slot->Use(&card->Channel());
    slot->Insert();
  }
  void Open(const std::string& reader) {
    channel = OpenReader(reader);
    ASSERT_NE(channel, nullptr);
    service = std::make_unique<device::card::SimService>(*channel);
    sim = std::make_unique<device::card::SimClient>(*service);
    radio = std::make_unique<device::card::RadioClient>(*service);
  }
  std::string Held(const std::vector<std::string>& path, std::size_t record) {
    nlohmann::json image = card->Image();
    return device::card::ImageRecord(image, path, record);
  }

  std::unique_ptr<device::card::SoftCard> card;
  std::unique_ptr<ReaderCard> slot;
  std::unique_ptr<device::pcsc::PcscChannel> channel;
  std::unique_ptr<device::card::SimService> service;
  std::unique_ptr<device::card::SimClient> sim;
  std::unique_ptr<device::card::RadioClient> radio;
};

}  // namespace kelpin::contract
