#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "device/card/apdu_exchange.h"
#include "device/card/card_channel.h"
#include "device/card/command_files.h"

namespace kelpin::device::card {

// The files of a card that takes APDUs: a UICC (class 00) or, where that class is unknown to the
// card, a GSM SIM (class A0). A file that is selected already is not selected again.
class ApduFiles final : public CommandFiles {
 public:
  explicit ApduFiles(CardChannel& channel) : CommandFiles(channel), exchange_(channel) {}

  TransportError Open() override;
  void Close() override;
  void Forget() override;
  CardResult SelectApplication(std::span<const std::uint8_t> aid) override;
  CardResult SearchRecords(const FilePath& path, std::span<const std::uint8_t> pattern,
                           std::vector<std::uint8_t>& records) override;
  bool OthersMayWrite() const override { return shared_; }

  // The next command selects its file again.
  void ForgetSelection() {
    current_.reset();
    folder_.reset();
  }

 private:
  bool IsGsm() const { return exchange_.Class() == kClassGsm; }
  CardResult Noted(CardResult result) override;
  CardResult Send(const CardCommand& command, std::vector<std::uint8_t>& data);
  CardResult Send(const CardCommand& command);
  // The command on the file, selected first where it is not; once more after selecting again when
  // the card says that nothing is selected.
  CardResult SendOn(const FilePath& path, const CardCommand& command,
                    std::vector<std::uint8_t>& data) override;
  CardResult AskInfo(const FilePath& path, std::vector<std::uint8_t>& response) override {
    return Select(path, &response);
  }
  CardResult FindPin(PinReference& pin) override;
  CardResult SendPin(std::uint8_t instruction, std::uint8_t reference,
                     std::span<const std::uint8_t> codes) override;
  bool TellsTries() const override { return !IsGsm(); }
  void Begun() override;

  // Makes the file the current one. `response` is the card's answer when it is wanted (null: not).
  CardResult Select(const FilePath& path, std::vector<std::uint8_t>* response);
  CardResult SelectByPath(const FilePath& path, std::vector<std::uint8_t>* response);
  CardResult SelectByStep(const FilePath& path, std::vector<std::uint8_t>* response);
  CardResult SelectId(std::uint16_t id, std::vector<std::uint8_t>* response);
  CardResult SelectAid(std::vector<std::uint8_t>* response);
  CardResult SendSelect(std::uint8_t parameter1, std::uint8_t parameter2,
                        std::span<const std::uint8_t> data, std::vector<std::uint8_t>* response);

  ApduExchange exchange_;
  bool shared_ = false;            // others ever had the card meanwhile
  bool pathSelects_ = true;        // the card takes whole paths
  bool searches_ = true;           // the card has SEARCH RECORD
  std::vector<std::uint8_t> aid_;  // empty: no application was selected
  std::optional<FilePath> current_;
  std::optional<FilePath> folder_;  // the current directory, where it is known
};

}  // namespace kelpin::device::card
