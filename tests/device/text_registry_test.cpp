#include "device/registry/text_registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "device/registry/saved_file.h"
#include "tests/device/scratch_folder.h"

namespace kelpin::device::registry {
namespace {

using platform::RegistryHandle;
using platform::RegistryResult;
using platform::RegistryRoot;
using platform::RegistryType;
using test::ReadText;
using test::WriteText;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using Bytes = std::vector<std::uint8_t>;

constexpr auto kOk = RegistryResult::kOk;
constexpr std::u16string_view kPath = u"\\Software\\OEM\\KELPIN";
const Bytes kOne = {1, 0, 0, 0};
const Bytes kTwo = {2, 0, 0, 0};

class TextRegistryTest : public ::testing::Test {
 protected:
  std::unique_ptr<TextRegistry> Open(bool withSystem = false) {
    std::string why;
    auto registry = TextRegistry::Open(file_, withSystem ? system_ : std::filesystem::path(), why);
    EXPECT_NE(registry, nullptr) << why;
    return registry;
  }

  static RegistryHandle Key(TextRegistry& registry, std::u16string_view path = kPath) {
    RegistryHandle key = 0;
    EXPECT_EQ(
        registry.CreateKey(RegistryRoot::kLocalMachine, path, platform::kRegistryAllAccess, key),
        kOk);
    return key;
  }

  static RegistryResult Set(TextRegistry& registry, RegistryHandle key, std::u16string_view name,
                            const Bytes& data) {
    return registry.SetValue(key, name, RegistryType::kDword, data);
  }

  // What the registry holds; empty when it holds nothing.
  static Bytes Get(TextRegistry& registry, std::u16string_view name) {
    RegistryHandle key = 0;
    RegistryType type = RegistryType::kNone;
    Bytes data;
    if (registry.OpenKey(RegistryRoot::kLocalMachine, kPath, platform::kRegistryAllAccess, key) ==
        kOk) {
      if (registry.QueryValue(key, name, type, data) == kOk) {
        EXPECT_EQ(type, RegistryType::kDword);
      }
      EXPECT_EQ(registry.CloseKey(key), kOk);
    }
    return data;
  }

