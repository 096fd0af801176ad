#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "app/extended_fields.h"
#include "res/ids.h"
#include "tests/views/views_fixture.h"

namespace kelpin::views {

// A card of three sets of 500 locations; second number, third number and e-mail of each are in the
// record with the entry's own number.
class CallTest : public ViewsTest {
 protected:
  using Bytes = std::vector<std::uint8_t>;
  static constexpr std::size_t kPerSet = 500;

  CallTest() {
    wiring.loadLayout = app::LoadExtendedLayout;
    device.sim.SetCapacity(1010);
    SetFile(0, 40, 3);
    SetFile(50, 28, kPerSet);
    for (const std::uint32_t set : {0u, 1u, 2u}) {
      // EF_PBR: type 1 files alone, EF_ADN, EF_ANR twice, EF_EMAIL.
      const auto last = static_cast<std::uint8_t>(set);
      SetRecord(0, set + 1,
                {0xA8, 0x11, 0xC0, 0x03, 0x4F, static_cast<std::uint8_t>(0x3A + last), 0x01, 0xC4,
                 0x02, 0x4F, static_cast<std::uint8_t>(0x40 + last), 0xC4, 0x02, 0x4F,
                 static_cast<std::uint8_t>(0x48 + last), 0xCA, 0x02, 0x4F,
                 static_cast<std::uint8_t>(0x50 + last)});
      SetFile(6 + 10 * set, 15, kPerSet);
      SetFile(7 + 10 * set, 15, kPerSet);
      SetFile(2 + 10 * set, 30, kPerSet);
    }
    device.sim.SetEntry(1, u"Anna", u"+49111");
    device.sim.SetEntry(2, u"Bert", u"222");
    device.sim.SetEntry(1000, u"Cem", u"333");
    device.sim.SetEntry(1001, u"Dora", u"444");
    // EF_ANR: no name, length, TON/NPI, digits.
    SetRecord(6, 1, {0x00, 0x03, 0x81, 0x10, 0x32});  // 0123
    SetRecord(7, 1, {0x00, 0x03, 0x91, 0x94, 0x71});  // +4917
    SetRecord(2, 1, Letters("anna@example.org"));
    SetRecord(16, 500, {0x00, 0x02, 0x81, 0x99});  // 99
    SetRecord(26, 1, {0x00, 0x02, 0x81, 0x88});    // 88, of the first location nobody may ask for
    SetRecord(22, 1, Letters("dora@example.org"));
  }

  void SetFile(std::uint32_t code, std::uint8_t length, std::size_t count) {
    device.radio.SetCodedFile(code, {length, std::vector<Bytes>(count, Bytes(length, 0xFF))});
  }
  void SetRecord(std::uint32_t code, std::uint32_t record, Bytes bytes) {
    auto file = *device.radio.GetCodedFile(code);
    bytes.resize(file.recordLength, 0xFF);
    file.records.at(record - 1) = std::move(bytes);
    device.radio.SetCodedFile(code, file);
  }
  // Letters are the same in ASCII and in the card's alphabet; '@' is its 0.
  static Bytes Letters(std::string_view text) {
    Bytes bytes(text.begin(), text.end());
    std::replace(bytes.begin(), bytes.end(), std::uint8_t{'@'}, std::uint8_t{0});
    return bytes;
  }

  void SelectEntry(std::uint32_t index) { Select(app::FindListRow(*state, index)); }
  std::vector<std::u16string> Called() {
    std::vector<std::u16string> numbers;
    for (const auto& call : device.telephone.Calls()) numbers.push_back(call.number);
    return numbers;
  }
  // The extended fields asked for since the last look: their file codes.
  std::vector<std::uint32_t> FieldsRead() {
    std::vector<std::uint32_t> codes;
    for (const test::FakeRadio::Command& command : device.radio.Commands()) {
      // Words of four bytes: the command, ..., read or write, the file code.
      if (command.block.size() == 288 && command.block[8] == platform::kRilSimReadRecord) {
        codes.push_back(command.block[12]);
      }
    }
    device.radio.ClearCommands();
    return codes;
  }
};

}  // namespace kelpin::views
