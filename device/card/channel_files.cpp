#include "device/card/channel_files.h"

#include <algorithm>

namespace kelpin::device::card {

TransportError ChannelFiles::Open() {
  files_->Close();
  if (const TransportError error = channel_.Prepare(); error != TransportError::kNone) return error;
  files_ = channel_.TakesApdus() ? static_cast<CardFiles*>(&apdu_) : &crsm_;
  return files_->Open();
}

template <typename Read>
CardResult ChannelFiles::Confirm(CardResult written, std::span<const std::uint8_t> data,
                                 Read read) {
  if (!written.Ok() || !channel_.MayMisplaceUpdates()) return written;
  apdu_.ForgetSelection();
  std::vector<std::uint8_t> held;
  const CardResult result = read(held);
  if (result.Error() != TransportError::kNone) return result;
  return result.Ok() && std::equal(held.begin(), held.end(), data.begin(), data.end())
             ? written
             : CardResult(TransportError::kCommunication);
}

CardResult ChannelFiles::UpdateRecord(const FilePath& path, std::uint8_t record,
                                      std::span<const std::uint8_t> data) {
  const CardTransaction transaction(*files_);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  return Confirm(
      files_->UpdateRecord(path, record, data), data, [&](std::vector<std::uint8_t>& held) {
        return files_->ReadRecord(path, record, static_cast<std::uint8_t>(data.size()), held);
      });
}

CardResult ChannelFiles::UpdateBinary(const FilePath& path, std::uint16_t offset,
                                      std::span<const std::uint8_t> data) {
  const CardTransaction transaction(*files_);
  if (transaction.Error() != TransportError::kNone) return transaction.Error();
  return Confirm(
      files_->UpdateBinary(path, offset, data), data, [&](std::vector<std::uint8_t>& held) {
        return files_->ReadBinary(path, offset, static_cast<std::uint16_t>(data.size()), held);
      });
}

CardResult ChannelFiles::OpenAgain(CardResult presented, const PinState& state) {
  // Connected again, the card is also known again by its number, which was locked too.
  if (presented.Ok() && state.verified && !channel_.TakesApdus()) files_->Close();
  return presented;
}

CardResult ChannelFiles::VerifyPin(std::string_view code, PinState& state) {
  const CardResult presented = files_->VerifyPin(code, state);
  return OpenAgain(presented, state);
}

CardResult ChannelFiles::UnblockPin(std::string_view unblockingCode, std::string_view newPin,
                                    PinState& state) {
  const CardResult presented = files_->UnblockPin(unblockingCode, newPin, state);
  return OpenAgain(presented, state);
}

}  // namespace kelpin::device::card
