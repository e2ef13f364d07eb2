#include "Store/StudyStore.h"

#include <fmt/format.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Process/Sha256.h"
#include "Store/ObservationBlob.h"
#include "Store/SafeFile.h"

namespace controller {
namespace {

constexpr const char* kTables = R"(
  CREATE TABLE text (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
  CREATE TABLE unit (
    experiment INTEGER NOT NULL, unit INTEGER NOT NULL, seed INTEGER NOT NULL, command TEXT NOT NULL, host TEXT NOT NULL,
    finished TEXT NOT NULL, wallSeconds REAL NOT NULL, cpuSeconds REAL NOT NULL, attempts INTEGER NOT NULL,
    simulatorVersion TEXT NOT NULL, checksum TEXT NOT NULL,
    PRIMARY KEY (experiment, unit)) WITHOUT ROWID;
  CREATE TABLE observation (
    id INTEGER PRIMARY KEY, experiment INTEGER NOT NULL, unit INTEGER NOT NULL, variable INTEGER NOT NULL,
    count INTEGER NOT NULL, data BLOB NOT NULL, UNIQUE (experiment, unit, variable));
  CREATE TABLE session (
    id INTEGER PRIMARY KEY, started TEXT NOT NULL, ended TEXT NOT NULL, host TEXT NOT NULL, version TEXT NOT NULL,
    command TEXT NOT NULL, stopReason TEXT NOT NULL);
)";

std::int64_t pragma(Database& database, const char* text) {
  Statement statement(database, text);
  return statement.step() ? statement.integer(0) : 0;
}

/// What a unit's packed observations must still be when they are read again.
class Checksum {
 public:
  void add(std::int64_t variable, std::span<const std::byte> data) {
    digest_.add(std::as_bytes(std::span(&variable, 1)));
    digest_.add(data);
  }
  [[nodiscard]] std::string finish() { return digest_.finish().substr(0, 16); }

