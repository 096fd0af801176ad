#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/card/card_channel.h"
#include "platform/mutex.h"

namespace kelpin::device::card {

// How a command goes wrong.
enum class Fault {
  kRefused,        // the card answers 6F00 and does nothing
  kLostBefore,     // the command never reached the card; only the time-out tells
  kLostAfter,      // carried out, and the answer lost
  kGarbledAfter,   // carried out, and the answer garbled
  kCutBefore,      // the card is pulled before the command, and is back when connected to
  kCutAfter,       // carried out, then the card is pulled, and is back
  kResetBefore,    // reset by somebody else before the command
  kGoneBefore,     // pulled before the command, and stays out
  kGoneAfter,      // carried out, then pulled, and stays out
  kServiceBefore,  // the service of the readers ended before the command, and stays away
  kServiceAfter,   // carried out, then the service ended, and stays away
  kNotKept,        // the software card cannot keep the change
};

// Whether it matters that the command was carried out: a read that was is like one that was not.
constexpr bool IsAfter(Fault fault) {
  return fault == Fault::kLostAfter || fault == Fault::kGarbledAfter || fault == Fault::kCutAfter ||
         fault == Fault::kGoneAfter || fault == Fault::kServiceAfter || fault == Fault::kNotKept;
}

// Whether the card cannot be asked afterwards.
constexpr bool StaysAway(Fault fault) {
  return fault == Fault::kGoneBefore || fault == Fault::kGoneAfter ||
         fault == Fault::kServiceBefore || fault == Fault::kServiceAfter;
}

inline constexpr Fault kFaults[] = {Fault::kRefused,       Fault::kLostBefore,   Fault::kLostAfter,
                                    Fault::kGarbledAfter,  Fault::kCutBefore,    Fault::kCutAfter,
                                    Fault::kResetBefore,   Fault::kGoneBefore,   Fault::kGoneAfter,
                                    Fault::kServiceBefore, Fault::kServiceAfter, Fault::kNotKept};

// A channel whose nth command from Arm on goes wrong. Any thread.
class FaultyChannel final : public CardChannel {
 public:
  explicit FaultyChannel(CardChannel& channel) : channel_(channel) {}

  void Arm(std::uint32_t command, Fault fault) {
    const MutexLock guard(lock_);
    left_ = command;
    fault_ = fault;
    fired_ = false;
    sent_.clear();
  }
  bool Fired() const {
    const MutexLock guard(lock_);
    return fired_;
  }
  // The instruction bytes of the commands since Arm.
  std::vector<std::uint8_t> Sent() const {
    const MutexLock guard(lock_);
    return sent_;
  }
  void Disarm() {
    const MutexLock guard(lock_);
    left_ = 0;
    gone_ = TransportError::kNone;
  }

  TransportError Prepare() override {
    {
      const MutexLock guard(lock_);
      if (gone_ != TransportError::kNone) return gone_;
    }
    return channel_.Prepare();
  }
  bool TakesApdus() const override { return channel_.TakesApdus(); }
  TransportError Connect(std::vector<std::uint8_t>& atr) override {
    const MutexLock guard(lock_);
    if (gone_ != TransportError::kNone) return gone_;
    lost_ = TransportError::kNone;
    return channel_.Connect(atr);
  }
  void Disconnect() override { channel_.Disconnect(); }
  TransportError Transmit(std::span<const std::uint8_t> command,
                          std::vector<std::uint8_t>& response) override {
    return Meet(
        command.size() > 1 ? command[1] : std::uint8_t{0},
        [&](std::vector<std::uint8_t>& answer) { return channel_.Transmit(command, answer); },
        response);
  }
  TransportError TransmitFileCommand(const FileCommand& command,
                                     std::vector<std::uint8_t>& response) override {
    return Meet(
        command.instruction,
        [&](std::vector<std::uint8_t>& answer) {
          return channel_.TransmitFileCommand(command, answer);
        },
        response);
  }
  TransportError BeginTransaction() override {
    const MutexLock guard(lock_);
    return lost_ != TransportError::kNone ? lost_ : channel_.BeginTransaction();
  }
  void EndTransaction() override { channel_.EndTransaction(); }
  bool OthersMaySelect() const override { return channel_.OthersMaySelect(); }
  bool OthersMayWrite() const override { return channel_.OthersMayWrite(); }
  bool MayMisplaceUpdates() const override { return channel_.MayMisplaceUpdates(); }
  void SetListener(CardChannelListener* listener) override { channel_.SetListener(listener); }
  std::string Description() const override { return channel_.Description(); }

 private:
  template <typename Send>
  TransportError Meet(std::uint8_t instruction, Send send, std::vector<std::uint8_t>& response)
      EXCLUDES(lock_) {
    const MutexLock guard(lock_);
    if (lost_ != TransportError::kNone) return lost_;
    sent_.push_back(instruction);
    if (left_ == 0 || --left_ > 0) return send(response);
    fired_ = true;
    const auto after = [&send](TransportError error) {
      std::vector<std::uint8_t> ignored;
      const TransportError below = send(ignored);
      return below == TransportError::kNone ? error : below;
    };
    switch (fault_) {
      case Fault::kRefused:
        response = {0x6F, 0x00};
        return TransportError::kNone;
      case Fault::kLostBefore:
        return TransportError::kTimeout;
      case Fault::kLostAfter:
        return after(TransportError::kTimeout);
      case Fault::kGarbledAfter:
        return after(TransportError::kCommunication);
      case Fault::kCutBefore:
        return lost_ = TransportError::kRemoved;
      case Fault::kCutAfter:
        return lost_ = after(TransportError::kRemoved);
      case Fault::kResetBefore:
        return lost_ = TransportError::kReset;
      case Fault::kGoneBefore:
        gone_ = TransportError::kNoCard;
        return lost_ = TransportError::kRemoved;
      case Fault::kGoneAfter:
        gone_ = TransportError::kNoCard;
        return lost_ = after(TransportError::kRemoved);
      case Fault::kServiceBefore:
        gone_ = TransportError::kNoReader;
        return lost_ = TransportError::kReset;
      case Fault::kServiceAfter:
        gone_ = TransportError::kNoReader;
        return lost_ = after(TransportError::kReset);
      case Fault::kNotKept:
        response = {0x65, 0x81};
        return TransportError::kStorage;
    }
    return TransportError::kNone;
  }

  CardChannel& channel_;
  mutable Mutex lock_;
  std::uint32_t left_ GUARDED_BY(lock_) = 0;
  Fault fault_ GUARDED_BY(lock_) = Fault::kRefused;
  bool fired_ GUARDED_BY(lock_) = false;
  std::vector<std::uint8_t> sent_ GUARDED_BY(lock_);
  TransportError gone_ GUARDED_BY(lock_) = TransportError::kNone;  // what connecting again tells
  TransportError lost_ GUARDED_BY(lock_) = TransportError::kNone;
};

}  // namespace kelpin::device::card