  test::ScratchFolder folder_;
  const std::filesystem::path file_ = folder_ / "registry.reg";
  const std::filesystem::path system_ = folder_ / "system.reg";
  const std::string body_ =
      "KELPIN REGISTRY 1\n\n[HKEY_LOCAL_MACHINE\\Software\\OEM\\KELPIN]\n"
      "\"Enable_SDN\"=dword:00000001\n";
};

TEST_F(TextRegistryTest, AMissingFileIsAnEmptyRegistryAndNothingIsMade) {
  const auto registry = Open(true);
  EXPECT_EQ(Get(*registry, u"Enable_SDN"), Bytes());
  EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(TextRegistryTest, TheUsersValueCountsBeforeTheSystems) {
  WriteText(system_, body_ + "\"Enable_AAS\"=dword:1\n");
  WriteText(file_,
            "KELPIN REGISTRY 1\n[HKEY_LOCAL_MACHINE\\software\\oem\\kelpin]\n"
            "\"enable_sdn\"=dword:2\n");
  const auto registry = Open(true);
  EXPECT_EQ(Get(*registry, u"Enable_SDN"), kTwo);
  EXPECT_EQ(Get(*registry, u"Enable_AAS"), kOne);
}

TEST_F(TextRegistryTest, WritesGoToTheUsersFileAloneWithItsComments) {
  WriteText(system_, body_);
  WriteText(file_, "KELPIN REGISTRY 1\n; mine\n");
  const auto registry = Open(true);
  const RegistryHandle key = Key(*registry);
  ASSERT_EQ(Set(*registry, key, u"Enable_SDN", kTwo), kOk);
  EXPECT_EQ(ReadText(file_), "KELPIN REGISTRY 1\n; mine\n");
  ASSERT_EQ(registry->FlushKey(key), kOk);
  EXPECT_EQ(ReadText(system_), body_);
  EXPECT_EQ(ReadText(file_),
            "KELPIN REGISTRY 1\n; mine\n\n[HKEY_LOCAL_MACHINE\\Software\\OEM\\KELPIN]\n"
            "\"Enable_SDN\"=dword:00000002\n");
  EXPECT_EQ(Get(*Open(), u"Enable_SDN"), kTwo);
}

TEST_F(TextRegistryTest, AFlushWithNothingToSaveTouchesNoFile) {
  const auto registry = Open();
  WriteText(system_, body_);
  WriteText(file_, body_);
  const FileStamp before = StampOf(file_);
  const RegistryHandle key = Key(*registry);
  EXPECT_EQ(registry->FlushKey(key), kOk);
  EXPECT_EQ(StampOf(file_), before);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "registry.reg.lock"));
}

TEST_F(TextRegistryTest, TheSavedFileIsTheUsersAloneAndNothingIsLeftBeside) {
  const std::filesystem::path deep = folder_ / "config" / "kelpin" / "registry.reg";
  std::string why;
  const auto registry = TextRegistry::Open(deep, {}, why);
  ASSERT_NE(registry, nullptr) << why;
  const RegistryHandle key = Key(*registry);
  ASSERT_EQ(Set(*registry, key, u"a", kOne), kOk);
  WriteText(folder_ / "stale", "");
  ASSERT_EQ(registry->FlushKey(key), kOk);
  struct stat status {};
  ASSERT_EQ(::stat(deep.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
  ASSERT_EQ(::stat(deep.parent_path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700u);
  EXPECT_FALSE(std::filesystem::exists(deep.string() + ".new"));
}

TEST_F(TextRegistryTest, AHalfWrittenFileOfACrashIsReplaced) {
  WriteText(file_, body_);
  WriteText(folder_ / "registry.reg.new", "KELPIN REG");
  const auto registry = Open();
  const RegistryHandle key = Key(*registry);
  ASSERT_EQ(Set(*registry, key, u"Enable_AAS", kOne), kOk);
  ASSERT_EQ(registry->FlushKey(key), kOk);
  EXPECT_EQ(ReadText(file_), body_ + "\"Enable_AAS\"=dword:00000001\n");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "registry.reg.new"));
}

TEST_F(TextRegistryTest, ALinkedFileStaysALink) {
  const std::filesystem::path real = folder_ / "dotfiles.reg";
  WriteText(real, body_);
  std::filesystem::create_symlink(real, file_);
  const auto registry = Open();
  const RegistryHandle key = Key(*registry);
  ASSERT_EQ(Set(*registry, key, u"Enable_SDN", kTwo), kOk);
  ASSERT_EQ(registry->FlushKey(key), kOk);
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  EXPECT_THAT(ReadText(real), HasSubstr("\"Enable_SDN\"=dword:00000002"));
}

TEST_F(TextRegistryTest, AFileThatCannotBeReadIsRefusedWithLineAndReasonAndLeftAlone) {
  const std::string hostile = body_ + "\"x\"=dword:zz\n";
  WriteText(file_, hostile);
  std::string why;
  EXPECT_EQ(TextRegistry::Open(file_, {}, why), nullptr);
  EXPECT_THAT(why, StartsWith(file_.string() + ":5: "));
  EXPECT_THAT(why, HasSubstr("1 to 8 hexadecimal digits"));
  EXPECT_EQ(ReadText(file_), hostile);
  EXPECT_EQ(TextRegistry::Open(system_, file_, why), nullptr) << "as the system's file";
}

TEST_F(TextRegistryTest, AFolderOrPipeInTheFilesPlaceIsRefusedAtOnce) {
  std::string why;
  std::filesystem::create_directory(file_);
  EXPECT_EQ(TextRegistry::Open(file_, {}, why), nullptr);
  EXPECT_THAT(why, HasSubstr("not a file. Name a settings file"));
  ASSERT_EQ(::mkfifo(system_.c_str(), 0600), 0);
  EXPECT_EQ(TextRegistry::Open(system_, {}, why), nullptr);
  EXPECT_THAT(why, HasSubstr("not a file. Name a settings file"));
  EXPECT_EQ(TextRegistry::Open("", {}, why), nullptr);
}

TEST_F(TextRegistryTest, AFileOfMoreThanFourMebibytesIsRefused) {
  WriteText(file_, "KELPIN REGISTRY 1\n" + std::string(kMaxFileBytes, '\n'));
  std::string why;
  EXPECT_EQ(TextRegistry::Open(file_, {}, why), nullptr);
  EXPECT_THAT(why, HasSubstr("larger than 4194304 bytes"));
}

TEST_F(TextRegistryTest, AFullDiskLosesNothingAndTheNextFlushSaves) {
  WriteText(file_, body_);
  const auto registry = Open();
  const RegistryHandle key = Key(*registry);
  ASSERT_EQ(Set(*registry, key, u"Enable_SDN", kTwo), kOk);

  struct rlimit before {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto oldHandler = ::signal(SIGXFSZ, SIG_IGN);
  const struct rlimit full = {16, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
  const RegistryResult result = registry->FlushKey(key);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  ::signal(SIGXFSZ, oldHandler);

  EXPECT_EQ(result, RegistryResult::kWriteFault);
  EXPECT_THAT(registry->LastProblem(), HasSubstr("cannot be written"));
  EXPECT_EQ(ReadText(file_), body_);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "registry.reg.new"));
  EXPECT_EQ(Get(*registry, u"Enable_SDN"), kTwo);
  EXPECT_EQ(registry->FlushKey(key), kOk);
  EXPECT_EQ(registry->LastProblem(), "");
  EXPECT_EQ(Get(*Open(), u"Enable_SDN"), kTwo);
}

TEST_F(TextRegistryTest, AFileThatWasSpoiledMeanwhileIsNotOverwritten) {
  const auto registry = Open();
  const RegistryHandle key = Key(*registry);
  ASSERT_EQ(Set(*registry, key, u"Enable_SDN", kOne), kOk);
  WriteText(file_, "not a registry");
  EXPECT_EQ(registry->FlushKey(key), RegistryResult::kWriteFault);
  EXPECT_THAT(registry->LastProblem(), HasSubstr("registry.reg:1: "));
  EXPECT_EQ(ReadText(file_), "not a registry");
  std::filesystem::remove(file_);
  EXPECT_EQ(registry->FlushKey(key), kOk);
  EXPECT_EQ(ReadText(file_), body_);
}

TEST_F(TextRegistryTest, TwoProcessesThatWriteDifferentValuesLoseNone) {
  const auto first = Open();
  const auto second = Open();
  const RegistryHandle firstKey = Key(*first);
  const RegistryHandle secondKey = Key(*second);
  ASSERT_EQ(Set(*first, firstKey, u"a", kOne), kOk);
  ASSERT_EQ(Set(*second, secondKey, u"b", kTwo), kOk);
  ASSERT_EQ(first->FlushKey(firstKey), kOk);
  ASSERT_EQ(second->FlushKey(secondKey), kOk);
  const auto third = Open();
  for (TextRegistry* registry : {first.get(), second.get(), third.get()}) {
    EXPECT_EQ(Get(*registry, u"a"), kOne);
    EXPECT_EQ(Get(*registry, u"b"), kTwo);
  }
}

TEST_F(TextRegistryTest, WhatAnotherProcessSavedIsSeenWhenAKeyIsOpened) {
  const auto reader = Open();
  EXPECT_EQ(Get(*reader, u"Enable_SDN"), Bytes());
  WriteText(file_, body_);
  EXPECT_EQ(Get(*reader, u"Enable_SDN"), kOne);
  const RegistryHandle key = Key(*reader);
  ASSERT_EQ(Set(*reader, key, u"Enable_SDN", kTwo), kOk);
  WriteText(file_, body_ + "\"Enable_AAS\"=dword:1\n");
  EXPECT_EQ(Get(*reader, u"Enable_SDN"), kTwo) << "its own change is newer";
  EXPECT_EQ(Get(*reader, u"Enable_AAS"), kOne);
}

TEST_F(TextRegistryTest, ManyWritersAtOnceLoseNothing) {
  constexpr int kWriters = 4;
  constexpr int kRounds = 12;
  std::vector<std::thread> threads;
  std::atomic<int> failures = 0;
  for (int writer = 0; writer < kWriters; ++writer) {
    threads.emplace_back([&, writer] {
      std::string why;
      const auto registry = TextRegistry::Open(file_, {}, why);
      RegistryHandle key = 0;
      if (registry == nullptr ||
          registry->CreateKey(RegistryRoot::kLocalMachine, kPath, 0, key) != kOk) {
        ++failures;
        return;
      }
      for (int round = 0; round < kRounds; ++round) {
        const std::u16string name = {static_cast<char16_t>(u'a' + writer),
                                     static_cast<char16_t>(u'a' + round)};
        if (registry->SetValue(key, name, RegistryType::kDword, kOne) != kOk ||
            registry->FlushKey(key) != kOk) {
          ++failures;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
  const auto registry = Open();
  for (int writer = 0; writer < kWriters; ++writer) {
    for (int round = 0; round < kRounds; ++round) {
      const std::u16string name = {static_cast<char16_t>(u'a' + writer),
                                   static_cast<char16_t>(u'a' + round)};
      EXPECT_EQ(Get(*registry, name), kOne) << writer << " " << round;
    }
  }
}

TEST_F(TextRegistryTest, ALockThatIsHeldTooLongIsGivenUp) {
  FileLock held;
  std::string why;
  ASSERT_TRUE(held.Acquire(file_, 0, why)) << why;
  FileLock waiting;
  EXPECT_FALSE(waiting.Acquire(file_, 20, why));
  EXPECT_THAT(why, HasSubstr("another program"));
}

TEST_F(TextRegistryTest, ACreatedKeyIsKeptWithoutValues) {
  const auto registry = Open();
  const RegistryHandle key = Key(*registry, u"System\\OEM_State");
  ASSERT_EQ(registry->FlushKey(key), kOk);
  EXPECT_EQ(ReadText(file_), "KELPIN REGISTRY 1\n\n[HKEY_LOCAL_MACHINE\\System\\OEM_State]\n");
  RegistryHandle found = 0;
  EXPECT_EQ(registry->OpenKey(RegistryRoot::kLocalMachine, u"System", 0, found), kOk);
}

TEST_F(TextRegistryTest, NamesValuesAndPathsThatNoFileCanHoldAreRefused) {
  const auto registry = Open();
  const RegistryHandle key = Key(*registry);
  EXPECT_EQ(Set(*registry, key, u"a\nb", kOne), RegistryResult::kInvalidData);
  EXPECT_EQ(Set(*registry, key, std::u16string(256, u'n'), kOne), RegistryResult::kInvalidData);
  EXPECT_EQ(registry->SetValue(key, u"v", RegistryType::kBinary, Bytes(kMaxValueBytes + 1)),
            RegistryResult::kInvalidData);
  RegistryHandle bad = 9;
  EXPECT_EQ(registry->CreateKey(RegistryRoot::kLocalMachine, u"a\\\\b", 0, bad),
            RegistryResult::kInvalidData);
  EXPECT_EQ(bad, 0u);
  EXPECT_EQ(registry->OpenKey(static_cast<RegistryRoot>(0x80000003), u"", 0, bad),
            RegistryResult::kNotFound);
}

TEST_F(TextRegistryTest, AFileThatWouldNotBeReadableAgainIsNotSaved) {
  const auto registry = Open();
  const RegistryHandle key = Key(*registry);
  const Bytes large(kMaxValueBytes, 0);
  // Three characters a byte: 22 values are more than 4 MiB of text.
  for (char16_t name = u'a'; name < u'a' + 22; ++name) {
    ASSERT_EQ(registry->SetValue(key, {&name, 1}, RegistryType::kBinary, large), kOk);
  }
  EXPECT_EQ(registry->FlushKey(key), RegistryResult::kWriteFault);
  EXPECT_THAT(registry->LastProblem(), HasSubstr("4 MiB"));
  EXPECT_FALSE(std::filesystem::exists(file_));
}

}  // namespace
}  // namespace kelpin::device::registry
