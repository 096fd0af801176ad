#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/telephone.h"

namespace kelpin::contract {

// What every telephone does. `Maker` is default-constructed for each test and has
//   platform::Telephone& Port();
//   std::string NextNumber();      waits for the next call that is handed over; its number
//   void MakeUnreachable();        from now on nobody takes a call
//   static const char* Missing();  what is not installed that it needs; null: nothing
template <class Maker>
class TelephoneContract : public ::testing::Test {
 protected:
  void SetUp() override {
    if (Maker::Missing() != nullptr) GTEST_SKIP() << Maker::Missing();
  }
  int Call(std::u16string_view number, std::u16string_view name = u"Anna") {
    platform::PhoneCallRequest request;
    request.destinationAddress = number;
    request.calledParty = name;
    return maker_.Port().PhoneMakeCall(request);
  }
  platform::Telephone& Port() { return maker_.Port(); }
  std::string NextNumber() { return maker_.NextNumber(); }
  void MakeUnreachable() { maker_.MakeUnreachable(); }

 private:
  Maker maker_;
};

TYPED_TEST_SUITE_P(TelephoneContract);

TYPED_TEST_P(TelephoneContract, TheNumberIsDialledAsItStands) {
  EXPECT_EQ(this->Call(u"+491711234567"), 1);
  EXPECT_EQ(this->NextNumber(), "+491711234567");
  EXPECT_EQ(this->Call(u"112", u""), 1);
  EXPECT_EQ(this->NextNumber(), "112");
  EXPECT_EQ(this->Call(u"*21*0900#"), 1);
  EXPECT_EQ(this->NextNumber(), "*21*0900#");
}

TYPED_TEST_P(TelephoneContract, TheLongestNumberIsDialledWhole) {
  EXPECT_EQ(this->Call(std::u16string(255, u'7')), 1);
  EXPECT_EQ(this->NextNumber(), std::string(255, '7'));
  EXPECT_EQ(this->Call(std::u16string(256, u'7')), 0);
}

TYPED_TEST_P(TelephoneContract, WhatIsShownIsNotDialled) {
  platform::PhoneCallRequest request;
  request.destinationAddress = u"12";
  request.applicationName = u"--help";
  request.calledParty = u"0900;$(id)\n<666>";
  request.comment = u"tel:666";
  EXPECT_EQ(this->Port().PhoneMakeCall(request), 1);
  EXPECT_EQ(this->NextNumber(), "12");
}

TYPED_TEST_P(TelephoneContract, WhatIsNoNumberIsNotDialled) {
  for (const std::u16string_view number :
       {u"", u" ", u"Anna", u"--help", u"12 34", u"12;34", u"12,34", u"12\n34", u"(0)12", u"a@b",
        u"1\u0661", u"12$", u"\xD83D\xDCDE"}) {
    EXPECT_EQ(this->Call(number), 0) << testing::PrintToString(std::u16string(number));
  }
  // Nothing of it was handed over before this one.
  EXPECT_EQ(this->Call(u"34"), 1);
  EXPECT_EQ(this->NextNumber(), "34");
}

TYPED_TEST_P(TelephoneContract, ARequestOfAnotherSizeIsRefused) {
  platform::PhoneCallRequest request;
  request.destinationAddress = u"12";
  for (const std::uint32_t size : {0u, 20u, 28u}) {
    request.size = size;
    EXPECT_EQ(this->Port().PhoneMakeCall(request), 0) << size;
  }
  EXPECT_EQ(this->Call(u"34"), 1);
  EXPECT_EQ(this->NextNumber(), "34");
}

TYPED_TEST_P(TelephoneContract, ACallNobodyTakesAnswersZero) {
  EXPECT_EQ(this->Call(u"12"), 1);
  EXPECT_EQ(this->NextNumber(), "12");
  this->MakeUnreachable();
  EXPECT_EQ(this->Call(u"12"), 0);
}

REGISTER_TYPED_TEST_SUITE_P(TelephoneContract, TheNumberIsDialledAsItStands,
                            TheLongestNumberIsDialledWhole, WhatIsShownIsNotDialled,
                            WhatIsNoNumberIsNotDialled, ARequestOfAnotherSizeIsRefused,
                            ACallNobodyTakesAnswersZero);

}  // namespace kelpin::contract
