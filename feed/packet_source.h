// Sources that bring the packet stream itself: a serial device, datagrams, a TCP connection.
#pragma once

#include <QTcpSocket>
#include <QTimer>
#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "feed/feed_config.h"
#include "feed/source.h"
#include "receive/datagram_port.h"
#include "receive/line.h"
#include "receive/product_assembler.h"
#include "receive/stream_decoder.h"

namespace ostrel {

/// Makes products of packets. What cannot be delivered waits here, up to a bound: a stream does not
/// come again.
class PacketSource : public Source {
 public:
  PacketSource(const std::string& name, Delivery& delivery, FeedBook& book);

 protected:
  void Receive(const std::vector<StreamEvent>& events);
  /// Delivers what waits, as far as it goes. At least every two seconds, while anything waits.
  void DeliverWaiting();
  /// True when no more may be read before something was delivered.
  bool IsFull() const;

 private:
  /// A whole product; a large one has its bytes on the disk already.
  struct Waiting {
    ReceivedProduct product;
    std::unique_ptr<LargeProduct> large;
  };

  std::unique_ptr<LargeProduct> BeginLarge(const std::string& name, std::size_t bytes);
  void Keep(Waiting product);
  void Deliver(const Waiting& waiting);

  ProductAssembler assembler_;
  std::deque<Waiting> waiting_;
  std::size_t waitingBytes_ = 0;
  std::chrono::steady_clock::time_point nextTry_ = {};
};

/// Reads a device or a socket some times a second: a line that is not open at its other end would
/// report itself ready all the time.
class LineSource : public PacketSource {
 public:
  LineSource(const std::string& name, Delivery& delivery, FeedBook& book);
  void Start() override;

 protected:
  /// Both throw std::system_error, or another std::runtime_error.
  virtual void Open() = 0;
  /// Takes one reading; false when there is nothing at the moment.
  virtual bool ReadOnce() = 0;
  virtual void Close() = 0;
  /// What is told of a line that is well.
  virtual std::string State() const { return "open"; }

 private:
  void Look();
  void ReadAll();
  void Lose(const std::string& why);

  bool isOpen_ = false, hasFailed_ = false;
  QTimer timer_;
  GrowingWait wait_;
};

class SerialSource : public LineSource {
 public:
  SerialSource(const SerialSettings& settings, Delivery& delivery, FeedBook& book)
      : LineSource(NameOfSource(settings), delivery, book), settings_(settings) {}

 protected:
  void Open() override { line_.emplace(OpenLine(settings_.device, settings_.baud)); }
  bool ReadOnce() override;
  void Close() override { line_.reset(); }

 private:
  SerialSettings settings_;
  std::optional<OpenFile> line_;
  StreamDecoder decoder_;
};

class UdpSource : public LineSource {
 public:
  UdpSource(const UdpSettings& settings, Delivery& delivery, FeedBook& book)
      : LineSource(NameOfSource(settings), delivery, book), settings_(settings) {}

 protected:
  void Open() override { port_.emplace(settings_.where); }
  bool ReadOnce() override;
  void Close() override { port_.reset(); }
  std::string State() const override { return state_; }

 private:
  bool IsWelcome(Ipv4 sender) const;
  void Drop(Ipv4 sender);

  UdpSettings settings_;
  std::optional<DatagramPort> port_;
  std::string state_ = "open";
  long long dropped_ = 0;
  std::chrono::steady_clock::time_point nextTelling_ = {};
};

class TcpSource : public PacketSource {
 public:
  TcpSource(const TcpSettings& settings, Delivery& delivery, FeedBook& book);
  void Start() override { Connect(); }

 private:
  void Connect();
  void Read();
  void Lose(const std::string& why);
  void Look();

  TcpSettings settings_;
  StreamDecoder decoder_;
  GrowingWait wait_;
  QTimer connectTimer_, lookTimer_;
  std::chrono::steady_clock::time_point lastBytes_ = {};
  QTcpSocket socket_;  // goes first: it tells of its end
};

}  // namespace ostrel
