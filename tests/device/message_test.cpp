#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "device/desktop/desktop_programs.h"
#include "device/desktop/desktop_telephone.h"
#include "device/desktop/message_address.h"
#include "device/desktop/process_output.h"
#include "tests/device/fake_opener.h"

namespace kelpin::device::desktop {
namespace {

constexpr std::u16string_view kMail = u"\\Windows\\tmail.exe";
constexpr std::u16string_view kMms = u"\\Windows\\MMSC.exe";

// What a command line is opened as; empty when it opens nothing.
std::string Uri(std::u16string_view program, std::u16string_view commandLine) {
  const auto message = MessageOfCommand(program, commandLine);
  return message ? message->Uri() : "";
}

TEST(MessageAddress, TheCommandLinesOfTheMessagingPrograms) {
  EXPECT_EQ(Uri(kMail, u"-service \"SMS\" -to \"Anna<+491711234567>\""), "sms:+491711234567");
  EXPECT_EQ(Uri(kMail, u"mailto:Anna<anna@example.org>"), "mailto:anna@example.org");
  EXPECT_EQ(Uri(kMms, u"\"1\" \"+4917\""), "mmsto:+4917");
  EXPECT_EQ(MessageOfCommand(kMms, u"\"1\" \"+4917\"")->FallbackUri(), "sms:+4917");
  EXPECT_EQ(Uri(kMail, u"-service \"SMS\" -to \"<110>\""), "sms:110");
  EXPECT_EQ(Uri(kMail, u"mailto:<a@b>"), "mailto:a@b");
}

TEST(MessageAddress, EverythingThatIsNotPlainIsEncoded) {
  EXPECT_EQ(Uri(kMail, u"-service \"SMS\" -to \"A<*100#>\""), "sms:%2A100%23");
  EXPECT_EQ(Uri(kMail, u"-service \"SMS\" -to \"A<12p34w5>\""), "sms:12p34w5");
  EXPECT_EQ(Uri(kMail, u"mailto:A<m\u00FCller+x%y&z?@b.org>"),
            "mailto:m%C3%BCller%2Bx%25y%26z%3F@b.org");
  EXPECT_EQ(Uri(kMail, u"mailto:A<--option@b.org>"), "mailto:--option@b.org");
}

// RFC 6068: what follows the first '?' are header fields, with '&' between them.
TEST(MessageAddress, AnEmailAddressAddsNoHeaderField) {
  EXPECT_EQ(Uri(kMail, u"mailto:A<a@b.org?bcc=x&subject=y>"),
            "mailto:a@b.org%3Fbcc%3Dx%26subject%3Dy");
  EXPECT_EQ(Uri(kMail, u"mailto:A<a%3Fbcc%3Dx@b.org>"), "mailto:a%253Fbcc%253Dx@b.org");
  EXPECT_EQ(Uri(kMail, u"mailto:A<a%0ABcc=x@b.org>"), "mailto:a%250ABcc%3Dx@b.org");
  EXPECT_EQ(Uri(kMail, u"mailto:A<a#b/c@b.org>"), "mailto:a%23b%2Fc@b.org");
  EXPECT_EQ(MessageOfClass(u"IPM.MMS", u"a@b.org?body=x")->Uri(), "mmsto:a@b.org%3Fbody%3Dx");
}

TEST(MessageAddress, AFieldOf100000CharactersIsTakenForWhatItIs) {
  const std::u16string huge(100000, u'<');
  EXPECT_EQ(Uri(kMail, u"-service \"SMS\" -to \"" + huge + u"<12>\""), "sms:12");
  EXPECT_EQ(Uri(kMail, u"mailto:" + huge + u"<a@b>"), "mailto:a@b");
  const std::u16string digits(100000, u'1');
  EXPECT_EQ(Uri(kMail, u"-service \"SMS\" -to \"A<" + digits + u">\""), "");
  EXPECT_EQ(Uri(kMail, u"mailto:A<" + digits + u"@b>"), "");
  EXPECT_FALSE(MessageOfClass(u"IPM.MMS", digits));
}

TEST(MessageAddress, ANameDoesNotChangeTheRecipient) {
  for (const std::u16string_view name :
       {u"\"", u"x\" -to \"y<666>", u"<666>", u"<666", u"> -to \"", u"\n-to \"Z<666>\"\n",
        u"\u202E<666>\u202C", u"%s%n", u"-service", u"a b\tc", u"", u"\xD800", u"\xDC00<666>"}) {
    const std::u16string text(name);
    EXPECT_EQ(Uri(kMail, u"-service \"SMS\" -to \"" + text + u"<+4917>\""), "sms:+4917");
    EXPECT_EQ(Uri(kMail, u"mailto:" + text + u"<a@b.org>"), "mailto:a@b.org");
  }
  const std::u16string ended(u"a\0<666>", 7);
  EXPECT_EQ(Uri(kMail, u"-service \"SMS\" -to \"" + ended + u"<+4917>\""), "sms:+4917");
}

TEST(MessageAddress, WhatIsNoNumberIsNotWrittenTo) {
  for (const std::u16string_view number :
       {u"",          u"abc",       u"12 34",       u"12;ext=5",       u"12?body=x",
        u"12&34",     u"12,13",     u"12\n13",      u"\"12",           u"12\"",
        u">",         u"1\u0661",   u"12>",         u"\uFF0A21#",      u"\uFF11\uFF12",
        u"\u066021",  u"*21\uFE5F", u"* 21 #",      u"\u202A12\u202C", u"1\u200B2",
        u"12\u00A03", u"-12",       u"\xD835\xDFCF"}) {
    const std::u16string text(number);
    EXPECT_EQ(Uri(kMail, u"-service \"SMS\" -to \"A<" + text + u">\""), "") << number.size();
    EXPECT_EQ(Uri(kMms, u"\"1\" \"" + text + u"\""), "") << number.size();
  }
  EXPECT_EQ(Uri(kMms, u"\"1\" \"" + std::u16string(256, u'1') + u"\""), "");
  EXPECT_EQ(Uri(kMms, u"\"1\" \"" + std::u16string(u"12\0", 3) + u"\""), "");
}

TEST(MessageAddress, WhatIsNoSingleEmailAddressIsNotWrittenTo) {
  for (const std::u16string_view address :
       {u"",          u"a",         u"@",         u"a@",        u"@b",
        u"a@b@c",     u"a b@c",     u"a@b,c@d",   u"a@b;c@d",   u"a@b\nBcc:x@y",
        u"\"a\"@b",   u"a@b>",      u"a:b@c",     u"\xD800@b",  u"\xD83D\xDCDE@b",
        u"a\\@b",     u"a\u007F@b", u"a\u0085@b", u"a\u00A0@b", u"a@b\u00AD",
        u"a@b\u200B", u"a@b\u202E", u"\u2067a@b", u"a\u2028@b", u"a\u3000@b",
        u"\uFEFFa@b", u"a\uFF20b"}) {
    EXPECT_EQ(Uri(kMail, u"mailto:A<" + std::u16string(address) + u">"), "") << address.size();
  }
}

TEST(MessageAddress, OnlyTheExactFormsCount) {
  for (const std::u16string_view line :
       {u"", u"-service \"SMS\" -to \"A<12>", u"-service \"SMS\" -to \"A<12>\" ",
        u"-service \"MMS\" -to \"A<12>\"", u" -service \"SMS\" -to \"A<12>\"",
        u"-service \"SMS\" -to \"12\"", u"-to \"A<12>\"", u"mailto:a@b.org", u"mailto:",
        u"mailto:>", u"MAILTO:A<a@b.org>", u"12"}) {
    EXPECT_EQ(Uri(kMail, line), "") << line.size();
  }
  for (const std::u16string_view line :
       {u"", u"\"1\"", u"\"2\" \"12\"", u"\"1\" 12", u"\"1\"  \"12\"", u"\"1\" \"12\" \"3\""}) {
    EXPECT_EQ(Uri(kMms, line), "") << line.size();
  }
  EXPECT_EQ(Uri(u"tmail.exe", u"mailto:A<a@b.org>"), "");
  EXPECT_EQ(Uri(u"xterm", u"mailto:A<a@b.org>"), "");
}

TEST(MessageAddress, TheComposerLibrarysClasses) {
  EXPECT_EQ(MessageOfClass(u"IPM.SMStext", u"+4917")->Uri(), "sms:+4917");
  EXPECT_EQ(MessageOfClass(u"IPM.MMS", u"+4917")->Uri(), "mmsto:+4917");
  EXPECT_EQ(MessageOfClass(u"IPM.MMS", u"+4917")->FallbackUri(), "sms:+4917");
  EXPECT_EQ(MessageOfClass(u"IPM.MMS", u"a@b.org")->Uri(), "mmsto:a@b.org");
  EXPECT_EQ(MessageOfClass(u"IPM.MMS", u"a@b.org")->FallbackUri(), "mailto:a@b.org");
  EXPECT_FALSE(MessageOfClass(u"IPM.SMStext", u"a@b.org"));
  EXPECT_FALSE(MessageOfClass(u"IPM.MMS", u""));
  EXPECT_FALSE(MessageOfClass(u"IPM.Note", u"a@b.org"));
}

class MessageTest : public testing::Test {
 protected:
  // A tool that says that the scheme is opened by somebody, or by nobody.
  std::string MimeTool(bool opened) {
    const std::filesystem::path tool = scratch_ / (opened ? "opened-by" : "opened-by-nobody");
    test::WriteText(tool, opened ? "#!/bin/sh\n[ \"$*\" = \"query default "
                                   "x-scheme-handler/mmsto\" ] && echo mms.desktop\n"
                                 : "#!/bin/sh\nexit 0\n");
    std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
    return tool.string();
  }
  DesktopPrograms Programs(bool mms) {
    return DesktopPrograms({.opener = opener_.Program(), .mimeTool = MimeTool(mms)});
  }

