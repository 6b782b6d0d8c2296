// The clipboard the control serves on the bus, for tools: each call works on
// the transport's clipboard as the calling tool, known by its bus name.
#pragma once

#include <QDBusContext>
#include <QDBusUnixFileDescriptor>
#include <QObject>

#include "fennick/protocol.h"

namespace fennick {

class BusTransport;

class ClipboardService : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", FENNICK_CLIPBOARD_INTERFACE)

 public:
  explicit ClipboardService(BusTransport& transport);

 public slots:
  bool OpenClipboard();
  void EmptyClipboard();
  void SetClipboardData(const QString& format, const QDBusUnixFileDescriptor& fd);
  QDBusUnixFileDescriptor GetClipboardData(const QString& format);
  void CloseClipboard();
  QDBusUnixFileDescriptor TakeBlock(uint handle);

 private:
  std::string Caller();
  // A memfd of the block's bytes for the reply; an error reply without one.
  QDBusUnixFileDescriptor Send(uint32_t block);

  BusTransport& transport_;
};

}  // namespace fennick
