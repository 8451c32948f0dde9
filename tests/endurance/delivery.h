// What was dropped into a station and what came back: every product whole at least once, and none
// that nobody sent.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tools/monitor/product_assembler.h"
#include "tools/monitor/stream_decoder.h"

namespace ostrel {

class Delivery {
 public:
  /// `content` will be dropped and must be received. Of products with one `title` that are dropped
  /// one after the other only the last one must.
  void Expect(const std::string& content, const std::string& title = "");

  /// The next bytes of the line. A product may come in an archive, next to others.
  void Hear(std::string_view bytes);

  bool IsComplete() const { return awaited_.empty(); }
  /// The beginnings of what has not come yet.
  std::string Missing() const;
  /// Names of received products that are none of those dropped, in whole or in part.
  const std::vector<std::string>& foreign() const { return foreign_; }
  int received() const { return received_; }

 private:
  void Take(const ReceivedProduct& product);
  bool TakeContent(const std::string& content);
  bool TakeArchive(const std::string& bytes);

  StreamDecoder decoder_;
  ProductAssembler assembler_;
  std::set<std::string> known_, awaited_;
  std::map<std::string, std::string> latest_;  // content by title
  std::vector<std::string> foreign_;
  int received_ = 0;
};

/// The contents of an archive's members; empty when it is none, or not sound.
std::vector<std::string> MembersOf(const std::string& archive);

/// The bytes of a zip archive with these members, by name.
std::string MakeArchive(const std::map<std::string, std::string>& members);

/// Whatever lies below `dataRoot` apart from the sent folder and fill files, hidden files included:
/// paths from there on.
std::vector<std::string> LeftBehind(const std::string& dataRoot);

}  // namespace ostrel
