// What tells one content from another.
#pragma once

#include <QCryptographicHash>
#include <string>
#include <string_view>

namespace ostrel {

/// SHA-256 of `content` (FIPS 180-4), in lower-case hexadecimal.
inline std::string HashOf(std::string_view content) {
  const auto bytes = QByteArrayView(content.data(), static_cast<qsizetype>(content.size()));
  return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().toStdString();
}

}  // namespace ostrel
