#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kelpin::device::card {

// What can go wrong below the card's own answer. Never a status word, never a SIM result.
enum class [[nodiscard]] TransportError{
    kNone,
    kNoReader,       // no reader, modem or card file to talk to
    kNoCard,         // the reader is empty
    kRemoved,        // the card was taken out; everything known of it is void
    kReset,          // the card was reset behind us; selection and PIN are void
    kTimeout,        // no answer in time; whether the command was executed is not known
    kCommunication,  // garbled or cut; whether the command was executed is not known
    kBusy,           // held by another program; nothing was sent
    kStorage,        // a software card could not keep the change (disk full …)
    kRadioOff,       // the modem is switched off; nothing was sent
    kPin2Needed,     // the modem wants PIN2 for that; nothing was done
    kPuk2Needed,     // the modem wants PUK2 for that; nothing was done
};

// A command on one file of a card that is reached by a modem's own file access (TS 27.007 8.18):
// one such command finds the file and reads or changes it, whatever others select meanwhile.
struct FileCommand {
  std::uint8_t instruction = 0;  // C0 for the file's information, B0, B2, D6, DC
  std::uint16_t file = 0;
  std::span<const std::uint16_t> folder = {};  // from below the master file down
  std::uint8_t parameter1 = 0;
  std::uint8_t parameter2 = 0;
  std::uint8_t length = 0;  // of what is read; 0: all
  std::span<const std::uint8_t> data = {};
};

// Told on a thread of the channel's; must not call back into the channel.
class CardChannelListener {
 public:
  virtual ~CardChannelListener() = default;
  virtual void CardInserted() = 0;
  virtual void CardRemoved() = 0;
  virtual void CardReset() = 0;    // by somebody else
  virtual void CardTouched() = 0;  // another program may have changed what the card holds
};

// One UICC (or SIM) behind any transport. One caller at a time. After kRemoved or kReset every
// call answers the same until Connect has succeeded again.
class CardChannel {
 public:
  virtual ~CardChannel() = default;

  // Finds out how the card is reached. To be called before Connect.
  virtual TransportError Prepare() { return TransportError::kNone; }
  // False: only the PIN's commands are taken as APDUs, all else as FileCommand. Since Prepare.
  virtual bool TakesApdus() const { return true; }
  // The same as Transmit, for a channel that takes no APDUs. 6A82 as well when it cannot reach the
  // folder.
  virtual TransportError TransmitFileCommand(const FileCommand& /*command*/,
                                             std::vector<std::uint8_t>& /*response*/) {
    return TransportError::kCommunication;
  }
  // Powers the card and resets it. The ATR is empty where the transport tells none.
  virtual TransportError Connect(std::vector<std::uint8_t>& atr) = 0;
  virtual void Disconnect() = 0;
  // One short APDU (ISO/IEC 7816-4), command as CLA INS P1 P2 [P3 [data]] [Le]; response as the
  // card gave it: data, then SW1 SW2. 61xx, 9Fxx and 6Cxx are the caller's to follow. An update
  // that ended with kTimeout or kCommunication must be read back, never sent again blindly.
  virtual TransportError Transmit(std::span<const std::uint8_t> command,
                                  std::vector<std::uint8_t>& response) = 0;
  // Keeps other programs off the card from Begin to End. Nesting is counted.
  virtual TransportError BeginTransaction() = 0;
  virtual void EndTransaction() = 0;
  // True when another program may have selected a file since the last transaction ended.
  virtual bool OthersMaySelect() const { return false; }
  // True when another program reaches the card too and may write to it.
  virtual bool OthersMayWrite() const { return OthersMaySelect(); }
  // True when an update's success is no proof: it is to be read back.
  virtual bool MayMisplaceUpdates() const { return false; }
  virtual void SetListener(CardChannelListener* listener) = 0;  // null: none
  // For messages: "software card /path/card.json", "reader XYZ 00 00".
  virtual std::string Description() const = 0;
  // Why the last Connect failed, and what to do, in the user's words; empty when it did not, or
  // when there is no more to say than the error does. Any thread.
  virtual std::string Trouble() const { return {}; }
};

}  // namespace kelpin::device::card
