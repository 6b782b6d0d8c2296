// The Gl compressor: window matching into a symbol buffer, sent as blocks of
// canonical Huffman codes.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <cstdio>
#include <memory>

#include "archive/gl_codes.h"
#include "archive/gl_engine.h"

namespace fennick {
namespace {

constexpr int kMinMatch = 3;
constexpr int kMaxMatch = 256;
constexpr int kMaxCandidates = 128;
constexpr int kHashHeads = 4096;
constexpr int kMirror = 255;          // window bytes repeated behind its end
constexpr int kWindowSlack = 258;     // room behind the window for the mirror
constexpr int64_t kFirstStageMargin = 260;
constexpr int64_t kLookahead = 256;
constexpr size_t kSymbolBufferSize = 8192;
constexpr size_t kSymbolBufferLimit = 8162;
constexpr size_t kOutputBufferSize = 512;
constexpr int64_t kNone = -1;

int BitLength(unsigned value) {
  int bits = 0;
  for (; value != 0; value >>= 1) ++bits;
  return bits;
}

// Packs bits from the most significant bit of each byte down. `stop` turns
// true once a full output buffer brings the output to `stopAt` bytes, which is
// how uncompressible input is noticed.
class BitWriter {
 public:
  BitWriter(std::vector<uint8_t>& out, size_t stopAt) : out_(out), stopAt_(stopAt) {}

  void Put(int count, uint32_t value) {
    if (count == 0) return;
    accumulator_ = (accumulator_ << count) | (value & ((1u << count) - 1));
    pending_ += count;
    while (pending_ >= 8) {
      pending_ -= 8;
      Emit(static_cast<uint8_t>(accumulator_ >> pending_));
    }
  }
  // The closing 7 zero bits: whatever is pending fills one last byte.
  void Finish() {
    if (pending_ > 0) Emit(static_cast<uint8_t>(accumulator_ << (8 - pending_)));
    pending_ = 0;
  }
  bool Stopped() const { return stopped_; }

 private:
  void Emit(uint8_t byte) {
    out_.push_back(byte);
    if (out_.size() % kOutputBufferSize == 0 && out_.size() >= stopAt_) stopped_ = true;
  }

  std::vector<uint8_t>& out_;
  size_t stopAt_;
  uint64_t accumulator_ = 0;
  int pending_ = 0;
  bool stopped_ = false;
};

// Collects symbols and sends them in blocks. The buffer holds a flag byte per
// 8 symbols (0x80 first, a set bit for a match), a byte per symbol, and two
// more bytes of distance per match.
class BlockEncoder {
 public:
  explicit BlockEncoder(BitWriter& bits) : bits_(bits) {}

  void Output(int symbol, unsigned distance) {
    flagMask_ >>= 1;
    if (flagMask_ == 0) {
      flagMask_ = 0x80;
      if (bufferUsed_ >= kSymbolBufferLimit) {
        SendBlock();
        bufferUsed_ = 0;
      }
      flagIndex_ = bufferUsed_++;
      buffer_[flagIndex_] = 0;
    }
    buffer_[bufferUsed_++] = static_cast<uint8_t>(symbol);
    ++cCounts_[symbol];
    if (symbol >= 256) {
      buffer_[flagIndex_] |= flagMask_;
      buffer_[bufferUsed_++] = static_cast<uint8_t>(distance >> 8);
      buffer_[bufferUsed_++] = static_cast<uint8_t>(distance);
      ++pCounts_[BitLength(distance)];
    }
  }

  void Finish() {
    SendBlock();
    bits_.Finish();
  }

