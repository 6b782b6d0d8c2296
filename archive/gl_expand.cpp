// The Gl expander: table-driven decoding of the Huffman blocks and byte-wise
// copying of matches. Damaged streams stop cleanly.
#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

#include "archive/gl_codes.h"
#include "archive/gl_engine.h"

namespace fennick {
namespace {

constexpr int kCTableBits = 12;
constexpr int kPtTableBits = 8;
constexpr int kTreeNodes = 2 * kGlCSymbols - 1;  // 1,021
constexpr int kMaxEmptyReads = 5;

constexpr const char* kInternal1 = "Internal 1 error in Greenleaf Decompression routine";
constexpr const char* kInternal2 = "Internal 2 error in Greenleaf Decompression routine";

// Reads bits from the most significant down, with zeros past the end. Keeps
// the count of reads a 16-bit look-ahead filled byte by byte would have made
// past the end: those are the empty reads that end a truncated stream.
class BitReader {
 public:
  explicit BitReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

  uint32_t Peek16() const {
    const size_t index = static_cast<size_t>(position_ >> 3);
    const int shift = static_cast<int>(position_ & 7);
    uint32_t window = 0;
    if (index + 3 <= bytes_.size()) {
      window = uint32_t{bytes_[index]} << 16 | uint32_t{bytes_[index + 1]} << 8 | bytes_[index + 2];
    } else {
      for (size_t i = 0; i < 3; ++i) window = window << 8 | (index + i < bytes_.size() ? bytes_[index + i] : 0u);
    }
    return (window >> (8 - shift)) & 0xFFFF;
  }
  void Skip(int count) { position_ += static_cast<uint64_t>(count); }
  uint32_t Get(int count) {
    if (count == 0) return 0;
    const uint32_t value = Peek16() >> (16 - count);
    Skip(count);
    return value;
  }
  uint64_t EmptyReads() const {
    const uint64_t requested = (position_ + 16 + 7) / 8;
    return requested > bytes_.size() ? requested - bytes_.size() : 0;
  }

 private:
  std::span<const uint8_t> bytes_;
  uint64_t position_ = 0;
};

class Expander {
 public:
  Expander(std::span<const uint8_t> compressed, int level, std::vector<uint8_t>& output, size_t maxOutput)
      : bits_(compressed), windowMask_((size_t{1} << (level + 10)) - 1), output_(output), maxOutput_(maxOutput) {}

  GlResult Run() {
    output_.clear();
    uint16_t blockLeft = 0;
    while (result_.Ok() && bits_.EmptyReads() < kMaxEmptyReads) {
      if (blockLeft == 0) {
        blockLeft = static_cast<uint16_t>(bits_.Get(16));
        ReadBlockHeader();
        if (!result_.Ok()) break;
      }
      --blockLeft;  // a block size of 0 stands for 65,536 on purpose
      const int symbol = DecodeC();
      if (symbol < 256) {
        if (!Put(static_cast<uint8_t>(symbol))) break;
      } else if (symbol == kGlEndSymbol) {
        break;
      } else {
        if (!CopyMatch(symbol - kGlMatchOffset, DecodeP())) break;
      }
    }
    output_.resize(written_);
    return result_;
  }

 private:
  void Fail(int code, const std::string& text) {
    if (result_.Ok()) result_ = {code, text};
  }

  void ReadBlockHeader() {
    ReadLengthList(kGlTSymbols, kGlTSpecialIndex, ptLengths_, ptTable_);
    if (result_.Ok()) ReadCLengths();
    if (result_.Ok()) ReadLengthList(kGlPSymbols, -1, pLengths_, pTable_);
  }

