#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "device/card/card_channel.h"
#include "device/card/sim_service.h"
#include "device/softcard/apdu_interpreter.h"
#include "device/softcard/card_image.h"
#include "device/softcard/image_reader.h"
#include "sim/ril_ext_phonebook.h"
#include "tests/support/fake_devices.h"
#include "tests/support/fake_kernel.h"

namespace kelpin::device::card {

// A sample card in memory. It can lose its power at a command.
class MemoryCard : public CardChannel {
 public:
  explicit MemoryCard(const std::string& sample) {
    std::ifstream file(std::filesystem::path(KELPIN_SOURCE_DIR) / "res/cards" / (sample + ".json"));
    Insert({std::istreambuf_iterator<char>(file), {}});
  }
  static std::unique_ptr<MemoryCard> FromText(const std::string& text) {
    std::unique_ptr<MemoryCard> card(new MemoryCard());
    card->Insert(text);
    return card;
  }

  // The command `commands` from now is the first that the card does not answer; it is carried out
  // all the same when `lateCut`. 0: never.
  void CutAt(std::uint32_t commands, bool lateCut) {
    cutAt_ = commands;
    lateCut_ = lateCut;
    cut_ = false;
  }
  bool WasCut() const { return cut_; }

  TransportError Connect(std::vector<std::uint8_t>& atr) override {
    if (cut_) return TransportError::kNoCard;
    card_->Reset();
    atr = image_.atr;
    return TransportError::kNone;
  }
  void Disconnect() override {}
  TransportError Transmit(std::span<const std::uint8_t> command,
                          std::vector<std::uint8_t>& response) override {
    if (cut_) return TransportError::kRemoved;
    ++commands_;
    if (cutAt_ != 0 && --cutAt_ == 0) {
      cut_ = true;
      if (lateCut_) card_->Process(command);
      return TransportError::kRemoved;
    }
    response = card_->Process(command);
    return TransportError::kNone;
  }
  TransportError BeginTransaction() override { return TransportError::kNone; }
  void EndTransaction() override {}
  void SetListener(CardChannelListener*) override {}
  std::string Description() const override { return "card in memory"; }

  const softcard::CardImage& Image() const { return image_; }
  softcard::CardImage& Image() { return image_; }
  std::uint64_t Commands() const { return commands_; }

 private:
  MemoryCard() = default;
  void Insert(const std::string& text) {
    std::string error;
    EXPECT_TRUE(softcard::ReadImage(text, image_, error)) << error;
    card_ = std::make_unique<softcard::ApduInterpreter>(image_, [] { return true; });
  }

  softcard::CardImage image_;
  std::unique_ptr<softcard::ApduInterpreter> card_;
  std::uint32_t cutAt_ = 0;
  bool lateCut_ = false;
  bool cut_ = false;
  std::uint64_t commands_ = 0;
};

// The program's extended phone book on a card, from the file command down to the APDUs.
struct ExtStack {
  explicit ExtStack(CardChannel& channel) : service(channel) {
    EXPECT_TRUE(book.Open(0));
    EXPECT_TRUE(book.LoadLayout({false, false, false, true}));
  }

  test::Journal journal;
  test::FailPlan failures;
  test::FakeKernel kernel{journal, failures};
  test::FakeDevices devices{journal, failures};
  SimService service;
  sim::RilExtPhonebook book{service, kernel, devices};
};

}  // namespace kelpin::device::card
