#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/shell.h"

namespace kelpin::contract {

// What every shell that can host windows does, on its screen thread. `Maker` has
//   platform::Shell& Port();
//   std::u16string Type();      the platform type it was made with
template <class Maker>
class ShellContract : public ::testing::Test {
 protected:
  platform::Shell& Port() { return maker_.Port(); }
  std::u16string Type() { return maker_.Type(); }

 private:
  Maker maker_;
};

TYPED_TEST_SUITE_P(ShellContract);

TYPED_TEST_P(ShellContract, ThePlatformTypeIsTheOneItWasMadeWith) {
  const std::u16string type = this->Port().PlatformType();
  EXPECT_EQ(type, this->Type());
  EXPECT_FALSE(type.empty());
  EXPECT_LE(type.size(), 260u);
}

TYPED_TEST_P(ShellContract, ItIsReadyForWindows) {
  EXPECT_EQ(this->Port().WaitForShell(0, 0, 1, 1), platform::ShellReadiness::kReady);
}

TYPED_TEST_P(ShellContract, TheInputMethodKeepsTheStatusThatWasSet) {
  for (const platform::InputMethodStatus set :
       {platform::InputMethodStatus{0x10001, 0}, platform::InputMethodStatus{0x50003, 8}}) {
    ASSERT_EQ(this->Port().ImmSetConversionStatus(set), 1);
    platform::InputMethodStatus got{0xFFFFFFFF, 0xFFFFFFFF};
    ASSERT_EQ(this->Port().ImmGetConversionStatus(got), 1);
    EXPECT_EQ(got.conversion, set.conversion);
    EXPECT_EQ(got.sentence, set.sentence);
  }
}

TYPED_TEST_P(ShellContract, PanelAndBackKeyAreHarmlessWhereNothingHasTheFocus) {
  this->Port().ShowInputPanel(true);
  this->Port().ShowInputPanel(true);
  this->Port().SendBackKey();
  this->Port().ShowInputPanel(false);
  EXPECT_EQ(this->Port().WaitForShell(0, 0, 1, 1), platform::ShellReadiness::kReady);
}

REGISTER_TYPED_TEST_SUITE_P(ShellContract, ThePlatformTypeIsTheOneItWasMadeWith,
                            ItIsReadyForWindows, TheInputMethodKeepsTheStatusThatWasSet,
                            PanelAndBackKeyAreHarmlessWhereNothingHasTheFocus);

}  // namespace kelpin::contract
