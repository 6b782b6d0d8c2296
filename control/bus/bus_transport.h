// The tool protocol on the session bus: messages are broadcast signals, the
// control serves the clipboard under its bus name, and a block a reply passes
// by handle is taken with TakeBlock. The subscription to the messages is the
// control's message hook: every request goes to FilterMessage.
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <string>

#include "control/protocol.h"

class QDBusMessage;

namespace fennick {

class BusTransport : public QObject, public ProtocolTransport {
  Q_OBJECT

 public:
  explicit BusTransport(QDBusConnection bus = QDBusConnection::sessionBus());
  ~BusTransport() override;

  // Takes the bus name, serves the clipboard and subscribes to the messages;
  // false, with the cause, when the bus or the name cannot be had (another
  // control serves this session).
  bool Start(std::string& error);
  void Broadcast(const std::string& message, int32_t wParam, int64_t lParam) override;

  // A tool that appears on the clipboard or in a request is watched, so that
  // what its conversation left is freed when it leaves the bus.
  void Watch(const QString& party);

 private slots:
  void OnMessage(const QDBusMessage& message);
  void OnPartyGone(const QString& party);

 private:
  QDBusConnection bus_;
  QDBusServiceWatcher watcher_;
  bool started_ = false;
};

}  // namespace fennick
