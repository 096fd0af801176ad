#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "device/card/card_channel.h"

namespace kelpin::device::card {

// One program's way to a card that other programs have a way to as well. Nothing is told of what
// they write but by Touch.
class SharedChannel final : public CardChannel {
 public:
  enum class Hears { kNothing, kTheCard };  // of what comes and goes

  explicit SharedChannel(CardChannel& channel, Hears hears = Hears::kNothing, bool others = true)
      : channel_(channel), hears_(hears), others_(others) {}
  void Touch() { listener_->CardTouched(); }

  TransportError Connect(std::vector<std::uint8_t>& atr) override { return channel_.Connect(atr); }
  void Disconnect() override { channel_.Disconnect(); }
  TransportError Transmit(std::span<const std::uint8_t> command,
                          std::vector<std::uint8_t>& response) override {
    return channel_.Transmit(command, response);
  }
  TransportError BeginTransaction() override { return channel_.BeginTransaction(); }
  void EndTransaction() override { channel_.EndTransaction(); }
  bool OthersMaySelect() const override { return others_; }
  void SetListener(CardChannelListener* listener) override {
    listener_ = listener;
    if (hears_ == Hears::kTheCard) channel_.SetListener(listener);
  }
  std::string Description() const override { return channel_.Description(); }

 private:
  CardChannel& channel_;
  const Hears hears_;
  const bool others_;
  CardChannelListener* listener_ = nullptr;
};

}  // namespace kelpin::device::card
