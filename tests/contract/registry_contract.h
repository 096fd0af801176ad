#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace kelpin::contract {

// What every registry does. `Maker` is default-constructed for each test and has
// `platform::Registry& Port()`: a registry in which nothing has been set yet.
template <class Maker>
class RegistryContract : public ::testing::Test {
 protected:
  using Bytes = std::vector<std::uint8_t>;
  static constexpr auto kOk = platform::RegistryResult::kOk;
  static constexpr auto kNotFound = platform::RegistryResult::kNotFound;
  static constexpr auto kInvalidHandle = platform::RegistryResult::kInvalidHandle;
  static constexpr auto kMachine = platform::RegistryRoot::kLocalMachine;
  static constexpr auto kUser = platform::RegistryRoot::kCurrentUser;
  static constexpr auto kDword = platform::RegistryType::kDword;
  static constexpr auto kString = platform::RegistryType::kString;

  platform::Registry& Port() { return maker_.Port(); }

  platform::RegistryHandle Create(std::u16string_view path,
                                  platform::RegistryRoot root = kMachine) {
    platform::RegistryHandle key = 0;
    EXPECT_EQ(Port().CreateKey(root, path, platform::kRegistryAllAccess, key), kOk);
    EXPECT_NE(key, 0u);
    return key;
  }

  platform::RegistryResult Open(std::u16string_view path, platform::RegistryHandle& key,
                                platform::RegistryRoot root = kMachine) {
    return Port().OpenKey(root, path, platform::kRegistryAllAccess, key);
  }

  platform::RegistryResult Set(platform::RegistryHandle key, std::u16string_view name,
                               platform::RegistryType type, const Bytes& data) {
    return Port().SetValue(key, name, type, data);
  }

  void ExpectValue(platform::RegistryHandle key, std::u16string_view name,
                   platform::RegistryType type, const Bytes& data) {
    platform::RegistryType foundType = platform::RegistryType::kNone;
    Bytes found;
    ASSERT_EQ(Port().QueryValue(key, name, foundType, found), kOk);
    EXPECT_EQ(foundType, type);
    EXPECT_EQ(found, data);
  }

 private:
  Maker maker_;
};

TYPED_TEST_SUITE_P(RegistryContract);

TYPED_TEST_P(RegistryContract, AMissingKeyIsNotFoundAndTheHandleBecomesZero) {
  platform::RegistryHandle key = 77;
  EXPECT_EQ(this->Open(u"\\Software\\OEM\\KELPIN", key), this->kNotFound);
  EXPECT_EQ(key, 0u);
}

TYPED_TEST_P(RegistryContract, ACreatedKeyIsFoundUnderItsRootOnly) {
  this->Create(u"\\Software\\OEM\\KELPIN");
  platform::RegistryHandle key = 0;
  EXPECT_EQ(this->Open(u"\\Software\\OEM\\KELPIN", key), this->kOk);
  EXPECT_NE(key, 0u);
  EXPECT_EQ(this->Open(u"\\Software\\OEM\\KELPIN", key, this->kUser), this->kNotFound);
}

TYPED_TEST_P(RegistryContract, ALeadingBackslashAndLetterCaseOfAPathChangeNothing) {
  const platform::RegistryHandle key = this->Create(u"\\Software\\OEM\\KELPIN");
  ASSERT_EQ(this->Set(key, u"PhoneType", this->kDword, {2, 0, 0, 0}), this->kOk);
  platform::RegistryHandle other = 0;
  ASSERT_EQ(this->Open(u"SOFTWARE\\oem\\Kelpin", other), this->kOk);
  this->ExpectValue(other, u"PhoneType", this->kDword, {2, 0, 0, 0});
}

TYPED_TEST_P(RegistryContract, AValueIsFoundWithoutRegardToTheCaseOfItsName) {
  const platform::RegistryHandle key = this->Create(u"MUI", this->kUser);
  ASSERT_EQ(this->Set(key, u"CurLang", this->kDword, {0x04, 0x08, 0, 0}), this->kOk);
  this->ExpectValue(key, u"CURLANG", this->kDword, {0x04, 0x08, 0, 0});
}

TYPED_TEST_P(RegistryContract, AMissingValueLeavesTheOutputsAsTheyWere) {
  const platform::RegistryHandle key = this->Create(u"MUI", this->kUser);
  platform::RegistryType type = platform::RegistryType::kMultiString;
  std::vector<std::uint8_t> data = {1, 2, 3};
  EXPECT_EQ(this->Port().QueryValue(key, u"CurLang", type, data), this->kNotFound);
  EXPECT_EQ(type, platform::RegistryType::kMultiString);
  EXPECT_EQ(data, (std::vector<std::uint8_t>{1, 2, 3}));
}

