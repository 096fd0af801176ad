#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "device/card/card_channel.h"

namespace kelpin::bench {

// Hands every command on and counts commands and the bytes on the line.
class CountingChannel final : public device::card::CardChannel {
 public:
  explicit CountingChannel(CardChannel& channel) : channel_(channel) {}

  device::card::TransportError Connect(std::vector<std::uint8_t>& atr) override {
    return channel_.Connect(atr);
  }
  void Disconnect() override { channel_.Disconnect(); }
  device::card::TransportError Transmit(std::span<const std::uint8_t> command,
                                        std::vector<std::uint8_t>& response) override {
    const auto error = channel_.Transmit(command, response);
    ++commands;
    bytes += command.size() + 1 + response.size();  // one procedure byte
    return error;
  }
  device::card::TransportError BeginTransaction() override { return channel_.BeginTransaction(); }
  void EndTransaction() override { channel_.EndTransaction(); }
  bool OthersMaySelect() const override { return channel_.OthersMaySelect(); }
  void SetListener(device::card::CardChannelListener* listener) override {
    channel_.SetListener(listener);
  }
  std::string Description() const override { return channel_.Description(); }

  std::atomic<std::uint64_t> commands = 0;
  std::atomic<std::uint64_t> bytes = 0;

 private:
  CardChannel& channel_;
};

}  // namespace kelpin::bench
