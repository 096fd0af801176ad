#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/programs.h"

namespace kelpin::contract {

// What every starter of programs does. `Maker` has
//   platform::Programs& Port();
//   std::string NextTopic();      waits for the help viewer's next start; its topic, as UTF-8
//   void MakeUnstartable();       from now on no program can be started
template <class Maker>
class ProgramsContract : public ::testing::Test {
 protected:
  platform::Programs& Port() { return maker_.Port(); }
  std::string NextTopic() { return maker_.NextTopic(); }
  void MakeUnstartable() { maker_.MakeUnstartable(); }

 private:
  Maker maker_;
};

TYPED_TEST_SUITE_P(ProgramsContract);

TYPED_TEST_P(ProgramsContract, TheHelpViewerShowsTheTopicItIsStartedWith) {
  EXPECT_EQ(this->Port().StartProgram(u"peghelp", u"Kelpin.htm"), 1);
  EXPECT_EQ(this->NextTopic(), "Kelpin.htm");
  EXPECT_EQ(this->Port().StartProgram(u"peghelp", u"Kelpin.htm#keys"), 1);
  EXPECT_EQ(this->NextTopic(), "Kelpin.htm#keys");
}

TYPED_TEST_P(ProgramsContract, AProgramThatCannotBeStartedAnswersZero) {
  this->MakeUnstartable();
  EXPECT_EQ(this->Port().StartProgram(u"peghelp", u"Kelpin.htm"), 0);
}

REGISTER_TYPED_TEST_SUITE_P(ProgramsContract, TheHelpViewerShowsTheTopicItIsStartedWith,
                            AProgramThatCannotBeStartedAnswersZero);

}  // namespace kelpin::contract
