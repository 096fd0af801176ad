#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "device/card/apdu_exchange.h"
#include "device/card/card_channel.h"
#include "device/card/card_files.h"

namespace kelpin::device::card {

// The files of a card that takes APDUs: a UICC (class 00) or, where that class is unknown to the
// card, a GSM SIM (class A0). A file that is selected already is not selected again.
class ApduFiles final : public CardFiles {
 public:
  explicit ApduFiles(CardChannel& channel) : channel_(channel), exchange_(channel) {}

  TransportError Open() override;
  bool IsOpen() const override { return open_; }
  void Close() override;
  void Forget() override;

  CardResult SelectApplication(std::span<const std::uint8_t> aid) override;
  CardResult Info(const FilePath& path, FileInfo& info) override;
  CardResult ReadRecord(const FilePath& path, std::uint8_t record, std::uint8_t length,
                        std::vector<std::uint8_t>& data) override;
  CardResult UpdateRecord(const FilePath& path, std::uint8_t record,
                          std::span<const std::uint8_t> data) override;
  CardResult ReadBinary(const FilePath& path, std::uint16_t offset, std::uint16_t length,
                        std::vector<std::uint8_t>& data) override;
  CardResult UpdateBinary(const FilePath& path, std::uint16_t offset,
                          std::span<const std::uint8_t> data) override;
  CardResult SearchRecords(const FilePath& path, std::span<const std::uint8_t> pattern,
                           std::vector<std::uint8_t>& records) override;
  CardResult GetPinState(PinState& state) override;
  CardResult VerifyPin(std::string_view code, PinState& state) override;
  CardResult UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                        PinState& state) override;
  bool OthersMayWrite() const override { return shared_; }

  TransportError BeginTransaction() override;
  void EndTransaction() override;

  // The next command selects its file again.
  void ForgetSelection() {
    current_.reset();
    folder_.reset();
  }

  // No transaction is begun any more; one that is under way goes on. Any thread.
  void Stop() { stopped_ = true; }

 private:
  bool IsGsm() const { return exchange_.Class() == kClassGsm; }
  // Forgets what a failed command makes doubtful.
  CardResult Noted(CardResult result);
  CardResult Send(const CardCommand& command, std::vector<std::uint8_t>& data);
  CardResult Send(const CardCommand& command);
  // The command on the file, selected first where it is not; once more after selecting again when
  // the card says that nothing is selected.
  CardResult SendOn(const FilePath& path, const CardCommand& command,
                    std::vector<std::uint8_t>& data);

  // Makes the file the current one. `response` is the card's answer when it is wanted (null: not).
  CardResult Select(const FilePath& path, std::vector<std::uint8_t>* response);
  CardResult SelectByPath(const FilePath& path, std::vector<std::uint8_t>* response);
  CardResult SelectByStep(const FilePath& path, std::vector<std::uint8_t>* response);
  CardResult SelectId(std::uint16_t id, std::vector<std::uint8_t>* response);
  CardResult SelectAid(std::vector<std::uint8_t>* response);
  CardResult SendSelect(std::uint8_t parameter1, std::uint8_t parameter2,
                        std::span<const std::uint8_t> data, std::vector<std::uint8_t>* response);
  CardResult FindPinReference(PinReference& pin);
  // What the card says of tries by the command without a code.
  CardResult AskTries(std::uint8_t instruction, std::uint8_t reference, int& tries);
  CardResult SendCodes(std::uint8_t instruction, std::uint8_t reference,
                       std::span<std::uint8_t> codes, PinState& state);

  CardChannel& channel_;
  ApduExchange exchange_;
  std::atomic<bool> stopped_ = false;
  bool open_ = false;
  int transactions_ = 0;
  bool shared_ = false;      // others ever had the card meanwhile
  bool pathSelects_ = true;  // the card takes whole paths
  bool searches_ = true;     // the card has SEARCH RECORD
  bool pinVerified_ = false;
  std::vector<std::uint8_t> aid_;  // empty: no application was selected
  std::optional<FilePath> current_;
  std::optional<FilePath> folder_;  // the current directory, where it is known
  std::map<FilePath, FileInfo> infos_;
};

}  // namespace kelpin::device::card
