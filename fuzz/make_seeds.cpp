// Generated seeds: for every design file given, its block form, the file each
// writer makes of it, a ZIP holding it, Gl streams of its bytes and a
// round-trip input built from its first moves. Usage: make_seeds OUT FILE...
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>

#include "archive/gl_engine.h"
#include "archive/zip_member.h"
#include "core/embroidery_file.h"
#include "core/file_io.h"
#include "core/format_table.h"
#include "core/text.h"
#include "fuzz/fuzz_support.h"
#include "tools/sample_design.h"

namespace fs = std::filesystem;
using namespace fennick;

namespace {

void Put(const fs::path& out, const std::string& target, const std::string& name, std::span<const uint8_t> bytes) {
  fs::create_directories(out / target);
  fuzz::WriteFile(out / target / name, bytes);
}

// Records of the round-trip target: format, scale, then dx, dy, flags.
std::vector<uint8_t> RoundTripInput(const Design& design, uint8_t format) {
  std::vector<uint8_t> bytes{format, 0};
  for (const StitchNode& node : design.stitches) {
    if (bytes.size() > 1500) break;
    const auto clamp = [](int32_t v) { return static_cast<uint8_t>(static_cast<int8_t>(std::clamp(v, -127, 127))); };
    bytes.push_back(clamp(node.dx));
    bytes.push_back(clamp(node.dy));
    bytes.push_back(static_cast<uint8_t>((node.IsColorStop() ? 1 : 0) | (node.IsJump() ? 2 : 0)));
  }
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: make_seeds OUT FILE...\n");
    return 2;
  }
  fuzz::Setup();
  const fs::path out = argv[1];
  for (int i = 2; i < argc; ++i) {
    const fs::path file = fs::absolute(argv[i]);
    const std::string stem = file.stem().string() + "_" + AsciiLower(file.extension().string().substr(1));
    Design design;
    if (ReadDesignFile(design, file.string()) != 0 || design.stitches.Empty()) continue;

    Design copy = design;
    Put(out, "embroidery_file", stem + ".blk", EncodeEmbroideryFile(copy));
    std::vector<Design> list{design, Design()};
    Put(out, "design_list", stem + ".list", EncodeDesignList(list));

    for (int code = kFormatPes; code <= kFormatVip; ++code) {
      Design written = design;
      written.name = file.string();
      std::vector<uint8_t> bytes;
      if (WriteDesignFile(written, bytes, code) == 0) continue;
      const FormatEntry* format = FindFormat(code);
      Put(out, "read_" + AsciiLower(format->extension), stem + "." + AsciiLower(format->extension), bytes);
    }

    std::vector<uint8_t> raw;
    ReadWholeFile(file.string(), raw);
    raw.resize(std::min<size_t>(raw.size(), 4096));
    for (int level = kGlMinLevel; level <= kGlMaxLevel; level += 2) {
      std::vector<uint8_t> packed{static_cast<uint8_t>(level)};
      std::vector<uint8_t> stream;
      int used = 0;
      if (GlCompress(raw, level, false, stream, used).Ok()) packed.insert(packed.end(), stream.begin(), stream.end());
      Put(out, "gl_expand", stem + "_" + std::to_string(level) + ".gl", packed);
    }
    std::vector<uint8_t> plain{0};
    plain.insert(plain.end(), raw.begin(), raw.begin() + static_cast<long>(std::min<size_t>(raw.size(), 1024)));
    Put(out, "gl_roundtrip", stem + ".raw", plain);

    fs::create_directories(out / "zip");
    const std::string zipFile = (out / "zip" / (stem + ".zip")).string();
    fs::remove(zipFile);
    WriteZipMember(DesignPath("Zip:" + zipFile + ":" + file.filename().string()), raw);
    WriteZipMember(DesignPath("Zip:" + zipFile + ":folder/second.txt"), std::span(raw).first(raw.size() / 3));

    Put(out, "write_roundtrip", stem + ".moves", RoundTripInput(design, static_cast<uint8_t>(i)));
    Put(out, "resize", stem + ".moves", RoundTripInput(design, static_cast<uint8_t>(i)));
  }
  // Pieces the resize engine re-stitches for certain.
  Put(out, "resize", "column.moves", RoundTripInput(SatinColumnSample(60, 200), 0));
  Put(out, "resize", "fill.moves", RoundTripInput(FillSample(200, 120), 1));
  return 0;
}
