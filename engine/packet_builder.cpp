#include "engine/packet_builder.h"

#include <fmt/format.h>

#include "base/names.h"
#include "engine/packet.h"

namespace ostrel {

namespace {
constexpr const char* kProcedure = "MakePacket";
}

PacketBuilder::Built PacketBuilder::MakePacket(const std::string& path, long long n) {
  Built built;
  try {
    const auto status = parts_.files.Status(path);
    built.count = BlockCount(status.size);
    if (n <= built.count) Build(path, n, built.count, status.written);
  } catch (const std::exception& error) {
    const auto failure = AsFailure(error);
    built.why = failure;
    if (failure.IsMissing()) {
      LogMissing(path);
    } else {
      parts_.reporting.ReportError(failure, kProcedure, " File Name: " + path);
    }
  }
  return built;
}

void PacketBuilder::LogMissing(const std::string& path) {
  parts_.reporting.WriteLog(
      kProcedure, fmt::format("Queued file {} was deleted by purge.", NameField(FileNameOf(path))));
}

void PacketBuilder::Build(const std::string& path, long long n, long long count, UtcTime written) {
  const PacketHeader header{NameField(FileNameOf(path)), n, count, TimeStamp(written)};
  ShowProgress(header);
  Block block{};  // where the file ends inside the block, the rest stays zero
  parts_.files.ReadBlock(path, (n - 1) * static_cast<std::int64_t>(kBlockSize), block);
  parts_.status.PendingPacket = EncodePacket(header, block);
  if (IsChecked(parts_.setup.LogIt)) {
    const auto name = header.nameField.substr(0, StripDupSuffix(FileNameOf(path)).size());
    parts_.reporting.WriteLog("Packet Sent", fmt::format("{} {}/{}", name, n, count));
  }
}

std::string PacketBuilder::TimeStamp(UtcTime written) {
  const auto utc = LocalToUtc(parts_.clock.ToLocal(written), parts_.clock.UtcOffset());
  return FormatGeneral(LocalTime(utc.time_since_epoch()));  // its text, whatever the zone
}

void PacketBuilder::ShowProgress(const PacketHeader& header) {
  parts_.mainFields.lblBlkPktTot.Set(fmt::format(" {}", header.blockCount));
  parts_.mainFields.lblBlkPktNum.Set(fmt::format(" {}", header.block));
  parts_.mainFields.lblActivefile.Set(header.nameField);
}

}  // namespace ostrel
