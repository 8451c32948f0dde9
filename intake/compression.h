// Sends files compressed: one by one on their way into a queue, or many in one archive once enough
// have gathered in the block folder. Keeps the account from which the ratio is shown.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/reporting.h"
#include "intake/obstacles.h"
#include "intake/placed_files.h"
#include "intake/transmit_queue.h"
#include "platform/archives.h"
#include "platform/clock.h"
#include "state/main_fields.h"
#include "state/program_values.h"
#include "state/setup_fields.h"
#include "state/transmit_status.h"

namespace ostrel {

class Compression {
 public:
  struct Parts {
    Files& files;
    Archives& archives;
    Clock& clock;
    TransmitQueue& queue;
    Obstacles& obstacles;
    ProductHistory& history;
    Reporting& reporting;
    SetupFields& setup;
    TransmitStatus& status;
    const ProgramValues& values;
  };
  explicit Compression(const Parts& parts) : parts_(parts), placed_(parts.files) {}

  /// Places the file `source`, whose queue name is `name`, in RtXmit: as an archive, or
  /// uncompressed when an archive would be larger, cannot be made or would hold too much. Returns
  /// nothing when it could not be placed at all, which has been reported.
  std::optional<TransmitQueue::Placed> CompressFile(const std::string& source,
                                                    const std::string& name);

  /// Reads the list of files that await block compression from their folder. Throws Failure.
  void RefreshCompressList();
  /// Packs all listed files into one archive, queues it and deletes what is in it. Files that would
  /// make it larger than receivers unpack wait for the next one.
  void CompressBlock();

 private:
  CreateResult CreateArchive(const std::string& name, const char* procedure);
  std::string MakeBlock();
  bool MakeArchive(const std::string& source, const std::string& archiveName);
  std::vector<std::string> AddListedFiles(ArchiveWriter& archive, std::int64_t& bytes);
  void DeleteArchived(const std::vector<std::string>& names);
  void Count(std::int64_t compressed, std::int64_t uncompressed);
  std::int64_t SizeOrZero(const std::string& path);
  std::string BlockFolder() const { return parts_.values.HoldingFolder(kCompressFolder); }

  Parts parts_;
  PlacedFiles placed_;
};

}  // namespace ostrel
