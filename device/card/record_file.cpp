#include "device/card/record_file.h"

#include <algorithm>
#include <cstddef>

namespace kelpin::device::card {

CardResult RecordFile::Load() {
  if (loaded_) return StatusWord::kOk;
  if (missing_) return StatusWord::kFileNotFound;
  FileInfo info;
  const CardResult result = files_.Info(path_, info);
  if (!result.Ok()) {
    missing_ = result.Missing();
    return result;
  }
  if (info.recordLength == 0) return StatusWord::kWrongFileKind;
  info_ = info;
  bytes_.assign(static_cast<std::size_t>(info.recordLength) * info.recordCount, 0xFF);
  known_.assign(info.recordCount, false);
  learned_.clear();
  emptyLearned_ = false;
  loaded_ = true;
  return result;
}

std::span<std::uint8_t> RecordFile::Bytes(std::uint8_t record) {
  return std::span(bytes_).subspan(static_cast<std::size_t>(record - 1) * info_.recordLength,
                                   info_.recordLength);
}

std::optional<std::span<const std::uint8_t>> RecordFile::Known(std::uint8_t record) const {
  if (record == 0 || record > known_.size() || !known_[record - 1U]) return std::nullopt;
  return std::span(bytes_).subspan(static_cast<std::size_t>(record - 1) * info_.recordLength,
                                   info_.recordLength);
}

CardResult RecordFile::Read(std::uint8_t record, std::span<const std::uint8_t>& data) {
  if (const auto known = Known(record)) {
    data = *known;
    return StatusWord::kOk;
  }
  return ReadAfresh(record, data);
}

CardResult RecordFile::ReadAfresh(std::uint8_t record, std::span<const std::uint8_t>& data) {
  if (const CardResult result = Load(); !result.Ok()) return result;
  if (record == 0 || record > Count()) return StatusWord::kRecordNotFound;
  known_[record - 1U] = false;
  std::vector<std::uint8_t> read;
  const CardResult result = files_.ReadRecord(path_, record, info_.recordLength, read);
  if (!result.Ok()) return result;
  const auto bytes = Bytes(record);
  std::copy(read.begin(), read.end(), bytes.begin());
  known_[record - 1U] = true;
  data = bytes;
  return result;
}

CardResult RecordFile::Confirm(std::uint8_t record, bool& same) {
  same = true;
  const auto known = Known(record);
  if (!known || !files_.OthersMayWrite()) return StatusWord::kOk;
  const std::vector<std::uint8_t> before(known->begin(), known->end());
  std::span<const std::uint8_t> now;
  const CardResult result = ReadAfresh(record, now);
  if (result.Ok()) same = std::equal(now.begin(), now.end(), before.begin(), before.end());
  return result;
}

CardResult RecordFile::Learn(std::span<const std::uint8_t> pattern) {
  if (const CardResult result = Load(); !result.Ok()) return result;
  if (pattern.size() != info_.recordLength) return StatusWord::kWrongLength;
  for (const auto& done : learned_) {
    if (std::equal(done.begin(), done.end(), pattern.begin(), pattern.end())) {
      return StatusWord::kOk;
    }
  }
  std::vector<std::uint8_t> records;
  const CardResult result = files_.SearchRecords(path_, pattern, records);
  cannotSearch_ =
      result.Error() == TransportError::kNone && result.Word() == StatusWord::kUnknownInstruction;
  if (!result.Ok() && !cannotSearch_) return result;
  for (const std::uint8_t record : records) {
    if (record == 0 || record > Count() || known_[record - 1U]) continue;
    std::copy(pattern.begin(), pattern.end(), Bytes(record).begin());
    known_[record - 1U] = true;
  }
  learned_.emplace_back(pattern.begin(), pattern.end());
  return StatusWord::kOk;
}

CardResult RecordFile::LearnEmpty() {
  if (const CardResult result = Load(); !result.Ok() || emptyLearned_) return result;
  const CardResult result = Learn(std::vector<std::uint8_t>(info_.recordLength, 0xFF));
  emptyLearned_ = result.Ok();
  return result;
}

CardResult RecordFile::Update(std::uint8_t record, std::span<const std::uint8_t> data) {
  if (const CardResult result = Load(); !result.Ok()) return result;
  if (record == 0 || record > Count()) return StatusWord::kRecordNotFound;
  if (data.size() != info_.recordLength) return StatusWord::kWrongLength;
  known_[record - 1U] = false;
  const CardResult result = files_.UpdateRecord(path_, record, data);
  if (!result.Ok()) return result;
  std::copy(data.begin(), data.end(), Bytes(record).begin());
  known_[record - 1U] = true;
  return result;
}

void RecordFile::ForgetRecords() {
  known_.assign(known_.size(), false);
  learned_.clear();
  emptyLearned_ = false;
}

void RecordFile::Forget() {
  loaded_ = false;
  missing_ = false;
  cannotSearch_ = false;
  info_ = FileInfo{};
  bytes_.clear();
  known_.clear();
  learned_.clear();
  emptyLearned_ = false;
}

}  // namespace kelpin::device::card
