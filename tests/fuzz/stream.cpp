// The receiver's stream: any bytes, in pieces of any size, say the same as in one piece.
#include "tests/fuzz/fuzz_support.h"
#include "tools/monitor/product_assembler.h"
#include "tools/monitor/stream_decoder.h"

namespace ostrel {
namespace {

struct Account {
  std::string good;  // names, numbers and data of the good packets
  int damaged = 0, pauses = 0;
  std::size_t noise = 0;

  void Take(const std::vector<StreamEvent>& events) {
    for (const auto& event : events) {
      if (const auto* packet = std::get_if<ReceivedPacket>(&event)) {
        good += fmt::format("{} {} {} ", packet->name, packet->block, packet->data);
        assembler.Accept(*packet);
      } else if (const auto* silence = std::get_if<Noise>(&event)) {
        noise += silence->bytes;
      } else {
        ++(std::holds_alternative<PauseText>(event) ? pauses : damaged);
      }
    }
  }

  ProductAssembler assembler;
};

}  // namespace
}  // namespace ostrel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  const auto input = AsText(data, size);
  Account whole, pieces;
  StreamDecoder decoder;
  whole.Take(decoder.Feed(input));
  whole.Take(decoder.Finish());

  StreamDecoder inPieces;
  for (std::size_t at = 0, length = 1; at < size; at += length) {
    length = 1 + 4u * data[at];
    pieces.Take(inPieces.Feed(input.substr(at, length)));
  }
  pieces.Take(inPieces.Finish());
  Demand(whole.good == pieces.good, "the same good packets");
  Demand(whole.damaged == pieces.damaged && whole.pauses == pieces.pauses, "the same others");
  Demand(whole.noise == pieces.noise, "the same noise");
  return 0;
}
