#include "platform/linux/settings_seal.h"

#include <zlib.h>

namespace ostrel {
namespace {

constexpr std::int64_t kFormat = 1;

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS seal (crc INTEGER NOT NULL);"
    "CREATE TRIGGER IF NOT EXISTS setting_added AFTER INSERT ON setting "
    "BEGIN DELETE FROM seal; END;"
    "CREATE TRIGGER IF NOT EXISTS setting_changed AFTER UPDATE ON setting "
    "BEGIN DELETE FROM seal; END;"
    "CREATE TRIGGER IF NOT EXISTS setting_removed AFTER DELETE ON setting "
    "BEGIN DELETE FROM seal; END;"
    "PRAGMA user_version = 1";

/// By their bytes, whatever order the columns have.
constexpr const char* kValues =
    "SELECT root, path, name, value, is_raw FROM setting ORDER BY root, CAST(path AS BLOB), "
    "CAST(name AS BLOB)";

bool HasTable(const SqliteDatabase& database, const std::string& name) {
  SqliteStatement table(database, "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1");
  return table.Bind(name).Step();
}

std::int64_t NumberOf(const SqliteDatabase& database, const char* question) {
  SqliteStatement answer(database, question);
  return answer.Step() ? answer.Number(0) : 0;
}

std::int64_t ChecksumOf(const SqliteDatabase& database) {
  constexpr int kColumns = 5;
  constexpr std::string_view kEnd("\0", 1);  // no text has it
  uLong sum = crc32(0, nullptr, 0);
  SqliteStatement values(database, kValues);
  while (values.Step()) {
    for (int column = 0; column < kColumns; ++column) {
      const auto text = values.Text(column).append(kEnd);
      sum = crc32(sum, reinterpret_cast<const Bytef*>(text.data()), static_cast<uInt>(text.size()));
    }
  }
  return static_cast<std::int64_t>(sum);
}

}  // namespace

void CheckFormat(const SqliteDatabase& database) {
  database.CheckFormat(kFormat);
}

void MakeSeal(SqliteDatabase& database) {
  database.Execute(kSchema);
}

void Seal(SqliteDatabase& database) {
  database.Execute("DELETE FROM seal");
  SqliteStatement seal(database, "INSERT INTO seal (crc) VALUES (?1)");
  seal.Bind(ChecksumOf(database)).Step();
}

StoreState ContentState(const SqliteDatabase& database) {
  SqliteStatement check(database, "PRAGMA integrity_check(1)");
  const auto found = check.Step() ? check.Text(0) : "";
  if (found != "ok") throw DamagedDatabase(kSettingsStore, found.substr(found.rfind('\n') + 1));
  if (!HasTable(database, "setting")) return StoreState::kMissing;
  const bool isSealed =
      HasTable(database, "seal") && NumberOf(database, "SELECT count(*) FROM seal") > 0;
  if (!isSealed && NumberOf(database, "SELECT count(*) FROM setting") == 0)
    return StoreState::kMissing;
  if (isSealed && NumberOf(database, "SELECT crc FROM seal") != ChecksumOf(database))
    throw DamagedDatabase(kSettingsStore, "it does not hold what was stored");
  return StoreState::kGood;
}

}  // namespace ostrel
