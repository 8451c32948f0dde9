#include "feed/packet_source.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <stdexcept>
#include <utility>

#include "base/failure.h"
#include "receive/datagram_reader.h"

namespace ostrel {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr std::size_t kMostWaiting = 64 * 1024 * 1024;  // bytes
constexpr seconds kBetweenTries{2};
constexpr milliseconds kLook{50};  // less than a device's buffer of 4 kB at 115,200 baud takes
// What stations send while they have nothing to send.
constexpr std::string_view kFillName = "FILLFILE.TXT";
constexpr qint64 kReadAhead = 1024 * 1024;
constexpr int kMostAtOnce = 500;  // readings

/// Takes the bytes of a large one to what is kept apart. What cannot be kept is given up.
class LargePacketProduct : public LargeProduct {
 public:
  LargePacketProduct(std::unique_ptr<ApartProduct> product, FeedBook& book)
      : product_(std::move(product)), book_(book) {}

  void Append(std::string_view bytes) override {
    if (!product_) return;
    try {
      product_->Write(bytes);
    } catch (const Failure& failure) {
      book_.Log(
          fmt::format("{} is too large and cannot be kept: {}", product_->given(), failure.text()));
      product_.reset();
    }
  }
  ApartProduct* product() const { return product_.get(); }

 private:
  std::unique_ptr<ApartProduct> product_;
  FeedBook& book_;
};

}  // namespace

PacketSource::PacketSource(const std::string& name, Delivery& delivery, FeedBook& book)
    : Source(name, delivery, book),
      assembler_(delivery.largest(), [this](const std::string& product, std::size_t bytes) {
        return BeginLarge(product, bytes);
      }) {}

std::unique_ptr<LargeProduct> PacketSource::BeginLarge(const std::string& name, std::size_t bytes) {
  try {
    return std::make_unique<LargePacketProduct>(delivery_.BeginApart(name, bytes), book_);
  } catch (const Failure& failure) {
    book_.Log(fmt::format("{} is too large and cannot be kept: {}", name, failure.text()));
    return nullptr;
  }
}

void PacketSource::Receive(const std::vector<StreamEvent>& events) {
  for (const auto& event : events) {
    const auto* const packet = std::get_if<ReceivedPacket>(&event);
    if (packet == nullptr || packet->name == kFillName) continue;
    auto outcome = assembler_.Accept(*packet);
    if (outcome.endedIncomplete)
      book_.Log(fmt::format("{} came without some of its blocks and is not taken", packet->name));
    if (outcome.product) Keep({std::move(*outcome.product), nullptr});
    if (outcome.large) Keep({{packet->name, {}}, std::move(outcome.large)});
  }
  DeliverWaiting();
}

void PacketSource::Keep(Waiting product) {
  waitingBytes_ += product.product.data.size();
  waiting_.push_back(std::move(product));
  while (waitingBytes_ > kMostWaiting && waiting_.size() > 1) {
    const auto& oldest = waiting_.front().product;
    book_.Log(fmt::format("{} is lost: too much waits to be delivered", oldest.name));
    waitingBytes_ -= oldest.data.size();
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
      Deliver(waiting_.front());
      waitingBytes_ -= waiting_.front().product.data.size();
      waiting_.pop_front();
    }
  } catch (const std::exception&) {  // the book has it
    nextTry_ = steady_clock::now() + kBetweenTries;
  }
}

void PacketSource::Deliver(const Waiting& waiting) {
  const auto& [product, large] = waiting;
  if (large == nullptr) {
    Take({.given = product.name, .content = product.data});
  } else if (auto* const apart = static_cast<LargePacketProduct&>(*large).product()) {
    delivery_.TakeApart(number(), *apart, {});
  }
}

LineSource::LineSource(const std::string& name, Delivery& delivery, FeedBook& book)
    : PacketSource(name, delivery, book) {
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { Safely([&] { Look(); }); });
}

void LineSource::Start() {
  Safely([this] { Look(); });
}

void LineSource::Look() {
  try {
    if (!isOpen_) Open();
    isOpen_ = true;
    ReadAll();
    hasFailed_ = false;
    wait_.Reset();
    SetState(State(), true);
    timer_.start(kLook);
  } catch (const std::exception& error) {
    Lose(error.what());
  }
  DeliverWaiting();
}

