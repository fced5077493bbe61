// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A desktop on the session bus, which does what it is told on standard input: a panel appears and disappears,
// falls silent, or calls a method of the last item.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QSocketNotifier>
#include <iostream>
#include <string>

namespace {

const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");

class Desktop final : public QDBusVirtualObject {
 public:
  [[nodiscard]] QString introspect(const QString &) const override { return {}; }
  bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
    // The toolkit asks for nothing that is not written here.
    if (message.member() == QLatin1String("Introspect"))
      return bus.send(message.createReply(QStringLiteral(
          "<node><interface name='org.kde.StatusNotifierWatcher'><property "
          "name='IsStatusNotifierHostRegistered' type='b' access='read'/></interface></node>")));
    if (message.member() == QLatin1String("Get") && !m_isSilent)
      return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(true))));
    if (message.member() == QLatin1String("RegisterStatusNotifierItem")) {
      m_item = message.service();
      std::cout << "registered" << std::endl;
    }
    return m_isSilent || bus.send(message.createReply());
  }

  void obey(const std::string &command) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (command == "disappear") {
      bus.unregisterService(kWatcher);
    } else if (command == "appear" || command == "silent") {
      m_isSilent = command == "silent";
      bus.registerService(kWatcher);
      std::cout << command << std::endl;
    } else {
      bus.send(QDBusMessage::createMethodCall(m_item, QStringLiteral("/StatusNotifierItem"),
                                              QStringLiteral("org.kde.StatusNotifierItem"),
                                              QString::fromStdString(command))
               << 0 << 0);
    }
  }

 private:
  QString m_item;
  bool m_isSilent = false;
};

}  // namespace

int main(int argc, char **argv) {
  const QCoreApplication application(argc, argv);
  Desktop desktop;
  QDBusConnection bus = QDBusConnection::sessionBus();
  bus.registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), &desktop);
  QSocketNotifier input(0, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, [&] {
    std::string command;
    if (!std::getline(std::cin, command)) return QCoreApplication::quit();
    desktop.obey(command);
  });
  std::cout << "ready" << std::endl;
  return QCoreApplication::exec();
}
