// A tool's side of the conversation on the session bus: requests broadcast
// with the tool's cookie and their replies waited for, and the control's
// clipboard. A request refused while the control serves another tool gets no
// reply at all, so an unanswered request is asked again until the wait ends.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

class QDBusMessage;

namespace fennick {

class ToolClient : public QObject {
  Q_OBJECT

 public:
  // `number` is the protocol number from the command line; `cookie` the
  // lParam of this tool's requests.
  ToolClient(int32_t number, int64_t cookie, QDBusConnection bus = QDBusConnection::sessionBus());

  // Subscribes to the messages; false, with the cause, without a bus.
  bool Connect(std::string& error);

  // Broadcasts `request` and waits for `reply` carrying the cookie: its
  // wParam, or nothing when none came within the wait (or the control
  // stopped). While `unanswered` says the request may have been dropped, it
  // is asked again every retry period; once it says no, the reply is waited
  // for without a limit.
  std::optional<int32_t> Ask(const char* request, const char* reply, const std::function<bool()>& unanswered = {});
  // A message that has no reply ("QXMessageReceived", "Plug-in ended").
  void Tell(const char* message);
  // Returns once what was told has left for the bus: before the program ends.
  void Flush();

  // The protocol has one clipboard, so two tools that fetch or save at once
  // could take each other's blocks. The pack's tools take turns at it: the bus
  // queues them by a name of their own. False when the wait ran out.
  bool TakeTurn();
  void EndTurn();

  // The clipboard's block of `format`, copied out; nothing, with the cause,
  // when the clipboard is held by another or has no such block.
  std::optional<std::vector<uint8_t>> Fetch(const char* format, std::string& error);
  // Empties the clipboard and puts `bytes` on it under `format`.
  bool Offer(const char* format, std::span<const uint8_t> bytes, std::string& error);
  // The block a reply passed by handle, which the control then frees.
  std::optional<std::vector<uint8_t>> TakeBlock(uint32_t handle, std::string& error);

  // True once the control broadcast "QXPlugInStop".
  bool Stopped() const { return stopped_; }

  std::chrono::milliseconds retryPeriod{500};
  std::chrono::milliseconds wait{30000};

 signals:
  // A reply, or the control's end, came.
  void Woken();

 private slots:
  void OnMessage(const QDBusMessage& message);

 private:
  // Calls the clipboard; the reply, or nothing with the cause.
  std::optional<QDBusMessage> Call(const char* method, const QList<QVariant>& arguments, std::string& error);
  std::optional<std::vector<uint8_t>> Receive(const QDBusMessage& reply, std::string& error);

  int32_t number_;
  int64_t cookie_;
  QDBusConnection bus_;
  std::string awaited_;
  std::optional<int32_t> answer_;
  bool stopped_ = false;
};

}  // namespace fennick
