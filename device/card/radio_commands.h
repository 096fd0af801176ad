#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "device/card/card_session.h"
#include "platform/radio_interface.h"

namespace kelpin::device::card {

// The result of one radio command, as it goes to the session's callback.
struct RadioAnswer {
  std::uint32_t code = platform::kRilResultError;
  std::vector<std::uint8_t> data;
  bool ownNumbersChanged = false;  // EF_MSISDN was written
};

// Carries out the radio interface's commands on the card. Where the card refuses a SIM command the
// answer is an error that holds the response header with the card's status word.
class RadioCommands {
 public:
  explicit RadioCommands(CardSession& session) : session_(session) {}

  // RilPhonebookEntry records, or RilPhonebookEntryEx with the hidden flag.
  RadioAnswer ReadEntries(std::uint32_t first, std::uint32_t last, bool extended);
  RadioAnswer RestrictedCommand(std::uint32_t command,
                                const platform::RilSimCmdParameters& parameters,
                                std::span<const std::uint8_t> data);
  RadioAnswer FileCommand(const platform::RilSimFileCommand& command);
  RadioAnswer FreeExtensionRecords();

 private:
  // Finds a file and, for commands on a record, the record of it.
  using Find = std::function<CardResult(RecordFile*& file, std::uint8_t& record)>;

  RadioAnswer OnFile(std::uint32_t operation, const Find& find, std::span<const std::uint8_t> data);
  RadioAnswer GetResponse(const Find& find);
  RadioAnswer ReadRecord(const Find& find);
  RadioAnswer UpdateRecord(const Find& find, std::span<const std::uint8_t> wanted);
  // Makes of a record as a client wants it what the card is to hold. A text that is wanted as it
  // was told stays in the form in which it is held.
  CardResult Translate(RecordFile& file, std::uint8_t record, std::vector<std::uint8_t>& data);
  // Whose second or third numbers were last read or written, where that matters; null: nobody's.
  const PhonebookSet* SetInHand();
  // `mine`: another program neither wrote the record since it was read here nor took it where it
  // was told as free. Costs nothing where there are no other programs.
  CardResult Confirm(RecordFile& file, std::uint8_t record, std::span<const std::uint8_t> data,
                     bool& mine);
  // The record is in use by its content, and as far as is known nothing refers to it.
  CardResult IsUnclaimed(RecordFile& file, std::uint8_t record, bool& unclaimed);

  CardSession& session_;
  std::uint32_t setInHand_ = 0;  // a location of it
};

}  // namespace kelpin::device::card
