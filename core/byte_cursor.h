// Bounds-checked reading and writing of byte layouts. Every format goes through
// these two classes; no format code does pointer arithmetic of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace fennick {

// Reads little- and big-endian values from a byte span. Running off the end is
// the end of the data: the read yields 0 (or an empty result), the cursor moves
// to the end and `Ok()` turns false for good.
class ByteReader {
 public:
  explicit ByteReader(std::span<const uint8_t> bytes, size_t offset = 0)
      : bytes_(bytes), offset_(offset <= bytes.size() ? offset : bytes.size()), ok_(offset <= bytes.size()) {}

  size_t Size() const { return bytes_.size(); }
  size_t Offset() const { return offset_; }
  size_t Remaining() const { return bytes_.size() - offset_; }
  bool Has(size_t count) const { return Remaining() >= count; }
  bool AtEnd() const { return offset_ >= bytes_.size(); }
  bool Ok() const { return ok_; }

  // Moves to an absolute offset; an offset past the end fails the cursor.
  void Seek(size_t offset) {
    if (offset > bytes_.size()) {
      Fail();
    } else {
      offset_ = offset;
    }
  }
  void Skip(size_t count) { Take(count); }

  uint8_t U8() { return Take(1) ? bytes_[offset_ - 1] : 0; }
  int8_t S8() { return static_cast<int8_t>(U8()); }
  uint16_t U16LE() { return static_cast<uint16_t>(Little(2)); }
  int16_t S16LE() { return static_cast<int16_t>(U16LE()); }
  uint32_t U24LE() { return static_cast<uint32_t>(Little(3)); }
  uint32_t U32LE() { return static_cast<uint32_t>(Little(4)); }
  int32_t S32LE() { return static_cast<int32_t>(U32LE()); }
  uint16_t U16BE() { return static_cast<uint16_t>(Big(2)); }
  int16_t S16BE() { return static_cast<int16_t>(U16BE()); }
  uint32_t U32BE() { return static_cast<uint32_t>(Big(4)); }
  int32_t S32BE() { return static_cast<int32_t>(U32BE()); }

  // The next `count` bytes; an empty span when fewer remain.
  std::span<const uint8_t> Bytes(size_t count) {
    return Take(count) ? bytes_.subspan(offset_ - count, count) : std::span<const uint8_t>();
  }

  // Text up to the next zero byte, which is consumed; at most `maxLength`
  // characters are kept. Without a zero the rest of the data is the text.
  std::string CString(size_t maxLength = SIZE_MAX) {
    std::string text;
    while (offset_ < bytes_.size()) {
      const char c = static_cast<char>(bytes_[offset_++]);
      if (c == '\0') return text;
      if (text.size() < maxLength) text.push_back(c);
    }
    return text;
  }

 private:
  bool Take(size_t count) {
    if (!Has(count)) {
      Fail();
      return false;
    }
    offset_ += count;
    return true;
  }
  void Fail() {
    offset_ = bytes_.size();
    ok_ = false;
  }
  uint64_t Little(size_t count) {
    if (!Take(count)) return 0;
    uint64_t value = 0;
    for (size_t i = count; i-- > 0;) value = (value << 8) | bytes_[offset_ - count + i];
    return value;
  }
  uint64_t Big(size_t count) {
    if (!Take(count)) return 0;
    uint64_t value = 0;
    for (size_t i = 0; i < count; ++i) value = (value << 8) | bytes_[offset_ - count + i];
    return value;
  }

  std::span<const uint8_t> bytes_;
  size_t offset_;
  bool ok_;
};

// Appends values to a byte vector, and patches values already written.
class ByteWriter {
 public:
  explicit ByteWriter(std::vector<uint8_t>& out) : out_(out) {}

  size_t Size() const { return out_.size(); }
  void U8(uint8_t value) { out_.push_back(value); }
  void U16LE(uint16_t value) { Little(value, 2); }
  void U32LE(uint32_t value) { Little(value, 4); }
  void S16LE(int16_t value) { U16LE(static_cast<uint16_t>(value)); }
  void S32LE(int32_t value) { U32LE(static_cast<uint32_t>(value)); }
  void U16BE(uint16_t value) { Big(value, 2); }
  void U32BE(uint32_t value) { Big(value, 4); }
  void Bytes(std::span<const uint8_t> bytes) { out_.insert(out_.end(), bytes.begin(), bytes.end()); }
  void Text(const std::string& text) { out_.insert(out_.end(), text.begin(), text.end()); }
  void Fill(uint8_t value, size_t count) { out_.insert(out_.end(), count, value); }

  // Overwrites bytes written earlier; the caller keeps the offset in range.
  void PatchU16LE(size_t offset, uint16_t value) {
    for (size_t i = 0; i < 2; ++i) out_.at(offset + i) = static_cast<uint8_t>(value >> (8 * i));
  }
  void PatchU32LE(size_t offset, uint32_t value) {
    for (size_t i = 0; i < 4; ++i) out_.at(offset + i) = static_cast<uint8_t>(value >> (8 * i));
  }

 private:
  void Little(uint64_t value, size_t count) {
    for (size_t i = 0; i < count; ++i) out_.push_back(static_cast<uint8_t>(value >> (8 * i)));
  }
  void Big(uint64_t value, size_t count) {
    for (size_t i = count; i-- > 0;) out_.push_back(static_cast<uint8_t>(value >> (8 * i)));
  }

  std::vector<uint8_t>& out_;
};

}  // namespace fennick
