#include <signal.h>

#include <cstdio>
#include <cstdlib>

#include "tests/contract/contacts/eds/eds_fixture.h"

namespace kelpin::contract {
namespace {

using Property = platform::ContactProperty;

struct FieldOf {
  Property property;
  EContactField field;
};

// How the desktop's programs call what a contact of ours has.
constexpr FieldOf kFields[] = {
    {Property::kFirstName, E_CONTACT_GIVEN_NAME},
    {Property::kLastName, E_CONTACT_FAMILY_NAME},
    {Property::kCompanyName, E_CONTACT_ORG},
    {Property::kFileAs, E_CONTACT_FILE_AS},
    {Property::kMobileTelephoneNumber, E_CONTACT_PHONE_MOBILE},
    {Property::kBusinessTelephoneNumber, E_CONTACT_PHONE_BUSINESS},
    {Property::kHomeTelephoneNumber, E_CONTACT_PHONE_HOME},
    {Property::kBusiness2TelephoneNumber, E_CONTACT_PHONE_BUSINESS_2},
    {Property::kHome2TelephoneNumber, E_CONTACT_PHONE_HOME_2},
    {Property::kRadioTelephoneNumber, E_CONTACT_PHONE_RADIO},
    {Property::kPagerNumber, E_CONTACT_PHONE_PAGER},
    {Property::kCarTelephoneNumber, E_CONTACT_PHONE_CAR},
    {Property::kAssistantTelephoneNumber, E_CONTACT_PHONE_ASSISTANT},
    {Property::kHomeFaxNumber, E_CONTACT_PHONE_HOME_FAX},
    {Property::kBusinessFaxNumber, E_CONTACT_PHONE_BUSINESS_FAX},
    {Property::kEmail1Address, E_CONTACT_EMAIL_1},
    {Property::kEmail2Address, E_CONTACT_EMAIL_2},
    {Property::kEmail3Address, E_CONTACT_EMAIL_3},
};

class EdsPrograms : public ::testing::Test {
 protected:
  // The store's number of the only contact.
  std::int32_t Only(ContactsSession& session) {
    const std::vector<std::int32_t> numbers = session.Numbers();
    EXPECT_EQ(numbers.size(), 1u);
    return numbers.empty() ? 0 : numbers.front();
  }