TYPED_TEST_P(RegistryContract, EveryTypeKeepsItsBytes) {
  using Type = platform::RegistryType;
  const platform::RegistryHandle key = this->Create(u"Software\\Types");
  const std::vector<std::uint8_t> odd = {0x41, 0x00, 0x42};
  for (const Type type : {Type::kNone, Type::kString, Type::kExpandString, Type::kBinary,
                          Type::kDword, Type::kMultiString}) {
    ASSERT_EQ(this->Set(key, u"v", type, odd), this->kOk);
    this->ExpectValue(key, u"v", type, odd);
    ASSERT_EQ(this->Set(key, u"v", type, {}), this->kOk);
    this->ExpectValue(key, u"v", type, {});
  }
}

TYPED_TEST_P(RegistryContract, AStringIsItsUnitsLittleEndianAndATerminator) {
  const platform::RegistryHandle key = this->Create(u"Software\\OEM\\KELPIN");
  const std::vector<std::uint8_t> euro = {0xAC, 0x20, 0x22, 0x00, 0x5C, 0x00, 0x00, 0x00};
  ASSERT_EQ(this->Set(key, u"Home_Tel_Mark", this->kString, euro), this->kOk);
  this->ExpectValue(key, u"Home_Tel_Mark", this->kString, euro);
}

TYPED_TEST_P(RegistryContract, ASecondWriteReplacesTypeAndBytes) {
  const platform::RegistryHandle key = this->Create(u"Software\\OEM\\KELPIN");
  ASSERT_EQ(this->Set(key, u"Enable_SDN", this->kString, {0x31, 0, 0, 0}), this->kOk);
  ASSERT_EQ(this->Set(key, u"enable_sdn", this->kDword, {1, 0, 0, 0}), this->kOk);
  this->ExpectValue(key, u"Enable_SDN", this->kDword, {1, 0, 0, 0});
}

TYPED_TEST_P(RegistryContract, AnOpenHandleSeesWhatAnotherHandleWrote) {
  const platform::RegistryHandle first = this->Create(u"System\\OEM_State");
  const platform::RegistryHandle second = this->Create(u"System\\OEM_State");
  EXPECT_NE(first, second);
  ASSERT_EQ(this->Set(second, u"KELPIN_HW", this->kDword, {0x10, 0x20, 0, 0}), this->kOk);
  this->ExpectValue(first, u"KELPIN_HW", this->kDword, {0x10, 0x20, 0, 0});
}

TYPED_TEST_P(RegistryContract, AValueSurvivesFlushAndClose) {
  platform::RegistryHandle key = this->Create(u"System\\OEM_State");
  ASSERT_EQ(this->Set(key, u"KELPIN_HW", this->kDword, {0x10, 0x20, 0, 0}), this->kOk);
  EXPECT_EQ(this->Port().FlushKey(key), this->kOk);
  EXPECT_EQ(this->Port().CloseKey(key), this->kOk);
  ASSERT_EQ(this->Open(u"System\\OEM_State", key), this->kOk);
  this->ExpectValue(key, u"KELPIN_HW", this->kDword, {0x10, 0x20, 0, 0});
}

TYPED_TEST_P(RegistryContract, AClosedOrUnknownHandleIsInvalidEverywhere) {
  const platform::RegistryHandle key = this->Create(u"Software\\OEM\\KELPIN");
  ASSERT_EQ(this->Port().CloseKey(key), this->kOk);
  for (const platform::RegistryHandle dead : {platform::RegistryHandle{0}, key}) {
    platform::RegistryType type = platform::RegistryType::kNone;
    std::vector<std::uint8_t> data;
    EXPECT_EQ(this->Port().CloseKey(dead), this->kInvalidHandle);
    EXPECT_EQ(this->Port().QueryValue(dead, u"PhoneType", type, data), this->kInvalidHandle);
    EXPECT_EQ(this->Set(dead, u"PhoneType", this->kDword, {0, 0, 0, 0}), this->kInvalidHandle);
    EXPECT_EQ(this->Port().FlushKey(dead), this->kInvalidHandle);
  }
}

REGISTER_TYPED_TEST_SUITE_P(RegistryContract, AMissingKeyIsNotFoundAndTheHandleBecomesZero,
                            ACreatedKeyIsFoundUnderItsRootOnly,
                            ALeadingBackslashAndLetterCaseOfAPathChangeNothing,
                            AValueIsFoundWithoutRegardToTheCaseOfItsName,
                            AMissingValueLeavesTheOutputsAsTheyWere, EveryTypeKeepsItsBytes,
                            AStringIsItsUnitsLittleEndianAndATerminator,
                            ASecondWriteReplacesTypeAndBytes,
                            AnOpenHandleSeesWhatAnotherHandleWrote, AValueSurvivesFlushAndClose,
                            AClosedOrUnknownHandleIsInvalidEverywhere);

}  // namespace kelpin::contract
