#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "device/card/apdu_exchange.h"
#include "device/card/card_channel.h"
#include "device/card/card_files.h"

namespace kelpin::device::card {

// What is the same on every way to the card: which commands read and change a file and present a
// PIN, what is kept of a file's information, and who has the card to himself. How a command finds
// its file is the derived class's.
class CommandFiles : public CardFiles {
 public:
  bool IsOpen() const override { return open_; }
  void Close() override;
  void Forget() override { infos_.clear(); }

  CardResult Info(const FilePath& path, FileInfo& info) override;
  CardResult ReadRecord(const FilePath& path, std::uint8_t record, std::uint8_t length,
                        std::vector<std::uint8_t>& data) override;
  CardResult UpdateRecord(const FilePath& path, std::uint8_t record,
                          std::span<const std::uint8_t> data) override;
  CardResult ReadBinary(const FilePath& path, std::uint16_t offset, std::uint16_t length,
                        std::vector<std::uint8_t>& data) override;
  CardResult UpdateBinary(const FilePath& path, std::uint16_t offset,
                          std::span<const std::uint8_t> data) override;
  CardResult GetPinState(PinState& state) override;
  CardResult VerifyPin(std::string_view code, PinState& state) override;
  CardResult UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                        PinState& state) override;
  TransportError BeginTransaction() override;
  void EndTransaction() override;

  // No transaction is begun any more; one that is under way goes on. Any thread.
  void Stop() { stopped_ = true; }

 protected:
  explicit CommandFiles(CardChannel& channel) : channel_(channel) {}

  // The command on the file, wherever the last one was.
  virtual CardResult SendOn(const FilePath& path, const CardCommand& command,
                            std::vector<std::uint8_t>& data) = 0;
  // The card's answer to selecting the file.
  virtual CardResult AskInfo(const FilePath& path, std::vector<std::uint8_t>& response) = 0;
  virtual CardResult FindPin(PinReference& pin) = 0;
  // VERIFY or UNBLOCK, once; without codes it asks for the tries that are left.
  virtual CardResult SendPin(std::uint8_t instruction, std::uint8_t reference,
                             std::span<const std::uint8_t> codes) = 0;
  // The card tells the tries when it is asked so.
  virtual bool TellsTries() const { return true; }
  // A transaction has begun.
  virtual void Begun() {}

  // Forgets what a failed command makes doubtful.
  virtual CardResult Noted(CardResult result);

  bool Stopped() const { return stopped_; }
  void SetOpen(bool open) { open_ = open; }

  CardChannel& channel_;

 private:
  CardResult AskTries(std::uint8_t instruction, std::uint8_t reference, int& tries);
  // Sends the codes and wipes them. A refusal is a success.
  CardResult Present(std::uint8_t instruction, std::span<std::uint8_t> codes, PinState& state);

  std::atomic<bool> stopped_ = false;
  bool open_ = false;
  bool pinVerified_ = false;
  int transactions_ = 0;
  std::map<FilePath, FileInfo> infos_;
};

}  // namespace kelpin::device::card