 private:
  Sha256 digest_;
};

}  // namespace

std::string identityToJson(const StudyIdentity& identity) {
  nlohmann::ordered_json json = {
      {"simulator", identity.simulator},           {"sha256", identity.simulatorDigest},
      {"version", identity.simulatorVersion},      {"terminating", identity.isTerminating},
      {"generator", identity.generator},           {"seed", identity.seed},
      {"batchesPerUnit", identity.batchesPerUnit}, {"experiments", nlohmann::ordered_json::array()}};
  for (const Experiment& experiment : identity.experiments) {
    json["experiments"].push_back({{"name", experiment.name},
                                   {"number", experiment.number},
                                   {"overrides", experiment.overrides},
                                   {"variables", experiment.variables}});
  }
  return json.dump();
}

StudyIdentity identityFromJson(const std::string& text) {
  const auto json = nlohmann::json::parse(text);
  StudyIdentity identity;
  json.at("simulator").get_to(identity.simulator);
  json.at("sha256").get_to(identity.simulatorDigest);
  json.at("version").get_to(identity.simulatorVersion);
  json.at("terminating").get_to(identity.isTerminating);
  json.at("generator").get_to(identity.generator);
  json.at("seed").get_to(identity.seed);
  json.at("batchesPerUnit").get_to(identity.batchesPerUnit);
  for (const auto& one : json.at("experiments")) {
    Experiment experiment;
    one.at("name").get_to(experiment.name);
    one.at("number").get_to(experiment.number);
    one.at("overrides").get_to(experiment.overrides);
    one.at("variables").get_to(experiment.variables);
    identity.experiments.push_back(std::move(experiment));
  }
  return identity;
}

void StudyStore::create(const std::string& path, const StudyIdentity& identity) {
  const std::string temporary = path + ".new";
  std::filesystem::remove(temporary);
  std::filesystem::remove(temporary + "-journal");
  {
    Database database(temporary, Database::Access::Create);
    database.execute("BEGIN IMMEDIATE;");
    database.execute(kTables);
    database.execute(fmt::format("PRAGMA application_id={}; PRAGMA user_version={};", kApplicationId, kFormat).c_str());
    Statement(database, "INSERT INTO text VALUES ('identity', ?)").bind(identityToJson(identity)).run();
    database.execute("COMMIT;");
  }
  putInPlace(temporary, path);
}

StudyStore::StudyStore(const std::string& path, Database::Access access) : database_(path, access) {
  if (pragma(database_, "PRAGMA application_id") != kApplicationId) {
    throw StoreError(fmt::format("{} is not a store of studies; it is left as it is", path));
  }
  if (const std::int64_t format = pragma(database_, "PRAGMA user_version"); format > kFormat) {
    throw StoreError(
        fmt::format("the store {} has format {}, and this program knows formats up to {}: use the newer program "
                    "that made it",
                    path, format, kFormat));
  }
  // A file that was cut off opens all the same, and would fail later, amid a study.
  const auto pages = pragma(database_, "PRAGMA page_count");
  const auto pageSize = pragma(database_, "PRAGMA page_size");
  if (std::filesystem::file_size(path) < static_cast<std::uintmax_t>(pages * pageSize)) {
    throw StoreError(fmt::format("the store {} is cut off: it has {} bytes of {}; it is left as it is: {}", path,
                                 std::filesystem::file_size(path), pages * pageSize, kWayOut));
  }
  readIdentity();
}

void StudyStore::readIdentity() {
  const auto json = text("identity");
  try {
    identity_ = identityFromJson(json.value_or(""));
  } catch (const nlohmann::json::exception& error) {
    throw StoreError(fmt::format("the store {} does not say what study it is of: {}", database_.path(), error.what()));
  }
}

std::optional<std::string> StudyStore::text(const std::string& name) {
  Statement statement(database_, "SELECT value FROM text WHERE name = ?");
  statement.bind(name);
  return statement.step() ? std::optional(statement.text(0)) : std::nullopt;
}

void StudyStore::setText(const std::string& name, const std::string& text) {
  begin();
  Statement(database_, "INSERT OR REPLACE INTO text VALUES (?, ?)").bind(name).bind(text).run();
}

bool StudyStore::hasUnit(std::int64_t experiment, std::int64_t unit) {
  if (!findUnit_) {
    findUnit_.emplace(database_, "SELECT 1 FROM unit WHERE experiment = ? AND unit = ?");
  }
  findUnit_->bind(experiment).bind(unit);
  const bool isThere = findUnit_->step();
  findUnit_->reset();
  return isThere;
}

std::vector<std::int64_t> StudyStore::units(std::int64_t experiment) {
  std::vector<std::int64_t> units;
  Statement statement(database_, "SELECT unit FROM unit WHERE experiment = ? ORDER BY unit");
  statement.bind(experiment);
  while (statement.step()) {
    units.push_back(statement.integer(0));
  }
  return units;
}

std::int64_t StudyStore::countOfUnits(std::int64_t experiment) {
  Statement statement(database_, "SELECT count(*) FROM unit WHERE experiment = ?");
  statement.bind(experiment);
  return statement.step() ? statement.integer(0) : 0;
}

void StudyStore::addUnit(const UnitRecord& record, const UnitObservations& observations) {
  begin();
  if (!addUnit_) {
    addUnit_.emplace(database_, "INSERT INTO unit VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    addObservations_.emplace(
        database_, "INSERT INTO observation (experiment, unit, variable, count, data) VALUES (?, ?, ?, ?, ?)");
  }
  Checksum checksum;
  for (const VariableObservations& row : observations.variables) {
    const std::vector<std::byte> data = packObservations(row.values);
    checksum.add(row.variable, data);
    addObservations_->bind(record.experiment)
        .bind(record.unit)
        .bind(std::int64_t{row.variable})
        .bind(static_cast<std::int64_t>(row.values.size()))
        .bind(std::span<const std::byte>(data))
        .run();
  }
  addUnit_->bind(record.experiment)
      .bind(record.unit)
      .bind(std::int64_t{record.seed})
      .bind(record.command)
      .bind(record.host)
      .bind(record.finished)
      .bind(record.wallSeconds)
      .bind(record.cpuSeconds)
      .bind(record.attempts)
      .bind(observations.simulatorVersion)
      .bind(checksum.finish())
      .run();
}

UnitRecord StudyStore::unitRecord(std::int64_t experiment, std::int64_t unit) {
  Statement statement(database_,
                      "SELECT seed, command, host, finished, wallSeconds, cpuSeconds, attempts FROM unit "
                      "WHERE experiment = ? AND unit = ?");
  statement.bind(experiment).bind(unit);
  if (!statement.step()) {
    throw StoreError(fmt::format("the store {} has no unit {} of experiment {}", database_.path(), unit, experiment));
  }
  return {experiment,
          unit,
          static_cast<std::uint32_t>(statement.integer(0)),
          statement.text(1),
          statement.text(2),
          statement.text(3),
          statement.real(4),
          statement.real(5),
          statement.integer(6)};
}

UnitObservations StudyStore::observations(std::int64_t experiment, std::int64_t unit) {
  if (!findObservations_) {
    findObservations_.emplace(
        database_, "SELECT variable, data FROM observation WHERE experiment = ? AND unit = ? ORDER BY variable");
  }
  Statement head(database_, "SELECT simulatorVersion, checksum FROM unit WHERE experiment = ? AND unit = ?");
  head.bind(experiment).bind(unit);
  Checksum checksum;
  const bool isThere = head.step();
  std::vector<std::pair<std::int32_t, std::vector<std::byte>>> rows;
  findObservations_->bind(experiment).bind(unit);
  while (findObservations_->step()) {
    const std::int64_t variable = findObservations_->integer(0);
    const auto data = findObservations_->blob(1);
    checksum.add(variable, data);
    rows.emplace_back(static_cast<std::int32_t>(variable), std::vector<std::byte>(data.begin(), data.end()));
  }
  // Nothing is made of bytes that were not stored so.
  if (!isThere || head.text(1) != checksum.finish()) {
    throw StoreError(
        fmt::format("the store {}: the observations of unit {} of experiment {} are not those that were stored; {}",
                    database_.path(), unit, experiment, kWayOut));
  }
  UnitObservations observations;
  observations.simulatorVersion = head.text(0);
  const std::size_t most =
      identity_.isTerminating ? static_cast<std::size_t>(identity_.batchesPerUnit) : kGreatestCount;
  try {
    for (const auto& [variable, data] : rows) {
      observations.variables.push_back({variable, unpackObservations(data, most)});
    }
  } catch (const std::runtime_error& error) {
    throw StoreError(
        fmt::format("the store {}, unit {} of experiment {}: {}", database_.path(), unit, experiment, error.what()));
  }
  return observations;
}

std::int64_t StudyStore::beginSession(const SessionRecord& session) {
  begin();
  Statement(database_,
            "INSERT INTO session (started, ended, host, version, command, stopReason) VALUES (?, ?, ?, ?, ?, ?)")
      .bind(session.started)
      .bind(session.ended)
      .bind(session.host)
      .bind(session.version)
      .bind(session.command)
      .bind(session.stopReason)
      .run();
  return pragma(database_, "SELECT last_insert_rowid()");
}

void StudyStore::endSession(std::int64_t session, const std::string& ended, const std::string& stopReason) {
  begin();
  Statement(database_, "UPDATE session SET ended = ?, stopReason = ? WHERE id = ?")
      .bind(ended)
      .bind(stopReason)
      .bind(session)
      .run();
}

std::vector<SessionRecord> StudyStore::sessions() {
  std::vector<SessionRecord> sessions;
  Statement statement(database_, "SELECT started, ended, host, version, command, stopReason FROM session ORDER BY id");
  while (statement.step()) {
    sessions.push_back({statement.text(0), statement.text(1), statement.text(2), statement.text(3), statement.text(4),
                        statement.text(5)});
  }
  return sessions;
}

void StudyStore::begin() {
  if (!isInTransaction_) {
    database_.execute("BEGIN IMMEDIATE;");
    isInTransaction_ = true;
  }
}

void StudyStore::commit() {
  if (isInTransaction_) {
    isInTransaction_ = false;
    try {
      database_.execute("COMMIT;");
    } catch (const StoreError&) {
      isInTransaction_ = true;
      throw;
    }
  }
}

}  // namespace controller
