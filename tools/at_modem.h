#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "device/card/card_channel.h"

namespace kelpin::tools {

// The AT commands of a modem with a card in it: those that say who it is, the PIN's, and the three
// ways to the card (TS 27.007 8.3, 8.17, 8.18, 8.43 to 8.46). It keeps to itself what modems do:
// while the PIN is wanted the card is shut, and it selects files of its own on the basic channel.
class AtModem {
 public:
  // What it can do. Whatever is off is a command that it does not know.
  struct Abilities {
    bool logicalChannels = true;  // +CCHO, +CGLA, +CCHC, +CUAD
    bool apdus = true;            // +CSIM
    bool fileCommands = true;     // +CRSM
    bool folders = true;          // +CRSM takes the path of a folder
  };

  AtModem(device::card::CardChannel& card, const Abilities& abilities);

  // The whole answer to one command line (without its line end), the echo of it in front, lines
  // ended as modems do. Empty for an empty line.
  std::string Answer(std::string_view line);

  // The card was taken out, or put in: what the modem tells of its own accord then.
  std::string SetPresent(bool present);

 private:
  using Bytes = std::vector<std::uint8_t>;
  struct Result {
    std::string line;  // without its end; empty: none
    int error = -1;    // of +CME ERROR; kNone: OK, kPlain: ERROR
  };
  enum class Lock { kReady, kPin, kPuk };

  Result Run(std::string_view command);
  Result Identify(std::string_view command, bool& known);
  Result EnterCode(const std::vector<std::string>& values);
  Result TellTries(const std::vector<std::string>& values);
  Result GenericAccess(const std::vector<std::string>& values);
  Result RestrictedAccess(const std::vector<std::string>& values);
  Result OpenChannel(const std::vector<std::string>& values);
  Result UseChannel(const std::vector<std::string>& values);
  Result CloseChannel(const std::vector<std::string>& values);
  Result Applications();

  bool PowerUp();
  // Asked of the card at power-up and after each code: to ask selects files.
  Lock LockState();
  Lock AskLockState();
  // One command of the card and the answer that it keeps waiting. False: the card is gone.
  bool Send(Bytes command, Bytes& response);
  bool SendWhole(Bytes command, Bytes& response);
  bool Select(std::uint16_t file, std::span<const std::uint8_t> folder, Bytes& response);

  device::card::CardChannel& card_;
  const Abilities abilities_;
  bool present_ = true;
  bool powered_ = false;
  bool gsm_ = false;     // a card of class A0
  bool blocks_ = false;  // one of T=1, which gives an answer at once where it was asked for
  bool pinTaken_ = false;
  bool lockKnown_ = false;
  Lock lock_ = Lock::kReady;
  bool echo_ = true;
  int errors_ = 0;  // as +CMEE: 0 none, 1 numbers, 2 words
};

}  // namespace kelpin::tools
