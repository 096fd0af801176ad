#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "device/softcard/apdu_interpreter.h"
#include "device/softcard/card_image.h"
#include "device/softcard/hex.h"
#include "device/softcard/image_reader.h"

namespace kelpin::device::softcard {

// A card small enough to know every byte of. `options` are members before "pins", with a comma at
// their end; `pin1` is the member's value.
inline std::string SmallCard(const std::string& options = "",
                             const std::string& pin1 = R"({"code": "1234", "enabled": false,
                                                           "puk": "12345678"})") {
  return R"({"format": "kelpin card image 1", )" + options + R"("pins": {"pin1": )" + pin1 +
         R"(, "pin2": {"code": "56789", "puk": "87654321"}},
  "mf": {"files": [
    {"id": "2FE2", "sfi": 2, "access": {"read": "ALW", "update": "NEV"},
     "structure": "transparent", "data": "98001032547698103254"},
    {"id": "2F02", "structure": "transparent", "data": "00112233445566778899"},
    {"id": "7F10", "files": [
      {"id": "6F3A", "structure": "linearFixed", "recordLength": 16, "recordCount": 4, "records": [
        "4142038121F3FFFFFFFFFFFFFFFFFFFF", "", "4344048121436587FFFFFFFFFFFFFFFF"]},
      {"id": "6F44", "sfi": 0, "structure": "cyclic", "recordLength": 2, "recordCount": 3,
       "records": ["0001", "0002", "0003"]},
      {"id": "6F3B", "sfi": 7, "access": {"read": "PIN1", "update": "PIN2"},
       "structure": "linearFixed", "recordLength": 2, "recordCount": 1, "records": []},
      {"id": "6F49", "access": {"read": "PIN1", "update": "ADM", "deactivate": "PIN1",
                                "activate": "PIN1"},
       "structure": "transparent", "data": "AABB"},
      {"id": "5F3A", "files": [
        {"id": "4F30", "link": "3F00/7F10/6F3A"}]}]},
    {"id": "7F20", "files": [
      {"id": "6F07", "structure": "transparent", "data": "01"}]},
    {"aid": "A0000000871002FF01", "files": [
      {"id": "6F40", "structure": "transparent", "data": "11"},
      {"id": "5F3A", "files": []}]},
    {"aid": "A0000000871004FF01", "files": []},
    {"aid": "A0000000871002FF02", "files": [
      {"id": "6F40", "structure": "transparent", "data": "22"}]}]}})";
}

// A card in the hand: answers as hexadecimal text.
class CardTest : public ::testing::Test {
 protected:
  explicit CardTest(const std::string& text = SmallCard()) { PutIn(text); }

  void PutIn(const std::string& text) {
    std::string error;
    ASSERT_TRUE(ReadImage(text, image_, error)) << error;
    card_ = std::make_unique<ApduInterpreter>(image_, [this] {
      ++saves_;
      return diskWorks_;
    });
  }

  std::string Say(std::string_view command) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(FromHex(command, bytes)) << command;
    return ToHex(card_->Process(bytes));
  }

  // Selects by id, one step after the other, without an answer; the last status word.
  std::string Go(std::string_view path) {
    std::string answer;
    for (std::size_t i = 0; i + 4 <= path.size(); i += 4) {
      answer = Say("00A4000C02" + std::string(path.substr(i, 4)));
    }
    return answer;
  }

  CardImage image_;
  std::unique_ptr<ApduInterpreter> card_;
  int saves_ = 0;
  bool diskWorks_ = true;
};

}  // namespace kelpin::device::softcard
