#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "device/card/card_channel.h"
#include "tests/card/hex.h"

namespace kelpin::device::card {

// A card that expects just these commands, in this order, and answers as written.
class ScriptedChannel final : public CardChannel {
 public:
  // `answer` is hex; an empty one is the transport error.
  ScriptedChannel& Expect(const std::string& command, const std::string& answer,
                          TransportError error = TransportError::kNone) {
    steps_.push_back({ToHex(Hex(command)), answer, error});
    return *this;
  }
  ~ScriptedChannel() override {
    EXPECT_TRUE(steps_.empty()) << "not sent: " << steps_.front().command;
  }

  TransportError Connect(std::vector<std::uint8_t>& atr) override {
    atr = {0x3B, 0x00};
    return TransportError::kNone;
  }
  void Disconnect() override {}
  TransportError Transmit(std::span<const std::uint8_t> command,
                          std::vector<std::uint8_t>& response) override {
    const std::string sent = ToHex({command.begin(), command.end()});
    EXPECT_GT(begun_, 0) << "outside a transaction: " << sent;
    if (steps_.empty()) {
      ADD_FAILURE() << "not expected: " << sent;
      return TransportError::kCommunication;
    }
    const Step step = steps_.front();
    steps_.pop_front();
    EXPECT_EQ(sent, step.command);
    response = Hex(step.answer);
    return step.error;
  }
  TransportError BeginTransaction() override {
    ++begun_;
    return TransportError::kNone;
  }
  void EndTransaction() override { --begun_; }
  bool OthersMaySelect() const override { return othersMaySelect; }
  void SetListener(CardChannelListener*) override {}
  std::string Description() const override { return "script"; }

  bool othersMaySelect = false;

 private:
  struct Step {
    std::string command;
    std::string answer;
    TransportError error = TransportError::kNone;
  };
  std::deque<Step> steps_;
  int begun_ = 0;
};

}  // namespace kelpin::device::card