/// Once a reading may fail, and what waits in the system is not thrown away for that.
void LineSource::Lose(const std::string& why) {
  if (std::exchange(hasFailed_, true)) {
    Close();
    isOpen_ = false;
  }
  SetState(why, false);
  timer_.start(wait_.Next());
}

/// Others have their turn in between, however much comes.
void LineSource::ReadAll() {
  for (int reading = 0; reading < kMostAtOnce && ReadOnce(); ++reading) {
  }
}

bool SerialSource::ReadOnce() {
  std::array<char, 4096> buffer;
  std::size_t size = 0;
  const auto state = ReadLine(*line_, buffer, size);
  if (state == LineState::kEnd) throw std::runtime_error("the device is gone");
  if (state == LineState::kData) Receive(decoder_.Feed({buffer.data(), size}));
  return state == LineState::kData;
}

bool UdpSource::ReadOnce() {
  std::array<char, 4096> buffer;
  const auto datagram = port_->Next(buffer);
  if (!datagram) return false;
  if (!IsWelcome(datagram->sender)) {
    Drop(datagram->sender);
  } else if (auto event = ReadDatagram(datagram->bytes)) {
    Receive({std::move(*event)});
  }
  return true;
}

bool UdpSource::IsWelcome(Ipv4 sender) const {
  return settings_.from.empty() ||
         std::any_of(settings_.from.begin(), settings_.from.end(),
                     [&](const auto& network) { return network.Holds(sender); });
}

/// Told once a minute at most: whoever sends them must not fill the log.
void UdpSource::Drop(Ipv4 sender) {
  ++dropped_;
  if (steady_clock::now() < nextTelling_) return;
  nextTelling_ = steady_clock::now() + minutes(1);
  state_ = fmt::format("open, {} datagrams of others dropped, the last of {}", dropped_,
                       SpellIpv4(sender));
}

TcpSource::TcpSource(const TcpSettings& settings, Delivery& delivery, FeedBook& book)
    : PacketSource(NameOfSource(settings), delivery, book), settings_(settings) {
  connectTimer_.setSingleShot(true);
  socket_.setReadBufferSize(kReadAhead);
  const auto on = [this](auto* sender, auto signal, auto step) {
    QObject::connect(sender, signal, &connectTimer_, [=, this] { Safely(step); });
  };
  on(&connectTimer_, &QTimer::timeout, [this] { Connect(); });
  on(&lookTimer_, &QTimer::timeout, [this] { Look(); });
  on(&socket_, &QTcpSocket::connected, [this] {
    SetState("connected", true);
    lastBytes_ = steady_clock::now();
  });
  on(&socket_, &QTcpSocket::readyRead, [this] { Read(); });
  on(&socket_, &QTcpSocket::errorOccurred, [this] { Lose(socket_.errorString().toStdString()); });
}

void TcpSource::Connect() {
  decoder_ = {};
  lastBytes_ = steady_clock::now();
  socket_.connectToHost(QString::fromStdString(settings_.host),
                        static_cast<quint16>(settings_.port));
  lookTimer_.start(seconds(1));
}

void TcpSource::Read() {
  while (socket_.bytesAvailable() > 0 && !IsFull()) {
    const auto bytes = socket_.read(4096);
    if (bytes.isEmpty()) return;
    lastBytes_ = steady_clock::now();
    wait_.Reset();
    Receive(decoder_.Feed({bytes.data(), static_cast<std::size_t>(bytes.size())}));
  }
}

void TcpSource::Lose(const std::string& why) {
  Safely([this] { Read(); });  // what came before the end counts
  socket_.abort();
  lookTimer_.start(seconds(1));
  SetState(why, false);
  connectTimer_.start(wait_.Next());
}

void TcpSource::Look() {
  DeliverWaiting();
  Safely([this] { Read(); });
  const bool isListening = !connectTimer_.isActive() && !IsFull();
  if (isListening && settings_.silence > seconds(0) &&
      steady_clock::now() - lastBytes_ > settings_.silence)
    Lose("silent for too long");
}

}  // namespace ostrel
