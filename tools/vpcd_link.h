#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "device/card/card_channel.h"

namespace kelpin::tools {

// A connection to a virtual reader (vpcd) of the smart-card service, which takes us for the card
// in it. The card is in the reader for as long as the connection lasts.
//
// The protocol: each message is its length in two bytes, the higher first, and the body. A body of
// one byte is a control of the reader: 0 power off, 1 power on, 2 reset, 4 tell the ATR; the last
// one alone is answered. Any other body is a command and is answered.
class VpcdLink {
 public:
  enum class End {
    kStopped,     // by Stop
    kReaderGone,  // the reader closed the connection, or it broke
    kCardLost,    // the card does not answer any more as the one that was put in
  };

  // Tries for `patience`. Null on failure; `why` says what to do.
  static std::unique_ptr<VpcdLink> Connect(const std::string& host, const std::string& port,
                                           std::chrono::milliseconds patience, std::string& why);
  ~VpcdLink();
  VpcdLink(const VpcdLink&) = delete;
  VpcdLink& operator=(const VpcdLink&) = delete;

  // Answers the reader for `card` until one of them ends it. A command takes at least `delay`.
  End Serve(device::card::CardChannel& card, std::chrono::milliseconds delay);
  // Any thread. Ends Serve, but not a card that takes its time over a command.
  void Stop();
  // Takes the card out. Once Serve has returned; no use after that.
  void Close();

 private:
  VpcdLink(int socket, int stop) : socket_(socket), stop_(stop) {}

  bool Receive(std::vector<std::uint8_t>& body);
  bool ReceiveBytes(std::span<std::uint8_t> bytes);
  bool Send(std::span<const std::uint8_t> body);
  // False when it was stopped meanwhile.
  bool Wait(std::chrono::milliseconds time) const;
  bool Stopped() const { return !Wait(std::chrono::milliseconds(0)); }

  int socket_;
  const int stop_;
};

// "HOST:PORT" or "[ADDRESS]:PORT" taken apart; false when it is neither.
bool SplitAddress(const std::string& text, std::string& host, std::string& port);

}  // namespace kelpin::tools
