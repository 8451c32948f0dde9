#include "platform/qt/sqlite_history.h"

#include <QCryptographicHash>
#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <zlib.h>

#include "base/failure.h"
#include "base/reporting.h"
#include "platform/linux/file_io.h"
#include "platform/linux/set_aside.h"

namespace ostrel {
namespace {

using namespace std::chrono_literals;

constexpr int kLongestWait = 500;  // ms for who else holds the store
constexpr int kMostOpenFiles = 256;
constexpr std::size_t kMostWaiting = 20'000;
constexpr std::int64_t kLargestKept = 64 << 20;
constexpr auto kPatience = 5s;  // between two tries
constexpr int kMostReadsInVain = 12;
constexpr auto kLongestEnd = 2s;
constexpr auto kExpiryInterval = std::chrono::hours(6);
constexpr int kExpiriesADay = 4;
constexpr auto kClockStep = std::chrono::days(30);  // no row waits for its next change so long

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS product (id INTEGER PRIMARY KEY, name TEXT NOT NULL, "
    "sent_as TEXT NOT NULL, place TEXT NOT NULL, priority INTEGER, size INTEGER, hash TEXT, "
    "arrived INTEGER NOT NULL, first_block INTEGER, last_block INTEGER, times_sent INTEGER NOT "
    "NULL, fate TEXT NOT NULL, ended INTEGER, archive INTEGER, resend_of INTEGER);"
    "CREATE INDEX IF NOT EXISTS product_arrived ON product (arrived);"
    "CREATE INDEX IF NOT EXISTS product_ended ON product (ended);"
    "CREATE INDEX IF NOT EXISTS product_resent ON product (resend_of) WHERE resend_of IS NOT NULL;"
    "CREATE TABLE IF NOT EXISTS content (id INTEGER PRIMARY KEY, size INTEGER NOT NULL, "
    "packed BLOB NOT NULL);"
    "CREATE TABLE IF NOT EXISTS expiry (at INTEGER NOT NULL);"
    "PRAGMA user_version = 1";
constexpr std::int64_t kFormat = 1;

constexpr const char* kOpenRows =
    "SELECT id, name, sent_as, place, priority, arrived, first_block, last_block, times_sent, "
    "fate, resend_of FROM product WHERE ended IS NULL ORDER BY id";

constexpr const char* kWriteRow =
    "INSERT INTO product (id, name, sent_as, place, priority, arrived, first_block, last_block, "
    "times_sent, fate, ended, archive, resend_of) VALUES (?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,?12,"
    "?13) ON CONFLICT DO UPDATE SET name=?2, sent_as=?3, place=?4, priority=?5, first_block=?7, "
    "last_block=?8, times_sent=?9, fate=?10, ended=?11, archive=?12, resend_of=?13";

// Few at a time: nobody is kept from reading for long.
constexpr const char* kExpireContent =
    "DELETE FROM content WHERE id IN (SELECT id FROM content WHERE id NOT IN (SELECT id FROM "
    "product WHERE arrived >= ?1) ORDER BY id LIMIT min(?2, 100))";
constexpr const char* kExpireRows =
    "DELETE FROM product WHERE id IN (SELECT id FROM product WHERE arrived < ?1 AND ended IS NOT "
    "NULL ORDER BY arrived LIMIT min(?2, 1000))";

std::int64_t Stamp(UtcTime time) {
  return time.time_since_epoch().count();
}
std::optional<std::int64_t> Stamp(const std::optional<UtcTime>& time) {
  if (!time) return std::nullopt;
  return Stamp(*time);
}
std::optional<std::int64_t> UnlessZero(std::int64_t number) {
  if (number == 0) return std::nullopt;
  return number;
}
std::optional<UtcTime> TimeIn(const SqliteStatement& row, int column) {
  if (row.IsNothing(column)) return std::nullopt;
  return UtcTime(milliseconds(row.Number(column)));
}

Fate FateOf(const std::string& word) {
  const auto found = std::find(kFateWords.begin(), kFateWords.end(), word);
  return found == kFateWords.end() ? Fate::kUnknown : static_cast<Fate>(found - kFateWords.begin());
}

ProductRow RowOf(const SqliteStatement& from) {
  ProductRow row;
  row.id = from.Number(0);
  row.name = from.Text(1);
  row.sentAs = from.Text(2);
  row.place = from.Text(3);
  row.priority = static_cast<int>(from.Number(4));
  row.arrived = UtcTime(milliseconds(from.Number(5)));
  row.firstBlock = TimeIn(from, 6);
  row.lastBlock = TimeIn(from, 7);
  row.timesSent = static_cast<int>(from.Number(8));
  row.fate = FateOf(from.Text(9));
  row.resendOf = from.Number(10);
  return row;
}

std::string Packed(const std::string& bytes) {
  auto size = compressBound(bytes.size());
  std::string packed(size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(),
                Z_DEFAULT_COMPRESSION) != Z_OK)
    return {};
  packed.resize(size);
  return packed;
}

}  // namespace

class SqliteHistory::OpenFile : public ProductContent {
 public:
  OpenFile(Descriptor file, std::atomic<int>& count) : file_(std::move(file)), count_(count) {
    ++count_;
  }
  ~OpenFile() override { --count_; }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  std::optional<Digest> Read(bool keepsBytes) const {
    struct stat status;
    if (fstat(file_.Get(), &status) != 0) return std::nullopt;
    keepsBytes = keepsBytes && status.st_size <= kLargestKept;
    QCryptographicHash hash(QCryptographicHash::Sha256);
    Digest digest;
    std::string bytes;
    std::array<char, 64 * 1024> part;
    for (auto count = static_cast<std::int64_t>(part.size()); count == part.size();) {
      count = ReadFully(file_.Get(), digest.size, part);
      if (count < 0) return std::nullopt;
      const std::string_view read(part.data(), static_cast<std::size_t>(count));
      hash.addData(QByteArrayView(read.data(), static_cast<qsizetype>(read.size())));
      if (keepsBytes) bytes += read;
      digest.size += count;
    }
    digest.hash = hash.result().toHex().toStdString();
    if (keepsBytes) digest.packed = Packed(bytes);
    return digest;
  }

