#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace controller {

/// A store that cannot be used. The text names the file, what is wrong and, where there is something, what to do.
class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What to do about a store that is damaged.
inline constexpr const char* kWayOut = "restore it from a copy, or begin in another folder with --out";

/// One SQLite file.
class Database {
 public:
  enum class Access { Create, Write, Read };

  /// Create makes the file anew where there is none. Throws StoreError.
  Database(std::string path, Access access);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Statements without a result.
  void execute(const char* statements);
  [[nodiscard]] const std::string& path() const { return path_; }
  /// Throws the StoreError that stands for SQLite's latest failure.
  [[noreturn]] void fail(int code) const;

 private:
  friend class Statement;

  std::string path_;
  sqlite3* handle_ = nullptr;  // owned
};

/// A prepared statement. Parameters are bound from left to right, columns read likewise.
class Statement {
 public:
  Statement(Database& database, const char* text);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  Statement& bind(std::int64_t value);
  Statement& bind(double value);
  Statement& bind(std::string_view text);
  Statement& bind(std::span<const std::byte> bytes);

  /// Runs to the next row; false behind the last one, after which the statement can be bound and run again.
  bool step();
  /// Runs a statement without rows.
  void run() { static_cast<void>(step()); }
  /// Leaves the rows that are left.
  void reset();

  [[nodiscard]] std::int64_t integer(int column) const;
  [[nodiscard]] double real(int column) const;
  [[nodiscard]] std::string text(int column) const;
  /// Until the next step.
  [[nodiscard]] std::span<const std::byte> blob(int column) const;

 private:
  Database& database_;
  sqlite3_stmt* handle_ = nullptr;  // owned
  int nextParameter_ = 1;
};

}  // namespace controller
