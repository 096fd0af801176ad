#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "device/contacts/contact_list.h"
#include "device/contacts/text_form.h"
#include "tests/device/scratch_folder.h"

namespace kelpin::device::contacts {
namespace {

using platform::ContactProperty;
using ::testing::HasSubstr;

struct Vector {
  std::u16string_view text;
  std::string_view bytes;
};

// RFC 3629: the first and the last character of each length.
constexpr Vector kVectors[] = {
    {u"", ""},
    {u"A\x7F", "A\x7F"},
    {u"\u0080\u07FF", "\xC2\x80\xDF\xBF"},
    {u"\u0800\uFFFD", "\xE0\xA0\x80\xEF\xBF\xBD"},
    {u"\U00010000\U0010FFFF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
};

TEST(TextForm, CharactersOfEveryLengthGoBothWays) {
  for (const Vector& vector : kVectors) {
    EXPECT_EQ(ToUtf8(vector.text), vector.bytes);
    EXPECT_EQ(ToUtf16(vector.bytes), vector.text);
  }
}

TEST(TextForm, HalfAPairIsReplaced) {
  EXPECT_EQ(ToUtf8(std::u16string(1, char16_t{0xD83D})), "\xEF\xBF\xBD");
  EXPECT_EQ(ToUtf8(std::u16string{char16_t{0xDE00}, u'a'}),
            "\xEF\xBF\xBD"
            "a");
  EXPECT_EQ(ToUtf8(std::u16string{char16_t{0xD83D}, u'a'}),
            "\xEF\xBF\xBD"
            "a");
}

TEST(TextForm, ATextEndsAtANul) {
  EXPECT_EQ(ToUtf8(std::u16string_view(u"ab\0cd", 5)), "ab");
}

TEST(TextForm, BytesThatAreNoTextAreReplacedOneByOne) {
  EXPECT_EQ(ToUtf16("\x80"), u"\uFFFD");
  EXPECT_EQ(ToUtf16("\xC0\x80"), u"\uFFFD\uFFFD");                      // too long for NUL
  EXPECT_EQ(ToUtf16("\xC1\xBF"), u"\uFFFD\uFFFD");                      // too long for DEL
  EXPECT_EQ(ToUtf16("\xE0\x9F\xBF"), u"\uFFFD\uFFFD\uFFFD");            // too long for U+07FF
  EXPECT_EQ(ToUtf16("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");            // half a pair
  EXPECT_EQ(ToUtf16("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");  // above U+10FFFF
  EXPECT_EQ(ToUtf16("\xE2\x82"), u"\uFFFD\uFFFD");                      // cut off
  EXPECT_EQ(ToUtf16("\xE2\x82z"), u"\uFFFD\uFFFDz");
  EXPECT_EQ(ToUtf16("\xFF"
                    "a"),
            u"\uFFFD"
            u"a");
}

TEST(ContactList, EveryNameIsATextOfTheContact) {
  std::vector<ContactRecord> contacts;
  std::string why;
  ASSERT_TRUE(ReadContactList(R"([{"FileAs": "Ann", "Email3Address": "a@b",
                                   "CompanyTelephoneNumber": "5"}, {}])",
                              contacts, why))
      << why;
  ASSERT_EQ(contacts.size(), 2u);
  ContactRecord ann;
  ann[4] = "Ann";
  ann[18] = "a@b";
  ann[19] = "5";
  EXPECT_EQ(contacts[0], ann);
  EXPECT_EQ(contacts[1], ContactRecord());
}

TEST(ContactList, AnythingElseIsRefusedWithItsPlace) {
  std::vector<ContactRecord> contacts(1);
  std::string why;
  EXPECT_FALSE(ReadContactList("[{]", contacts, why));
  EXPECT_FALSE(ReadContactList("{}", contacts, why));
  EXPECT_FALSE(ReadContactList("[{}, 5]", contacts, why));
  EXPECT_THAT(why, HasSubstr("contact 2"));
  EXPECT_FALSE(ReadContactList(R"([{"Nickname": "x"}])", contacts, why));
  EXPECT_THAT(why, HasSubstr("contact 1: \"Nickname\""));
  EXPECT_FALSE(ReadContactList(R"([{"FileAs": 5}])", contacts, why));
  EXPECT_EQ(contacts.size(), 1u);
}

TEST(ContactList, TheSampleHasContactsOfEveryKind) {
  std::vector<ContactRecord> contacts;
  std::string why;
  ASSERT_TRUE(
      ReadContactList(test::ReadText(KELPIN_SOURCE_DIR "/res/contacts/sample.json"), contacts, why))
      << why;
  EXPECT_GE(contacts.size(), 12u);
  for (std::size_t text = 0; text < kContactTextCount; ++text) {
    if (text == TextIndex(ContactProperty::kMiddleName)) continue;
    EXPECT_TRUE(
        std::any_of(contacts.begin(), contacts.end(),
                    [text](const ContactRecord& contact) { return !contact[text].empty(); }))
        << "text " << text;
  }
  const auto nameless = [](const ContactRecord& contact) {
    return contact[TextIndex(ContactProperty::kFileAs)].empty();
  };
  EXPECT_TRUE(std::any_of(contacts.begin(), contacts.end(), nameless));
}

}  // namespace
}  // namespace kelpin::device::contacts
