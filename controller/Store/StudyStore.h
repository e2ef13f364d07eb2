#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Process/ResultFile.h"
#include "Store/Database.h"
#include "Study/Experiment.h"

namespace controller {

/// What is kept of a unit besides its observations. It tells how the unit came to be and has no part in any result.
struct UnitRecord {
  std::int64_t experiment = 0;  ///< its place in the study's list
  std::int64_t unit = 0;
  std::uint32_t seed = 0;
  std::string command;
  std::string host;
  std::string finished;  ///< time of day in UTC, ISO 8601
  double wallSeconds = 0;
  double cpuSeconds = 0;
  std::int64_t attempts = 1;
};

/// One call of the program that worked on the study.
struct SessionRecord {
  std::string started;
  std::string ended;  ///< empty for one that was killed, or is under way
  std::string host;
  std::string version;
  std::string command;
  std::string stopReason;  ///< empty for one that was killed, or is under way

  /// The reason why it stopped, in words whatever it is.
  [[nodiscard]] std::string reasonInWords() const {
    return stopReason.empty() ? "under way, or broken off" : stopReason;
  }
};

/// The store of one study: an SQLite file with its identity, units, observations and sessions.
/// Commits   the functions that change something work in a transaction, which commit() ends and syncs; what was not committed
///           when the process dies is as if it had never been. A unit is stored whole or not at all.
/// Failure   everything throws StoreError
class StudyStore {
 public:
  static constexpr int kApplicationId = 0x51765374;  // "QvSt"
  static constexpr int kFormat = 1;

  /// Makes a new store at the path, where there is none. It appears there whole, under its own name, or not at all.
  static void create(const std::string& path, const StudyIdentity& identity);
  /// Opens a store that is there, and checks that it is one and of a format that is known.
  StudyStore(const std::string& path, Database::Access access);

  [[nodiscard]] const StudyIdentity& identity() const { return identity_; }

  /// A text that is kept under a name, or nothing.
  [[nodiscard]] std::optional<std::string> text(const std::string& name);
  void setText(const std::string& name, const std::string& text);

  [[nodiscard]] bool hasUnit(std::int64_t experiment, std::int64_t unit);
  /// Units of an experiment that are stored, ascending.
  [[nodiscard]] std::vector<std::int64_t> units(std::int64_t experiment);
  [[nodiscard]] std::int64_t countOfUnits(std::int64_t experiment);
  /// Adds a unit with its observations. Requires: it is not stored yet.
  void addUnit(const UnitRecord& record, const UnitObservations& observations);
  [[nodiscard]] UnitRecord unitRecord(std::int64_t experiment, std::int64_t unit);
  /// The observations of a unit, as they were added; their checksum is looked at.
  [[nodiscard]] UnitObservations observations(std::int64_t experiment, std::int64_t unit);

  [[nodiscard]] std::int64_t beginSession(const SessionRecord& session);
  void endSession(std::int64_t session, const std::string& ended, const std::string& stopReason);
  [[nodiscard]] std::vector<SessionRecord> sessions();

  /// Makes what was changed durable. Costs some writes that wait for the disk.
  void commit();

 private:
  void begin();
  void readIdentity();

  Database database_;
  bool isInTransaction_ = false;
  StudyIdentity identity_;
  std::optional<Statement> addUnit_;
  std::optional<Statement> addObservations_;
  std::optional<Statement> findObservations_;
  std::optional<Statement> findUnit_;
};

/// The study's identity as JSON, and back.
[[nodiscard]] std::string identityToJson(const StudyIdentity& identity);
[[nodiscard]] StudyIdentity identityFromJson(const std::string& text);

}  // namespace controller