  EdsMaker maker;
  OtherProgram other;
};

TEST_F(EdsPrograms, SeeEveryTextWhereTheyLookForIt) {
  ContactsSession session(maker.Port());
  ContactsSession::Texts texts;
  for (const FieldOf& known : kFields) {
    texts.emplace_back(
        known.property,
        std::u16string(1, static_cast<char16_t>(u'A' + static_cast<int>(known.property))));
  }
  session.Add(texts);
  const std::string uid = other.OnlyUid();
  for (const FieldOf& known : kFields) {
    EXPECT_EQ(other.Get(uid, known.field),
              std::string(1, static_cast<char>('A' + static_cast<int>(known.property))))
        << e_contact_field_name(known.field);
  }
}

TEST_F(EdsPrograms, AreReadWhereverTheyWrite) {
  for (const FieldOf& known : kFields) {
    if (known.field == E_CONTACT_PHONE_BUSINESS_2 || known.field == E_CONTACT_PHONE_HOME_2 ||
        known.field == E_CONTACT_EMAIL_2 || known.field == E_CONTACT_EMAIL_3) {
      continue;  // they cannot write the second alone
    }
    EdsMaker empty;
    other.Add({{known.field, "value"}});
    ContactsSession session(empty.Port());
    EXPECT_EQ(session.Stored(Only(session), known.property), u"value")
        << e_contact_field_name(known.field);
  }
}

TEST_F(EdsPrograms, SeeTheNameOfANewContact) {
  ContactsSession session(maker.Port());
  session.Add({{Property::kLastName, u"Ann"}, {Property::kFileAs, u"Ann"}});
  EXPECT_EQ(other.Get(other.OnlyUid(), E_CONTACT_FULL_NAME), "Ann");
}

TEST_F(EdsPrograms, NameAContactWithoutFileAsByItsName) {
  other.AddCard("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann Bell\r\nN:Bell;Ann;;;\r\nEND:VCARD\r\n");
  ContactsSession session(maker.Port());
  const std::u16string fileAs = session.Stored(Only(session), Property::kFileAs);
  // The server may have made a File-As of the name; it is found by what it goes by.
  EXPECT_TRUE(fileAs == u"Ann Bell" || fileAs == u"Bell, Ann");
  EXPECT_EQ(session.Find(fileAs), Only(session));
}

TEST_F(EdsPrograms, MayWriteNumbersInOtherWays) {
  other.AddCard(
      "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann\r\n"
      "TEL:1\r\n"
      "TEL;TYPE=\"work,voice\":2\r\n"
      "tel;type=home:tel:3\r\n"
      "TEL;TYPE=WORK;TYPE=FAX:4\r\n"
      "TEL;TYPE=WORK:5\r\n"
      "TEL;TYPE=WORK;TYPE=PAGER:6\r\n"
      "END:VCARD\r\n");
  ContactsSession session(maker.Port());
  const std::int32_t number = Only(session);
  EXPECT_EQ(session.Stored(number, Property::kMobileTelephoneNumber), u"1");
  EXPECT_EQ(session.Stored(number, Property::kBusinessTelephoneNumber), u"2");
  EXPECT_EQ(session.Stored(number, Property::kBusiness2TelephoneNumber), u"5");
  EXPECT_EQ(session.Stored(number, Property::kHomeTelephoneNumber), u"3");
  EXPECT_EQ(session.Stored(number, Property::kHome2TelephoneNumber), u"");
  EXPECT_EQ(session.Stored(number, Property::kBusinessFaxNumber), u"4");
  EXPECT_EQ(session.Stored(number, Property::kPagerNumber), u"6");
}

TEST_F(EdsPrograms, KeepWhatAnOverwriteDoesNotKnow) {
  const std::string uid = other.AddCard(
      "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann\r\nN:Bell;Ann;May;Dr.;MD\r\n"
      "ORG:Firm;Office\r\nNOTE:likes tea\r\nBDAY:1990-01-02\r\n"
      "EMAIL:1@x\r\nEMAIL:2@x\r\nEMAIL:3@x\r\nEMAIL:4@x\r\n"
      "TEL;TYPE=WORK,VOICE:1\r\nTEL;TYPE=WORK,VOICE:2\r\nTEL;TYPE=WORK,VOICE:3\r\n"
      "END:VCARD\r\n");
  ContactsSession session(maker.Port());
  const std::int32_t number = Only(session);
  session.Change(number, {{Property::kLastName, u"New"},
                          {Property::kCompanyName, u"Other"},
                          {Property::kBusinessTelephoneNumber, u""},
                          {Property::kEmail1Address, u""}});
  EXPECT_EQ(other.Get(uid, E_CONTACT_NOTE), "likes tea");
  EXPECT_EQ(other.Get(uid, E_CONTACT_ORG), "Other");
  EXPECT_EQ(other.Get(uid, E_CONTACT_ORG_UNIT), "Office");
  EXPECT_EQ(other.Get(uid, E_CONTACT_GIVEN_NAME), "Ann");
  EXPECT_EQ(other.Get(uid, E_CONTACT_FAMILY_NAME), "New");
  EXPECT_EQ(session.Stored(number, Property::kMiddleName), u"May");
  // The third number at work and the fourth address are none that the store knows: neither takes
  // the place that was cleared.
  EXPECT_EQ(session.Stored(number, Property::kBusinessTelephoneNumber), u"");
  EXPECT_EQ(session.Stored(number, Property::kBusiness2TelephoneNumber), u"2");
  EXPECT_EQ(session.Stored(number, Property::kEmail1Address), u"");
  EXPECT_EQ(session.Stored(number, Property::kEmail2Address), u"2@x");
  EXPECT_EQ(session.Stored(number, Property::kEmail3Address), u"3@x");
  session.Change(number, {{Property::kEmail1Address, u"new@x"}});
  EXPECT_EQ(session.Stored(number, Property::kEmail1Address), u"new@x");
  EXPECT_EQ(session.Stored(number, Property::kEmail2Address), u"2@x");
}

TEST_F(EdsPrograms, AreFoundByTheStoreOfAnotherCopy) {
  ContactsSession session(maker.Port());
  session.AddNamed(u"Bob");
  session.AddNamed(u"Ann");
  const auto store = OpenEds();
  ContactsSession another(*store);
  EXPECT_EQ(another.Stored(another.Find(u"Ann"), Property::kFileAs), u"Ann");
  EXPECT_EQ(another.Numbers().size(), 2u);
}

TEST_F(EdsPrograms, MayDeleteAContactThatIsHeld) {
  ContactsSession session(maker.Port());
  const std::int32_t number = session.AddNamed(u"Ann");
  const auto contact = session.ContactOf(number);
  const auto store = OpenEds();
  {
    ContactsSession another(*store);
    another.Delete(Only(another));
  }
  EXPECT_EQ(contact->Put(Property::kLastName, u"x"), platform::ComResult::kOk);
  EXPECT_EQ(contact->Save(), platform::ComResult::kNotFound);
}

TEST_F(EdsPrograms, ContactsOfManyPagesAreReadInOrder) {
  constexpr int kContacts = 600;  // beyond the largest page
  {
    ContactsSession session(maker.Port());
    for (int i = 0; i < kContacts; ++i) {
      const std::string digits = std::to_string(i);
      session.Add({{Property::kFileAs, u"N" + std::u16string(digits.begin(), digits.end())}});
    }
  }
  ContactsSession session(maker.Port());
  ASSERT_EQ(session.Count(), kContacts);
  for (int i = 0; i < kContacts; ++i) {
    const std::string digits = std::to_string(i);
    std::shared_ptr<platform::IContact> contact;
    ASSERT_EQ(session.items->Item(i + 1, contact), platform::ComResult::kOk);
    std::u16string name;
    ASSERT_EQ(contact->Get(Property::kFileAs, name), platform::ComResult::kOk);
    ASSERT_EQ(name, u"N" + std::u16string(digits.begin(), digits.end()));
  }
}

TEST(EdsBooks, CanBeNamedByUidAndByName) {
  for (const char* book : {"", "system-address-book", "Personal"}) {
    std::string why;
    EXPECT_NE(device::contacts::EdsStore::Open(book, why), nullptr) << book << ": " << why;
  }
}

TEST(EdsBooks, AreListedWhenTheOneThatIsNamedIsNotThere) {
  std::string why;
  EXPECT_EQ(device::contacts::EdsStore::Open("nowhere", why), nullptr);
  EXPECT_THAT(why, ::testing::HasSubstr("no address book \"nowhere\""));
  EXPECT_THAT(why, ::testing::HasSubstr("system-address-book (Personal)"));
}

constexpr const char* kServerName = "org.gnome.evolution.dataserver.AddressBook10";

// Asks the bus about the server's name; the answer's only value is left in `value`.
template <class Value>
void AskBus(GDBusConnection* bus, const char* question, const char* format, Value& value) {
  device::contacts::ErrorHolder error;
  GVariant* const answer =
      g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                                  question, g_variant_new("(s)", kServerName), nullptr,
                                  G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error.taken);
  ASSERT_NE(answer, nullptr) << error.Message();
  g_variant_get(answer, format, &value);
  g_variant_unref(answer);
}

TEST(EdsServer, AFlowAfterItsEndStartsItAnew) {
  EdsMaker maker;
  {
    ContactsSession session(maker.Port());
    session.AddNamed(u"Ann");
  }
  device::contacts::ErrorHolder error;
  const device::contacts::ObjectPointer<GDBusConnection> bus(
      g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error.taken));
  ASSERT_NE(bus, nullptr) << error.Message();
  guint32 server = 0;
  ASSERT_NO_FATAL_FAILURE(AskBus(bus.get(), "GetConnectionUnixProcessID", "(u)", server));
  ASSERT_EQ(kill(static_cast<pid_t>(server), SIGKILL), 0);
  for (gboolean alive = TRUE; alive != FALSE;) {
    ASSERT_NO_FATAL_FAILURE(AskBus(bus.get(), "NameHasOwner", "(b)", alive));
  }

  ContactsSession session(maker.Port());
  EXPECT_EQ(session.Numbers().size(), 1u);
}

TEST(EdsServerDeathTest, WithoutASessionBusOpenSaysSo) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        g_setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus", TRUE);
        std::string why;
        const bool opened = device::contacts::EdsStore::Open("", why) != nullptr;
        std::fprintf(stderr, "%s\n", why.c_str());
        std::_Exit(opened ? 1 : 0);
      },
      ::testing::ExitedWithCode(0), "Evolution Data Server cannot be reached");
}

}  // namespace
}  // namespace kelpin::contract
