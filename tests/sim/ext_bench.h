#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "sim/ril_ext_phonebook.h"
#include "tests/sim/bytes.h"
#include "tests/sim/sim_bench.h"

namespace kelpin::sim {

// A phone book of two sets of four entries behind the radio. EF_EMAIL (type 2) serves both sets;
// each has a second number (type 1), a third number and a nickname (type 2) and groups (type 1) of
// its own. Everything is free.
class ExtBench : public ::testing::Test {
 protected:
  using Strings = std::vector<std::string>;

  void SetUp() override {
    SetFile(kReferenceFile, 60, 4);
    SetRecord(kReferenceFile, 1,
              Bytes("A8 11 C0034F3A01 C1024F60 C4024F40 C6024F70"
                    "A9 0C CA024F50 C4024F48 C3024F58"
                    "AA 0C C2024F80 C7024F81 C8024F82"));
    SetRecord(kReferenceFile, 2,
              Bytes("A8 11 C0034F3B02 C1024F61 C4024F41 C6024F71"
                    "A9 0C CA024F50 C4024F49 C3024F59"
                    "AA 0C C2024F80 C7024F81 C8024F82"));
    SetFile(50, 30, 4);
    SetFile(4, 16, 2);
    SetFile(5, 14, 3);
    SetFile(44, 13, 16);
    for (const std::uint32_t set : {0u, 1u}) {
      SetFile(1 + 10 * set, 3, 4);
      SetFile(3 + 10 * set, 3, 4);
      SetFile(6 + 10 * set, 15, 4);
      SetFile(7 + 10 * set, 17, 3);
      SetFile(40 + set, 12, 3);
    }
    SetFile(2, 30, 5);
    bench_.radio.SetExtensionBitmap(16, Bytes("00 00"));
    ASSERT_TRUE(book_.Open(0));
  }

  void Load() {
    ASSERT_TRUE(book_.LoadLayout(all_));
    Forget();
  }
  void Forget() { bench_.radio.ClearCommands(); }

  void SetFile(std::uint32_t code, std::uint8_t length, std::size_t count) {
    bench_.radio.SetCodedFile(code,
                              {length, std::vector<ByteVector>(count, ByteVector(length, 0xFF))});
  }
  // Padded to the file's length.
  void SetRecord(std::uint32_t code, std::uint32_t record, ByteVector bytes) {
    auto file = *bench_.radio.GetCodedFile(code);
    bytes.resize(file.recordLength, 0xFF);
    file.records[record - 1] = bytes;
    bench_.radio.SetCodedFile(code, file);
  }
  ByteVector Record(std::uint32_t code, std::uint32_t record) {
    return bench_.radio.GetCodedFile(code)->records[record - 1];
  }
  static ByteVector Blank(std::size_t length) { return ByteVector(length, 0xFF); }

  // The commands since Forget: "measure 50", "read 6 1", "write 6 1", "extensions".
  Strings Sent() const {
    Strings sent;
    for (const auto& command : bench_.radio.Commands()) {
      const auto word = [&](std::size_t number) {
        return std::to_string(command.block[4 * number] + 256 * command.block[4 * number + 1]);
      };
      if (command.block.size() != 288) {
        sent.push_back(word(0) == "4248" ? "extensions" : "other " + word(0));
      } else if (word(2) == "3") {
        sent.push_back("measure " + word(3));
      } else {
        sent.push_back((word(2) == "2" ? "read " : "write ") + word(3) + " " + word(4));
      }
    }
    return sent;
  }
  Strings Written() const {
    Strings written;
    for (const std::string& sent : Sent()) {
      if (sent.starts_with("write")) written.push_back(sent);
    }
    return written;
  }
  // The block of the nth command of this text, as it was sent.
  ByteVector BlockOf(const std::string& text) const {
    const Strings sent = Sent();
    for (std::size_t i = 0; i < sent.size(); ++i) {
      if (sent[i] == text) return bench_.radio.Commands()[i].block;
    }
    ADD_FAILURE() << "not sent: " << text;
    return {};
  }
  // Little-endian words, `data`, then `fill` up to the size of a file command.
  static ByteVector Block(const std::vector<std::uint32_t>& words, const ByteVector& data = {},
                          std::uint8_t fill = 0) {
    ByteVector block;
    for (const std::uint32_t word : words) {
      for (int shift = 0; shift < 32; shift += 8) {
        block.push_back(static_cast<std::uint8_t>(word >> shift));
      }
    }
    block.insert(block.end(), data.begin(), data.end());
    block.resize(288, fill);
    return block;
  }

  // Writes with the number names switched off.
  std::uint32_t WriteNumber(FieldSlot slot, std::uint32_t location, const std::u16string& number,
                            std::uint32_t& existing) {
    return book_.WriteNumberField(slot, location, {number, 0}, false, existing);
  }
  std::u16string ReadNumber(FieldSlot slot, std::uint32_t location) {
    std::uint32_t existing = 0;
    NumberField field{u"?", 0};
    return book_.ReadNumberField(slot, location, existing, field) == FieldResult::kRead
               ? field.number
               : u"!";
  }
  std::u16string ReadText(FieldSlot slot, std::uint32_t location) {
    std::uint32_t existing = 0;
    std::u16string text;
    return book_.ReadTextField(slot, location, false, existing, text) == FieldResult::kRead ? text
                                                                                            : u"!";
  }

  static constexpr FieldSlot kMail = FieldSlot::kEmail;
  static constexpr FieldSlot kNick = FieldSlot::kNickname;
  static constexpr FieldSlot kSecond = FieldSlot::kSecondNumber;
  static constexpr FieldSlot kThird = FieldSlot::kThirdNumber;

  test::SimBench bench_;
  RilExtPhonebook book_{bench_.radio, bench_.kernel, bench_.devices};
  FieldSwitches all_{false, false, false, true};
  std::uint32_t existing_ = kNoRecord;
};

}  // namespace kelpin::sim
