#include "device/card/file_info.h"

#include <algorithm>

#include "device/card/tlv.h"

namespace kelpin::device::card {
namespace {

constexpr std::uint8_t kFcpTemplate = 0x62;
constexpr std::uint8_t kFciTemplate = 0x6F;
constexpr std::uint8_t kTagFileSize = 0x80;
constexpr std::uint8_t kTagDescriptor = 0x82;
constexpr std::uint8_t kTagFileId = 0x83;
constexpr std::uint8_t kTagLifeCycle = 0x8A;
constexpr std::uint8_t kTagPinTemplate = 0xC6;
constexpr std::uint8_t kTagPinStatus = 0x90;
constexpr std::uint8_t kTagKeyReference = 0x83;

constexpr std::uint8_t kGsmTypeMf = 0x01;
constexpr std::uint8_t kGsmTypeDf = 0x02;
constexpr std::uint8_t kGsmTypeEf = 0x04;

std::uint32_t Number(std::span<const std::uint8_t> bytes) {
  std::uint32_t value = 0;
  for (const std::uint8_t byte : bytes.first(std::min<std::size_t>(bytes.size(), 4))) {
    value = (value << 8) | byte;
  }
  return value;
}

std::uint8_t BoundedCount(std::uint32_t count) {
  return static_cast<std::uint8_t>(std::min<std::uint32_t>(count, kMaxRecords));
}

// The template's content when the response is one.
std::optional<std::span<const std::uint8_t>> FcpContent(std::span<const std::uint8_t> response) {
  if (response.empty() || (response[0] != kFcpTemplate && response[0] != kFciTemplate)) {
    return std::nullopt;
  }
  const auto object = TlvReader(response).Next();
  if (!object) return std::nullopt;
  if (object->tag == kFciTemplate) {
    // FCP inside FCI, or its objects right there.
    if (const auto inner = FindTlv(object->value, kFcpTemplate)) return inner;
  }
  return object->value;
}

std::optional<FileInfo> ParseFcp(std::span<const std::uint8_t> content) {
  FileInfo info;
  bool described = false;
  TlvReader reader(content);
  while (const auto object = reader.Next()) {
    const auto value = object->value;
    if (object->tag == kTagDescriptor && !described && !value.empty()) {
      const std::uint8_t kind = value[0] & 0x3F;  // without the shareable bit
      if ((kind & 0x38) == 0x38) {
        if (kind != 0x38) return std::nullopt;  // a structure of its own kind, 39: BER-TLV
        info.structure = FileStructure::kDirectory;
      } else if ((kind & 0x07) == 0x01) {
        info.structure = FileStructure::kTransparent;
      } else if ((kind & 0x07) == 0x02 || (kind & 0x07) == 0x06) {
        if (value.size() < 5) return std::nullopt;
        const std::uint32_t length = Number(value.subspan(2, 2));
        if (length == 0 || length > 0xFF) return std::nullopt;
        info.structure =
            (kind & 0x07) == 0x02 ? FileStructure::kLinearFixed : FileStructure::kCyclic;
        info.recordLength = static_cast<std::uint8_t>(length);
        info.recordCount = BoundedCount(value[4]);
      } else {
        return std::nullopt;
      }
      described = true;
    } else if (object->tag == kTagFileId && value.size() == 2) {
      info.fileId = static_cast<std::uint16_t>(Number(value));
    } else if (object->tag == kTagFileSize) {
      info.size = Number(value);
    } else if (object->tag == kTagLifeCycle && !value.empty()) {
      // 0000 01x0: operational, deactivated (TS 102 221 table 11.7b).
      info.invalidated = (value[0] & 0xFD) == 0x04;
    }
  }
  if (!described) return std::nullopt;
  if (info.recordLength != 0) {
    info.size = static_cast<std::uint32_t>(info.recordLength) * info.recordCount;
  }
  return info;
}

std::optional<FileInfo> ParseGsm(std::span<const std::uint8_t> response) {
  if (response.size() < 13) return std::nullopt;
  FileInfo info;
  info.fileId = static_cast<std::uint16_t>(Number(response.subspan(4, 2)));
  if (response[6] == kGsmTypeMf || response[6] == kGsmTypeDf) {
    info.structure = FileStructure::kDirectory;
    return info;
  }
  if (response[6] != kGsmTypeEf || response.size() < 14) return std::nullopt;
  info.size = Number(response.subspan(2, 2));
  info.invalidated = (response[11] & 0x01) == 0;
  if (response[13] == 0x00) {
    info.structure = FileStructure::kTransparent;
    return info;
  }
  if ((response[13] != 0x01 && response[13] != 0x03) || response.size() < kGsmResponseLength ||
      response[14] == 0) {
    return std::nullopt;
  }
  info.structure = response[13] == 0x01 ? FileStructure::kLinearFixed : FileStructure::kCyclic;
  info.recordLength = response[14];
  info.recordCount = BoundedCount(info.size / info.recordLength);
  info.size = static_cast<std::uint32_t>(info.recordLength) * info.recordCount;
  return info;
}

}  // namespace

std::optional<FileInfo> ParseFileInfo(std::span<const std::uint8_t> response) {
  if (const auto content = FcpContent(response)) return ParseFcp(*content);
  return ParseGsm(response);
}

std::array<std::uint8_t, kGsmResponseLength> GsmResponse(const FileInfo& info) {
  std::array<std::uint8_t, kGsmResponseLength> bytes = {};
  const std::uint32_t size = std::min<std::uint32_t>(info.size, 0xFFFF);
  bytes[2] = static_cast<std::uint8_t>(size >> 8);
  bytes[3] = static_cast<std::uint8_t>(size & 0xFF);
  bytes[4] = static_cast<std::uint8_t>(info.fileId >> 8);
  bytes[5] = static_cast<std::uint8_t>(info.fileId & 0xFF);
  bytes[6] = info.structure == FileStructure::kDirectory ? kGsmTypeDf : kGsmTypeEf;
  bytes[11] = info.invalidated ? 0x00 : 0x01;
  bytes[12] = 0x02;  // bytes that follow
  switch (info.structure) {
    case FileStructure::kDirectory:
    case FileStructure::kTransparent:
      break;
    case FileStructure::kLinearFixed:
      bytes[13] = 0x01;
      break;
    case FileStructure::kCyclic:
      bytes[13] = 0x03;
      break;
  }
  bytes[14] = info.recordLength;
  return bytes;
}

std::optional<PinReference> ParsePinReference(std::span<const std::uint8_t> response) {
  if (const auto content = FcpContent(response)) {
    const auto pins = FindTlv(*content, kTagPinTemplate);
    if (!pins) return std::nullopt;
    const auto status = FindTlv(*pins, kTagPinStatus);
    std::size_t place = 0;  // of the reference among all, its bit in the status bytes
    TlvReader reader(*pins);
    while (const auto object = reader.Next()) {
      if (object->tag != kTagKeyReference || object->value.empty()) continue;
      const std::uint8_t reference = object->value[0];
      if ((reference >= 0x01 && reference <= 0x08) || reference == 0x11) {
        PinReference pin;
        pin.reference = reference;
        pin.enabled = status && place / 8 < status->size() &&
                      ((*status)[place / 8] & (0x80 >> (place % 8))) != 0;
        return pin;
      }
      ++place;
    }
    return std::nullopt;
  }
  if (response.size() < 19 || (response[6] != kGsmTypeMf && response[6] != kGsmTypeDf)) {
    return std::nullopt;
  }
  PinReference pin;
  pin.enabled = (response[13] & 0x80) == 0;
  if ((response[18] & 0x80) != 0) pin.triesLeft = response[18] & 0x0F;
  if (response.size() > 19 && (response[19] & 0x80) != 0) {
    pin.unblockTriesLeft = response[19] & 0x0F;
  }
  return pin;
}

}  // namespace kelpin::device::card
