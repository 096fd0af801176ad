#include "device/card/extension_file.h"

#include <algorithm>
#include <span>

#include "device/card/adn_record.h"

namespace kelpin::device::card {
namespace {

bool NoSuchRecord(const CardResult& result) {
  return result.Error() == TransportError::kNone && (result.Word() == StatusWord::kRecordNotFound ||
                                                     result.Word() == StatusWord::kOutOfRangeGsm);
}

}  // namespace

CardResult ExtensionFile::Follow(std::uint8_t first, std::u16string& digits, RecordSet& records) {
  if (const CardResult result = file_.Load(); !result.Ok()) return result;
  RecordSet chain;
  for (std::uint8_t record = first; record != 0 && record <= file_.Count() && !chain[record];) {
    std::span<const std::uint8_t> data;
    const CardResult result = file_.Read(record, data);
    if (NoSuchRecord(result)) break;
    if (!result.Ok()) return result;
    if (ExtensionIsFree(data)) break;
    chain.set(record);
    if (digits.size() < kMostDigits) AppendExtensionDigits(data, digits);
    record = NextExtension(data);
  }
  if (digits.size() > kMostDigits) digits.resize(kMostDigits);
  records = chain;
  return StatusWord::kOk;
}

CardResult ExtensionFile::InUse(RecordSet& used) {
  if (const CardResult result = file_.LearnEmpty(); !result.Ok()) return result;
  // The other look of a free record: type "free", the rest unused.
  std::vector<std::uint8_t> zeroType(file_.Info().recordLength, 0xFF);
  zeroType[0] = 0x00;
  if (const CardResult result = file_.Learn(zeroType); !result.Ok()) return result;
  RecordSet found;
  for (std::uint8_t record = 1; record <= file_.Count(); ++record) {
    std::span<const std::uint8_t> data;
    const CardResult result = file_.Read(record, data);
    if (NoSuchRecord(result)) {
      found.set(record);  // nothing can be kept there
      continue;
    }
    if (!result.Ok()) return result;
    if (!ExtensionIsFree(data)) found.set(record);
  }
  used = found;
  return StatusWord::kOk;
}

CardResult ExtensionFile::CheckFree(std::uint8_t record, bool& isFree) {
  std::span<const std::uint8_t> data;
  const CardResult result = file_.ReadAfresh(record, data);
  if (result.Ok()) isFree = ExtensionIsFree(data);
  return result;
}

CardResult ExtensionFile::WriteChain(const std::vector<std::uint8_t>& records,
                                     std::u16string_view digits) {
  std::vector<std::uint8_t> bytes(file_.Info().recordLength);
  std::uint8_t next = 0;
  for (std::size_t i = records.size(); i-- > 0;) {
    const std::size_t first = i * kExtensionDigits;
    EncodeExtension(digits.substr(std::min(first, digits.size()), kExtensionDigits), next, bytes);
    if (const CardResult result = file_.Update(records[i], bytes); !result.Ok()) return result;
    next = records[i];
  }
  return StatusWord::kOk;
}

CardResult ExtensionFile::Release(std::uint8_t record) {
  return file_.Update(record, std::vector<std::uint8_t>(file_.Info().recordLength, 0xFF));
}

}  // namespace kelpin::device::card
