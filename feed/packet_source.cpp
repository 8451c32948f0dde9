#include "feed/packet_source.h"

#include <array>
#include <fmt/format.h>

#include "base/failure.h"
#include "receive/datagram_reader.h"

namespace ostrel {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr std::size_t kMostWaiting = 64 * 1024 * 1024;  // bytes
constexpr seconds kBetweenTries{2};
constexpr milliseconds kLook{50};  // less than a device's buffer of 4 kB at 115,200 baud takes
// What stations send while they have nothing to send.
constexpr std::string_view kFillName = "FILLFILE.TXT";
constexpr qint64 kReadAhead = 1024 * 1024;

}  // namespace

void PacketSource::Receive(const std::vector<StreamEvent>& events) {
  for (const auto& event : events) {
    const auto* const packet = std::get_if<ReceivedPacket>(&event);
    if (packet == nullptr || packet->name == kFillName) continue;
    auto outcome = assembler_.Accept(*packet);
    if (outcome.endedIncomplete)
      book_.Log(fmt::format("{} came without some of its blocks and is not taken", packet->name));
    if (outcome.product) Keep(std::move(*outcome.product));
  }
  DeliverWaiting();
}

void PacketSource::Keep(ReceivedProduct product) {
  waitingBytes_ += product.data.size();
  waiting_.push_back(std::move(product));
  while (waitingBytes_ > kMostWaiting && waiting_.size() > 1) {
    book_.Log(fmt::format("{} is lost: too much waits to be delivered", waiting_.front().name));
    waitingBytes_ -= waiting_.front().data.size();
    waiting_.pop_front();
  }
}

bool PacketSource::IsFull() const {
  return waitingBytes_ > kMostWaiting / 2;
}

void PacketSource::DeliverWaiting() {
  if (waiting_.empty() || steady_clock::now() < nextTry_) return;
  try {
    while (!waiting_.empty()) {
      const auto& product = waiting_.front();
      Take({.given = product.name, .content = product.data});
      waitingBytes_ -= product.data.size();
      waiting_.pop_front();
    }
  } catch (const Failure&) {  // the book has it
    nextTry_ = steady_clock::now() + kBetweenTries;
  }
}

void LineSource::Start() {
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { Look(); });
  OpenAgain();
}

void LineSource::OpenAgain() {
  try {
    line_.emplace(Open());
    SetState("open", true);
    wait_.Reset();
    timer_.start(kLook);
  } catch (const std::exception& error) {
    Lose(error.what());
  }
}

void LineSource::Lose(const std::string& why) {
  line_.reset();
  Forget();
  SetState(why, false);
  timer_.start(wait_.Next());
}

void LineSource::Look() {
  DeliverWaiting();
  if (!line_) return OpenAgain();
  try {
    ReadAll();
  } catch (const std::exception& error) {
    Lose(error.what());
  }
}

void LineSource::ReadAll() {
  std::array<char, 4096> buffer;
  for (;;) {
    std::size_t size = 0;
    const auto state = ReadLine(*line_, buffer, size);
    if (state == LineState::kEnd && EndsWithNothing()) return Lose("the device is gone");
    if (state == LineState::kNothing) return;
    Receive(Decode({buffer.data(), size}));
  }
}

std::vector<StreamEvent> UdpSource::Decode(std::string_view datagram) {
  auto event = ReadDatagram(datagram);
  std::vector<StreamEvent> events;
  if (event) events.push_back(std::move(*event));
  return events;
}

TcpSource::TcpSource(const TcpSettings& settings, Delivery& delivery, FeedBook& book)
    : PacketSource(NameOfSource(settings), delivery, book), settings_(settings) {
  connectTimer_.setSingleShot(true);
  socket_.setReadBufferSize(kReadAhead);
  QObject::connect(&connectTimer_, &QTimer::timeout, &connectTimer_, [this] { Connect(); });
  QObject::connect(&lookTimer_, &QTimer::timeout, &lookTimer_, [this] { Look(); });
  QObject::connect(&socket_, &QTcpSocket::connected, &connectTimer_, [this] {
    SetState("connected", true);
    lastBytes_ = steady_clock::now();
  });
  QObject::connect(&socket_, &QTcpSocket::readyRead, &connectTimer_, [this] { Read(); });
  QObject::connect(&socket_, &QTcpSocket::errorOccurred, &connectTimer_,
                   [this] { Lose(socket_.errorString().toStdString()); });
}

void TcpSource::Connect() {
  decoder_ = {};
  Forget();
  lastBytes_ = steady_clock::now();
  socket_.connectToHost(QString::fromStdString(settings_.host),
                        static_cast<quint16>(settings_.port));
  lookTimer_.start(seconds(1));
}

void TcpSource::Read() {
  while (socket_.bytesAvailable() > 0 && !IsFull()) {
    const auto bytes = socket_.read(4096);
    lastBytes_ = steady_clock::now();
    wait_.Reset();
    Receive(decoder_.Feed({bytes.data(), static_cast<std::size_t>(bytes.size())}));
  }
}

void TcpSource::Lose(const std::string& why) {
  Read();  // what came before the end counts
  socket_.abort();
  lookTimer_.start(seconds(1));
  SetState(why, false);
  connectTimer_.start(wait_.Next());
}

void TcpSource::Look() {
  DeliverWaiting();
  Read();
  const bool isListening = !connectTimer_.isActive() && !IsFull();
  if (isListening && settings_.silence > seconds(0) &&
      steady_clock::now() - lastBytes_ > settings_.silence)
    Lose("silent for too long");
}

}  // namespace ostrel
