#include "device/modem/line_assembler.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::device::modem {
namespace {

using Lines = std::vector<std::string>;

// The lines of `text`, handed over in pieces of `piece` bytes.
Lines Assemble(std::string_view text, std::size_t piece) {
  LineAssembler assembler;
  Lines lines;
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    assembler.Add(std::span(bytes).subspan(at, std::min(piece, bytes.size() - at)),
                  [&lines](std::string_view line) { lines.emplace_back(line); });
  }
  return lines;
}

TEST(LineAssembler, EveryKindOfLineEndEndsALineOnce) {
  const Lines wanted = {"+CSIM: 4,\"9000\"", "OK"};
  for (const std::string_view text :
       {"\r\n+CSIM: 4,\"9000\"\r\n\r\nOK\r\n", "+CSIM: 4,\"9000\"\rOK\r", "+CSIM: 4,\"9000\"\nOK\n",
        "+CSIM: 4,\"9000\"\r\r\nOK\r\r\n", "\r\n\r\n\r\n+CSIM: 4,\"9000\"\n\r\n\rOK\r\n\r\n"}) {
    EXPECT_EQ(Assemble(text, text.size()), wanted) << text;
  }
}

TEST(LineAssembler, ALineInPiecesOfAnySizeIsOneLine) {
  const std::string text = "AT+CPIN?\r\r\n+CPIN: READY\r\n\r\nOK\r\n";
  for (std::size_t piece = 1; piece <= text.size(); ++piece) {
    EXPECT_EQ(Assemble(text, piece), (Lines{"AT+CPIN?", "+CPIN: READY", "OK"})) << piece;
  }
}

TEST(LineAssembler, WhatHasNoEndYetIsNoLine) {
  EXPECT_EQ(Assemble("OK", 1), Lines{});
  EXPECT_EQ(Assemble("OK\r\n> ", 1), (Lines{"OK"}));
}

TEST(LineAssembler, BytesThatAreNoTextAreLeftOut) {
  const std::string text("\0\x01O\x7EK\x7F\0\r\n", 9);
  EXPECT_EQ(Assemble(text, 2), (Lines{"O~K"}));
}

TEST(LineAssembler, BytesBeyondAsciiStay) {
  EXPECT_EQ(Assemble("\xC3\xA4\xFF\r", 1), (Lines{"\xC3\xA4\xFF"}));
}

TEST(LineAssembler, TheLongestLineIsKeptAndALongerOneIsDroppedToItsEnd) {
  const std::string longest(LineAssembler::kLongestLine, 'A');
  EXPECT_EQ(Assemble(longest + "\r\nOK\r\n", 1000), (Lines{longest, "OK"}));
  EXPECT_EQ(Assemble(longest + "A\r\nOK\r\n", 1000), (Lines{"OK"}));
  EXPECT_EQ(Assemble(longest + longest + longest + "\rOK\r", 7), (Lines{"OK"}));
}

TEST(LineAssembler, WhatWasClearedIsForgotten) {
  LineAssembler assembler;
  Lines lines;
  const auto keep = [&lines](std::string_view line) { lines.emplace_back(line); };
  const std::vector<std::uint8_t> half = {'O', 'L', 'D'};
  const std::vector<std::uint8_t> rest = {'O', 'K', '\r'};
  assembler.Add(half, keep);
  assembler.Clear();
  assembler.Add(rest, keep);
  EXPECT_EQ(lines, (Lines{"OK"}));
}

}  // namespace
}  // namespace kelpin::device::modem
