#pragma once

#include <cstdint>
#include <vector>

#include "device/card/command_files.h"

namespace kelpin::device::card {

// The files of a card behind a modem's own file access: every command names its file, so there is
// no selection to lose. Such an access cannot search. The PIN is asked for and presented by the
// same commands as on a card that takes APDUs; the channel hands them to the modem.
class CrsmFiles final : public CommandFiles {
 public:
  explicit CrsmFiles(CardChannel& channel) : CommandFiles(channel) {}

  TransportError Open() override;
  // The modem finds the application's files by itself.
  CardResult SelectApplication(std::span<const std::uint8_t> aid) override;
  CardResult SearchRecords(const FilePath& path, std::span<const std::uint8_t> pattern,
                           std::vector<std::uint8_t>& records) override;

 private:
  CardResult SendOn(const FilePath& path, const CardCommand& command,
                    std::vector<std::uint8_t>& data) override;
  CardResult AskInfo(const FilePath& path, std::vector<std::uint8_t>& response) override;
  CardResult FindPin(PinReference& pin) override;
  CardResult SendPin(std::uint8_t instruction, std::uint8_t reference,
                     std::span<const std::uint8_t> codes) override;
};

}  // namespace kelpin::device::card
