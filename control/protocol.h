// The conversation between the control and tool packs, separate programs
// started from its tool bar: the registered messages and clipboard formats,
// the transport they travel by, and the control's side, FilterMessage and its
// works. Every message is a broadcast of (name, wParam, lParam); requests carry
// protocolNumber in wParam and a cookie of the tool's in lParam, which comes
// back unchanged in the reply. Bulk data crosses on the clipboard.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "core/global_memory.h"

namespace fennick {

struct RegisteredName {
  uint32_t number;
  const char* name;
};

// The 21 messages, with the numbers of their string table.
inline constexpr std::array<RegisteredName, 21> kProtocolMessages{{
    {32204, "QXCall"},
    {32215, "QXGetPrevFile"},
    {32216, "QXGetFirst"},
    {32217, "QXGetLast"},
    {32203, "QXCallback"},
    {32226, "QXGetSelEmb"},
    {32227, "QXEmbSelCB"},
    {32209, "QXRequestSave"},
    {32224, "QXReqMultiSave"},
    {32219, "QXFileSaved"},
    {32211, "QXGetWholeFile"},
    {32212, "QXWholeFile"},
    {32214, "QXReqColorArray"},
    {32213, "QXColorArray"},
    {32223, "QXReqThreadColorArray"},
    {32222, "QXThreadColorArray"},
    {32220, "QXGetFileTypeList"},
    {32221, "QXFileTypeList"},
    {32218, "QXMessageReceived"},
    {32210, "Plug-in ended"},  // with its blank and hyphen, unlike the others
    {32208, "QXPlugInStop"},
}};
inline constexpr RegisteredName kEmbroideryFileFormat{32205, "QXEmbroideryFile"};
inline constexpr RegisteredName kMultEmbroideryFilesFormat{32225, "QXMultEmbroideryFiles"};

// The number of a registered message or clipboard format, the same in every
// process; 0 for a name of neither.
uint32_t RegisterWindowMessage(const std::string& name);
uint32_t RegisterClipboardFormat(const std::string& name);
// The name of a message number; "" for another number.
std::string MessageName(uint32_t number);

// How messages and clipboard blocks travel. A block set on the clipboard
// belongs to the clipboard from then on; emptying it frees them. Emptying
// takes effect only while the clipboard is open.
class ProtocolTransport {
 public:
  virtual ~ProtocolTransport() = default;
  // To every control and tool; never waits for them.
  virtual void Broadcast(const std::string& message, int32_t wParam, int64_t lParam) = 0;
  virtual bool OpenClipboard() = 0;
  virtual void EmptyClipboard() = 0;
  virtual void SetClipboardData(uint32_t format, GlobalHandle block) = 0;
  // The block under `format`, still the clipboard's; 0 for none.
  virtual GlobalHandle GetClipboardData(uint32_t format) = 0;
  virtual void CloseClipboard() = 0;
};

// A transport within one process: broadcasts are recorded, the clipboard is a
// table of blocks. For tests, and for a tool and a control that share a process.
class InMemoryTransport : public ProtocolTransport {
 public:
  struct Sent {
    std::string message;
    int32_t wParam;
    int64_t lParam;
    bool operator==(const Sent&) const = default;
  };
  ~InMemoryTransport() override;
  void Broadcast(const std::string& message, int32_t wParam, int64_t lParam) override;
  bool OpenClipboard() override;
  void EmptyClipboard() override;
  void SetClipboardData(uint32_t format, GlobalHandle block) override;
  GlobalHandle GetClipboardData(uint32_t format) override;
  void CloseClipboard() override;

  std::vector<Sent> sent;
  bool open = false;
  std::map<uint32_t, GlobalHandle> clipboard;
};

// The control's hook: acts on a message it takes from its queue. False when
// the message is not looked at (wParam other than protocolNumber, a number
// outside the table, or no transport); true when it is consumed, answered or
// refused. A request that arrives while busy is dropped without a reply.
bool FilterMessage(uint32_t message, int32_t wParam, int64_t lParam);

// The works behind the requests, through the module's transport. Each returns
// what the reply's wParam carries.
int32_t SendCurrentDesign();
int32_t SendSelection();
void TakeDesign();
void TakeDesigns();
int32_t SendWholeFile();
int32_t SendColorArray();
int32_t SendThreadColors();  // the handle of the colour table's block
int32_t SendFileTypes();

// The file type list: the nine writable formats' names, each ended by a zero byte.
std::vector<uint8_t> FileTypeList();

}  // namespace fennick
