#include "platform/x11/desktop_notices.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace ostrel {

namespace {

// Desktop Notifications 1.2
constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr int kAsTheDesktopLikes = -1;  // how long it is shown

}  // namespace

DesktopNotices::DesktopNotices() {
  QDBusConnection::sessionBus();
}

void DesktopNotices::Show(const QString& title, const QString& text) {
  auto notice = QDBusMessage::createMethodCall(kService, kPath, kService, "Notify");
  const uint replaced = 0;
  notice << "Ostrel" << replaced << "ostrel" << title << text.toHtmlEscaped() << QStringList()
         << QVariantMap() << kAsTheDesktopLikes;
  QDBusConnection::sessionBus().send(notice);
}

}  // namespace ostrel
