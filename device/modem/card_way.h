#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "device/card/card_channel.h"
#include "device/modem/at_session.h"

namespace kelpin::device::modem {

// How a modem lets us reach its card.
enum class Way {
  kNone,
  kLogicalChannel,  // +CCHO, +CGLA: APDUs on a channel of our own
  kBasicChannel,    // +CSIM: APDUs on the channel that the modem uses too
  kFileCommands,    // +CRSM: one file at a time, no APDUs
};

// What the modem says of the PIN.
enum class Lock {
  kUnknown,  // it did not say; what the card says counts
  kReady,
  kPin,
  kPuk,
};

// What came of a command: an error below the card, or the card's response.
struct Reply {
  card::TransportError error = card::TransportError::kNone;
  std::vector<std::uint8_t> response = {};  // with the status word
  // The modem refused the command for no reason that it tells.
  bool refused = false;

  bool Executed() const;  // the card says 90, 91, 92, 61 or 9F
};

// The card behind an AT session.
class CardWay {
 public:
  explicit CardWay(AtSession& session) : session_(session) {}

  // Tries what the modem can do, in the order of Way. kNone with Kind() kNone: nothing works.
  card::TransportError Find();
  // Leaves the card; nothing is known of the way any more.
  void Leave();
  // The same, where the modem is not to be asked for anything.
  void Forget();
  // The PIN is wanted: until then there is no way, and none is tried.
  void UseLocked();
  bool Locked() const { return locked_; }

  Way Kind() const { return way_; }
  bool ReachesFolders() const { return way_ != Way::kFileCommands || folders_; }

  // One APDU, on the way there is.
  Reply SendApdu(std::span<const std::uint8_t> command);
  Reply SendFileCommand(const card::FileCommand& command);
  // Takes what the modem answered: the reason for which it did not, as an error or a status word.
  static Reply Judge(const AtAnswer& answer);

  // kNone and what the modem says of the lock; kNoCard, kBusy, kRadioOff, … where it says nothing.
  card::TransportError AskLock(Lock& lock);
  // Tries left, -1: the modem does not tell.
  int AskTries(std::string_view code);

 private:
  bool TryLogicalChannel();
  bool TryBasicChannel();
  bool TryFileCommands();
  bool FindFolders();
  std::vector<std::vector<std::uint8_t>> ApplicationIds(bool& known);
  Reply SendOnChannel(std::span<const std::uint8_t> command);
  Reply SendOnBasic(std::span<const std::uint8_t> command);
  // `start` is the AT command up to the APDU's length, `name` that of its answer.
  Reply SendFramed(const std::string& start, std::string_view name,
                   std::vector<std::uint8_t> frame);
  Reply Restricted(int instruction, std::uint16_t file, int parameter1, int parameter2, int length,
                   std::span<const std::uint8_t> data, const std::string& folder);
  std::string FolderText(std::span<const std::uint16_t> folder) const;

  AtSession& session_;
  Way way_ = Way::kNone;
  std::string channel_;         // of kLogicalChannel, as the modem named it
  std::uint8_t classBits_ = 0;  // the channel's in a command's class
  bool locked_ = false;
  bool folders_ = false;      // of kFileCommands: it takes the path of a folder
  bool masterInPath_ = true;  // and that begins with the master file
  int wholeLength_ = 0xFF;    // for a file's information; some modems want it shorter
  card::TransportError fatal_ = card::TransportError::kNone;  // met while trying
};

}  // namespace kelpin::device::modem
