#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "device/card/card_channel.h"
#include "device/card/card_files.h"

namespace kelpin::device::card {

// The files of a card behind a modem's own file access: every command names its file, so there is
// no selection to lose. Such an access cannot search. The PIN is asked for and presented by the
// same commands as on a card that takes APDUs; the channel hands them to the modem.
class CrsmFiles final : public CardFiles {
 public:
  explicit CrsmFiles(CardChannel& channel) : channel_(channel) {}

  TransportError Open() override;
  bool IsOpen() const override { return open_; }
  void Close() override;
  void Forget() override { infos_.clear(); }

  // The modem finds the application's files by itself.
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
  TransportError BeginTransaction() override;
  void EndTransaction() override;

  // No transaction is begun any more; one that is under way goes on. Any thread.
  void Stop() { stopped_ = true; }

 private:
  CardResult Noted(CardResult result);
  CardResult Send(const FilePath& path, FileCommand command, std::vector<std::uint8_t>& data);
  // A command of the PIN, with its codes; those are wiped.
  CardResult SendCode(std::uint8_t instruction, std::span<std::uint8_t> codes);
  CardResult Present(std::uint8_t instruction, std::span<std::uint8_t> codes, PinState& state);

  CardChannel& channel_;
  std::atomic<bool> stopped_ = false;
  bool open_ = false;
  bool pinVerified_ = false;
  int transactions_ = 0;
  std::map<FilePath, FileInfo> infos_;
};

}  // namespace kelpin::device::card