 private:
  void SendBlock() {
    uint16_t blockSize = 0;
    const int cRoot = GlMakeCodeLengths(cCounts_, cLengths_, blockSize);
    bits_.Put(16, blockSize);
    if (cRoot >= kGlCSymbols) {
      GlCanonicalCodes(cLengths_, cCodes_);
      CountTFrequencies();
      uint16_t unused = 0;
      const int tRoot = GlMakeCodeLengths(tCounts_, tLengths_, unused);
      if (tRoot >= kGlTSymbols) {
        GlCanonicalCodes(tLengths_, tCodes_);
        WriteLengthList(tLengths_, kGlTSpecialIndex);
      } else {
        bits_.Put(kGlPtCountBits, 0);
        bits_.Put(kGlPtCountBits, static_cast<uint32_t>(tRoot));
        tCodes_.fill(0);
      }
      WriteCLengths();
    } else {
      // One symbol: no lengths, and no bits per symbol.
      bits_.Put(kGlPtCountBits, 0);
      bits_.Put(kGlPtCountBits, 0);
      bits_.Put(kGlCountBits, 0);
      bits_.Put(kGlCountBits, static_cast<uint32_t>(cRoot));
      cCodes_.fill(0);
    }
    uint16_t unused = 0;
    const int pRoot = GlMakeCodeLengths(pCounts_, pLengths_, unused);
    if (pRoot >= kGlPSymbols) {
      GlCanonicalCodes(pLengths_, pCodes_);
      WriteLengthList(pLengths_, -1);
    } else {
      bits_.Put(kGlPtCountBits, 0);
      bits_.Put(kGlPtCountBits, static_cast<uint32_t>(pRoot));
      pCodes_.fill(0);
    }

    size_t index = 0;
    uint8_t flags = 0;
    for (unsigned i = 0; i < blockSize; ++i) {
      if (i % 8 == 0) {
        flags = buffer_[index++];
      } else {
        flags = static_cast<uint8_t>(flags << 1);
      }
      if ((flags & 0x80) != 0) {
        const int symbol = buffer_[index++] + 256;
        bits_.Put(cLengths_[symbol], cCodes_[symbol]);
        const unsigned distance = static_cast<unsigned>(buffer_[index] << 8 | buffer_[index + 1]);
        index += 2;
        const int bitLength = BitLength(distance);
        bits_.Put(pLengths_[bitLength], pCodes_[bitLength]);
        if (bitLength > 1) bits_.Put(bitLength - 1, distance);
      } else {
        const int symbol = buffer_[index++];
        bits_.Put(cLengths_[symbol], cCodes_[symbol]);
      }
    }
    cCounts_.fill(0);
    pCounts_.fill(0);
  }

  int UsedCLengths() const {
    int n = kGlCSymbols;
    while (n > 0 && cLengths_[n - 1] == 0) --n;
    return n;
  }

  // Zero runs of 1-2 are that many T 0, 3-18 one T 1, 19 a T 0 and a T 1,
  // longer ones a T 2; a length k is T k + 2.
  template <typename Visit>
  void ForEachCLengthToken(Visit visit) const {
    const int n = UsedCLengths();
    for (int i = 0; i < n;) {
      const int length = cLengths_[i++];
      if (length != 0) {
        visit(length + 2, 0, 0);
        continue;
      }
      int run = 1;
      while (i < n && cLengths_[i] == 0) {
        ++i;
        ++run;
      }
      if (run <= 2) {
        for (int k = 0; k < run; ++k) visit(0, 0, 0);
      } else if (run <= 18) {
        visit(1, 4, run - 3);
      } else if (run == 19) {
        visit(0, 0, 0);
        visit(1, 4, 15);
      } else {
        visit(2, kGlCountBits, run - 20);
      }
    }
  }

  void CountTFrequencies() {
    tCounts_.fill(0);
    ForEachCLengthToken([&](int t, int, int) { ++tCounts_[t]; });
  }

  void WriteCLengths() {
    bits_.Put(kGlCountBits, static_cast<uint32_t>(UsedCLengths()));
    ForEachCLengthToken([&](int t, int extraBits, int extra) {
      bits_.Put(tLengths_[t], tCodes_[t]);
      bits_.Put(extraBits, static_cast<uint32_t>(extra));
    });
  }