  template <size_t N>
  void ReadLengthList(int symbols, int specialIndex, std::array<uint8_t, N>& lengths, std::array<uint16_t, 256>& table) {
    lengths.fill(0);
    const int n = static_cast<int>(bits_.Get(kGlPtCountBits));
    if (n == 0) {
      const uint32_t only = bits_.Get(kGlPtCountBits);
      if (only >= static_cast<uint32_t>(symbols)) return Fail(kGlInternalError, kInternal2);
      table.fill(static_cast<uint16_t>(only));
      return;
    }
    if (n > symbols) return Fail(kGlInternalError, kInternal1);
    for (int i = 0; i < n;) {
      int length = static_cast<int>(bits_.Peek16() >> 13);
      if (length == 7) {
        for (uint32_t mask = 1u << 12; (bits_.Peek16() & mask) != 0; mask >>= 1) ++length;
      }
      bits_.Skip(length < 7 ? 3 : length - 3);
      if (length > kGlMaxCodeLength) return Fail(kGlInternalError, kInternal1);
      lengths[static_cast<size_t>(i++)] = static_cast<uint8_t>(length);
      if (i == specialIndex) {
        for (uint32_t zeros = bits_.Get(2); zeros > 0; --zeros) lengths[static_cast<size_t>(i++)] = 0;
      }
    }
    MakeTable(std::span<const uint8_t>(lengths.data(), static_cast<size_t>(symbols)), kPtTableBits, table);
  }

  void ReadCLengths() {
    cLengths_.fill(0);
    const int n = static_cast<int>(bits_.Get(kGlCountBits));
    if (n == 0) {
      const uint32_t only = bits_.Get(kGlCountBits);
      if (only >= static_cast<uint32_t>(kGlCSymbols)) return Fail(kGlInternalError, kInternal2);
      cTable_.fill(static_cast<uint16_t>(only));
      return;
    }
    for (int i = 0; i < n;) {
      const int t = Decode(ptTable_, kPtTableBits, ptLengths_.data(), kGlTSymbols);
      if (t < 0) return;
      if (t > 2) {
        cLengths_[static_cast<size_t>(i++)] = static_cast<uint8_t>(t - 2);
        continue;
      }
      const int run = t == 0 ? 1 : t == 1 ? static_cast<int>(bits_.Get(4)) + 3 : static_cast<int>(bits_.Get(kGlCountBits)) + 20;
      if (i + run > kGlCSymbols) return Fail(kGlInternalError, kInternal1);
      i += run;  // the lengths are zero already
    }
    MakeTable(cLengths_, kCTableBits, cTable_);
  }

  // Fills a look-up table on the top `tableBits` bits; longer codes continue
  // in the shared tree arrays. Sums are checked in 16 bits as the format's
  // own tables are, so an overfull code shows as a table overrun.
  template <size_t TableSize>
  void MakeTable(std::span<const uint8_t> lengths, int tableBits, std::array<uint16_t, TableSize>& table) {
    std::array<uint32_t, kGlCSymbols> codes{};
    const uint32_t kraft = GlCanonicalCodes(lengths, std::span<uint32_t>(codes.data(), lengths.size()));
    if ((kraft & 0xFFFF) != 0) return Fail(kGlInternalError, kInternal1);
    table.fill(0);
    const int symbols = static_cast<int>(lengths.size());
    int nextNode = symbols;
    for (int symbol = 0; symbol < symbols; ++symbol) {
      const int length = lengths[static_cast<size_t>(symbol)];
      if (length == 0) continue;
      const uint32_t code = codes[static_cast<size_t>(symbol)];
      if (length <= tableBits) {
        const size_t first = size_t{code} << (tableBits - length);
        const size_t count = size_t{1} << (tableBits - length);
        if (first + count > TableSize) return Fail(kGlInternalError, kInternal2);
        std::fill_n(table.begin() + static_cast<ptrdiff_t>(first), count, static_cast<uint16_t>(symbol));
        continue;
      }
      const size_t index = code >> (length - tableBits);
      if (index >= TableSize) return Fail(kGlInternalError, kInternal2);
      uint16_t* link = &table[index];
      for (int bit = length - tableBits - 1; bit >= 0; --bit) {
        if (*link == 0) {
          if (nextNode >= kTreeNodes) return Fail(kGlInternalError, kInternal2);
          left_[static_cast<size_t>(nextNode)] = right_[static_cast<size_t>(nextNode)] = 0;
          *link = static_cast<uint16_t>(nextNode++);
        }
        link = ((code >> bit) & 1) != 0 ? &right_[*link] : &left_[*link];
      }
      *link = static_cast<uint16_t>(symbol);
    }
  }

