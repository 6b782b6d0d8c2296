#include "toolpack/tool_client.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDBusUnixFileDescriptor>
#include <QEventLoop>
#include <QTimer>
#include <utility>

#include "core/file_io.h"
#include "core/sealed_memfd.h"
#include "fennick/protocol.h"

namespace fennick {

ToolClient::ToolClient(int32_t number, int64_t cookie, QDBusConnection bus)
    : number_(number), cookie_(cookie), bus_(std::move(bus)) {}

bool ToolClient::Connect(std::string& error) {
  if (!bus_.isConnected()) {
    error = "no session bus: " + bus_.lastError().message().toStdString();
    return false;
  }
  bus_.connect(QString(), QString(), FENNICK_PROTOCOL_INTERFACE, FENNICK_PROTOCOL_MEMBER, this,
               SLOT(OnMessage(QDBusMessage)));
  // A control that leaves the bus will answer nothing more: as good as a stop.
  auto* watcher = new QDBusServiceWatcher(FENNICK_BUS_NAME, bus_, QDBusServiceWatcher::WatchForUnregistration, this);
  connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this](const QString& name) {
    // The watch is by namespace: the tools' turn name lies under it too.
    if (name != FENNICK_BUS_NAME) return;
    stopped_ = true;
    emit Woken();
  });
  return true;
}

void ToolClient::OnMessage(const QDBusMessage& message) {
  if (message.signature() != "six") return;
  const QList<QVariant> arguments = message.arguments();
  const QString name = arguments[0].toString();
  if (name == FENNICK_MSG_PLUG_IN_STOP) {
    stopped_ = true;
  } else if (!answer_ && name.toStdString() == awaited_ && arguments[2].toLongLong() == cookie_) {
    answer_ = arguments[1].toInt();
  } else {
    return;
  }
  emit Woken();
}

void ToolClient::Tell(const char* message) {
  QDBusMessage signal = QDBusMessage::createSignal(FENNICK_BUS_PATH, FENNICK_PROTOCOL_INTERFACE, FENNICK_PROTOCOL_MEMBER);
  signal << QString(message) << number_ << static_cast<qlonglong>(cookie_);
  bus_.send(signal);
}

namespace {
constexpr char kTurnName[] = "org.selvane.FennickAddin.ToolTurn";
}  // namespace

bool ToolClient::TakeTurn() {
  QDBusConnectionInterface* bus = bus_.interface();
  const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> queued = bus->registerService(
      kTurnName, QDBusConnectionInterface::QueueService, QDBusConnectionInterface::DontAllowReplacement);
  if (!queued.isValid()) return false;
  // Ownership is asked rather than signalled: a signal of an earlier turn can
  // still be on its way.
  const auto deadline = std::chrono::steady_clock::now() + wait;
  while (bus->serviceOwner(kTurnName).value() != bus_.baseService()) {
    if (stopped_ || std::chrono::steady_clock::now() >= deadline) {
      EndTurn();  // out of the queue
      return false;
    }
    QEventLoop loop;
    QTimer::singleShot(20, &loop, &QEventLoop::quit);
    loop.exec();
  }
  return true;
}

void ToolClient::EndTurn() { bus_.interface()->unregisterService(kTurnName); }

void ToolClient::Flush() {
  // The bus answers in order: its reply comes after everything sent before.
  bus_.call(QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Peer",
                                           "Ping"));
}

std::optional<int32_t> ToolClient::Ask(const char* request, const char* reply, const std::function<bool()>& unanswered) {
  awaited_ = reply;
  answer_.reset();
  QEventLoop loop;
  connect(this, &ToolClient::Woken, &loop, &QEventLoop::quit);
  QTimer retry;
  retry.setInterval(retryPeriod);
  auto deadline = std::chrono::steady_clock::now() + wait;
  connect(&retry, &QTimer::timeout, &loop, [&] {
    if (unanswered && !unanswered()) {
      deadline = std::chrono::steady_clock::time_point::max();  // taken: its reply will come
    } else if (std::chrono::steady_clock::now() >= deadline) {
      loop.quit();
    } else {
      Tell(request);
    }
  });
  Tell(request);
  retry.start();
  if (!answer_ && !stopped_) loop.exec();
  awaited_.clear();
  return stopped_ ? std::nullopt : std::exchange(answer_, std::nullopt);
}

std::optional<QDBusMessage> ToolClient::Call(const char* method, const QList<QVariant>& arguments, std::string& error) {
  QDBusMessage call = QDBusMessage::createMethodCall(FENNICK_BUS_NAME, FENNICK_BUS_PATH, FENNICK_CLIPBOARD_INTERFACE, method);
  call.setArguments(arguments);
  QDBusMessage reply = bus_.call(call);
  if (reply.type() != QDBusMessage::ReplyMessage) {
    error = std::string(method) + ": " + reply.errorMessage().toStdString();
    return std::nullopt;
  }
  return reply;
}

std::optional<std::vector<uint8_t>> ToolClient::Receive(const QDBusMessage& reply, std::string& error) {
  const QDBusUnixFileDescriptor fd = reply.arguments().value(0).value<QDBusUnixFileDescriptor>();
  SealedBytes bytes;
  if (!fd.isValid() || !bytes.Map(fd.fileDescriptor(), error)) return std::nullopt;
  return std::vector<uint8_t>(bytes.Bytes().begin(), bytes.Bytes().end());
}

std::optional<std::vector<uint8_t>> ToolClient::Fetch(const char* format, std::string& error) {
  const std::optional<QDBusMessage> opened = Call("OpenClipboard", {}, error);
  if (!opened) return std::nullopt;
  if (!opened->arguments().value(0).toBool()) {
    error = "the clipboard is held by another program";
    return std::nullopt;
  }
  std::optional<std::vector<uint8_t>> bytes;
  if (const std::optional<QDBusMessage> got = Call("GetClipboardData", {QString(format)}, error)) {
    bytes = Receive(*got, error);
  }
  std::string ignored;
  Call("CloseClipboard", {}, ignored);
  return bytes;
}

bool ToolClient::Offer(const char* format, std::span<const uint8_t> bytes, std::string& error) {
  const FileDescriptor fd(MakeSealedMemfd(bytes, error));
  if (fd.Get() < 0) return false;
  const std::optional<QDBusMessage> opened = Call("OpenClipboard", {}, error);
  if (!opened) return false;
  if (!opened->arguments().value(0).toBool()) {
    error = "the clipboard is held by another program";
    return false;
  }
  const bool set = Call("EmptyClipboard", {}, error).has_value() &&
             Call("SetClipboardData", {QString(format), QVariant::fromValue(QDBusUnixFileDescriptor(fd.Get()))}, error)
                 .has_value();
  std::string ignored;
  Call("CloseClipboard", {}, ignored);
  return set;
}

std::optional<std::vector<uint8_t>> ToolClient::TakeBlock(uint32_t handle, std::string& error) {
  const std::optional<QDBusMessage> got = Call("TakeBlock", {QVariant::fromValue(handle)}, error);
  return got ? Receive(*got, error) : std::nullopt;
}

}  // namespace fennick