 private:
  Descriptor file_;
  std::atomic<int>& count_;
};

SqliteHistory::Earlier SqliteHistory::Begin(const HistoryTerms& terms) {
  End();
  terms_ = terms;
  now_ = terms.now;
  Earlier earlier;
  try {
    earlier = Open();
  } catch (const DamagedDatabase& damage) {
    UseDatabase(nullptr);
    SetAside(damage);
    earlier = Open();
  }
  isEnding_ = false;
  isDone_ = false;
  isFailing_ = false;
  isChecked_ = false;
  writer_ = std::thread([this] { Run(); });
  return earlier;
}

SqliteHistory::Earlier SqliteHistory::Open() {
  auto database = std::make_unique<SqliteDatabase>(path_, "History", DatabaseUse::kReadAndWrite);
  sqlite3_busy_timeout(database->Handle(), kLongestWait);
  database->CheckFormat(kFormat);
  database->Execute("PRAGMA journal_mode = WAL");
  database->Execute("PRAGMA synchronous = NORMAL");
  database->Execute(kSchema);
  Earlier earlier;
  SqliteStatement open(*database, kOpenRows);
  while (open.Step()) earlier.open.push_back(RowOf(open));
  SqliteStatement last(*database, "SELECT max(id) FROM product");
  if (last.Step()) earlier.lastId = last.Number(0);
  SqliteStatement expired(*database, "SELECT at FROM expiry");
  expired_.reset();
  if (expired.Step()) expired_ = TimeIn(expired, 0);
  UseDatabase(std::move(database));
  return earlier;
}

void SqliteHistory::SetAside(const DamagedDatabase& damage) {
  const auto aside = ostrel::SetAside(path_, now_);
  Tell(HistoryNews::Kind::kBegunAnew,
       fmt::format("KvHistory.db is damaged ({}). It is kept as {}, and a new one is begun.",
                   damage.why(), aside));
}

/// The end may be about to interrupt what it does.
void SqliteHistory::UseDatabase(std::unique_ptr<SqliteDatabase> database) {
  const std::lock_guard lock(mutex_);
  database_ = std::move(database);
}

void SqliteHistory::End() {
  if (!writer_.joinable()) return;
  isEnding_ = true;
  std::unique_lock lock(mutex_);
  changed_.notify_all();
  changed_.wait_for(lock, kLongestEnd, [this] { return isDone_; });
  if (!isDone_ && database_) sqlite3_interrupt(database_->Handle());
  lock.unlock();
  writer_.join();
  database_.reset();
}

std::unique_ptr<ProductContent> SqliteHistory::Open(const std::string& path) {
  if (openFiles_ >= kMostOpenFiles) return nullptr;
  try {
    return std::make_unique<OpenFile>(OpenToRead(path, Links::kRefused), openFiles_);
  } catch (const Failure&) {
    return nullptr;
  }
}

void SqliteHistory::Put(const ProductRow& row, std::unique_ptr<ProductContent> content) {
  const std::lock_guard lock(mutex_);
  if (waiting_.size() >= kMostWaiting && !waiting_.contains(row.id))
    waiting_.erase(waiting_.begin());
  auto& change = waiting_[row.id];
  change.row = row;
  if (content) change.content = std::move(content);
  changed_.notify_all();
}

std::optional<HistoryNews> SqliteHistory::TakeNews() {
  const std::lock_guard lock(mutex_);
  if (news_.empty()) return std::nullopt;
  auto first = std::move(news_.front());
  news_.pop_front();
  return first;
}

void SqliteHistory::Run() {
  for (;;) {
    auto changes = TakeWaiting();
    for (auto& [id, change] : changes) Read(change);
    try {
      CheckAndWrite(changes);
      if (std::exchange(isFailing_, false))
        Tell(HistoryNews::Kind::kWorksAgain, "KvHistory.db is written again.");
    } catch (const std::exception& error) {
      if (!std::exchange(isFailing_, true))
        Tell(HistoryNews::Kind::kFails,
             fmt::format("{}. What happens meanwhile is written later.", error.what()));
      PutBack(std::move(changes));
    }
    const std::lock_guard lock(mutex_);
    if (!isEnding_ || (!isFailing_ && !waiting_.empty())) continue;
    isDone_ = true;
    changed_.notify_all();
    return;
  }
}

/// What a disk cannot read now is not damaged for that: it is opened anew, and tried again for a
/// minute. A failed read that met with what was in memory may look like damage at first.
void SqliteHistory::CheckAndWrite(const Changes& changes) {
  const auto write = [&] {
    if (!database_) Open();
    CheckOnce();
    WriteAndExpire(changes);
  };
  try {
    try {
      write();
    } catch (const DamagedDatabase&) {
      UseDatabase(nullptr);
      isChecked_ = false;
      write();
    }
  } catch (const DamagedDatabase& damage) {
    UseDatabase(nullptr);
    if (damage.MayPass() && ++readsInVain_ < kMostReadsInVain) throw;
    SetAside(damage);
    Open();
    WriteAndExpire(changes);
  }
  readsInVain_ = 0;
}

/// Damage shows itself where it is met, and that may be years later. The end of the station waits
/// for no look.
void SqliteHistory::CheckOnce() {
  if (isChecked_) return;
  const auto isEnding = [](void* self) {
    return static_cast<SqliteHistory*>(self)->isEnding_ ? 1 : 0;
  };
  constexpr int kSteps = 1000;
  sqlite3_progress_handler(database_->Handle(), kSteps, isEnding, this);
  std::string found = "ok";
  std::optional<DamagedDatabase> damage;
  const auto failure = FailureIn([&] {
    try {
      SqliteStatement check(*database_, "PRAGMA quick_check(1)");
      if (check.Step()) found = check.Text(0);
    } catch (const DamagedDatabase& met) {
      damage = met;
    }
  });
  sqlite3_progress_handler(database_->Handle(), 0, nullptr, nullptr);
  isChecked_ = !damage || !damage->MayPass();
  if (damage) throw DamagedDatabase(*damage);
  if (found != "ok") throw DamagedDatabase("History", found.substr(found.rfind('\n') + 1));
  if (failure && !isEnding_) throw *failure;
}

void SqliteHistory::WriteAndExpire(const Changes& changes) {
  if (!changes.empty()) Write(changes);
  Expire();
}

/// Waits for something to write, and after a failure for a while at least.
SqliteHistory::Changes SqliteHistory::TakeWaiting() {
  std::unique_lock lock(mutex_);
  if (isFailing_) {
    changed_.wait_for(lock, kPatience, [this] { return isEnding_.load(); });
  } else if (expired_) {
    changed_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
  }
  return std::exchange(waiting_, {});
}

void SqliteHistory::Read(Change& change) const {
  const auto content = std::move(change.content);
  if (const auto* const file = dynamic_cast<const OpenFile*>(content.get()))
    change.digest = file->Read(terms_.products.count() > 0);
}

void SqliteHistory::Write(const Changes& changes) {
  UtcTime latest{};
  database_->InTransaction([&] {
    for (const auto& [id, change] : changes) {
      WriteRow(change);
      if (change.digest) WriteContent(id, *change.digest);
      const auto& row = change.row;
      for (const auto& time : {row.firstBlock, row.lastBlock, row.ended})
        latest = std::max({latest, row.arrived, time.value_or(row.arrived)});
    }
  });
  now_ = latest;
}

void SqliteHistory::WriteRow(const Change& change) {
  const auto& row = change.row;
  SqliteStatement write(*database_, kWriteRow);
  write.Bind(row.id).Bind(row.name).Bind(row.sentAs).Bind(row.place);
  write.Bind(UnlessZero(row.priority)).Bind(Stamp(row.arrived)).Bind(Stamp(row.firstBlock));
  write.Bind(Stamp(row.lastBlock)).Bind(std::int64_t{row.timesSent});
  write.Bind(std::string(kFateWords[static_cast<std::size_t>(row.fate)])).Bind(Stamp(row.ended));
  write.Bind(UnlessZero(row.archive)).Bind(UnlessZero(row.resendOf));
  write.Step();
}

void SqliteHistory::WriteContent(std::int64_t id, const Digest& digest) {
  SqliteStatement row(*database_, "UPDATE product SET size = ?1, hash = ?2 WHERE id = ?3");
  row.Bind(digest.size).Bind(digest.hash).Bind(id).Step();
  if (digest.packed.empty()) return;
  SqliteStatement content(*database_,
                          "INSERT OR REPLACE INTO content (id, size, packed) VALUES (?1, ?2, ?3)");
  content.Bind(id).Bind(digest.size).BindBytes(digest.packed).Step();
}

void SqliteHistory::Expire() {
  const auto since = expired_ ? now_ - *expired_ : milliseconds(kExpiryInterval);
  const bool isStep = since < -kClockStep;  // the clock was ahead, or is behind
  if (since < kExpiryInterval && !isStep) return;
  if (!isStep) {
    ExpireShare("content", kExpireContent, std::min(terms_.products, terms_.rows));
    ExpireShare("product", kExpireRows, terms_.rows);
  }
  expired_ = now_;
  database_->InTransaction([&] {
    database_->Execute("DELETE FROM expiry");
    SqliteStatement(*database_, "INSERT INTO expiry (at) VALUES (?1)").Bind(Stamp(now_)).Step();
  });
}

void SqliteHistory::ExpireShare(const char* table, const char* statement, std::chrono::days age) {
  SqliteStatement count(*database_, fmt::format("SELECT count(*) FROM {}", table).c_str());
  count.Step();
  std::int64_t left = count.Number(0);
  // Of what is kept for no day at all, everything.
  if (age.count() > 0) left = 2 * left / (age.count() * kExpiriesADay) + 1;
  SqliteStatement expire(*database_, statement);
  for (int gone = 1; gone > 0 && left > 0; left -= gone) {
    expire.Reset();
    expire.Bind(Stamp(now_ - age)).Bind(left).Step();
    gone = isEnding_ ? 0 : database_->Changes();
  }
}

/// What has come since is newer; what was read of a product is not read again.
void SqliteHistory::PutBack(Changes changes) {
  const std::lock_guard lock(mutex_);
  waiting_.merge(changes);
  for (auto& [id, older] : changes) {
    auto& newer = waiting_.at(id);
    if (!newer.digest) newer.digest = std::move(older.digest);
  }
}

void SqliteHistory::Tell(HistoryNews::Kind kind, const std::string& text) {
  const std::lock_guard lock(mutex_);
  news_.push_back({kind, text});
}

}  // namespace ostrel