  // One symbol: a table look-up, then the tree for codes longer than the
  // table. -1 after failing.
  template <size_t TableSize>
  int Decode(const std::array<uint16_t, TableSize>& table, int tableBits, const uint8_t* lengths, int symbols) {
    const uint32_t peek = bits_.Peek16();
    int symbol = table[peek >> (16 - tableBits)];
    for (uint32_t mask = 1u << (15 - tableBits); symbol >= symbols; mask >>= 1) {
      if (mask == 0) {
        Fail(kGlInternalError, kInternal2);
        return -1;
      }
      symbol = (peek & mask) != 0 ? right_[static_cast<size_t>(symbol)] : left_[static_cast<size_t>(symbol)];
    }
    bits_.Skip(lengths[symbol]);
    return symbol;
  }

  int DecodeC() { return Decode(cTable_, kCTableBits, cLengths_.data(), kGlCSymbols); }

  unsigned DecodeP() {
    const int bitLength = Decode(pTable_, kPtTableBits, pLengths_.data(), kGlPSymbols);
    if (bitLength <= 0) return 0;
    return (1u << (bitLength - 1)) + bits_.Get(bitLength - 1);
  }

  bool Reserve(size_t count) {
    if (written_ + count > maxOutput_) {
      char text[120];
      std::snprintf(text, sizeof text, "Expanded data runs past the limit of %zu bytes", maxOutput_);
      Fail(kGlWriteError, text);
      return false;
    }
    if (written_ + count > output_.size()) {
      output_.resize(std::min(maxOutput_, std::max<size_t>(2 * output_.size(), written_ + count + 65536)));
    }
    return true;
  }

  bool Put(uint8_t byte) {
    if (!Reserve(1)) return false;
    output_[written_++] = byte;
    return true;
  }

  // The source is (position - d - 1) modulo the window; slots never written
  // hold 0. Byte by byte, so that a match can run over its own output.
  bool CopyMatch(int length, unsigned distance) {
    if (!result_.Ok()) return false;
    const size_t back = (distance & windowMask_) + 1;
    const size_t room = std::min<size_t>(static_cast<size_t>(length), maxOutput_ - written_);
    Reserve(room);
    for (size_t k = 0; k < room; ++k) {
      output_[written_] = written_ >= back ? output_[written_ - back] : 0;
      ++written_;
    }
    return room == static_cast<size_t>(length) || Reserve(static_cast<size_t>(length) - room);
  }

  BitReader bits_;
  size_t windowMask_;
  std::vector<uint8_t>& output_;
  size_t maxOutput_;
  size_t written_ = 0;
  GlResult result_;
  std::array<uint16_t, 1u << kCTableBits> cTable_{};
  std::array<uint16_t, 1u << kPtTableBits> ptTable_{};
  std::array<uint16_t, 1u << kPtTableBits> pTable_{};
  std::array<uint16_t, kTreeNodes> left_{};
  std::array<uint16_t, kTreeNodes> right_{};
  std::array<uint8_t, kGlCSymbols> cLengths_{};
  std::array<uint8_t, kGlTSymbols> ptLengths_{};
  std::array<uint8_t, kGlPSymbols> pLengths_{};
};

}  // namespace

GlResult GlExpand(std::span<const uint8_t> compressed, int level, long compressedLength, std::vector<uint8_t>& output,
                  size_t maxOutput) {
  output.clear();
  if (compressedLength >= 0 && static_cast<size_t>(compressedLength) < compressed.size()) {
    compressed = compressed.first(static_cast<size_t>(compressedLength));
  }
  if (level == kGlCopyLevel) {
    const size_t count = std::min(compressed.size(), maxOutput);
    output.assign(compressed.begin(), compressed.begin() + static_cast<ptrdiff_t>(count));
    if (count < compressed.size()) {
      char text[120];
      std::snprintf(text, sizeof text, "Expanded data runs past the limit of %zu bytes", maxOutput);
      return {kGlWriteError, text};
    }
    return {};
  }
  if (GlResult check = GlCheckLevel(level); !check.Ok()) return check;
  auto expander = std::make_unique<Expander>(compressed, level, output, maxOutput);
  return expander->Run();
}

}  // namespace fennick
