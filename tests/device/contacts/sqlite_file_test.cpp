#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tests/device/contacts/contacts_process.h"
#include "tests/device/scratch_folder.h"

namespace kelpin::device::contacts {
namespace {

namespace fs = std::filesystem;
using platform::ComResult;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// SQLite's own waits for others take no time.
class NoWaiting {
 public:
  NoWaiting() : vfs_(*sqlite3_vfs_find(nullptr)) {
    vfs_.zName = "impatient";
    vfs_.xSleep = [](sqlite3_vfs*, int microseconds) { return microseconds; };
    sqlite3_vfs_register(&vfs_, 1);
  }
  ~NoWaiting() { sqlite3_vfs_unregister(&vfs_); }
  NoWaiting(const NoWaiting&) = delete;
  NoWaiting& operator=(const NoWaiting&) = delete;

 private:
  sqlite3_vfs vfs_;
};

// Another program that is at the file.
class OtherAtFile {
 public:
  OtherAtFile(const std::string& path, const char* sql) {
    EXPECT_EQ(sqlite3_open(path.c_str(), &database_), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database_, sql, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database_);
  }
  ~OtherAtFile() { sqlite3_close(database_); }
  OtherAtFile(const OtherAtFile&) = delete;
  OtherAtFile& operator=(const OtherAtFile&) = delete;

 private:
  sqlite3* database_ = nullptr;
};

class SqliteFile : public ::testing::Test {
 protected:
  std::string Path() const { return folder / "contacts.db"; }

  // A file with one contact, closed.
  void MakeFile() {
    const auto store = test::OpenContacts(Path());
    ASSERT_NE(store, nullptr);
    std::int32_t number = 0;
    ASSERT_EQ(store->OpenBook()->Add(test::Named("Ann"), number), ComResult::kOk);
  }

  void Run(const char* sql) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(Path().c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database);
    sqlite3_close(database);
  }

  // Opening is refused for `reason`, with the file's name, and nothing in the folder changes.
  void ExpectRefused(std::string_view reason) const {
    const std::string before = test::ReadText(Path());
    std::string why;
    EXPECT_EQ(SqliteStore::Open(Path(), why), nullptr);
    EXPECT_THAT(why, HasSubstr(Path() + ": "));
    EXPECT_THAT(why, HasSubstr(std::string(reason)));
    EXPECT_EQ(test::ReadText(Path()), before);
    int files = 0;
    for ([[maybe_unused]] const auto& file : fs::directory_iterator(folder.Path())) ++files;
    EXPECT_EQ(files, 1);
  }

