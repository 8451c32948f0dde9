// Sources that bring the packet stream itself: a serial device, datagrams, a TCP connection.
#pragma once

#include <QTcpSocket>
#include <QTimer>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "feed/feed_config.h"
#include "feed/source.h"
#include "receive/line.h"
#include "receive/product_assembler.h"
#include "receive/stream_decoder.h"

namespace ostrel {

/// Makes products of packets. What cannot be delivered waits here, up to a bound: a stream does not
/// come again.
class PacketSource : public Source {
 public:
  using Source::Source;

 protected:
  void Receive(const std::vector<StreamEvent>& events);
  /// Delivers what waits, as far as it goes. At least every two seconds, while anything waits.
  void DeliverWaiting();
  /// True when no more may be read before something was delivered.
  bool IsFull() const;
  /// A new stream begins: what was half there will not be finished.
  void Forget() { assembler_ = {}; }

 private:
  void Keep(ReceivedProduct product);

  ProductAssembler assembler_;
  std::deque<ReceivedProduct> waiting_;
  std::size_t waitingBytes_ = 0;
  std::chrono::steady_clock::time_point nextTry_ = {};
};

/// Reads a device or a socket some times a second: a line that is not open at its other end would
/// report itself ready all the time.
class LineSource : public PacketSource {
 public:
  using PacketSource::PacketSource;
  void Start() override;

 protected:
  virtual OpenFile Open() const = 0;
  virtual std::vector<StreamEvent> Decode(std::string_view bytes) = 0;
  /// What a reading of nothing means: the end of a device, an empty datagram.
  virtual bool EndsWithNothing() const { return true; }

 private:
  void Look();
  void OpenAgain();
  void ReadAll();
  void Lose(const std::string& why);

  std::optional<OpenFile> line_;
  QTimer timer_;
  GrowingWait wait_;
};

class SerialSource : public LineSource {
 public:
  SerialSource(const SerialSettings& settings, Delivery& delivery, FeedBook& book)
      : LineSource(NameOfSource(settings), delivery, book), settings_(settings) {}

 protected:
  OpenFile Open() const override { return OpenLine(settings_.device, settings_.baud); }
  std::vector<StreamEvent> Decode(std::string_view bytes) override { return decoder_.Feed(bytes); }

 private:
  SerialSettings settings_;
  StreamDecoder decoder_;
};

class UdpSource : public LineSource {
 public:
  UdpSource(const UdpSettings& settings, Delivery& delivery, FeedBook& book)
      : LineSource(NameOfSource(settings), delivery, book), settings_(settings) {}

 protected:
  OpenFile Open() const override { return OpenDatagramPort(settings_.port); }
  std::vector<StreamEvent> Decode(std::string_view datagram) override;
  bool EndsWithNothing() const override { return false; }

 private:
  UdpSettings settings_;
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
