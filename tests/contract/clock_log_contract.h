#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/clock.h"
#include "platform/log.h"

namespace kelpin::contract {

// What every clock does. `Maker` has `platform::Clock& Port()`.
template <class Maker>
class ClockContract : public ::testing::Test {
 protected:
  platform::Clock& Port() { return maker_.Port(); }

 private:
  Maker maker_;
};

TYPED_TEST_SUITE_P(ClockContract);

TYPED_TEST_P(ClockContract, TimeNeverGoesBack) {
  std::uint64_t last = this->Port().Milliseconds();
  for (int i = 0; i < 10000; ++i) {
    const std::uint64_t now = this->Port().Milliseconds();
    ASSERT_GE(now, last);
    last = now;
  }
}

TYPED_TEST_P(ClockContract, ASleepTakesAtLeastItsTime) {
  const std::uint64_t start = this->Port().Milliseconds();
  this->Port().Sleep(0);
  this->Port().Sleep(25);
  // Either reading may be cut down to its millisecond.
  EXPECT_GE(this->Port().Milliseconds() - start + 1, 25u);
}

REGISTER_TYPED_TEST_SUITE_P(ClockContract, TimeNeverGoesBack, ASleepTakesAtLeastItsTime);

// What every log does. `Maker` has `platform::Log& Port()` and `std::vector<std::string> Texts()`:
// the texts that were put out, in order, as UTF-8 without their line ends.
template <class Maker>
class LogContract : public ::testing::Test {
 protected:
  platform::Log& Port() { return maker_.Port(); }
  std::vector<std::string> Texts() { return maker_.Texts(); }

 private:
  Maker maker_;
};

TYPED_TEST_SUITE_P(LogContract);

TYPED_TEST_P(LogContract, TextsAreThereInTheirOrder) {
  EXPECT_TRUE(this->Texts().empty());
  this->Port().DebugOutput(u"[KELPIN]:VER=[6.80].\r\n");
  this->Port().DebugOutput(u"second\n");
  EXPECT_EQ(this->Texts(), (std::vector<std::string>{"[KELPIN]:VER=[6.80].", "second"}));
}

TYPED_TEST_P(LogContract, SignsOfAFormatAreText) {
  this->Port().DebugOutput(u"%s%n {} {0} %v\n");
  EXPECT_EQ(this->Texts(), std::vector<std::string>{"%s%n {} {0} %v"});
}

TYPED_TEST_P(LogContract, LettersBeyondAsciiStay) {
  this->Port().DebugOutput(u"ö € \U0001F4DE\n");
  EXPECT_EQ(this->Texts(), std::vector<std::string>{"ö € \xF0\x9F\x93\x9E"});
}

TYPED_TEST_P(LogContract, NoTextOfAnyThreadIsLostOrMixedWithAnother) {
  std::vector<std::thread> threads;
  std::multiset<std::string> expected;
  for (char16_t name = u'a'; name < u'e'; ++name) {
    const std::u16string text(60, name);
    for (int i = 0; i < 50; ++i) expected.insert(std::string(60, static_cast<char>(name)));
    threads.emplace_back([this, text] {
      for (int i = 0; i < 50; ++i) this->Port().DebugOutput(text + u"\n");
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::vector<std::string> texts = this->Texts();
  EXPECT_EQ(std::multiset<std::string>(texts.begin(), texts.end()), expected);
}

REGISTER_TYPED_TEST_SUITE_P(LogContract, TextsAreThereInTheirOrder, SignsOfAFormatAreText,
                            LettersBeyondAsciiStay, NoTextOfAnyThreadIsLostOrMixedWithAnother);

}  // namespace kelpin::contract
