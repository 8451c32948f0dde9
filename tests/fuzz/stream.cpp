// The receiver's stream: any bytes, in pieces of any size, say the same as in one piece.
#include "receive/product_assembler.h"
#include "receive/stream_decoder.h"
#include "tests/fuzz/fuzz_support.h"

namespace ostrel {
namespace {

/// What is heard, and how many bytes are noise.
std::pair<std::string, std::size_t> Hear(std::string_view input, bool inPieces) {
  StreamDecoder decoder;
  ProductAssembler assembler;
  std::string heard;
  std::size_t noise = 0;
  const auto take = [&](const std::vector<StreamEvent>& events) {
    for (const auto& event : events) {
      if (const auto* packet = std::get_if<ReceivedPacket>(&event)) {
        heard += fmt::format("{} {} {} ", packet->name, packet->block, packet->data);
        assembler.Accept(*packet);
      } else if (const auto* silence = std::get_if<Noise>(&event)) {
        noise += silence->bytes;
      } else {
        heard += std::holds_alternative<PauseText>(event) ? "pause " : "damaged ";
      }
    }
  };
  for (std::size_t at = 0, length = input.size(); at < input.size(); at += length) {
    if (inPieces) length = 1 + 4u * static_cast<unsigned char>(input[at]);
    take(decoder.Feed(input.substr(at, length)));
  }
  take(decoder.Finish());
  return {heard, noise};
}

}  // namespace
}  // namespace ostrel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ostrel;
  const auto input = AsText(data, size);
  Demand(Hear(input, false) == Hear(input, true), "the same in pieces as in one");
  return 0;
}