  test::ScratchFolder folder;
};

TEST_F(SqliteFile, ANewFileIsTheUsersAlone) {
  MakeFile();
  struct stat status = {};
  ASSERT_EQ(stat(Path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  const auto store = test::OpenContacts(Path());
  const auto book = store->OpenBook();
  std::int32_t number = 0;
  ASSERT_EQ(book->Add(test::Named("Bob"), number), ComResult::kOk);
  for (const char* beside : {"-wal", "-shm"}) {
    ASSERT_EQ(stat((Path() + beside).c_str(), &status), 0) << beside;
    EXPECT_EQ(status.st_mode & 0777, 0600u) << beside;
  }
}

TEST_F(SqliteFile, AnEmptyFileBecomesAContactsFile) {
  test::WriteText(Path(), "");
  MakeFile();
  EXPECT_EQ(test::ContactsIn(Path()).size(), 1u);
}

TEST_F(SqliteFile, ANameThatMeansMemoryToTheDatabaseIsAFileToo) {
  const fs::path before = fs::current_path();
  fs::current_path(folder.Path());
  const bool opened = test::OpenContacts(":memory:") != nullptr;
  fs::current_path(before);
  EXPECT_TRUE(opened);
  EXPECT_TRUE(fs::exists(folder / ":memory:"));
}

TEST_F(SqliteFile, AFileOfAnotherKindIsRefusedAndLeft) {
  test::WriteText(Path(), "BEGIN:VCARD\r\nEND:VCARD\r\n");
  ExpectRefused("not a contacts file");
  test::WriteText(Path(), std::string(8192, '\0'));
  ExpectRefused("not a contacts file");
  test::WriteText(Path(), "SQLite format 3");
  ExpectRefused("not a contacts file");
}

TEST_F(SqliteFile, AnotherProgramsDatabaseIsRefusedAndLeft) {
  Run("CREATE TABLE contact(oid INTEGER PRIMARY KEY); PRAGMA user_version=1");
  ExpectRefused("another program's database");
}

TEST_F(SqliteFile, AFileOfANewerProgramIsRefusedAndLeft) {
  MakeFile();
  Run("PRAGMA user_version=2");
  ExpectRefused("newer Kelpin");
}

TEST_F(SqliteFile, AFileWithOtherTablesIsRefusedAndLeft) {
  MakeFile();
  Run("ALTER TABLE contact ADD COLUMN other TEXT; PRAGMA journal_mode=DELETE");
  std::string why;
  EXPECT_EQ(SqliteStore::Open(Path(), why), nullptr);
  EXPECT_THAT(why, HasSubstr("its tables are not as Kelpin makes them"));
}

TEST_F(SqliteFile, ADamagedFileIsRefusedAndLeft) {
  MakeFile();
  const std::string good = test::ReadText(Path());
  ASSERT_GE(good.size(), 16384u);
  // The first page but for the header, the whole second page, and the file's end.
  for (const auto& [offset, size] :
       {std::pair<std::size_t, std::size_t>{100, 3996}, {4096, 4096}}) {
    std::string bad = good;
    bad.replace(offset, size, size, '\xA5');
    test::WriteText(Path(), bad);
    ExpectRefused("damaged");
  }
  test::WriteText(Path(), good.substr(0, 4096));
  ExpectRefused("damaged");
  test::WriteText(Path(), good);
  EXPECT_EQ(test::ContactsIn(Path()).size(), 1u);
}

TEST_F(SqliteFile, WhatIsNoFileIsRefusedWithoutWaiting) {
  std::string why;
  fs::create_directory(Path());
  EXPECT_EQ(SqliteStore::Open(Path(), why), nullptr);
  EXPECT_THAT(why, HasSubstr("not a file"));
  const std::string pipe = folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(SqliteStore::Open(pipe, why), nullptr);
  EXPECT_THAT(why, HasSubstr("not a file"));
}

TEST_F(SqliteFile, APipeWhereSqliteKeepsWhatIsUnderWayIsRefused) {
  MakeFile();
  const std::string link = folder / "link.db";
  fs::create_symlink(Path(), link);
  for (const char* ending : {"-journal", "-wal", "-shm"}) {
    const std::string pipe = Path() + ending;
    fs::remove(pipe);
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    // So full that nobody who reads it all the same would wait for more.
    const int filled = open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(filled, 0);
    const std::string bytes(32768, '\0');
    EXPECT_EQ(write(filled, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    for (const std::string& file : {Path(), link}) {
      std::string why;
      EXPECT_EQ(SqliteStore::Open(file, why), nullptr);
      EXPECT_THAT(why, HasSubstr(std::string(ending) + ": not a file"));
    }
    close(filled);
    fs::remove(pipe);
  }
}

TEST_F(SqliteFile, AFolderThatIsNotThereIsNamed) {
  std::string why;
  EXPECT_EQ(SqliteStore::Open(folder / "missing/contacts.db", why), nullptr);
  EXPECT_THAT(why, HasSubstr("missing/contacts.db"));
  EXPECT_THAT(why, HasSubstr("it is not there"));
}

TEST_F(SqliteFile, AFileThatCannotBeWrittenIsRefused) {
  MakeFile();
  fs::permissions(Path(), fs::perms(0444));
  fs::permissions(folder.Path(), fs::perms(0755));
  test::WorkProcess process([this](const test::WorkProcess::Tell& tell) {
    // Nothing is write-protected for root.
    if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setuid(65534) != 0)) return;
    std::string why;
    const bool opened = SqliteStore::Open(Path(), why) != nullptr;
    tell(opened ? 'o' : 'r', why.find("cannot be opened for writing") != std::string::npos);
  });
  test::Report report;
  ASSERT_TRUE(process.Next(report));
  EXPECT_EQ(report.what, 'r');
  EXPECT_EQ(report.number, 1);
}

TEST_F(SqliteFile, AFileThatIsReplacedByAnotherKindFailsTheNextSession) {
  MakeFile();
  const auto store = test::OpenContacts(Path());
  ASSERT_NE(store, nullptr);
  fs::remove(Path());
  test::WriteText(Path(), "BEGIN:VCARD\r\nEND:VCARD\r\n");
  EXPECT_EQ(store->OpenBook(), nullptr);
  EXPECT_EQ(test::ReadText(Path()), "BEGIN:VCARD\r\nEND:VCARD\r\n");
}

TEST_F(SqliteFile, AFileThatAnotherProgramKeepsLockedIsRefusedWithWhatToDo) {
  MakeFile();
  std::string why;
  {
    const NoWaiting impatient;
    const OtherAtFile other(Path(),
                            "PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; DELETE FROM contact");
    EXPECT_EQ(SqliteStore::Open(Path(), why), nullptr);
  }
  EXPECT_EQ(why,
            Path() +
                ": the contacts file cannot be opened: another program keeps the file locked. End "
                "that program and try again");
  EXPECT_EQ(test::ContactsIn(Path()).size(), 1u);
}

TEST_F(SqliteFile, WhyASaveFailedIsToldOnceWhenTheSessionEnds) {
  std::vector<std::string> told;
  std::string why;
  const auto store = SqliteStore::Open(
      Path(), why, [&told](const std::string& trouble) { told.push_back(trouble); });
  ASSERT_NE(store, nullptr) << why;
  const NoWaiting impatient;
  auto book = store->OpenBook();
  std::int32_t number = 0;
  {
    const OtherAtFile other(Path(), "BEGIN IMMEDIATE");
    EXPECT_EQ(book->Add(test::Named("Ann"), number), ComResult::kFail);
    EXPECT_EQ(book->Add(test::Named("Bob"), number), ComResult::kFail);
  }
  EXPECT_EQ(book->Add(test::Named("Cid"), number), ComResult::kOk);
  EXPECT_THAT(told, IsEmpty());
  book = nullptr;
  EXPECT_THAT(
      told, ElementsAre(Path() + ": the contacts cannot be changed: another program keeps the file "
                                 "locked. End that program and try again"));
  book = store->OpenBook();
  EXPECT_EQ(book->Add(test::Named("Dan"), number), ComResult::kOk);
  book = nullptr;
  EXPECT_EQ(told.size(), 1u);
}

TEST_F(SqliteFile, ASessionThatCannotBeHadIsTold) {
  MakeFile();
  std::vector<std::string> told;
  std::string why;
  const auto store = SqliteStore::Open(
      Path(), why, [&told](const std::string& trouble) { told.push_back(trouble); });
  ASSERT_NE(store, nullptr) << why;
  fs::rename(Path(), folder / "elsewhere.db");
  EXPECT_EQ(store->OpenBook(), nullptr);
  EXPECT_THAT(told, ElementsAre(HasSubstr(Path() + ": the contacts file cannot be opened: ")));
  test::WriteText(Path(), "");
  EXPECT_EQ(store->OpenBook(), nullptr);
  EXPECT_THAT(told, ElementsAre(_, HasSubstr("another file has taken the place")));
}

TEST_F(SqliteFile, TheNumberAfterTheHighestCannotBeGiven) {
  MakeFile();
  Run("UPDATE sqlite_sequence SET seq=2147483646");
  const auto store = test::OpenContacts(Path());
  const auto book = store->OpenBook();
  std::int32_t number = 0;
  EXPECT_EQ(book->Add(test::Named("Bob"), number), ComResult::kOk);
  EXPECT_EQ(number, 2147483647);
  EXPECT_EQ(book->Delete(number), ComResult::kOk);
  EXPECT_EQ(book->Add(test::Named("Cid"), number), ComResult::kFail);
  EXPECT_EQ(test::ContactsIn(Path()).size(), 1u);
}

TEST_F(SqliteFile, AllContactsOfAListAreAddedOrNone) {
  const auto store = test::OpenContacts(Path());
  std::string why;
  const ContactRecord good[] = {test::Named("Ann"), test::Named("Bob")};
  EXPECT_TRUE(store->AddAll(good, why)) << why;
  const ContactRecord bad[] = {test::Named("Cid"),
                               test::Named(std::string(Database::kLongestText, 'x'))};
  EXPECT_FALSE(store->AddAll(bad, why));
  EXPECT_THAT(why, HasSubstr(Path()));
  EXPECT_EQ(test::ContactsIn(Path()).size(), 2u);
}

}  // namespace
}  // namespace kelpin::device::contacts
