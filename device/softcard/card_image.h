#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::device::softcard {

enum class FileKind { kMf, kDf, kAdf, kTransparent, kLinearFixed, kCyclic };

// Who may do something with a file.
enum class Access { kAlways, kPin1, kPin2, kAdm, kNever };

// What an elementary file holds. Linked files share one.
struct FileContent {
  std::size_t recordLength = 0;  // 0: transparent
  std::vector<std::uint8_t> bytes;
  std::vector<std::uint8_t> fill;            // one record as it is when free; empty: all FF
  std::map<std::size_t, std::string> notes;  // by record, 1-based; a changed record loses its note

  std::size_t RecordCount() const { return recordLength == 0 ? 0 : bytes.size() / recordLength; }
  // `record` is 1-based and in range.
  std::span<const std::uint8_t> Record(std::size_t record) const;
  bool IsFree(std::size_t record) const;
};

struct CardFile {
  FileKind kind = FileKind::kDf;
  std::uint16_t id = 0;           // 0 for an ADF
  std::vector<std::uint8_t> aid;  // of an ADF
  std::string name;               // for readers of the image
  std::string note;
  CardFile* parent = nullptr;  // null for the MF
  std::vector<std::unique_ptr<CardFile>> children;

  // Of an elementary file.
  std::optional<std::uint8_t> sfi;  // 1..30; 0: has none; absent: the low five bits of the id
  Access read = Access::kPin1;
  Access update = Access::kPin1;
  Access deactivate = Access::kAdm;
  Access activate = Access::kAdm;
  bool deactivated = false;
  std::string link;  // path of the file whose content this one shows; empty: its own
  std::shared_ptr<FileContent> content;

  // Answered in place of the FCP made from the above; for cards with odd ones.
  std::vector<std::uint8_t> fcp;

  bool IsDirectory() const {
    return kind == FileKind::kMf || kind == FileKind::kDf || kind == FileKind::kAdf;
  }
  // The short file id that selects this file, 0 when none does (TS 102 221 11.1.1.4.8).
  std::uint8_t ShortId() const;
  // The ADF this file is or is below; null outside any.
  const CardFile* Application() const;

  CardFile* Child(std::uint16_t childId) const;
  CardFile* ChildByShortId(std::uint8_t shortId) const;
};

// A code of the card's holder, four to eight digits.
struct Pin {
  static constexpr int kTries = 3;
  static constexpr int kPukTries = 10;

  std::string code;
  bool enabled = true;
  int tries = kTries;  // left
  std::string puk;     // empty: cannot be unblocked
  int pukTries = kPukTries;

  bool operator==(const Pin&) const = default;
};

enum class Protocol { kT0, kT1 };

// The command classes a card knows. kFirst: both, until the first command after a reset; then its
// class alone.
enum class Classes { kGsm, kUicc, kBoth, kFirst };

// A card as it is kept in a file: its options, codes and files. Moves, does not copy.
struct CardImage {
  static constexpr int kMaxDelayMs = 60000;

  std::string note;
  Protocol protocol = Protocol::kT0;
  Classes classes = Classes::kBoth;
  std::vector<std::uint8_t> atr;
  int delayMs = 0;  // a command takes at least so long
  bool searchRecord = true;
  bool pathSelect = true;
  int channels = 3;  // logical channels beside the basic one, 0..3
  Pin pin1;
  std::optional<Pin> pin2;
  std::optional<Pin> adm;
  std::unique_ptr<CardFile> mf;

  // By path, "3F00/7F10/6F3A"; an application stands by its AID. Null when there is none.
  CardFile* Find(std::string_view path) const;
  // The applications, in the order of the file.
  std::vector<CardFile*> Applications() const;
};

}  // namespace kelpin::device::softcard
