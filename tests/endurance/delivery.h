// What was dropped into a station and what came back: every product whole at least once, and none
// that nobody sent.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/support/virtual_station.h"

namespace ostrel {

enum class Repeats { kExpected, kForeign };

class Delivery {
 public:
  /// Where repeats are foreign, what has come is forgotten.
  explicit Delivery(Repeats repeats = Repeats::kExpected) : repeats_(repeats) {}

  /// `content` will be dropped and must be received. Of products with one `title` that are dropped
  /// one after the other only the last one must.
  void Expect(const std::string& content, const std::string& title = "");
  /// The next bytes of the line. A product may come in an archive, next to others.
  void Hear(std::string_view bytes);
  /// The beginnings of what has not come yet.
  Lines Missing() const;

  Lines foreign;     // received products that are none of those dropped, in whole or in part
  int received = 0;  // products
  std::map<std::string, int> times;  // how often each content came
  int files = 0, fills = 0;          // begun; the fill files are among the files

 private:
  bool TakeContent(const std::string& content);
  bool TakeArchive(const std::string& bytes);

  Repeats repeats_;
  StreamDecoder decoder_;
  ProductAssembler assembler_;
  std::set<std::string> known_, awaited_;
  std::map<std::string, std::string> latest_;  // content by title
};

/// Rules and settings with which files take every road: as they are, with copies, compressed,
/// overwritten by newer ones, in blocks, to nowhere.
inline const std::map<std::size_t, std::string> kManyRules = {
    {0, "TOR*"}, {2, "SND*"}, {4, "OVR*"}, {10, "BLK*"}, {11, "DIS*"}, {12, "TORC* | C=2"}};
inline const std::map<std::string, std::string> kManySettings = {
    {"UnZipFiles", "1"},       {"CompressPri2", "1"},     {"OverWrite4", "1"},
    {"CompressNbrFiles", "1"}, {"CompressBlockPri", "7"}, {"LogProgram", "1"}};
/// A fast line, no identification, no pause, no delay.
inline const std::map<std::string, std::string> kNoWaits = {
    {"ComBaud", "115200"}, {"CWIDTime", "0"}, {"TxUpTime", "0"}, {"TxDelay", "0"}};

/// The bytes of a zip archive with these members, by name.
std::string MakeArchive(const std::map<std::string, std::string>& members);

/// Whatever lies below `dataRoot` apart from the sent folder and fill files, hidden files included:
/// paths from there on.
Lines LeftBehind(const std::string& dataRoot);

}  // namespace ostrel
