#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/registry.h"

namespace kelpin::device::registry {

// Limits of a file: what is beyond them is refused on reading and never written.
inline constexpr std::size_t kMaxFileBytes = 4u << 20;
inline constexpr std::size_t kMaxLineBytes = 128u << 10;
inline constexpr std::size_t kMaxValueBytes = 64u << 10;
inline constexpr std::size_t kMaxNameLength = 255;  // UTF-16 units; also of one part of a path
inline constexpr std::size_t kMaxPathLength = 1024;

inline constexpr std::string_view kRegHeader = "KELPIN REGISTRY 1";

struct RegError {
  std::size_t line = 0;  // 1-based
  std::string reason;
};

struct RegValue {
  std::u16string name;  // empty is the key's default value
  platform::RegistryType type = platform::RegistryType::kNone;
  std::vector<std::uint8_t> data;
  std::u16string foldedName;
  std::string source;   // the line or lines it was read from; empty once it was changed
  std::string comment;  // the ';' comment behind it
};

// A comment or blank line as it stands, or a value.
using RegLine = std::variant<std::string, RegValue>;

struct RegSection {
  platform::RegistryRoot root = platform::RegistryRoot::kCurrentUser;
  std::u16string path;  // without a leading '\'
  std::u16string foldedPath;
  std::vector<RegLine> lines;
};

// The path as sections hold it: without one leading and one trailing '\'.
std::u16string_view TrimPath(std::u16string_view path);
// What a file can hold: no control character, no unpaired surrogate, within the lengths; of a path
// no empty part.
bool IsStorableName(std::u16string_view name);
bool IsStorablePath(std::u16string_view trimmedPath);

// One .reg file with its comments and its order. Where a key or value stands twice the keys are
// one key and the last value counts.
class RegFile {
 public:
  // UTF-8 (with or without its mark) or UTF-16LE with its mark. The first line names the format and
  // ends in its version number. On failure `file` is left as it was.
  [[nodiscard]] static bool Parse(std::string_view bytes, RegFile& file, RegError& error);

  // UTF-8; lines that were not changed as they were read.
  std::string Text() const;

  // Paths are trimmed; path and name compare without regard to case. Null when it is missing.
  const RegValue* Find(platform::RegistryRoot root, std::u16string_view path,
                       std::u16string_view name) const;
  // A key is there when it or a key below it is.
  bool HasKey(platform::RegistryRoot root, std::u16string_view path) const;

  // A new value goes behind the last one of its key, a new key to the end.
  void Set(platform::RegistryRoot root, std::u16string_view path, std::u16string_view name,
           platform::RegistryType type, std::span<const std::uint8_t> data);
  void AddKey(platform::RegistryRoot root, std::u16string_view path);

 private:
  friend class RegParser;

  template <typename File>
  static auto FindIn(File& file, platform::RegistryRoot root, std::u16string_view path,
                     std::u16string_view name);
  RegSection* FindSection(platform::RegistryRoot root, std::u16string_view foldedPath);

  std::vector<std::string> preamble_;  // between the header and the first section
  std::vector<RegSection> sections_;
};

}  // namespace kelpin::device::registry
