#pragma once

#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "device/card/card_channel.h"

namespace kelpin::device::card {

// One program's way to a card that other programs have a way to as well. Nothing is told of what
// they write but by Touch. Programs that run at once share `turns`: one holds the card at a time.
class SharedChannel final : public CardChannel {
 public:
  enum class Hears { kNothing, kTheCard };  // of what comes and goes

  explicit SharedChannel(CardChannel& channel, Hears hears = Hears::kNothing,
                         std::mutex* turns = nullptr)
      : channel_(channel), hears_(hears), turns_(turns) {}
  void Touch() { listener_->CardTouched(); }

  TransportError Connect(std::vector<std::uint8_t>& atr) override {
    Lock();
    const TransportError error = channel_.Connect(atr);
    Unlock();
    return error;
  }
  void Disconnect() override { channel_.Disconnect(); }
  TransportError Transmit(std::span<const std::uint8_t> command,
                          std::vector<std::uint8_t>& response) override {
    return channel_.Transmit(command, response);
  }
  TransportError BeginTransaction() override {
    Lock();
    const TransportError error = channel_.BeginTransaction();
    if (error != TransportError::kNone) Unlock();
    return error;
  }
  void EndTransaction() override {
    channel_.EndTransaction();
    Unlock();
  }
  bool OthersMaySelect() const override { return true; }
  void SetListener(CardChannelListener* listener) override {
    listener_ = listener;
    if (hears_ == Hears::kTheCard) channel_.SetListener(listener);
  }
  std::string Description() const override { return channel_.Description(); }

 private:
  void Lock() {
    if (turns_ != nullptr) turns_->lock();
  }
  void Unlock() {
    if (turns_ != nullptr) turns_->unlock();
  }

  CardChannel& channel_;
  const Hears hears_;
  std::mutex* const turns_;
  CardChannelListener* listener_ = nullptr;
};

}  // namespace kelpin::device::card
