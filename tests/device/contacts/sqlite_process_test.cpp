#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <set>
#include <string>
#include <vector>

#include "tests/device/contacts/contacts_process.h"
#include "tests/device/contacts/faulty_disk.h"
#include "tests/device/contacts/memory_disk.h"
#include "tests/device/scratch_folder.h"

namespace kelpin::device::contacts {
namespace {

using platform::ComResult;
using test::FaultyDisk;
using test::Report;
using test::WorkProcess;

// Six contacts are made, the second gets another name, the third is deleted.
constexpr std::array<const char*, 6> kMade = {"A", "B", "C", "D", "E", "F"};
constexpr const char* kNewName = "B2";

void Work(const std::string& path, const WorkProcess::Tell& tell) {
  std::string why;
  const auto store = SqliteStore::Open(path, why);
  if (store == nullptr) {
    tell('-', 0);
    return;
  }
  const auto book = store->OpenBook();
  if (book == nullptr) return;
  std::array<std::int32_t, kMade.size()> numbers = {};
  for (std::size_t i = 0; i < kMade.size(); ++i) {
    const ComResult result = book->Add(test::Named(kMade[i]), numbers[i]);
    tell(Succeeded(result) ? kMade[i][0] : '-', numbers[i]);
  }
  ContactTextSet all;
  all.set();
  tell(Succeeded(book->Change(numbers[1], test::Named(kNewName), all)) ? '2' : '-', numbers[1]);
  tell(Succeeded(book->Delete(numbers[2])) ? 'x' : '-', numbers[2]);
}

// Reads what the process tells; the last number of each kind of report.
std::map<char, std::int32_t> ReportsOf(WorkProcess& process) {
  std::map<char, std::int32_t> reports;
  for (Report report; process.Next(report);) {
    if (report.what != '-') reports[report.what] = report.number;
  }
  process.End();
  return reports;
}

// All that was reported saved is there. What was not may be there too when the process ended just
// before it could tell.
void ExpectReportedIsThere(const std::string& path, const std::map<char, std::int32_t>& reports) {
  const std::map<std::int32_t, std::string> contacts = test::ContactsIn(path);
  const bool renamed = reports.contains('2');
  const bool deleted = reports.contains('x');
  for (const char* name : kMade) {
    const auto report = reports.find(name[0]);
    if (report == reports.end()) continue;
    const auto found = contacts.find(report->second);
    if (*name == 'C' && deleted) {
      EXPECT_EQ(found, contacts.end());
      continue;
    }
    const bool lastOfAll = *name == 'C' && renamed;  // deleted, perhaps, and not told
    if (found == contacts.end() && lastOfAll) continue;
    ASSERT_NE(found, contacts.end()) << name;
    if (*name == 'B' && renamed) {
      EXPECT_EQ(found->second, kNewName);
    } else if (*name == 'B' && reports.contains('F')) {
      EXPECT_THAT(found->second, ::testing::AnyOf(name, kNewName));
    } else {
      EXPECT_EQ(found->second, name);
    }
  }
  EXPECT_LE(contacts.size(), reports.size() + 1);
}

void SaveOneMore(const std::string& path) {
  const auto store = test::OpenContacts(path);
  ASSERT_NE(store, nullptr);
  std::int32_t number = 0;
  EXPECT_EQ(store->OpenBook()->Add(test::Named("more"), number), ComResult::kOk);
}

TEST(SqliteProcess, KilledAtAnyChangeOfAFileLosesNothingReportedSaved) {
  int call = 1;
  for (;; ++call) {
    ASSERT_LT(call, 500);
    SCOPED_TRACE("killed at change " + std::to_string(call));
    const test::ScratchFolder folder;
    const std::string path = folder / "contacts.db";
    WorkProcess process([&](const WorkProcess::Tell& tell) {
      FaultyDisk::Install(call, FaultyDisk::Fault::kKilled);
      Work(path, tell);
      tell('.', 0);
    });
    std::map<char, std::int32_t> reports = ReportsOf(process);
    const bool finished = reports.erase('.') != 0;
    ExpectReportedIsThere(path, reports);
    SaveOneMore(path);
    if (finished || ::testing::Test::HasFailure()) break;
  }
  // The tables are made in at least 10 changes, and every save takes 2: the log is written and
  // brought to the disk.
  EXPECT_GT(call, 10 + 2 * 8);
}

TEST(SqliteProcess, AChangeOfAFileThatFailsLosesNothingReportedSaved) {
  int call = 1;
  for (;; ++call) {
    ASSERT_LT(call, 500);
    SCOPED_TRACE("change " + std::to_string(call) + " failed");
    const test::ScratchFolder folder;
    const std::string path = folder / "contacts.db";
    WorkProcess process([&](const WorkProcess::Tell& tell) {
      FaultyDisk::Install(call, FaultyDisk::Fault::kFails);
      Work(path, tell);
      if (!FaultyDisk::Failed()) tell('.', 0);
    });
    std::map<char, std::int32_t> reports = ReportsOf(process);
    const bool finished = reports.erase('.') != 0;
    ExpectReportedIsThere(path, reports);
    SaveOneMore(path);
    if (finished || ::testing::Test::HasFailure()) break;
  }
  EXPECT_GT(call, 10 + 2 * 8);
}

TEST(SqliteProcess, KilledWhileItSavesLosesNothingReportedSaved) {
  for (const int reports : {1, 2, 9, 40}) {
    const test::ScratchFolder folder;
    const std::string path = folder / "contacts.db";
    WorkProcess process([&](const WorkProcess::Tell& tell) {
      const auto store = test::OpenContacts(path);
      const auto book = store->OpenBook();
      for (;;) {
        std::int32_t number = 0;
        if (!Succeeded(book->Add(test::Named("N"), number))) return;
        tell('N', number);
      }
    });
    std::set<std::int32_t> saved;
    for (Report report; static_cast<int>(saved.size()) < reports && process.Next(report);) {
      saved.insert(report.number);
    }
    process.Kill();
    for (Report report; process.Next(report);) saved.insert(report.number);
    process.End();
    const std::map<std::int32_t, std::string> contacts = test::ContactsIn(path);
    for (const std::int32_t number : saved) EXPECT_TRUE(contacts.contains(number)) << number;
    EXPECT_LE(contacts.size(), saved.size() + 1);
  }
}

TEST(SqliteProcess, TwoThatWriteAtOnceLoseNothing) {
  const test::ScratchFolder folder;
  const std::string path = folder / "contacts.db";
  constexpr int kEach = 150;
  // They make the file at once too.
  const auto write = [&path](const char* name) {
    return [&path, name](const WorkProcess::Tell& tell) {
      std::string why;
      const auto store = SqliteStore::Open(path, why);
      if (store == nullptr) return;
      for (int i = 0; i < kEach; ++i) {
        const auto book = store->OpenBook();
        std::int32_t number = 0;
        if (book == nullptr || !Succeeded(book->Add(test::Named(name), number))) return;
        tell(name[0], number);
      }
    };
  };
  WorkProcess first(write("A"));
  WorkProcess second(write("B"));
  std::map<std::int32_t, std::string> saved;
  for (WorkProcess* process : {&first, &second}) {
    for (Report report; process->Next(report);) {
      EXPECT_TRUE(saved.try_emplace(report.number, 1, report.what).second) << report.number;
    }
    process->End();
  }
  EXPECT_EQ(saved.size(), 2u * kEach);
  EXPECT_EQ(test::ContactsIn(path), saved);
}

TEST(SqliteProcess, ADiskThatIsFullFailsTheSaveAndLosesNothing) {
  const test::ScratchFolder folder;
  const std::string path = folder / "contacts.db";
  WorkProcess process([&](const WorkProcess::Tell& tell) {
    const auto store = test::OpenContacts(path);
    const auto book = store->OpenBook();
    signal(SIGXFSZ, SIG_IGN);
    const struct rlimit limit = {512 * 1024, 512 * 1024};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return;
    for (int i = 0; i < 1000; ++i) {
      std::int32_t number = 0;
      if (!Succeeded(book->Add(test::Named(std::string(2000, 'n')), number))) {
        tell('-', 0);
        return;
      }
      tell('N', number);
    }
  });
  std::set<std::int32_t> saved;
  bool failed = false;
  for (Report report; process.Next(report);) {
    failed = report.what == '-';
    if (!failed) saved.insert(report.number);
  }
  process.End();
  EXPECT_TRUE(failed);
  EXPECT_GT(saved.size(), 5u);
  const std::map<std::int32_t, std::string> contacts = test::ContactsIn(path);
  for (const std::int32_t number : saved) EXPECT_TRUE(contacts.contains(number)) << number;
  EXPECT_EQ(contacts.size(), saved.size());
  SaveOneMore(path);
}

TEST(SqliteProcess, AFileThatCannotBeMadeTellsWhyAndNotHowItWasUndone) {
  const test::ScratchFolder folder;
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  struct rlimit before = {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const struct rlimit limit = {4096, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  std::string why;
  const auto store = SqliteStore::Open(folder / "contacts.db", why);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  signal(SIGXFSZ, handler);
  EXPECT_EQ(store, nullptr);
  EXPECT_NE(why.find("the contacts file cannot be made: the disk did not do its work. See"),
            std::string::npos)
      << why;
}

}  // namespace
}  // namespace kelpin::device::contacts