  // Lengths below 7 in 3 bits, longer ones as k - 3 bits of ones closed by a 0.
  template <size_t N>
  void WriteLengthList(const std::array<uint8_t, N>& lengths, int specialIndex) {
    int n = static_cast<int>(N);
    while (n > 0 && lengths[n - 1] == 0) --n;
    bits_.Put(kGlPtCountBits, static_cast<uint32_t>(n));
    for (int i = 0; i < n;) {
      const int length = lengths[i++];
      if (length <= 6) {
        bits_.Put(3, static_cast<uint32_t>(length));
      } else {
        bits_.Put(length - 3, (1u << (length - 3)) - 2);
      }
      if (i == specialIndex) {
        while (i < 6 && lengths[i] == 0) ++i;
        bits_.Put(2, static_cast<uint32_t>(i - 3));
      }
    }
  }

  BitWriter& bits_;
  std::array<uint8_t, kSymbolBufferSize> buffer_{};
  size_t bufferUsed_ = 0;
  size_t flagIndex_ = 0;
  uint8_t flagMask_ = 0;
  std::array<uint16_t, kGlCSymbols> cCounts_{};
  std::array<uint16_t, kGlPSymbols> pCounts_{};
  std::array<uint16_t, kGlTSymbols> tCounts_{};
  std::array<uint8_t, kGlCSymbols> cLengths_{};
  std::array<uint8_t, kGlPSymbols> pLengths_{};
  std::array<uint8_t, kGlTSymbols> tLengths_{};
  std::array<uint32_t, kGlCSymbols> cCodes_{};
  std::array<uint32_t, kGlPSymbols> pCodes_{};
  std::array<uint32_t, kGlTSymbols> tCodes_{};
};

// The window with its hash chains. Positions are counted over the whole input;
// a position is a candidate while its window slot still holds its byte.
class MatchFinder {
 public:
  MatchFinder(std::span<const uint8_t> input, int windowBits)
      : input_(input),
        window_(int64_t{1} << windowBits),
        mask_(window_ - 1),
        bytes_(static_cast<size_t>(window_ + kWindowSlack)),
        previous_(static_cast<size_t>(window_), kNone) {
    heads_.fill(kNone);
  }

  // The first window's worth; the bytes after the input's end stay 0.
  void ReadFirstWindow() {
    const size_t count = std::min(input_.size(), static_cast<size_t>(window_));
    std::copy_n(input_.begin(), count, bytes_.begin());
    std::copy_n(bytes_.begin(), kMirror, bytes_.begin() + window_);
    readEnd_ = static_cast<int64_t>(count);
  }

  bool InputLeft() const { return readEnd_ < static_cast<int64_t>(input_.size()); }
  int64_t ReadEnd() const { return readEnd_; }

  // Reads one byte into the oldest slot, which takes that slot's position out
  // of the chains.
  void ReadByte() {
    const size_t slot = static_cast<size_t>(readEnd_ & mask_);
    const uint8_t byte = input_[static_cast<size_t>(readEnd_)];
    bytes_[slot] = byte;
    if (slot < kMirror) bytes_[slot + static_cast<size_t>(window_)] = byte;
    ++readEnd_;
  }

  void Link(int64_t position) {
    const size_t slot = static_cast<size_t>(position & mask_);
    const int hash = Hash(slot);
    previous_[slot] = heads_[hash];
    heads_[hash] = position;
  }

  // The longest match at `position` among the newest 128 candidates (0 when
  // under 3 bytes), the newest winning ties. Lengths run over whatever the
  // window holds past the input's end; callers clip them.
  int Find(int64_t position, unsigned& distance) const {
    const size_t here = static_cast<size_t>(position & mask_);
    const int64_t oldestLive = std::max<int64_t>(0, readEnd_ - window_);
    int best = 0;
    int64_t candidate = heads_[Hash(here)];
    for (int tries = 0; candidate >= oldestLive && tries < kMaxCandidates; ++tries) {
      const size_t there = static_cast<size_t>(candidate & mask_);
      if (bytes_[there + static_cast<size_t>(best)] == bytes_[here + static_cast<size_t>(best)] &&
          bytes_[there] == bytes_[here] && bytes_[there + 1] == bytes_[here + 1] &&
          bytes_[there + 2] == bytes_[here + 2]) {
        const int length = MatchLength(there, here);
        if (length > best) {
          int64_t d = static_cast<int64_t>(here) - static_cast<int64_t>(there) - 1;
          if (d < 0) d += window_;
          if (d >= window_) break;
          best = length;
          distance = static_cast<unsigned>(d);
          if (best >= kMaxMatch) break;
        }
      }
      candidate = previous_[there];
    }
    return best;
  }

