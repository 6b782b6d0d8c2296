#include "control/bus/clipboard_service.h"

#include <QDBusMessage>

#include "control/bus/bus_transport.h"
#include "core/file_io.h"
#include "core/sealed_memfd.h"

namespace fennick {
namespace {

constexpr char kNotOpen[] = "org.selvane.FennickAddin.Error.NotOpen";
constexpr char kNoBlock[] = "org.selvane.FennickAddin.Error.NoBlock";
constexpr char kBadBlock[] = "org.selvane.FennickAddin.Error.BadBlock";

}  // namespace

ClipboardService::ClipboardService(BusTransport& transport) : QObject(&transport), transport_(transport) {}

std::string ClipboardService::Caller() {
  const QString party = message().service();
  transport_.Watch(party);
  return party.toStdString();
}

bool ClipboardService::OpenClipboard() { return transport_.Clipboard().Open(Caller()); }

void ClipboardService::EmptyClipboard() { transport_.Clipboard().Empty(Caller()); }

void ClipboardService::CloseClipboard() { transport_.Clipboard().Close(Caller()); }

void ClipboardService::SetClipboardData(const QString& format, const QDBusUnixFileDescriptor& fd) {
  const std::string party = Caller();
  ProtocolClipboard& clipboard = transport_.Clipboard();
  const uint32_t number = RegisterClipboardFormat(format.toStdString());
  if (number == 0) return sendErrorReply(kBadBlock, "unknown clipboard format \"" + format + "\"");
  if (!clipboard.HeldBy(party)) return sendErrorReply(kNotOpen, "the clipboard is not open for this tool");
  SealedBytes bytes;
  std::string error;
  if (!fd.isValid() || !bytes.Map(fd.fileDescriptor(), error)) return sendErrorReply(kBadBlock, QString::fromStdString(error));
  if (bytes.Bytes().empty()) return sendErrorReply(kBadBlock, "the block is empty");
  const GlobalHandle block = GlobalAllocCopy(bytes.Bytes());
  if (block == 0) return sendErrorReply(kBadBlock, "no memory for the block");
  clipboard.Set(party, number, block, party);
}

QDBusUnixFileDescriptor ClipboardService::GetClipboardData(const QString& format) {
  const std::string party = Caller();
  const uint32_t number = RegisterClipboardFormat(format.toStdString());
  if (!transport_.Clipboard().HeldBy(party)) {
    sendErrorReply(kNotOpen, "the clipboard is not open for this tool");
    return {};
  }
  return Send(transport_.Clipboard().Get(party, number));
}

QDBusUnixFileDescriptor ClipboardService::TakeBlock(uint handle) {
  const GlobalHandle block = transport_.Clipboard().Take(handle, Caller());
  QDBusUnixFileDescriptor sent = Send(block);
  GlobalFree(block);
  return sent;
}

QDBusUnixFileDescriptor ClipboardService::Send(uint32_t block) {
  if (block == 0) {
    sendErrorReply(kNoBlock, "no block");
    return {};
  }
  std::string error;
  // The reply holds a duplicate; this one closes when it goes.
  const FileDescriptor fd(MakeSealedMemfd({GlobalLock(block), GlobalSize(block)}, error));
  GlobalUnlock(block);
  if (fd.Get() < 0) {
    sendErrorReply(kBadBlock, QString::fromStdString(error));
    return {};
  }
  return QDBusUnixFileDescriptor(fd.Get());
}

}  // namespace fennick
