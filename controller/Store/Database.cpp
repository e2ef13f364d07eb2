#include "Store/Database.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <utility>

namespace controller {
namespace {

constexpr int kBusyMilliseconds = 5000;

}  // namespace

Database::Database(std::string path, Access access) : path_(std::move(path)) {
  const int flags = access == Access::Create  ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE
                    : access == Access::Write ? SQLITE_OPEN_READWRITE
                                              : SQLITE_OPEN_READONLY;
  const int code = sqlite3_open_v2(path_.c_str(), &handle_, flags, nullptr);
  try {
    if (code != SQLITE_OK) {
      fail(code);
    }
    sqlite3_extended_result_codes(handle_, 1);
    sqlite3_busy_timeout(handle_, kBusyMilliseconds);
    // A rollback journal, as one file is easier to carry about than one with a log beside it, and works on the file systems
    // of clusters too; every commit is on the disk when it returns.
    execute("PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON; PRAGMA cache_size=-8000;");
  } catch (...) {
    sqlite3_close(handle_);
    throw;
  }
}

Database::~Database() {
  sqlite3_close(handle_);
}

void Database::execute(const char* statements) {
  if (const int code = sqlite3_exec(handle_, statements, nullptr, nullptr, nullptr); code != SQLITE_OK) {
    fail(code);
  }
}

void Database::fail(int code) const {
  const char* const words = sqlite3_errmsg(handle_);
  switch (code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      throw StoreError(fmt::format("the store {} is locked by another program; wait for it to end, or end it", path_));
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
      throw StoreError(
          fmt::format("the store {} is damaged or cut off, or no store at all ({}); it is left as it is: {}", path_,
                      words, kWayOut));
    case SQLITE_FULL:
      throw StoreError(
          fmt::format("the disk is full: the store {} cannot grow. All units that were stored before are safe; "
                      "make room and give the same command again",
                      path_));
    case SQLITE_CANTOPEN:
      throw StoreError(fmt::format("the store {} cannot be opened: {}", path_, words));
    case SQLITE_READONLY:
      throw StoreError(fmt::format("the store {} cannot be written to: {}", path_, words));
    default:
      throw StoreError(fmt::format("the store {}: {} (SQLite's code {})", path_, words, code));
  }
}

Statement::Statement(Database& database, const char* text) : database_(database) {
  if (const int code = sqlite3_prepare_v2(database.handle_, text, -1, &handle_, nullptr); code != SQLITE_OK) {
    database.fail(code);
  }
}

Statement::~Statement() {
  sqlite3_finalize(handle_);
}

Statement& Statement::bind(std::int64_t value) {
  sqlite3_bind_int64(handle_, nextParameter_++, value);
  return *this;
}

Statement& Statement::bind(double value) {
  sqlite3_bind_double(handle_, nextParameter_++, value);
  return *this;
}

Statement& Statement::bind(std::string_view text) {
  sqlite3_bind_text64(handle_, nextParameter_++, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  return *this;
}

Statement& Statement::bind(std::span<const std::byte> bytes) {
  sqlite3_bind_blob64(handle_, nextParameter_++, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
  return *this;
}

bool Statement::step() {
  const int code = sqlite3_step(handle_);
  if (code == SQLITE_ROW) {
    return true;
  }
  reset();
  if (code != SQLITE_DONE) {
    database_.fail(code);
  }
  return false;
}

void Statement::reset() {
  sqlite3_reset(handle_);
  nextParameter_ = 1;
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(handle_, column);
}

double Statement::real(int column) const {
  return sqlite3_column_double(handle_, column);
}

std::string Statement::text(int column) const {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(handle_, column));
  return {text, text + sqlite3_column_bytes(handle_, column)};
}

std::span<const std::byte> Statement::blob(int column) const {
  const auto* const bytes = static_cast<const std::byte*>(sqlite3_column_blob(handle_, column));
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(handle_, column))};
}

}  // namespace controller
