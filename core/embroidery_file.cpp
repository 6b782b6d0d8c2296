#include "core/embroidery_file.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

#include "core/byte_cursor.h"
#include "core/design_path.h"
#include "core/format_table.h"

namespace fennick {
namespace {

constexpr std::string_view kTrailerHeader = "1ThreadColors\n";
constexpr size_t kThreadRecordSize = 46;
constexpr size_t kColorNameField = 30;
// The last byte of the name field always stays zero.
constexpr size_t kColorNameLimit = 29;
constexpr size_t kStitchRecordSize = 5;

// Texts travel as zero-terminated strings: anything after an embedded zero
// could never be read back, so it is not written.
std::string_view CText(const std::string& text) { return std::string_view(text.c_str()); }

void WriteText(ByteWriter& out, std::string_view text) {
  out.Text(std::string(text));
  out.U8(0);
}

// "%02i%s": the length in at least two digits, then the text. A length of 100
// or more prints three digits and spoils the trailer from there on; readers
// are built for exactly that, so it is not prevented.
void AppendField(std::string& trailer, std::string_view text) {
  if (text.size() < 10) trailer.push_back('0');
  trailer += std::to_string(text.size());
  trailer += text;
}

std::string ThreadTrailer(const std::vector<ThreadColor>& threads) {
  std::string trailer(kTrailerHeader);
  for (const ThreadColor& thread : threads) {
    AppendField(trailer, CText(thread.chart));
    AppendField(trailer, CText(thread.brand));
    AppendField(trailer, CText(thread.catalogNumber));
    AppendField(trailer, CText(thread.description));
    trailer.push_back('\n');
  }
  return trailer;
}

int32_t SourceFormatOf(const Design& design) {
  // Unsigned, so that an absurd formatVersion wraps instead of overflowing.
  uint32_t value = static_cast<uint32_t>(design.formatVersion) * 100u;
  const FormatCode code = FormatFromExtension(DesignPath(design.name).GetExtension());
  if (code != kFormatUnknown) value += static_cast<uint32_t>(code);
  return static_cast<int32_t>(value);
}

// Two characters read the way atoi reads them: blanks, a sign, then digits up
// to the first other character. Gives -9 to 99.
int FieldLength(std::string_view text) {
  text = text.substr(0, 2);
  size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
  const bool negative = i < text.size() && text[i] == '-';
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
  int value = 0;
  for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) value = value * 10 + (text[i] - '0');
  return negative ? -value : value;
}

// Takes one length-prefixed field off the front of `rest`. False ends the
// decoding: a negative length, or a field that runs past the end of the text
// (it keeps what is there). Both come only from overlong or damaged text.
bool TakeField(std::string_view& rest, std::string& field) {
  const int length = FieldLength(rest);
  if (length < 0) return false;
  const size_t size = static_cast<size_t>(length);
  field = rest.substr(std::min<size_t>(2, rest.size()), size);
  if (rest.size() < 2 + size) return false;
  rest.remove_prefix(2 + size);
  return true;
}

// The trailer gives back the strings the records have no room for. Text that
// is not a trailer is plain notes and changes nothing.
void DecodeTrailer(const std::string& notes, std::vector<ThreadColor>& threads) {
  std::string_view rest(notes);
  if (!rest.starts_with(kTrailerHeader)) return;
  rest.remove_prefix(kTrailerHeader.size());
  for (size_t i = 0; i < threads.size(); ++i) {
    ThreadColor& thread = threads[i];
    for (std::string* field : {&thread.chart, &thread.brand, &thread.catalogNumber, &thread.description}) {
      if (!TakeField(rest, *field)) return;
    }
    if (i + 1 < threads.size()) {
      if (rest.empty()) return;
      rest.remove_prefix(1);  // the line end, whatever it holds
    }
  }
}

// Reads field by field and stops at the first one the block cannot hold; what
// was read by then stays in the design.
void ReadBlock(Design& design, std::span<const uint8_t> block) {
  ByteReader in(block);
  if (!in.Has(8)) return;
  design.sourceFormat = in.S32LE();
  design.blobWord = in.S32LE();
  design.name = in.CString();
  if (!in.Has(16)) return;
  design.maxX = in.S32LE();
  design.maxY = in.S32LE();
  design.minX = in.S32LE();
  design.minY = in.S32LE();

  // A count is believed only when its records fit in what is left, so that a
  // damaged block can neither allocate much nor loop for long.
  if (!in.Has(4)) return;
  const uint32_t threadCount = in.U32LE();
  if (threadCount > in.Remaining() / kThreadRecordSize) return;
  design.threads.reserve(threadCount);
  for (uint32_t i = 0; i < threadCount; ++i) {
    ThreadColor thread;
    thread.stitchCount = in.S32LE();
    thread.threadLength = in.S32LE();
    thread.rgb = in.U32LE();
    thread.chartIndex = in.S32LE();
    ByteReader colorName(in.Bytes(kColorNameField));
    thread.colorName = colorName.CString();
    design.threads.push_back(std::move(thread));
  }

  if (!in.Has(4)) return;
  const uint32_t stitchCount = in.U32LE();
  if (stitchCount > in.Remaining() / kStitchRecordSize) return;
  design.stitches.Reserve(stitchCount);
  for (uint32_t i = 0; i < stitchCount; ++i) {
    const uint32_t flags = in.U8() & (STITCH_COLORSTOP | STITCH_JUMP);
    const int32_t dx = in.S16LE();
    const int32_t dy = in.S16LE();
    design.stitches.PushBack(dx, dy, flags);
  }

  // One byte left is at most the zero of an empty text.
  if (in.Offset() + 1 < in.Size()) design.notes = in.CString();
  if (!design.threads.empty() && !design.notes.empty()) DecodeTrailer(design.notes, design.threads);
}

}  // namespace

