#pragma once

#include "tests/contract/contacts/contacts_contract.h"

namespace kelpin::contract {

// A contact's texts, and finding contacts by them.
template <class Maker>
class ContactsTextContract : public ContactsContract<Maker> {};

TYPED_TEST_SUITE_P(ContactsTextContract);

// Texts that a store must keep to the letter and tell apart.
inline const std::vector<std::u16string> kHostileTexts = {
    u"O'Brien; DROP TABLE contact;--",
    u"100% \"quoted\" back\\slash",
    u"(contains \"file_as\" \"\") [x] {y} <z> & | ! * ? _ #t",
    u"a, b; c: d = e",
    u"line\nbreak",
    u"tab\tbetween",
    u"two  blanks",
    u" blank before",
    u"blank behind ",
    u"Müller",
    u"Muller",
    u"müller",
    u"\u05D0\u05D1\u05D2 \u202Eright to left",
    u"\u738B\u5C0F\u660E",
    u"\U0001F600\U0001F468\u200D\U0001F469\u200D\U0001F467",
    u"e\u0301",
    u"\u00E9",
    u"\uFEFFmark",
    u"VERSION:3.0",
    u"END:VCARD",
};

TYPED_TEST_P(ContactsTextContract, EveryTextIsKeptInItsOwnPlace) {
  ContactsSession session(this->Port());
  ContactsSession::Texts texts;
  for (int i = 0; i < platform::kContactPropertyCount; ++i) {
    texts.emplace_back(static_cast<platform::ContactProperty>(i),
                       u"value " + std::u16string(1, static_cast<char16_t>(u'A' + i)));
  }
  const std::int32_t oid = session.Add(texts);
  ContactsSession other(this->maker_.Other());
  for (const auto& [property, text] : texts) {
    EXPECT_EQ(other.Stored(oid, property), text) << static_cast<int>(property);
  }
}

TYPED_TEST_P(ContactsTextContract, EveryTextCanBeTheOnlyOne) {
  ContactsSession session(this->Port());
  for (int only = 0; only < platform::kContactPropertyCount; ++only) {
    const std::int32_t oid =
        session.Add({{static_cast<platform::ContactProperty>(only), u"value"}});
    for (int i = 0; i < platform::kContactPropertyCount; ++i) {
      EXPECT_EQ(session.Stored(oid, static_cast<platform::ContactProperty>(i)),
                i == only ? u"value" : u"")
          << "only " << only << ", asked " << i;
    }
  }
}

TYPED_TEST_P(ContactsTextContract, ATextThatWasNeverSetIsEmpty) {
  ContactsSession session(this->Port());
  const std::int32_t oid = session.Add({});
  for (int i = 0; i < platform::kContactPropertyCount; ++i) {
    EXPECT_EQ(session.Stored(oid, static_cast<platform::ContactProperty>(i)), u"") << i;
  }
}

TYPED_TEST_P(ContactsTextContract, ClearingATextLeavesEveryOtherWhereItIs) {
  ContactsSession session(this->Port());
  for (int cleared = 0; cleared < platform::kContactPropertyCount; ++cleared) {
    ContactsSession::Texts texts;
    for (int i = 0; i < platform::kContactPropertyCount; ++i) {
      texts.emplace_back(static_cast<platform::ContactProperty>(i),
                         u"v" + std::u16string(1, static_cast<char16_t>(u'A' + i)));
    }
    const std::int32_t oid = session.Add(texts);
    session.Change(oid, {{static_cast<platform::ContactProperty>(cleared), u""}});
    for (int i = 0; i < platform::kContactPropertyCount; ++i) {
      const auto& [property, text] = texts[static_cast<std::size_t>(i)];
      EXPECT_EQ(session.Stored(oid, property), i == cleared ? u"" : text)
          << "cleared " << cleared << ", asked " << i;
    }
    // And it comes back where it was.
    session.Change(oid, {{static_cast<platform::ContactProperty>(cleared), u"again"}});
    for (int i = 0; i < platform::kContactPropertyCount; ++i) {
      const auto& [property, text] = texts[static_cast<std::size_t>(i)];
      EXPECT_EQ(session.Stored(oid, property), i == cleared ? u"again" : text)
          << "set again " << cleared << ", asked " << i;
    }
  }
}

TYPED_TEST_P(ContactsTextContract, AChangeIsKeptByItsSaveAlone) {
  ContactsSession session(this->Port());
  const std::int32_t oid = session.AddNamed(u"Ann");
  const auto contact = session.ContactOf(oid);
  ASSERT_EQ(contact->Put(platform::ContactProperty::kFileAs, u"Bob"), platform::ComResult::kOk);
  EXPECT_EQ(session.Stored(oid, platform::ContactProperty::kFileAs), u"Ann");
  std::u16string text;
  ASSERT_EQ(contact->Get(platform::ContactProperty::kFileAs, text), platform::ComResult::kOk);
  EXPECT_EQ(text, u"Bob");
  ASSERT_EQ(contact->Save(), platform::ComResult::kOk);
  EXPECT_EQ(session.Stored(oid, platform::ContactProperty::kFileAs), u"Bob");
}

TYPED_TEST_P(ContactsTextContract, ASaveLeavesWhatOthersHaveChangedMeanwhile) {
  ContactsSession session(this->Port());
  const std::int32_t oid = session.Add({{platform::ContactProperty::kFileAs, u"Ann"},
                                        {platform::ContactProperty::kEmail1Address, u"a@b"}});
  const auto contact = session.ContactOf(oid);
  {
    ContactsSession other(this->maker_.Other());
    other.Change(oid, {{platform::ContactProperty::kEmail1Address, u"c@d"}});
  }
  ASSERT_EQ(contact->Put(platform::ContactProperty::kMobileTelephoneNumber, u"1"),
            platform::ComResult::kOk);
  ASSERT_EQ(contact->Save(), platform::ComResult::kOk);
  EXPECT_EQ(session.Stored(oid, platform::ContactProperty::kEmail1Address), u"c@d");
  EXPECT_EQ(session.Stored(oid, platform::ContactProperty::kMobileTelephoneNumber), u"1");
}

TYPED_TEST_P(ContactsTextContract, HostileTextsAreKeptToTheLetter) {
  ContactsSession session(this->Port());
  for (const std::u16string& text : kHostileTexts) {
    const std::int32_t oid = session.Add({{platform::ContactProperty::kFileAs, text},
                                          {platform::ContactProperty::kLastName, text},
                                          {platform::ContactProperty::kCompanyName, text},
                                          {platform::ContactProperty::kMobileTelephoneNumber, text},
                                          {platform::ContactProperty::kEmail1Address, text}});
    for (const auto property :
         {platform::ContactProperty::kFileAs, platform::ContactProperty::kLastName,
          platform::ContactProperty::kCompanyName,
          platform::ContactProperty::kMobileTelephoneNumber,
          platform::ContactProperty::kEmail1Address}) {
      EXPECT_EQ(session.Stored(oid, property), text) << static_cast<int>(property);
    }
  }
}

TYPED_TEST_P(ContactsTextContract, LongTextsAreKeptWhole) {
  ContactsSession session(this->Port());
  const std::u16string name = std::u16string(299, u'n') + u"m";
  const std::u16string number = std::u16string(299, u'5') + u"6";
  const std::int32_t oid =
      session.Add({{platform::ContactProperty::kFileAs, name},
                   {platform::ContactProperty::kMobileTelephoneNumber, number}});
  EXPECT_EQ(session.Stored(oid, platform::ContactProperty::kFileAs), name);
  EXPECT_EQ(session.Stored(oid, platform::ContactProperty::kMobileTelephoneNumber), number);
  EXPECT_EQ(session.Find(name), oid);
  EXPECT_EQ(session.Find(name.substr(0, 299)), 0);
}

TYPED_TEST_P(ContactsTextContract, AMatchIsTheWholeFileAsToTheLetter) {
  ContactsSession session(this->Port());
  std::vector<std::int32_t> numbers;
  for (const std::u16string& text : kHostileTexts) numbers.push_back(session.AddNamed(text));
  for (std::size_t i = 0; i < kHostileTexts.size(); ++i) {
    EXPECT_EQ(session.Find(kHostileTexts[i]), numbers[i]) << "text " << i;
    EXPECT_EQ(session.index, static_cast<std::int32_t>(i) + 1);
  }
  for (const char16_t* near : {u"", u"M", u"Mülle", u"Müller ", u"MÜLLER", u"two blanks", u"%",
                               u"M_ller", u"*", u"blank behind", u"blank before"}) {
    EXPECT_EQ(session.Find(near), 0);
  }
}

TYPED_TEST_P(ContactsTextContract, OnlyFileAsIsMatched) {
  ContactsSession session(this->Port());
  session.Add({{platform::ContactProperty::kFirstName, u"Ann"},
               {platform::ContactProperty::kLastName, u"Bell"},
               {platform::ContactProperty::kCompanyName, u"Cord"}});
  for (const char16_t* name : {u"Ann", u"Bell", u"Cord", u"Ann Bell", u"Bell, Ann"}) {
    EXPECT_EQ(session.Find(name), 0);
  }
}

TYPED_TEST_P(ContactsTextContract, OfSeveralMatchesTheFirstIsFound) {
  ContactsSession session(this->Port());
  session.AddNamed(u"Bob");
  const std::int32_t first = session.AddNamed(u"Ann");
  const std::int32_t second = session.AddNamed(u"Ann");
  EXPECT_EQ(session.Find(u"Ann"), first);
  EXPECT_EQ(session.index, 2);
  session.Delete(first);
  EXPECT_EQ(session.Find(u"Ann"), second);
  session.Change(second, {{platform::ContactProperty::kFileAs, u"Cid"}});
  EXPECT_EQ(session.Find(u"Ann"), 0);
  EXPECT_EQ(session.Find(u"Cid"), second);
}

TYPED_TEST_P(ContactsTextContract, AMatchOfAnotherKindIsNoMatch) {
  ContactsSession session(this->Port());
  session.AddNamed(u"Ann");
  std::shared_ptr<platform::IItem> item;
  std::int32_t index = 0;
  EXPECT_FALSE(Succeeded(this->Port().FindMatchingContact(*session.app, u"Ann", 1, item, index)));
  EXPECT_EQ(item, nullptr);
}

TYPED_TEST_P(ContactsTextContract, TheCompanyNumberComesBehindAHeaderOf16Bytes) {
  const std::int32_t oid = this->maker_.AddWithCompanyPhone(u"+49 30 5");
  ContactsSession session(this->Port());
  std::uint32_t size = 0;
  EXPECT_EQ(session.CompanyPhone(oid, size), std::u16string(u"+49 30 5\0", 9));
  EXPECT_EQ(size, 16u + 2 * 9);
}

TYPED_TEST_P(ContactsTextContract, WithoutACompanyNumberTheHeaderIsAll) {
  ContactsSession session(this->Port());
  const std::int32_t oid =
      session.Add({{platform::ContactProperty::kBusinessTelephoneNumber, u"2"}});
  std::uint32_t size = 0;
  EXPECT_EQ(session.CompanyPhone(oid, size), u"");
  EXPECT_EQ(size, 16u);
}

TYPED_TEST_P(ContactsTextContract, AReplyThatDoesNotFitIsNotWritten) {
  const std::int32_t oid = this->maker_.AddWithCompanyPhone(u"5");
  ContactsSession session(this->Port());
  std::array<std::byte, 19> reply;
  reply.fill(std::byte{0xEE});
  std::uint32_t size = 0;
  EXPECT_EQ(session.ItemOf(oid)->GetProps(platform::kCompanyPhoneProperty, 0, reply, size),
            platform::ComResult::kBufferTooSmall);
  EXPECT_EQ(size, 20u);
  EXPECT_THAT(reply, ::testing::Each(std::byte{0xEE}));
}

TYPED_TEST_P(ContactsTextContract, NoOtherPropertyIsReadByItsNumber) {
  const std::int32_t oid = this->maker_.AddWithCompanyPhone(u"5");
  ContactsSession session(this->Port());
  std::uint32_t size = 0;
  EXPECT_EQ(session.ItemOf(oid)->GetProps(0x00A1001F, 0, {}, size),
            platform::ComResult::kInvalidArgument);
  EXPECT_EQ(session.ItemOf(oid)->GetProps(platform::kCompanyPhoneProperty, 1, {}, size),
            platform::ComResult::kInvalidArgument);
}

TYPED_TEST_P(ContactsTextContract, AnOverwriteKeepsTheCompanyNumber) {
  const std::int32_t oid = this->maker_.AddWithCompanyPhone(u"5");
  ContactsSession session(this->Port());
  session.Change(oid, {{platform::ContactProperty::kLastName, u"Ann"},
                       {platform::ContactProperty::kBusinessTelephoneNumber, u""}});
  std::uint32_t size = 0;
  EXPECT_EQ(session.CompanyPhone(oid, size), std::u16string(u"5\0", 2));
}

REGISTER_TYPED_TEST_SUITE_P(ContactsTextContract, EveryTextIsKeptInItsOwnPlace,
                            EveryTextCanBeTheOnlyOne, ATextThatWasNeverSetIsEmpty,
                            ClearingATextLeavesEveryOtherWhereItIs, AChangeIsKeptByItsSaveAlone,
                            ASaveLeavesWhatOthersHaveChangedMeanwhile,
                            HostileTextsAreKeptToTheLetter, LongTextsAreKeptWhole,
                            AMatchIsTheWholeFileAsToTheLetter, OnlyFileAsIsMatched,
                            OfSeveralMatchesTheFirstIsFound, AMatchOfAnotherKindIsNoMatch,
                            TheCompanyNumberComesBehindAHeaderOf16Bytes,
                            WithoutACompanyNumberTheHeaderIsAll, AReplyThatDoesNotFitIsNotWritten,
                            NoOtherPropertyIsReadByItsNumber, AnOverwriteKeepsTheCompanyNumber);

}  // namespace kelpin::contract
