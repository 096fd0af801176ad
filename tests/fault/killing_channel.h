#pragma once

#include <signal.h>
#include <unistd.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "device/card/card_channel.h"

namespace kelpin::device::card {

// A channel at whose nth command the program is killed.
class KillingChannel final : public CardChannel {
 public:
  KillingChannel(CardChannel& channel, bool after) : channel_(channel), after_(after) {}
  void Arm(std::uint32_t command) { left_ = command; }

  TransportError Connect(std::vector<std::uint8_t>& atr) override { return channel_.Connect(atr); }
  void Disconnect() override { channel_.Disconnect(); }
  TransportError Transmit(std::span<const std::uint8_t> command,
                          std::vector<std::uint8_t>& response) override {
    const bool now = left_ > 0 && --left_ == 0;
    if (now && !after_) kill(getpid(), SIGKILL);
    const TransportError error = channel_.Transmit(command, response);
    if (now) kill(getpid(), SIGKILL);
    return error;
  }
  TransportError BeginTransaction() override { return channel_.BeginTransaction(); }
  void EndTransaction() override { channel_.EndTransaction(); }
  void SetListener(CardChannelListener* listener) override { channel_.SetListener(listener); }
  std::string Description() const override { return channel_.Description(); }

 private:
  CardChannel& channel_;
  const bool after_;
  std::uint32_t left_ = 0;
};

}  // namespace kelpin::device::card
