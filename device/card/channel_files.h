#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "device/card/apdu_files.h"
#include "device/card/card_channel.h"
#include "device/card/card_files.h"
#include "device/card/crsm_files.h"

namespace kelpin::device::card {

// The files of a card behind any channel, reached as the channel says each time it is opened.
// Where an update may land in another file than the one that was meant, it is read back.
class ChannelFiles final : public CardFiles {
 public:
  explicit ChannelFiles(CardChannel& channel) : channel_(channel), apdu_(channel), crsm_(channel) {}

  TransportError Open() override;
  bool IsOpen() const override { return files_->IsOpen(); }
  void Close() override { files_->Close(); }
  void Forget() override { files_->Forget(); }

  CardResult SelectApplication(std::span<const std::uint8_t> aid) override {
    return files_->SelectApplication(aid);
  }
  CardResult Info(const FilePath& path, FileInfo& info) override {
    return files_->Info(path, info);
  }
  CardResult ReadRecord(const FilePath& path, std::uint8_t record, std::uint8_t length,
                        std::vector<std::uint8_t>& data) override {
    return files_->ReadRecord(path, record, length, data);
  }
  CardResult UpdateRecord(const FilePath& path, std::uint8_t record,
                          std::span<const std::uint8_t> data) override;
  CardResult ReadBinary(const FilePath& path, std::uint16_t offset, std::uint16_t length,
                        std::vector<std::uint8_t>& data) override {
    return files_->ReadBinary(path, offset, length, data);
  }
  CardResult UpdateBinary(const FilePath& path, std::uint16_t offset,
                          std::span<const std::uint8_t> data) override;
  CardResult SearchRecords(const FilePath& path, std::span<const std::uint8_t> pattern,
                           std::vector<std::uint8_t>& records) override {
    return files_->SearchRecords(path, pattern, records);
  }
  CardResult GetPinState(PinState& state) override { return files_->GetPinState(state); }
  CardResult VerifyPin(std::string_view code, PinState& state) override;
  CardResult UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                        PinState& state) override;
  bool OthersMayWrite() const override {
    return channel_.OthersMayWrite() || files_->OthersMayWrite();
  }
  TransportError BeginTransaction() override { return files_->BeginTransaction(); }
  void EndTransaction() override { files_->EndTransaction(); }

  // No transaction is begun any more; one that is under way goes on. Any thread.
  void Stop() {
    apdu_.Stop();
    crsm_.Stop();
  }

 private:
  // Once the PIN was taken the channel may have a better way to the card: it is opened anew.
  CardResult OpenAgain(CardResult presented, const PinState& state);
  // What `read` finds is what was written, or nobody knows what became of it.
  template <typename Read>
  CardResult Confirm(CardResult written, std::span<const std::uint8_t> data, Read read);

  CardChannel& channel_;
  ApduFiles apdu_;
  CrsmFiles crsm_;
  CardFiles* files_ = &apdu_;
};

}  // namespace kelpin::device::card
