// The history in a database file, written by a thread of its own with its own connection. What
// waits to be written is one row a product; a store that is held or full delays them and is tried
// again.
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

#include "platform/history.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/sqlite_database.h"

namespace ostrel {

class SqliteHistory : public History {
 public:
  /// The database file; it is made when missing, its folder is not.
  explicit SqliteHistory(std::string path) : path_(std::move(path)) {}
  ~SqliteHistory() override { End(); }
  SqliteHistory(const SqliteHistory&) = delete;
  SqliteHistory& operator=(const SqliteHistory&) = delete;

  Earlier Begin(const HistoryTerms& terms) override;
  void End() override;
  std::unique_ptr<ProductContent> Open(const std::string& path) override;
  void Put(const ProductRow& row, std::unique_ptr<ProductContent> content) override;
  std::optional<std::string> TakeNews() override;

 private:
  class OpenFile;
  /// What was read of a product.
  struct Digest {
    std::int64_t size = 0;
    std::string hash;    // SHA-256, in hexadecimal digits
    std::string packed;  // empty: the bytes are not kept
  };
  struct Change {
    ProductRow row;
    std::unique_ptr<ProductContent> content;
    std::optional<Digest> digest;
  };
  using Changes = std::map<std::int64_t, Change>;  // by id: the last one is the one that counts

  void Run();
  Changes TakeWaiting();
  void Read(Change& change) const;
  void Write(const Changes& changes);
  void WriteRow(const Change& change);
  void WriteContent(std::int64_t id, const Digest& digest);
  void Expire();
  void PutBack(Changes changes);
  void Tell(bool fails, const std::string& text);

  std::string path_;
  HistoryTerms terms_;
  std::unique_ptr<SqliteDatabase> database_;  // the writer's, once it runs

  std::mutex mutex_;
  std::condition_variable changed_;
  Changes waiting_;
  bool isDone_ = false;
  std::optional<std::string> news_;
  std::atomic<bool> isEnding_ = false;
  std::atomic<int> openFiles_ = 0;

  bool isFailing_ = false;          // the writer's
  std::optional<UtcTime> expired_;  // the writer's: when old rows were last looked for
  std::thread writer_;
};

}  // namespace ostrel