std::vector<uint8_t> EncodeEmbroideryFile(Design& design) {
  if (design.threads.empty() && design.stitches.Empty() && design.notes.empty()) return {};
  try {
    design.NormalizeColorStops();  // its result does not matter here
    design.sourceFormat = SourceFormatOf(design);
    if (!design.threads.empty()) design.notes = ThreadTrailer(design.threads);
    const std::string_view notes = CText(design.notes);

    std::vector<uint8_t> bytes;
    bytes.reserve(8 + design.name.size() + 1 + 24 + kThreadRecordSize * design.threads.size() +
                  kStitchRecordSize * design.stitches.Size() + notes.size() + 1);
    ByteWriter out(bytes);
    out.S32LE(design.sourceFormat);
    out.S32LE(design.blobWord);
    WriteText(out, CText(design.name));
    out.S32LE(design.maxX);
    out.S32LE(design.maxY);
    out.S32LE(design.minX);
    out.S32LE(design.minY);

    out.U32LE(static_cast<uint32_t>(design.threads.size()));
    for (const ThreadColor& thread : design.threads) {
      out.S32LE(thread.stitchCount);
      out.S32LE(thread.threadLength);
      out.U32LE(thread.rgb);
      out.S32LE(thread.chartIndex);
      const std::string_view colorName = CText(thread.colorName).substr(0, kColorNameLimit);
      out.Text(std::string(colorName));
      out.Fill(0, kColorNameField - colorName.size());
    }

    out.U32LE(static_cast<uint32_t>(design.stitches.Size()));
    for (const StitchNode& node : design.stitches) {
      // Only the low 16 bits of a move are kept, without any test, by design.
      out.U8(static_cast<uint8_t>(node.flags));
      out.S16LE(static_cast<int16_t>(node.dx));
      out.S16LE(static_cast<int16_t>(node.dy));
    }

    if (!notes.empty()) WriteText(out, notes);
    return bytes;
  } catch (...) {
    return {};
  }
}

void DecodeEmbroideryFile(Design& design, std::span<const uint8_t> block) {
  design.threads.clear();
  design.stitches.Clear();
  try {
    ReadBlock(design, block);
  } catch (...) {
    // Out of memory on a large block: the reading ends where it stood.
  }
}

std::vector<uint8_t> EncodeDesignList(std::vector<Design>& designs) {
  std::vector<uint8_t> payload;
  ByteWriter out(payload);
  out.U32LE(static_cast<uint32_t>(designs.size()));
  for (Design& design : designs) {
    const std::vector<uint8_t> block = EncodeEmbroideryFile(design);
    out.U32LE(static_cast<uint32_t>(block.size()));
    out.Bytes(block);
  }
  return payload;
}

std::vector<Design> DecodeDesignList(std::span<const uint8_t> payload) {
  std::vector<Design> designs;
  ByteReader in(payload);
  const uint32_t count = in.U32LE();
  for (uint32_t i = 0; i < count && in.Has(4); ++i) {
    const uint32_t size = in.U32LE();
    if (!in.Has(size)) break;
    DecodeEmbroideryFile(designs.emplace_back(), payload.subspan(in.Offset(), size));
    in.Skip(size);
  }
  return designs;
}

GlobalHandle BuildEmbroideryFile(Design& design) {
  const std::vector<uint8_t> bytes = EncodeEmbroideryFile(design);
  return GlobalAllocCopy(bytes, kDesignBlockFlags);
}

void ParseEmbroideryFile(Design& design, GlobalHandle block) {
  if (block == 0) return;
  const size_t size = GlobalSize(block);
  uint8_t* const bytes = size != 0 ? GlobalLock(block) : nullptr;
  // Decoding throws nothing, so the lock taken here is always given back.
  DecodeEmbroideryFile(design, bytes != nullptr ? std::span<const uint8_t>(bytes, size) : std::span<const uint8_t>());
  if (bytes != nullptr) GlobalUnlock(block);
}

}  // namespace fennick
