// One reader of the format table, chosen at build time by FENNICK_FUZZ_FORMAT,
// fed the bytes as ReadDesignFile hands them over. For EMD the input may carry
// its colour file too: after the first "\n--col--\n" the rest goes beside the
// design as its .col file.
#include <cstdint>
#include <string_view>

#include "core/format_table.h"
#include "core/text.h"
#include "fuzz/fuzz_support.h"

namespace {

constexpr std::string_view kColorSeparator = "\n--col--\n";

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fennick::fuzz::Setup();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fennick;
  const FormatEntry* format = FindFormat(FENNICK_FUZZ_FORMAT);
  const std::string extension = AsciiLower(format->extension);
  const auto designPath = fuzz::ScratchFolder() / ("design." + extension);

  std::string_view whole(reinterpret_cast<const char*>(data), size);
  size_t designSize = size;
  const auto colorPath = fuzz::ScratchFolder() / "design.col";
  if (FENNICK_FUZZ_FORMAT == kFormatEmd) {
    const size_t split = whole.find(kColorSeparator);
    if (split != std::string_view::npos) {
      designSize = split;
      const size_t colorStart = split + kColorSeparator.size();
      fuzz::WriteFile(colorPath, {data + colorStart, size - colorStart});
    } else {
      std::error_code ignored;
      std::filesystem::remove(colorPath, ignored);
    }
  }

  std::vector<uint8_t> bytes(data, data + designSize);
  bytes.push_back(0);
  Design design;
  design.name = designPath.string();
  if (format->read(design, bytes)) fuzz::CheckUsable(design, format->extension);
  return 0;
}
