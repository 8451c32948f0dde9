// Builds the packet of one block of a file into the engine's packet buffer. Keeps nothing between
// calls: which file and which block is the queue service's affair.
#pragma once

#include <optional>
#include <string>

#include "base/reporting.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "state/main_fields.h"
#include "state/setup_fields.h"
#include "state/transmit_status.h"

namespace ostrel {

struct PacketHeader;

class PacketBuilder {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    Reporting& reporting;
    MainFields& mainFields;
    const SetupFields& setup;
    TransmitStatus& status;
  };
  explicit PacketBuilder(const Parts& parts) : parts_(parts) {}

  struct Built {
    long long count = 0;         // blocks of the file
    std::optional<Failure> why;  // the block was not built: the file is missing, or was not read
  };
  /// Fills PendingPacket, which must be empty, with block `n` (1 and up) of the file at `path`. A
  /// number beyond the count builds nothing: the file is finished. A file that is gone counts 0
  /// blocks and leaves a log line; any other failure is reported and costs the block.
  Built MakePacket(const std::string& path, long long n);

  /// The log line of a queued file that is not where it is to be sent from.
  void LogMissing(const std::string& path);

 private:
  void Build(const std::string& path, long long n, long long count, UtcTime written);
  void ShowProgress(const PacketHeader& header);
  std::string TimeStamp(UtcTime written);

  Parts parts_;
};

}  // namespace ostrel
