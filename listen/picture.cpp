#include "listen/picture.h"

#include <optional>

namespace ostrel {
namespace {

using std::string_view_literals::operator""sv;

constexpr auto kPng = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"sv;
constexpr auto kJpeg = "\xff\xd8\xff"sv;

struct Size {
  std::size_t width, height;
};

std::size_t ByteAt(std::string_view bytes, std::size_t place) {
  return static_cast<unsigned char>(bytes[place]);
}
std::size_t PairAt(std::string_view bytes, std::size_t place) {
  return ByteAt(bytes, place) << 8 | ByteAt(bytes, place + 1);
}

std::optional<Size> SizeOfGif(std::string_view bytes) {
  if (bytes.size() < 10) return std::nullopt;
  return Size{ByteAt(bytes, 7) << 8 | ByteAt(bytes, 6), ByteAt(bytes, 9) << 8 | ByteAt(bytes, 8)};
}

std::optional<Size> SizeOfPng(std::string_view bytes) {
  if (bytes.size() < kPng.size() + 8) return std::nullopt;
  const auto number = [&](std::size_t at) {
    return PairAt(bytes, at) << 16 | PairAt(bytes, at + 2);
  };
  return Size{number(kPng.size()), number(kPng.size() + 4)};
}

/// From segment to segment up to the one that begins the frame (ITU-T T.81, B.2).
std::optional<Size> SizeOfJpeg(std::string_view bytes) {
  std::size_t at = 2;
  while (at + 9 <= bytes.size() && ByteAt(bytes, at) == 0xff) {
    const auto mark = ByteAt(bytes, at + 1);
    const bool isFrame =
        mark >= 0xc0 && mark <= 0xcf && mark != 0xc4 && mark != 0xc8 && mark != 0xcc;
    if (isFrame) return Size{PairAt(bytes, at + 7), PairAt(bytes, at + 5)};
    at += mark == 0xff ? 1 : 2 + PairAt(bytes, at + 2);
  }
  return std::nullopt;
}

bool IsSane(std::optional<Size> size) {
  return size && size->width > 0 && size->height > 0 && size->width <= kLongestSide &&
         size->height <= kLongestSide && size->width * size->height <= kMostPoints;
}

}  // namespace

std::string_view PictureTypeOf(std::string_view bytes) {
  if (bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a"))
    return IsSane(SizeOfGif(bytes)) ? "image/gif" : "";
  if (bytes.starts_with(kPng)) return IsSane(SizeOfPng(bytes)) ? "image/png" : "";
  if (bytes.starts_with(kJpeg)) return IsSane(SizeOfJpeg(bytes)) ? "image/jpeg" : "";
  return "";
}

}  // namespace ostrel
