#include "control/protocol_clipboard.h"

namespace fennick {

ProtocolClipboard::~ProtocolClipboard() {
  for (const auto& [format, slot] : slots_) GlobalFree(slot.block);
  for (const auto& [block, owner] : handed_) GlobalFree(block);
}

bool ProtocolClipboard::Open(const std::string& party) {
  if (open_ && holder_ != party) return false;
  open_ = true;
  holder_ = party;
  return true;
}

void ProtocolClipboard::Empty(const std::string& party) {
  if (!HeldBy(party)) return;
  for (const auto& [format, slot] : slots_) GlobalFree(slot.block);
  slots_.clear();
}

bool ProtocolClipboard::Set(const std::string& party, uint32_t format, GlobalHandle block, const std::string& owner) {
  if (!HeldBy(party)) {
    GlobalFree(block);
    return false;
  }
  Slot& slot = slots_[format];
  if (slot.block != 0 && slot.block != block) GlobalFree(slot.block);
  slot = {block, owner};
  return true;
}

GlobalHandle ProtocolClipboard::Get(const std::string& party, uint32_t format) const {
  const auto found = slots_.find(format);
  return HeldBy(party) && found != slots_.end() ? found->second.block : 0;
}

void ProtocolClipboard::Close(const std::string& party) {
  if (HeldBy(party)) open_ = false;
}

void ProtocolClipboard::Hand(GlobalHandle block, const std::string& owner) {
  if (block != 0) handed_[block] = owner;
}

GlobalHandle ProtocolClipboard::Take(GlobalHandle block, const std::string& party) {
  const auto found = handed_.find(block);
  if (found == handed_.end() || found->second != party) return 0;
  handed_.erase(found);
  return block;
}

void ProtocolClipboard::EndConversation(const std::string& party) {
  for (auto slot = slots_.begin(); slot != slots_.end();) {
    if (slot->second.owner == party) {
      GlobalFree(slot->second.block);
      slot = slots_.erase(slot);
    } else {
      ++slot;
    }
  }
  std::erase_if(handed_, [&](const auto& entry) {
    if (entry.second == party) GlobalFree(entry.first);
    return entry.second == party;
  });
  if (holder_ == party) open_ = false;
}

}  // namespace fennick
