// The products that lie in a receiver's folder, and what those of them say that are texts.
#pragma once

#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bulletin/in_force.h"

namespace ostrel {

struct KeptProduct {
  std::string name;  // in the folder
  UtcTime received;
  std::size_t bytes = 0;
  std::size_t hash = 0;      // of its bytes
  std::string kind;          // "TOR"; empty where it tells none
  std::string_view picture;  // its type, as for PictureTypeOf; empty for all else
  bool isText = false;
  bool isDamaged = false;  // a line for machines could not be read for certain
};

/// Whether `data` can be shown as lines: no control characters in its front but those of
/// transmission, and no archive.
bool IsText(std::string_view data);

class KeptProducts {
 public:
  /// So many are listed. Of so many texts with events it is remembered what they say; at one more,
  /// the older half is forgotten.
  static constexpr std::size_t kMostListed = 500, kMostEventful = 4000;
  /// So many of a folder's products are read at the start, the newest, and no larger ones.
  static constexpr std::size_t kMostRead = 12'000, kLargestRead = 16'000'000;

  /// Reads what lies in `folder`; a file's last write is when it was received. Files that cannot be
  /// read are passed over. Throws std::filesystem::filesystem_error where the folder is none.
  explicit KeptProducts(std::filesystem::path folder);

  /// One that lies in the folder as `name` now. It takes the place of a listed one with the same
  /// bytes: a fill text or a repeated warning comes all day.
  void Add(const std::string& name, std::string_view data, UtcTime received);

  const std::deque<KeptProduct>& listed() const { return listed_; }  // the newest first
  const std::vector<ReceivedBulletin>& eventful() const { return eventful_; }
  /// The name in the folder of the product that is eventful()[index].
  const std::string& NameOf(std::size_t index) const { return eventfulNames_[index]; }

  /// The bytes of a product, however long ago it was listed; nothing for other names, also of files
  /// elsewhere, and for what cannot be read or is too large.
  std::optional<std::string> ContentOf(const std::string& name) const;

 private:
  /// The name of the listed one that is the same as `product`, which is listed no more.
  std::optional<std::string> TakeSame(const KeptProduct& product);
  void Remember(const std::string& name, ReceivedBulletin told);

  std::filesystem::path folder_;
  std::deque<KeptProduct> listed_;
  std::vector<ReceivedBulletin> eventful_;
  std::vector<std::string> eventfulNames_;
};

}  // namespace ostrel
