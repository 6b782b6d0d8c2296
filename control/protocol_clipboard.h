// The conversation's clipboard as the control keeps it: one block per
// format, held open by one party at a time, and every block belonging to the
// conversation of the tool it was put there by or for, so that nothing of a
// conversation outlives it. A party is a tool's name on the bus; the control
// is kControlParty.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "core/global_memory.h"

namespace fennick {

inline const std::string kControlParty;

class ProtocolClipboard {
 public:
  ProtocolClipboard() = default;
  ProtocolClipboard(const ProtocolClipboard&) = delete;
  ProtocolClipboard& operator=(const ProtocolClipboard&) = delete;
  ~ProtocolClipboard();

  // False while another party holds it open.
  bool Open(const std::string& party);
  // Frees every block; only for the party that holds it open.
  void Empty(const std::string& party);
  // The clipboard takes the block, replacing the format's one, and counts it
  // to `owner`'s conversation. Without the clipboard held open by `party`
  // the block is freed and the result is false.
  bool Set(const std::string& party, uint32_t format, GlobalHandle block, const std::string& owner);
  // The format's block, still the clipboard's; 0 for none or when `party`
  // does not hold the clipboard open.
  GlobalHandle Get(const std::string& party, uint32_t format) const;
  void Close(const std::string& party);

  // A block a reply passed by handle, kept for `owner` to take.
  void Hand(GlobalHandle block, const std::string& owner);
  // The block handed to `party`, now the caller's; 0 when it was not.
  GlobalHandle Take(GlobalHandle block, const std::string& party);

  // The party's conversation is over: its blocks are freed and the clipboard
  // is released if it held it.
  void EndConversation(const std::string& party);

  bool HeldBy(const std::string& party) const { return open_ && holder_ == party; }
  // The blocks the clipboard and the hand-over hold.
  size_t BlockCount() const { return slots_.size() + handed_.size(); }

 private:
  struct Slot {
    GlobalHandle block;
    std::string owner;
  };

  bool open_ = false;
  std::string holder_;
  std::map<uint32_t, Slot> slots_;
  std::map<GlobalHandle, std::string> handed_;
};

}  // namespace fennick
