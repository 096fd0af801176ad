#include "app/sim_error.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/headless_screen.h"

namespace kelpin::app {
namespace {

struct CodeText {
  std::uint32_t code;
  const char16_t* text;
};

// Trailing blanks and "Inorrect" are the string table's own.
const std::vector<CodeText> kTexts = {
    {0x88000060, u"SIM isn't yet ready to perform the requested operation. "},
    {0x88000061, u"SIM isn't yet ready to perform the requested operation. "},
    {0x88000062, u"Buffer too small."},
    {0x88000063, u"Requested Short Message Service (SMS) message is not a text message."},
    {0x88000064, u"Device doesn't have a SIM."},
    {0x88000065, u"There was a network error."},
    {0x88000066, u"Mobile error."},
    {0x88000067, u"The command is unsupported."},
    {0x88000068, u"Bad parameter."},
    {0x88000069, u"Undetermined error."},
    {0x8800006A, u"The Radio is not present."},
    {0x8800006B,
     u"The phone function is disabled. Please turn on the phone function first in Relaydeck."},
    {0x88000120, u"PH-SIM PIN is required to perform this operation."},
    {0x88000121, u"PH-FSIM PIN is required to perform this operation."},
    {0x88000122, u"PH-FSIM PUK is required to perform this operation."},
    {0x88000123, u"SIM PIN is required to perform this operation."},
    {0x88000124, u"SIM PUK is required to perform this operation."},
    {0x88000125, u"Incorrect password was supplied."},
    {0x88000126, u"SIM PIN2 is required to perform this operation."},
    {0x88000127, u"An error occurs."},
    {0x88000128, u"Network Personalization PIN is required to perform this operation."},
    {0x88000129, u"Network Personalization PUK is required to perform this operation."},
    {0x8800012A, u"Network Subset Personalization PIN is required to perform this operation."},
    {0x8800012B, u"Network Subset Personalization PUK is required to perform this operation."},
    {0x8800012C, u"Service Provider Personalization PIN is required to perform this operation."},
    {0x8800012D, u"Service Provider Personalization PUK is required to perform this operation."},
    {0x8800012E, u"Corporate Personalization PIN is required to perform this operation."},
    {0x8800012F, u"Corporate Personalization PUK is required to perform this operation."},
    {0x88000201, u"SIM failure was detected. "},
    {0x88000202, u"SIM is busy."},
    {0x88000203, u"Inorrect SIM was inserted."},
    {0x88000204, u"SIM isn't capable of storing messages. "},
    {0x88000205, u"SIM Application Toolkit is busy."},
    {0x88000206, u"SIM data download error. "},
    {0x88000207, u"SIM isn't inserted into the phone. "},
    {0x88000340, u"The SIM is full. Delete some SIM contacts and try again."},
    {0x88000341, u"Invalid storage index was supplied."},
    {0x88000342, u"A requested storage entry was not found."},
    {0x88000343, u"Storage memory failure."},
    {0x88000344, u"Message storage on the SIM is full."},
    {0x88000345, u"Storage location is empty."},
    {256, u"Failed to update Phone Number 2 field."},
    {257, u"Failed to update Email field."},
    {258, u"Failed to update Phone Number 3 field."},
    {259, u"Failed to update Nickname field."},
};

TEST(ShowSimError, EveryCodeHasItsTextInAnErrorBoxOfTheOwner) {
  ASSERT_EQ(kTexts.size(), 45u);
  for (const CodeText& expected : kTexts) {
    test::HeadlessScreen screen;
    ShowSimError(screen, 0x4242, expected.code);
    ASSERT_EQ(screen.Boxes().size(), 1u) << std::hex << expected.code;
    const test::ShownBox box = screen.Boxes()[0];
    EXPECT_EQ(box.owner, 0x4242u);
    EXPECT_EQ(box.text, expected.text) << std::hex << expected.code;
    EXPECT_EQ(box.caption, u"Error");
    EXPECT_EQ(box.style.buttons, ui::BoxButtons::kOk);
    EXPECT_EQ(box.style.icon, ui::BoxIcon::kStop);
  }
}

TEST(ShowSimError, SuccessShowsNothing) {
  test::HeadlessScreen screen;
  ShowSimError(screen, 0x4242, 0u);
  ShowSimError(screen, 0x4242, platform::SimResult::kOk);
  EXPECT_TRUE(screen.Boxes().empty());
}

TEST(ShowSimError, ACodeThatIsNotKnownShowsTheGeneralText) {
  test::HeadlessScreen screen;
  const std::vector<std::uint32_t> unknown = {1,          255,        260,        0x8800005F,
                                              0x8800006C, 0x88000130, 0x88000200, 0x88000208,
                                              0x88000346, 0xFFFFFFFF};
  for (const std::uint32_t code : unknown) {
    ShowSimError(screen, 0, code);
  }
  ASSERT_EQ(screen.Boxes().size(), unknown.size());
  for (const test::ShownBox& box : screen.Boxes()) {
    EXPECT_EQ(box.text, u"An error occurs.");
  }
}

}  // namespace
}  // namespace kelpin::app
