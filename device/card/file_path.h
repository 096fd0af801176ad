#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace kelpin::device::card {

inline constexpr std::uint16_t kMasterFile = 0x3F00;
inline constexpr std::uint16_t kDfTelecom = 0x7F10;
inline constexpr std::uint16_t kDfPhonebook = 0x5F3A;
// Stands for the application that was selected last (TS 102 221 8.4.1).
inline constexpr std::uint16_t kApplication = 0x7FFF;

inline constexpr std::uint16_t kEfIccid = 0x2FE2;
inline constexpr std::uint16_t kEfDir = 0x2F00;
inline constexpr std::uint16_t kEfPsc = 0x4F22;
inline constexpr std::uint16_t kEfCc = 0x4F23;
inline constexpr std::uint16_t kEfPuid = 0x4F24;
inline constexpr std::uint16_t kEfPbr = 0x4F30;
inline constexpr std::uint16_t kEfAdn = 0x6F3A;
inline constexpr std::uint16_t kEfSms = 0x6F3C;
inline constexpr std::uint16_t kEfMsisdn = 0x6F40;
inline constexpr std::uint16_t kEfSdn = 0x6F49;
inline constexpr std::uint16_t kEfExt1 = 0x6F4A;
inline constexpr std::uint16_t kEfExt3 = 0x6F4C;

// File ids from below the master file down to one file. No id at all is the master file itself.
class FilePath {
 public:
  static constexpr std::size_t kMaxDepth = 4;

  constexpr FilePath() = default;
  // Ids beyond kMaxDepth do not occur on a card and are left out.
  constexpr FilePath(std::initializer_list<std::uint16_t> ids) {
    for (const std::uint16_t id : ids) Append(id);
  }

  constexpr FilePath Child(std::uint16_t id) const {
    FilePath child = *this;
    child.Append(id);
    return child;
  }
  constexpr FilePath Parent() const {
    FilePath parent = *this;
    if (parent.depth_ > 0) parent.ids_[--parent.depth_] = 0;
    return parent;
  }
  constexpr std::span<const std::uint16_t> Ids() const { return {ids_.data(), depth_}; }
  constexpr bool InApplication() const { return depth_ > 0 && ids_[0] == kApplication; }

  friend constexpr auto operator<=>(const FilePath&, const FilePath&) = default;

 private:
  constexpr void Append(std::uint16_t id) {
    if (depth_ < kMaxDepth) ids_[depth_++] = id;
  }

  std::array<std::uint16_t, kMaxDepth> ids_ = {};
  std::size_t depth_ = 0;
};

}  // namespace kelpin::device::card