 private:
  // Equal bytes from the two slots on, at most 256; the first three are known
  // equal. Eight at a time: the mirror and the slack keep every load inside.
  int MatchLength(size_t there, size_t here) const {
    int length = kMinMatch;
    while (length + 8 <= kMaxMatch) {
      const uint64_t difference = Load64(there + static_cast<size_t>(length)) ^ Load64(here + static_cast<size_t>(length));
      if (difference != 0) {
        const int equalBits =
            std::endian::native == std::endian::little ? std::countr_zero(difference) : std::countl_zero(difference);
        return length + equalBits / 8;
      }
      length += 8;
    }
    while (length < kMaxMatch && bytes_[there + static_cast<size_t>(length)] == bytes_[here + static_cast<size_t>(length)]) {
      ++length;
    }
    return length;
  }
  uint64_t Load64(size_t index) const {
    uint64_t value;
    std::memcpy(&value, &bytes_[index], sizeof value);
    return value;
  }

  int Hash(size_t slot) const {
    return ((bytes_[slot] & 15) << 8) ^ (bytes_[slot + 1] << 4) ^ bytes_[slot + 2];
  }

  std::span<const uint8_t> input_;
  int64_t window_;
  int64_t mask_;
  std::vector<uint8_t> bytes_;
  std::vector<int64_t> previous_;
  std::array<int64_t, kHashHeads> heads_{};
  int64_t readEnd_ = 0;
};

// Returns false when the output reached the input's size first.
bool Pack(std::span<const uint8_t> input, int level, bool failUncompressible, std::vector<uint8_t>& output) {
  BitWriter bits(output, failUncompressible ? input.size() : SIZE_MAX);
  BlockEncoder encoder(bits);
  auto finder = std::make_unique<MatchFinder>(input, level + 10);

  finder->ReadFirstWindow();
  int64_t position = 0;
  unsigned distance = 0;
  while (finder->ReadEnd() - position > kFirstStageMargin && !bits.Stopped()) {
    const int length = finder->Find(position, distance);
    if (length < kMinMatch) {
      encoder.Output(input[static_cast<size_t>(position)], 0);
      finder->Link(position++);
    } else {
      encoder.Output(length + kGlMatchOffset, distance);
      for (int k = 0; k < length; ++k) finder->Link(position++);
    }
  }

  while (finder->ReadEnd() - position < kLookahead && finder->InputLeft()) finder->ReadByte();

  while (position < finder->ReadEnd() && !bits.Stopped()) {
    int length = static_cast<int>(std::min<int64_t>(finder->Find(position, distance), finder->ReadEnd() - position));
    if (length < kMinMatch) {
      length = 1;
      encoder.Output(input[static_cast<size_t>(position)], 0);
    } else {
      encoder.Output(length + kGlMatchOffset, distance);
    }
    for (int k = 0; k < length; ++k) {
      if (finder->InputLeft()) finder->ReadByte();
      finder->Link(position++);
    }
  }
  if (bits.Stopped()) return false;
  // The end symbol goes through the buffer like a match of distance 0.
  encoder.Output(kGlEndSymbol, 0);
  encoder.Finish();
  return !bits.Stopped();
}

}  // namespace

GlResult GlCompress(std::span<const uint8_t> input, int level, bool failUncompressible, std::vector<uint8_t>& output,
                    int& usedLevel) {
  output.clear();
  usedLevel = level;
  if (level != kGlCopyLevel) {
    if (GlResult check = GlCheckLevel(level); !check.Ok()) return check;
  }
  if (level != kGlCopyLevel && !Pack(input, level, failUncompressible, output)) {
    output.clear();
    usedLevel = kGlCopyLevel;
  }
  if (usedLevel == kGlCopyLevel) output.assign(input.begin(), input.end());
  return {};
}

}  // namespace fennick