  test::ScratchFolder scratch_;
  const test::FakeOpener opener_{scratch_.Path()};
};

TEST_F(MessageTest, TheOpenerGetsOneArgumentAndNoShellSeesIt) {
  DesktopPrograms programs = Programs(true);
  EXPECT_EQ(programs.StartProgram(kMail, u"-service \"SMS\" -to \"$(touch x)`id`<*100#>\""), 1);
  EXPECT_EQ(opener_.Await(), "1\nsms:%2A100%23\n");
  EXPECT_EQ(programs.StartProgram(kMail, u"mailto:A<$(id)@b.org>"), 1);
  EXPECT_EQ(opener_.Await(), "1\nmailto:%24%28id%29@b.org\n");
}

TEST_F(MessageTest, AnMmsGoesToItsProgramOrBecomesATextMessage) {
  EXPECT_EQ(Programs(true).StartProgram(kMms, u"\"1\" \"12\""), 1);
  EXPECT_EQ(opener_.Await(), "1\nmmsto:12\n");
  EXPECT_EQ(Programs(false).StartProgram(kMms, u"\"1\" \"12\""), 1);
  EXPECT_EQ(opener_.Await(), "1\nsms:12\n");
}

TEST_F(MessageTest, TheComposerLibraryIsServed) {
  DesktopPrograms programs = Programs(true);
  platform::ComposeMessageRequest request;
  request.recipient = u"a@b.org";
  request.messageClass = u"IPM.MMS";
  EXPECT_EQ(programs.CallComposer(u"MessageTool.DLL", u"ComposeMMSMessage", request), 1);
  EXPECT_EQ(opener_.Await(), "1\nmmsto:a@b.org\n");
  EXPECT_EQ(programs.CallComposer(u"Other.DLL", u"ComposeMMSMessage", request), 0);
  EXPECT_EQ(programs.CallComposer(u"MessageTool.DLL", u"Other", request), 0);
  request.size = 28;
  EXPECT_EQ(programs.CallComposer(u"MessageTool.DLL", u"ComposeMMSMessage", request), 0);
}

TEST_F(MessageTest, WithoutAnOpenerNothingStarts) {
  DesktopPrograms programs({.opener = "kelpin-no-such-opener"});
  EXPECT_EQ(programs.StartProgram(kMail, u"mailto:A<a@b.org>"), 0);
}

TEST_F(MessageTest, ACallIsATelAddress) {
  DesktopTelephone telephone(opener_.Program());
  platform::PhoneCallRequest request;
  request.calledParty = u"Anna";
  request.destinationAddress = u"+491711234567";
  EXPECT_EQ(telephone.PhoneMakeCall(request), 1);
  EXPECT_EQ(opener_.Await(), "1\ntel:+491711234567\n");
  request.destinationAddress = u"*21*0900#";
  EXPECT_EQ(telephone.PhoneMakeCall(request), 1);
  EXPECT_EQ(opener_.Await(), "1\ntel:%2A21%2A0900%23\n");
  request.destinationAddress = u"12p3";
  EXPECT_EQ(telephone.PhoneMakeCall(request), 1);
  EXPECT_EQ(opener_.Await(), "1\ntel:12p3\n");
}

TEST_F(MessageTest, WhatIsNoNumberIsNotCalled) {
  DesktopTelephone telephone(opener_.Program());
  platform::PhoneCallRequest request;
  for (const std::u16string_view number :
       {u"", u"--help", u"12 34", u"12;phone-context=x", u"a@b", u"12\n34"}) {
    request.destinationAddress = number;
    EXPECT_EQ(telephone.PhoneMakeCall(request), 0) << number.size();
  }
  request.destinationAddress = u"12";
  request.size = 20;
  EXPECT_EQ(telephone.PhoneMakeCall(request), 0);
}

TEST(ProcessOutput, IsWhatTheProgramPrinted) {
  EXPECT_EQ(ProcessOutput({"printf", "%s\\n", "a b"}, 2000), "a b");
  EXPECT_EQ(ProcessOutput({"true"}, 2000), "");
  EXPECT_EQ(ProcessOutput({"kelpin-no-such-program"}, 2000), "");
  EXPECT_EQ(ProcessOutput({"sleep", "5"}, 10), "");
}

}  // namespace
}  // namespace kelpin::device::desktop
