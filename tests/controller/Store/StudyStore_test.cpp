#include "Store/StudyStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "Store/SafeFile.h"

namespace controller {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

class StudyStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (std::filesystem::temp_directory_path() / "quorva_store_XXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    folder_ = name;
    path_ = folder_ + "/study.sqlite";
    identity_.simulator = "railway";
    identity_.simulatorDigest = "abc";
    identity_.simulatorVersion = "Version 2.5";
    identity_.seed = 18446744073709551615U;
    identity_.batchesPerUnit = 3;
    identity_.experiments = {{"0", 0, "", {0, 1}}, {"0 n=2", 0, "s:n:2", {0, 1}}};
    StudyStore::create(path_, identity_);
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  [[nodiscard]] std::unique_ptr<StudyStore> open() const {
    return std::make_unique<StudyStore>(path_, Database::Access::Write);
  }
  static void add(StudyStore& store, std::int64_t experiment, std::int64_t unit) {
    UnitRecord record;
    record.experiment = experiment;
    record.unit = unit;
    record.seed = 4000000000U;
    record.command = "railway -N 3";
    store.addUnit(record, {"Version 2.5", {{0, {0.5, 1.5, static_cast<double>(unit)}}, {1, {0, 1, 0}}}});
  }
  void expectRefusal(const std::string& words) const {
    EXPECT_THAT([&] { static_cast<void>(open()); }, ThrowsMessage<StoreError>(HasSubstr(words)));
  }
  void change(const char* statements) const {
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(path_.c_str(), &handle), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(handle, statements, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(handle);
  }

  std::string folder_;
  std::string path_;
  StudyIdentity identity_;
};

TEST_F(StudyStoreTest, TheIdentityComesBackAsItWas) {
  EXPECT_EQ(identityToJson(open()->identity()), identityToJson(identity_));
  EXPECT_EQ(differenceOf(open()->identity(), identity_), "");
}

TEST_F(StudyStoreTest, AUnitComesBackBitForBit) {
  const auto store = open();
  add(*store, 1, 7);
  const UnitObservations unit = store->observations(1, 7);
  ASSERT_EQ(unit.variables.size(), 2U);
  EXPECT_THAT(unit.variables[0].values, ElementsAre(0.5, 1.5, 7.0));
  EXPECT_THAT(unit.variables[1].values, ElementsAre(0.0, 1.0, 0.0));
  EXPECT_EQ(store->unitRecord(1, 7).seed, 4000000000U);
  EXPECT_TRUE(store->hasUnit(1, 7));
  EXPECT_FALSE(store->hasUnit(0, 7));
}

TEST_F(StudyStoreTest, WhatWasNotCommittedIsAsIfItHadNeverBeen) {
  {
    const auto store = open();
    add(*store, 0, 2);
    store->commit();
    add(*store, 0, 1);
  }
  EXPECT_THAT(open()->units(0), ElementsAre(2));
  EXPECT_THAT(open()->units(1), IsEmpty());
}

TEST_F(StudyStoreTest, AUnitIsNotStoredTwice) {
  const auto store = open();
  add(*store, 0, 2);
  EXPECT_THROW(add(*store, 0, 2), StoreError);
}

TEST_F(StudyStoreTest, AStoreOfANewerFormatIsRefused) {
  change("PRAGMA user_version=2");
  expectRefusal("has format 2, and this program knows formats up to 1");
}

TEST_F(StudyStoreTest, AnotherDatabaseIsRefused) {
  change("PRAGMA application_id=1");
  expectRefusal("is not a store of studies");
}

TEST_F(StudyStoreTest, AFileThatIsNoDatabaseIsRefusedAndLeftAsItIs) {
  std::ofstream(path_, std::ios::trunc) << std::string(5000, 'x');
  expectRefusal("damaged or cut off");
  EXPECT_EQ(std::filesystem::file_size(path_), 5000U);
}

TEST_F(StudyStoreTest, AStoreThatIsCutOffIsRefused) {
  {
    const auto store = open();
    for (std::int64_t unit = 0; unit < 200; ++unit) {
      add(*store, 0, unit);
    }
    store->commit();
  }
  std::filesystem::resize_file(path_, std::filesystem::file_size(path_) / 2);
  expectRefusal("cut off");
}

TEST_F(StudyStoreTest, ObservationsThatWereChangedAreTold) {
  {
    const auto store = open();
    add(*store, 0, 0);
    store->commit();
  }
  change("UPDATE observation SET data = (SELECT data FROM observation WHERE variable = 1) WHERE variable = 0");
  EXPECT_THAT([&] { static_cast<void>(open()->observations(0, 0)); },
              ThrowsMessage<StoreError>(HasSubstr("are not those that were stored")));
}

TEST_F(StudyStoreTest, AStoreThatAnotherProgramHasLockedIsTold) {
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(path_.c_str(), &handle), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(handle, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  expectRefusal("is locked by another program");
  sqlite3_close(handle);
}

TEST_F(StudyStoreTest, AnotherStudyIsToldByWhatDiffers) {
  StudyIdentity other = identity_;
  other.simulatorDigest = "abd";
  EXPECT_EQ(differenceOf(identity_, other), "its executable's SHA-256 is abc, and abd is asked for");
  other = identity_;
  other.experiments[1].overrides = "i:n:2";
  EXPECT_EQ(differenceOf(identity_, other),
            "experiment \"0 n=2\" has the values \"s:n:2\", and \"i:n:2\" are asked for");
  other = identity_;
  other.experiments.pop_back();
  EXPECT_EQ(differenceOf(identity_, other), "its list of experiments is \"0\", \"0 n=2\", and \"0\" is asked for");
}

TEST_F(StudyStoreTest, OneProcessAtATimeWorksOnAStudy) {
  const FolderLock first(folder_ + "/study.lock");
  EXPECT_THAT([&] { const FolderLock second(folder_ + "/study.lock"); },
              ThrowsMessage<std::runtime_error>(HasSubstr("the study is locked: another quorva works on it")));
}

TEST_F(StudyStoreTest, ASafeFileThatIsNotFinishedLeavesTheOldOne) {
  const std::string path = folder_ + "/report.html";
  std::ofstream(path) << "old";
  {
    SafeFile file(path);
    file.write("new");
  }
  std::string text;
  std::ifstream(path) >> text;
  EXPECT_EQ(text, "old");
  SafeFile file(path);
  file.write("new");
  file.finish();
  std::ifstream(path) >> text;
  EXPECT_EQ(text, "new");
  EXPECT_FALSE(std::filesystem::exists(path + ".new"));
}

}  // namespace
}  // namespace controller
