#include "listen/picture.h"

#include <gtest/gtest.h>
#include <string>

namespace ostrel {
namespace {

using std::string_literals::operator""s;

std::string Png(const std::string& size) {
  return "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"s + size + "\x08\x06"s;
}
std::string Jpeg(const std::string& frame) {
  return "\xff\xd8\xff\xe0\x00\x04JF\xff"s + frame;
}

TEST(Picture, IsOneByItsBytesAndOfASaneSize) {
  const struct {
    std::string what, bytes, type;
  } rows[] = {
      {"gif", "GIF89a\x40\x01\xf0\x00"s, "image/gif"},
      {"gif without a point", "GIF89a\x00\x00\xf0\x00"s, ""},
      {"gif of 65535 by 65535", "GIF89a\xff\xff\xff\xff"s, ""},
      {"png", Png("\0\0\x02\x80\0\0\x01\xe0"s), "image/png"},
      {"png of 4294967295 by 1", Png("\xff\xff\xff\xff\0\0\0\x01"s), ""},
      {"png of 20000 by 20000", Png("\0\0\x4e\x20\0\0\x4e\x20"s), ""},
      {"png cut off", Png("\0\0\x02"s).substr(0, 19), ""},
      {"jpeg", Jpeg("\xc2\x00\x11\x08\x01\xe0\x02\x80\x03"s), "image/jpeg"},
      {"jpeg without a frame", Jpeg("\xdb\x00\x02\xff\xd9"s), ""},
      {"jpeg whose segment is longer than all", Jpeg("\xdb\xff\xff\xff\xc0"s), ""},
      {"svg", "<svg xmlns='http://www.w3.org/2000/svg'>", ""},
      {"html that begins as a gif", "GIF89<html>", ""},
      {"nothing", "", ""},
  };
  for (const auto& row : rows) EXPECT_EQ(PictureTypeOf(row.bytes), row.type) << row.what;
}

}  // namespace
}  // namespace ostrel
