// What start-up reads of the settings and only a save changes, with the folders that follow from
// it.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "base/priority.h"
#include "base/time.h"

namespace ostrel {

/// The values that start-up reads and only a save changes.
struct ProgramValues {
  std::string programFolder;  // without a separator at its end
  std::string dataRoot;       // likewise
  std::string ingestPath;     // with one at its end, or empty
  std::string hostName;
  std::string stationName;        // as set; Name() is what it is called
  std::int16_t ingestEngine = 0;  // 0 none, 1 serial ingest program, 2 internet ingest program
  /// Bytes. A start that could not read it cuts no log.
  std::int32_t logSize = std::numeric_limits<std::int32_t>::max();
  bool unZipFiles = false;
  bool packetHost = false;
  bool showErrors = false;
  std::string udpAddress;
  std::int32_t udpPort = 0;
  int historyDays = 0;       // the history is kept so long; 0 keeps none
  int keptDays = 0;          // and the products themselves
  milliseconds purgeAge{0};  // of this run: an edit counts from the next start

  const std::string& Name() const { return stationName.empty() ? hostName : stationName; }

  /// Takes a folder without a separator at its end, or nothing.
  void SetIngestPath(const std::string& folder) {
    ingestPath = folder.empty() ? folder : folder + "/";
  }

  /// RtPri1 to RtPri11; 11 is the block compression folder.
  std::string HoldingFolder(int number) const {
    return dataRoot + "/RtPri" + std::to_string(number);
  }
  std::string TransmitFolder() const { return dataRoot + "/RtXmit"; }
  std::string SentFolder() const { return dataRoot + "/RtSent"; }
  /// What an operator holds back. Made when the first file comes.
  std::string HeldFolder(Priority p) const { return HeldRoot() + "/" + std::to_string(p.number()); }
  std::string HeldRoot() const { return dataRoot + "/RtHeld"; }
  /// What no rule names, while not every rule is known. Made when the first file comes.
  std::string KeptFolder() const { return dataRoot + "/RtKept"; }
  /// What was put out of the way. Made when the first file comes.
  std::string QuarantineFolder() const { return dataRoot + "/RtQuarantine"; }
  /// The path of the file `name` in the one folder or the other.
  std::string InTransmitFolder(const std::string& name) const {
    return TransmitFolder() + "/" + name;
  }
  std::string InSentFolder(const std::string& name) const { return SentFolder() + "/" + name; }

  /// A path as it is written down, and as it was: those in the data root from there on, for a
  /// station's folder can be moved.
  std::string InDataRoot(const std::string& path) const {
    return path.starts_with(dataRoot + "/") ? path.substr(dataRoot.size() + 1) : path;
  }
  std::string FromDataRoot(const std::string& written) const {
    return written.empty() || written.front() == '/' ? written : dataRoot + "/" + written;
  }
};

/// The holding folder whose files await block compression.
inline constexpr int kCompressFolder = 11;

}  // namespace ostrel
