#include "programs/repeat/station_products.h"

#include <QCryptographicHash>
#include <algorithm>

#include "base/failure.h"
#include "base/names.h"
#include "base/text.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_files.h"

namespace ostrel {
namespace {

/// No warning is in force for longer than its number is its own.
constexpr std::chrono::days kLookBack{8};

std::string HashOf(const std::string& bytes) {
  const QByteArrayView view(bytes.data(), static_cast<qsizetype>(bytes.size()));
  return QCryptographicHash::hash(view, QCryptographicHash::Sha256).toHex().toStdString();
}

/// Reads the file whole, where it is one and no larger than a bulletin may be.
std::optional<std::string> ReadFile(const std::string& path) {
  LinuxClock clock;
  LinuxFiles files(clock);
  try {
    const auto size = files.Status(path).size;
    if (size > static_cast<std::int64_t>(kLongestBulletin)) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    bytes.resize(files.ReadBlock(path, 0, bytes));
    return bytes;
  } catch (const Failure&) {
    return std::nullopt;
  }
}

bool Waits(const PastProduct& row) {
  return !row.ended;
}

/// A product goes out whole when its last block does.
void NoteSending(KnownProduct& product, const PastProduct& row) {
  product.waits = product.waits || Waits(row);
  if (row.timesSent > 0 && row.lastBlock)
    product.lastOut = std::max(product.lastOut.value_or(*row.lastBlock), *row.lastBlock);
}

}  // namespace

StationProducts::Known StationProducts::Read(UtcTime now) {
  const PastProducts history(HistoryPath(station_));
  std::vector<PastProduct> rows;
  history.Find({.pattern = {}, .since = now - kLookBack, .until = {}},
               [&](const auto& part) { rows.insert(rows.end(), part.begin(), part.end()); });
  Known known;
  std::map<std::int64_t, std::size_t> places;
  std::map<std::int64_t, Said> said;
  for (const auto& row : rows) {
    if (row.resendOf) {
      known.repetitions.push_back({row.arrived, row.size.value_or(0)});
      continue;
    }
    const auto remembered = said_.find(row.id);
    const auto says = remembered != said_.end() ? remembered->second : SaidBy(history, row);
    if (says || row.ended) said.emplace(row.id, says);  // what ended does not come back
    places[row.id] = known.products.size();
    known.products.push_back({.id = row.id,
                              .name = row.name,
                              .bytes = row.size.value_or(0),
                              .arrived = row.arrived,
                              .bulletin = says ? std::optional(*says) : std::nullopt});
    NoteSending(known.products.back(), row);
  }
  for (const auto& row : rows) {
    const auto place = places.find(row.resendOf.value_or(0));
    if (place != places.end()) NoteSending(known.products[place->second], row);
  }
  said_ = std::move(said);
  return known;
}

StationProducts::Said StationProducts::SaidBy(const PastProducts& history,
                                              const PastProduct& product) {
  if (IsPicture(product.name)) return nullptr;
  const auto bytes = BytesOf(history, product);
  if (!bytes || bytes->starts_with("PK")) return nullptr;  // a zip archive
  return std::make_shared<const Bulletin>(ReadBulletin(*bytes, product.arrived));
}

/// As they were received: from the queue, from the sent folder, or as the history keeps them.
std::optional<std::string> StationProducts::BytesOf(const PastProducts& history,
                                                    const PastProduct& product) const {
  if (product.size.value_or(0) > static_cast<std::int64_t>(kLongestBulletin)) return std::nullopt;
  for (const auto* const folder : {"KvData/RtXmit", "KvData/RtSent"}) {
    if (product.sentAs.empty() || product.hash.empty()) break;
    auto bytes = ReadFile(JoinPath(JoinPath(station_, folder), product.sentAs));
    if (bytes && HashOf(*bytes) == product.hash) return bytes;
  }
  try {
    return history.ContentOf(product.id);
  } catch (const Failure&) {
    return std::nullopt;
  }
}

}  // namespace ostrel
