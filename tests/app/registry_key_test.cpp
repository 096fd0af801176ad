#include "app/registry_key.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tests/support/fake_registry.h"

namespace kelpin::app {
namespace {

using platform::RegistryResult;
using platform::RegistryRoot;
using platform::RegistryType;
using test::FakeRegistry;

constexpr std::u16string_view kPath = u"Software\\Somewhere";

class RegistryKeyTest : public testing::Test {
 protected:
  void PutBytes(std::u16string_view name, RegistryType type, std::vector<std::uint8_t> data) {
    registry_.Put(RegistryRoot::kLocalMachine, kPath, name, {type, std::move(data)});
  }
  void Open() {
    registry_.PutKey(RegistryRoot::kLocalMachine, kPath);
    ASSERT_EQ(key_.Open(RegistryRoot::kLocalMachine, kPath), RegistryResult::kOk);
  }

  test::Journal journal_;
  test::FailPlan failures_;
  FakeRegistry registry_{journal_, failures_};
  RegistryKey key_{registry_};
};

TEST_F(RegistryKeyTest, AKeyIsOpenedForAllAccess) {
  Open();
  ASSERT_EQ(journal_.Count("OpenKey"), 1u);
  EXPECT_NE(journal_.Entries("OpenKey")[0].find("0x2001F"), std::string::npos)
      << journal_.Entries("OpenKey")[0];
  ASSERT_EQ(key_.CreateOrOpen(RegistryRoot::kCurrentUser, u"MUI"), RegistryResult::kOk);
  EXPECT_NE(journal_.Entries("CreateKey")[0].find("0x2001F"), std::string::npos)
      << journal_.Entries("CreateKey")[0];
}

TEST_F(RegistryKeyTest, OpeningAnotherKeyClosesTheOneItReplaces) {
  Open();
  ASSERT_EQ(key_.CreateOrOpen(RegistryRoot::kLocalMachine, u"Another"), RegistryResult::kOk);
  EXPECT_EQ(registry_.OpenHandles(), 1u);
  ASSERT_NE(key_.Open(RegistryRoot::kLocalMachine, u"Missing"), RegistryResult::kOk);
  EXPECT_EQ(registry_.OpenHandles(), 0u);
  EXPECT_FALSE(key_.IsOpen());
}

TEST_F(RegistryKeyTest, AKeyThatGoesIsClosed) {
  registry_.PutKey(RegistryRoot::kLocalMachine, kPath);
  {
    RegistryKey key(registry_);
    ASSERT_EQ(key.Open(RegistryRoot::kLocalMachine, kPath), RegistryResult::kOk);
    EXPECT_EQ(registry_.OpenHandles(), 1u);
  }
  EXPECT_EQ(registry_.OpenHandles(), 0u);
}

TEST_F(RegistryKeyTest, ANumberIsReadLittleEndian) {
  PutBytes(u"Number", RegistryType::kDword, {0x78, 0x56, 0x34, 0x92});
  Open();
  std::uint32_t value = 0;
  ASSERT_EQ(key_.ReadDword(u"Number", value), RegistryResult::kOk);
  EXPECT_EQ(value, 0x92345678u);
}

TEST_F(RegistryKeyTest, ANumberStoredAsAnotherTypeIsInvalidData) {
  registry_.PutString(RegistryRoot::kLocalMachine, kPath, u"Text", u"1");
  PutBytes(u"Binary", RegistryType::kBinary, {1, 0, 0, 0});
  PutBytes(u"Short", RegistryType::kDword, {1, 0});
  Open();
  std::uint32_t value = 77;
  EXPECT_EQ(static_cast<std::uint32_t>(key_.ReadDword(u"Text", value)), 13u);
  EXPECT_EQ(key_.ReadDword(u"Binary", value), RegistryResult::kInvalidData);
  EXPECT_EQ(key_.ReadDword(u"Short", value), RegistryResult::kInvalidData);
  EXPECT_EQ(key_.ReadDword(u"Nothing", value), RegistryResult::kNotFound);
  EXPECT_EQ(value, 77u);
}

TEST_F(RegistryKeyTest, ATextThatFitsWithItsTerminatorIsRead) {
  registry_.PutString(RegistryRoot::kLocalMachine, kPath, u"Three", u"abc");
  Open();
  std::array<char16_t, 4> text = {};
  ASSERT_EQ(key_.ReadString(u"Three", text), RegistryResult::kOk);
  EXPECT_EQ(std::u16string(text.data()), u"abc");
}

TEST_F(RegistryKeyTest, ATextThatDoesNotFitIsLeftAlone) {
  registry_.PutString(RegistryRoot::kLocalMachine, kPath, u"Four", u"abcd");
  Open();
  std::array<char16_t, 4> text = {u'x'};
  EXPECT_EQ(key_.ReadString(u"Four", text), RegistryResult::kMoreData);
  EXPECT_EQ(std::u16string(text.data()), u"x");
}

TEST_F(RegistryKeyTest, ATextWithoutATerminatorOrWithHalfAUnitIsInvalid) {
  PutBytes(u"Open", RegistryType::kString, {'a', 0, 'b', 0});
  PutBytes(u"Odd", RegistryType::kString, {'a', 0, 0, 0, 0});
  PutBytes(u"Empty", RegistryType::kString, {});
  PutBytes(u"Number", RegistryType::kDword, {'a', 0, 0, 0});
  Open();
  std::array<char16_t, 8> text = {u'x'};
  EXPECT_EQ(key_.ReadString(u"Open", text), RegistryResult::kInvalidData);
  EXPECT_EQ(key_.ReadString(u"Odd", text), RegistryResult::kInvalidData);
  EXPECT_EQ(key_.ReadString(u"Empty", text), RegistryResult::kInvalidData);
  EXPECT_EQ(key_.ReadString(u"Number", text), RegistryResult::kInvalidData);
  EXPECT_EQ(key_.ReadString(u"Nothing", text), RegistryResult::kNotFound);
  EXPECT_EQ(std::u16string(text.data()), u"x");
}

TEST_F(RegistryKeyTest, AnExpandableTextIsATextToo) {
  PutBytes(u"Expand", RegistryType::kExpandString, {'h', 0, 'i', 0, 0, 0});
  Open();
  std::array<char16_t, 8> text = {};
  ASSERT_EQ(key_.ReadString(u"Expand", text), RegistryResult::kOk);
  EXPECT_EQ(std::u16string(text.data()), u"hi");
}

TEST_F(RegistryKeyTest, ATextIsWrittenWithItsTerminator) {
  Open();
  ASSERT_EQ(key_.WriteString(u"Mark", u"/\u20AC"), RegistryResult::kOk);
  const auto value = registry_.Get(RegistryRoot::kLocalMachine, kPath, u"Mark");
  ASSERT_TRUE(value.has_value());
  EXPECT_EQ(value->type, RegistryType::kString);
  EXPECT_EQ(value->data, (std::vector<std::uint8_t>{'/', 0, 0xAC, 0x20, 0, 0}));
}

TEST_F(RegistryKeyTest, AWrittenNumberReachesTheDiskWithAFlush) {
  Open();
  ASSERT_EQ(key_.WriteDword(u"Number", 0x01020304), RegistryResult::kOk);
  EXPECT_FALSE(registry_.Flushed(RegistryRoot::kLocalMachine, kPath, u"Number").has_value());
  ASSERT_EQ(key_.Flush(), RegistryResult::kOk);
  const auto value = registry_.Flushed(RegistryRoot::kLocalMachine, kPath, u"Number");
  ASSERT_TRUE(value.has_value());
  EXPECT_EQ(value->type, RegistryType::kDword);
  EXPECT_EQ(value->data, (std::vector<std::uint8_t>{4, 3, 2, 1}));
}

}  // namespace
}  // namespace kelpin::app
