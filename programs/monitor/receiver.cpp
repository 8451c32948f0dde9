#include "programs/monitor/receiver.h"

#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include "base/text.h"

namespace ostrel {

void ShowLine(std::string_view text, std::FILE* where) {
  fmt::print(where, "{:%H:%M:%S} {}\n", fmt::localtime(std::time(nullptr)), Printable(text));
  std::fflush(where);
}

void Receiver::Take(const std::vector<StreamEvent>& events) {
  for (const StreamEvent& event : events) {
    std::visit([this](const auto& what) { Show(what); }, event);
  }
}

void Receiver::Show(const ReceivedPacket& packet) {
  ++packets_;
  if (page_) page_->Heard();
  ShowLine(fmt::format("{:<12}  block {} of {}", packet.name, packet.block, packet.count));
  const BlockOutcome outcome = assembler_.Accept(packet);
  if (outcome.missing > 0) {
    Lose(missing_, outcome.missing);
    ShowLine(fmt::format("{:<12}  {} missing before this block", packet.name, outcome.missing));
  }
  if (outcome.endedIncomplete) {
    ++incomplete_;
    ShowLine(fmt::format("{:<12}  not whole, thrown away", packet.name));
  }
  if (outcome.product) Keep(*outcome.product);
}

void Receiver::Show(const DamagedPacket& packet) {
  Lose(damaged_, 1);
  const ReceivedPacket& fields = packet.reading.packet;
  ShowLine(fmt::format("{:<12}  block {} of {} DAMAGED: {}", fields.name, fields.block,
                       fields.count, fmt::join(packet.reading.problems, "; ")));
}

void Receiver::Lose(int& kind, int blocks) {
  kind += blocks;
  if (page_) page_->Lost(blocks);
}

void Receiver::Show(const PauseText&) {
  ++pauses_;
  ShowLine("pause: the transmitter rests");
}

void Receiver::Show(const Noise& noise) {
  noise_ += noise.bytes;
  ShowLine(fmt::format("noise: {} bytes", noise.bytes));
}

void Receiver::Keep(const ReceivedProduct& product) {
  ++products_;
  const std::string name = store_.Store(product.name, product.data);
  if (page_) page_->Add(name, product.data);
  ShowLine(
      fmt::format("{:<12}  received, {} bytes, as {}", product.name, product.data.size(), name));
}

void Receiver::ShowSummary() const {
  ShowLine(
      fmt::format("end: {} packets, {} products received, {} incomplete, {} unfinished; "
                  "{} damaged blocks, {} missing blocks, {} pauses, {} bytes of noise",
                  packets_, products_, incomplete_, assembler_.Unfinished(), damaged_, missing_,
                  pauses_, noise_));
}

}  // namespace ostrel
