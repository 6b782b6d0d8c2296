#include "control/bus/bus_transport.h"

#include <QDBusMessage>
#include <utility>

#include "control/addin_app.h"
#include "control/bus/clipboard_service.h"

namespace fennick {

BusTransport::BusTransport(QDBusConnection bus)
    : bus_(std::move(bus)), watcher_(QString(), bus_, QDBusServiceWatcher::WatchForUnregistration) {
  connect(&watcher_, &QDBusServiceWatcher::serviceUnregistered, this, &BusTransport::OnPartyGone);
}

BusTransport::~BusTransport() {
  if (!started_) return;
  bus_.disconnect(QString(), QString(), FENNICK_PROTOCOL_INTERFACE, FENNICK_PROTOCOL_MEMBER, this,
                  SLOT(OnMessage(QDBusMessage)));
  bus_.unregisterObject(FENNICK_BUS_PATH);
  bus_.unregisterService(FENNICK_BUS_NAME);
}

bool BusTransport::Start(std::string& error) {
  if (!bus_.isConnected()) {
    error = "no session bus: " + bus_.lastError().message().toStdString();
    return false;
  }
  if (!bus_.registerService(FENNICK_BUS_NAME)) {
    error = "the bus name " FENNICK_BUS_NAME " is taken: another control serves this session";
    return false;
  }
  bus_.registerObject(FENNICK_BUS_PATH, new ClipboardService(*this), QDBusConnection::ExportAllSlots);
  bus_.connect(QString(), QString(), FENNICK_PROTOCOL_INTERFACE, FENNICK_PROTOCOL_MEMBER, this,
               SLOT(OnMessage(QDBusMessage)));
  started_ = true;
  return true;
}

void BusTransport::Broadcast(const std::string& message, int32_t wParam, int64_t lParam) {
  // The one reply that passes a block by handle: it waits for its tool's TakeBlock.
  if (message == FENNICK_MSG_THREAD_COLOR_ARRAY) Clipboard().Hand(static_cast<GlobalHandle>(wParam), conversation_);
  QDBusMessage signal = QDBusMessage::createSignal(FENNICK_BUS_PATH, FENNICK_PROTOCOL_INTERFACE, FENNICK_PROTOCOL_MEMBER);
  signal << QString::fromStdString(message) << wParam << static_cast<qlonglong>(lParam);
  bus_.send(signal);
}

void BusTransport::Watch(const QString& party) {
  if (!watcher_.watchedServices().contains(party)) watcher_.addWatchedService(party);
}

void BusTransport::OnMessage(const QDBusMessage& message) {
  const QList<QVariant> arguments = message.arguments();
  // Our own replies come back too; and a message of another shape is no message of ours.
  if (message.service() == bus_.baseService() || message.signature() != "six") return;
  const std::string name = arguments[0].toString().toStdString();
  const QString party = message.service();
  Watch(party);
  // A work may run a dialog whose loop takes the next request: the conversation is restored after.
  const std::string outer = std::exchange(conversation_, party.toStdString());
  const bool lookedAt = FilterMessage(RegisterWindowMessage(name), arguments[1].toInt(), arguments[2].toLongLong());
  if (lookedAt && name == FENNICK_MSG_PLUG_IN_ENDED) Clipboard().EndConversation(conversation_);
  conversation_ = outer;
}

void BusTransport::OnPartyGone(const QString& party) {
  watcher_.removeWatchedService(party);
  Clipboard().EndConversation(party.toStdString());
}

}  // namespace fennick
