#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelpin::device::card {

enum class FileStructure { kDirectory, kTransparent, kLinearFixed, kCyclic };

// What a card tells of a file when it is selected.
struct FileInfo {
  FileStructure structure = FileStructure::kTransparent;
  std::uint16_t fileId = 0;
  std::uint32_t size = 0;         // bytes
  std::uint8_t recordLength = 0;  // 0 for a file without records
  std::uint8_t recordCount = 0;   // at most 254, the last number a record can have
  bool invalidated = false;
};

inline constexpr std::uint8_t kMaxRecords = 254;

// An answer to SELECT in either form: the FCP template of TS 102 221 11.1.1.3 (it starts with 62)
// or the bytes of TS 51.011 9.2.1. Nothing when it is neither, or says too little to use the file.
std::optional<FileInfo> ParseFileInfo(std::span<const std::uint8_t> response);

// The answer that a GSM card would give for the file (TS 51.011 9.2.1): bytes 2-3 the size, byte 13
// the structure, byte 14 the record length.
inline constexpr std::size_t kGsmResponseLength = 15;
std::array<std::uint8_t, kGsmResponseLength> GsmResponse(const FileInfo& info);

// The first user PIN that an answer to SELECT names.
struct PinReference {
  std::uint8_t reference = 1;  // P2 of VERIFY
  bool enabled = false;
  int triesLeft = -1;         // -1: this form does not tell
  int unblockTriesLeft = -1;  // the same
};

// From an FCP's PIN status template (tag C6), or from a GSM card's answer for its master file.
std::optional<PinReference> ParsePinReference(std::span<const std::uint8_t> response);

}  // namespace kelpin::device::card
