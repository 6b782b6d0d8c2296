// The conversation between the control and tool packs, separate programs
// started from its tool bar: the registered messages and clipboard formats,
// the transport they travel by, and the control's side, FilterMessage and its
// works. Every message is a broadcast of (name, wParam, lParam); requests carry
// protocolNumber in wParam and a cookie of the tool's in lParam, which comes
// back unchanged in the reply. Bulk data crosses on the clipboard.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "control/protocol_clipboard.h"
#include "core/global_memory.h"
#include "fennick/protocol.h"

namespace fennick {

struct RegisteredName {
  uint32_t number;
  const char* name;
};

// The 21 messages, with the numbers of their string table.
inline constexpr std::array<RegisteredName, 21> kProtocolMessages{{
    {32204, FENNICK_MSG_CALL},
    {32215, FENNICK_MSG_GET_PREV_FILE},
    {32216, FENNICK_MSG_GET_FIRST},
    {32217, FENNICK_MSG_GET_LAST},
    {32203, FENNICK_MSG_CALLBACK},
    {32226, FENNICK_MSG_GET_SEL_EMB},
    {32227, FENNICK_MSG_EMB_SEL_CB},
    {32209, FENNICK_MSG_REQUEST_SAVE},
    {32224, FENNICK_MSG_REQ_MULTI_SAVE},
    {32219, FENNICK_MSG_FILE_SAVED},
    {32211, FENNICK_MSG_GET_WHOLE_FILE},
    {32212, FENNICK_MSG_WHOLE_FILE},
    {32214, FENNICK_MSG_REQ_COLOR_ARRAY},
    {32213, FENNICK_MSG_COLOR_ARRAY},
    {32223, FENNICK_MSG_REQ_THREAD_COLOR_ARRAY},
    {32222, FENNICK_MSG_THREAD_COLOR_ARRAY},
    {32220, FENNICK_MSG_GET_FILE_TYPE_LIST},
    {32221, FENNICK_MSG_FILE_TYPE_LIST},
    {32218, FENNICK_MSG_MESSAGE_RECEIVED},
    {32210, FENNICK_MSG_PLUG_IN_ENDED},  // "Plug-in ended", with its blank and hyphen
    {32208, FENNICK_MSG_PLUG_IN_STOP},
}};
inline constexpr RegisteredName kEmbroideryFileFormat{32205, FENNICK_FORMAT_EMBROIDERY_FILE};
inline constexpr RegisteredName kMultEmbroideryFilesFormat{32225, FENNICK_FORMAT_MULT_EMBROIDERY_FILES};

// The number of a registered message or clipboard format, the same in every
// process; 0 for a name of neither.
uint32_t RegisterWindowMessage(const std::string& name);
uint32_t RegisterClipboardFormat(const std::string& name);
// The name of a message number; "" for another number.
std::string MessageName(uint32_t number);

// How messages travel, and the clipboard the control serves to tools. A
// block set on the clipboard belongs to the clipboard from then on; emptying
// it frees them. Emptying takes effect only while the clipboard is open.
class ProtocolTransport {
 public:
  virtual ~ProtocolTransport() = default;
  // To every control and tool; never waits for them.
  virtual void Broadcast(const std::string& message, int32_t wParam, int64_t lParam) = 0;

  // The control's own use of the clipboard.
  bool OpenClipboard() { return clipboard_.Open(kControlParty); }
  void EmptyClipboard() { clipboard_.Empty(kControlParty); }
  void SetClipboardData(uint32_t format, GlobalHandle block) {
    clipboard_.Set(kControlParty, format, block, conversation_);
  }
  // The block under `format`, still the clipboard's; 0 for none.
  GlobalHandle GetClipboardData(uint32_t format) { return clipboard_.Get(kControlParty, format); }
  void CloseClipboard() { clipboard_.Close(kControlParty); }

  ProtocolClipboard& Clipboard() { return clipboard_; }

 protected:
  // The tool whose request is being served: what the control puts on the
  // clipboard meanwhile belongs to its conversation.
  std::string conversation_ = kControlParty;

 private:
  ProtocolClipboard clipboard_;
};

// A transport within one process: broadcasts are recorded. For tests.
class InMemoryTransport : public ProtocolTransport {
 public:
  struct Sent {
    std::string message;
    int32_t wParam;
    int64_t lParam;
    bool operator==(const Sent&) const = default;
  };
  void Broadcast(const std::string& message, int32_t wParam, int64_t lParam) override {
    sent.push_back({message, wParam, lParam});
  }

  std::vector<Sent> sent;
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
