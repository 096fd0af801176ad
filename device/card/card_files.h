#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "device/card/card_result.h"
#include "device/card/file_info.h"
#include "device/card/file_path.h"

namespace kelpin::device::card {

// The PIN that guards the phone book.
struct PinState {
  bool enabled = false;
  bool verified = false;  // since the card was last reset, through us
  bool blocked = false;
  int triesLeft = -1;         // -1: the card does not tell
  int unblockTriesLeft = -1;  // of a blocked PIN's PUK; the same
};

// The files of one card, by path. Whoever implements it knows how the card is reached: by APDUs or
// by a modem's own file command. One caller at a time. On failure outputs are left as they were.
class CardFiles {
 public:
  virtual ~CardFiles() = default;

  // Powers and resets the card; what was known of another one is forgotten.
  virtual TransportError Open() = 0;
  // False before Open and after the card was lost (removed, reset, reader gone).
  virtual bool IsOpen() const = 0;
  virtual void Close() = 0;
  // Somebody else may have changed the card: read again instead of answering from memory.
  virtual void Forget() = 0;

  // `aid` whole, or its first bytes. Afterwards kApplication leads paths into the application.
  virtual CardResult SelectApplication(std::span<const std::uint8_t> aid) = 0;
  virtual CardResult Info(const FilePath& path, FileInfo& info) = 0;
  // Records are numbered from 1. `length` is the file's record length; the data has just that.
  virtual CardResult ReadRecord(const FilePath& path, std::uint8_t record, std::uint8_t length,
                                std::vector<std::uint8_t>& data) = 0;
  virtual CardResult UpdateRecord(const FilePath& path, std::uint8_t record,
                                  std::span<const std::uint8_t> data) = 0;
  virtual CardResult ReadBinary(const FilePath& path, std::uint16_t offset, std::uint16_t length,
                                std::vector<std::uint8_t>& data) = 0;
  virtual CardResult UpdateBinary(const FilePath& path, std::uint16_t offset,
                                  std::span<const std::uint8_t> data) = 0;
  // The numbers of the records that are `pattern`, which is as long as a record. Success with no
  // number when there is none. kUnknownInstruction when the card cannot search.
  virtual CardResult SearchRecords(const FilePath& path, std::span<const std::uint8_t> pattern,
                                   std::vector<std::uint8_t>& records) = 0;

  // Sends no PIN.
  virtual CardResult GetPinState(PinState& state) = 0;
  // Sends `code` (4 to 8 digits) once. A refusal is a success of the call: `state.verified` tells.
  virtual CardResult VerifyPin(std::string_view code, PinState& state) = 0;
  // Sends the PUK (8 digits) and a new PIN once. A refusal is a success of the call as well:
  // `state.blocked` tells.
  virtual CardResult UnblockPin(std::string_view /*unblockingCode*/, std::string_view /*newPin*/,
                                PinState& /*state*/) {
    return StatusWord::kUnknownInstruction;
  }

  // Other programs may write to the card as well: what was read may be another's by now.
  virtual bool OthersMayWrite() const { return false; }

  // Keeps other programs off the card. Nesting is counted. Not a command to the card.
  virtual TransportError BeginTransaction() = 0;
  virtual void EndTransaction() = 0;
};

// A transaction for as long as it lives.
class CardTransaction {
 public:
  explicit CardTransaction(CardFiles& files) : files_(files), error_(files.BeginTransaction()) {}
  ~CardTransaction() {
    if (error_ == TransportError::kNone) files_.EndTransaction();
  }
  CardTransaction(const CardTransaction&) = delete;
  CardTransaction& operator=(const CardTransaction&) = delete;
  TransportError Error() const { return error_; }

 private:
  CardFiles& files_;
  TransportError error_;
};

}  // namespace kelpin::device::card
