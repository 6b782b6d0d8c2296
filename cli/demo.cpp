#include <cstdio>
#include <filesystem>
#include <iostream>

#include "archive/file_operations.h"
#include "cli/commands.h"
#include "core/design_path.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "formats/hus.h"
#include "threads/palettes.h"
#include "threads/thread_charts.h"
#include "tools/sample_design.h"

namespace fennick::cli {
namespace {

struct Penetration {
  int64_t x, y;
  size_t block;
  bool operator==(const Penetration&) const = default;
};

// Where the needle goes down, relative to the first such point, with the
// colour block of each. Stitches on the spot (anchors, split remainders) are
// left out: formats fold them into the jumps they anchor.
std::vector<Penetration> Penetrations(const Design& design) {
  std::vector<Penetration> points;
  int64_t x = 0, y = 0;
  size_t block = 0;
  for (const StitchNode& node : design.stitches) {
    x += node.dx;
    y += node.dy;
    if (node.IsColorStop()) ++block;
    if (node.flags == 0 && node.HasMove()) points.push_back({x, y, block});
  }
  for (size_t i = points.size(); i-- > 0;) {
    points[i].x -= points[0].x;
    points[i].y -= points[0].y;
  }
  return points;
}

// "OK", or the first difference between the design and its reading.
std::string CompareRoundTrip(const Design& written, const Design& read) {
  if (written.threads.size() != read.threads.size()) {
    return std::to_string(read.threads.size()) + " colours instead of " + std::to_string(written.threads.size());
  }
  if (!read.defaultColors) {
    for (size_t i = 0; i < written.threads.size(); ++i) {
      if (written.threads[i].rgb != read.threads[i].rgb) {
        return "colour " + std::to_string(i + 1) + " is " + HexColor(read.threads[i].rgb) + " instead of " +
               HexColor(written.threads[i].rgb);
      }
    }
  }
  const std::vector<Penetration> expected = Penetrations(written), actual = Penetrations(read);
  for (size_t i = 0; i < std::min(expected.size(), actual.size()); ++i) {
    if (!(expected[i] == actual[i])) {
      char text[160];
      std::snprintf(text, sizeof text, "stitch %zu at (%lld, %lld) in colour %zu, not (%lld, %lld) in colour %zu",
                    i + 1, static_cast<long long>(actual[i].x), static_cast<long long>(actual[i].y),
                    actual[i].block + 1, static_cast<long long>(expected[i].x),
                    static_cast<long long>(expected[i].y), expected[i].block + 1);
      return text;
    }
  }
  if (expected.size() != actual.size()) {
    return std::to_string(actual.size()) + " stitches instead of " + std::to_string(expected.size());
  }
  return "OK";
}

// The sample's colours as a plain PES file keeps them: the nearest palette
// entries, the extended ones included in a "#PES0040" file.
Design WithPaletteColors(const Design& sample, const std::vector<uint8_t>& bytes) {
  const bool extended = bytes.size() >= 8 && std::string(bytes.begin(), bytes.begin() + 8) == "#PES0040";
  Design expected = sample;
  for (ThreadColor& thread : expected.threads) {
    uint8_t r, g, b;
    const int index = PecNearestColor(static_cast<uint8_t>(thread.rgb), static_cast<uint8_t>(thread.rgb >> 8),
                                      static_cast<uint8_t>(thread.rgb >> 16), false, extended);
    thread.rgb = PecColorRgb(index, r, g, b);
  }
  return expected;
}

// The sample's colours as HUS and VIP files keep them: the nearest entries
// of the default palette, or of each thread's chart (0 counting as 1).
Design WithStoredColors(const Design& sample, FormatCode code) {
  Design expected = sample;
  for (ThreadColor& thread : expected.threads) {
    if (code == kFormatHus) {
      thread.rgb = DefaultPaletteColor(HusNearestColor(static_cast<uint8_t>(thread.rgb),
                                                       static_cast<uint8_t>(thread.rgb >> 8),
                                                       static_cast<uint8_t>(thread.rgb >> 16))).rgb;
    } else {
      NearestChartName(thread.rgb, thread.chartIndex == 0 ? 1 : thread.chartIndex, &thread.rgb);
    }
  }
  return expected;
}

struct DemoFile {
  std::string name;
  FormatCode code;
  int pes5;  // -1: not a PES file
};

// Stores every file in DIR/designs.zip, reads the DST one back out of it and
// prints its table line, compared with the plain file. The count of failures.
int StoreInZip(const std::string& directory, const std::vector<std::pair<std::string, std::vector<uint8_t>>>& files) {
  const std::string zipFile = directory + "/designs.zip";
  int failures = 0;
  for (const auto& [name, bytes] : files) {
    DesignPath member;
    member.SetZipFile(zipFile);
    member.SetFileName(name);
    if (WriteFileBlock(bytes, member, kWriteNoDialog) != 0) {
      ReportError(zipFile, "cannot store " + name);
      ++failures;
    }
  }
  Design plain, fromZip;
  const bool loaded = LoadDesign(directory + "/fennick-demo.dst", plain) &&
                      LoadDesign("Zip:" + zipFile + ":fennick-demo.dst", fromZip);
  const std::string verdict = loaded ? CompareRoundTrip(plain, fromZip) : "could not be read back";
  if (verdict != "OK") ++failures;
  std::error_code error;
  const auto size = std::filesystem::file_size(zipFile, error);
  std::printf("%-22s %9llu %9lld %8zu  %s\n", "designs.zip (dst)", error ? 0ULL : static_cast<unsigned long long>(size),
              loaded ? static_cast<long long>(fromZip.DisplayedStitchCount()) : 0LL, fromZip.threads.size(),
              verdict.c_str());
  return failures;
}

}  // namespace

int RunDemo(const Arguments& arguments) {
  std::string directory = "demo-out";
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--out" && i + 1 < arguments.size()) {
      directory = arguments[++i];
    } else {
      ReportError("demo", "unknown argument \"" + arguments[i] + "\"");
      return 2;
    }
  }
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  if (error) {
    ReportError(directory, "cannot make the folder: " + error.message());
    return 1;
  }

  const Design sample = SampleDesign();
  std::printf("Sample design: %lld stitches, %zu colours, written to %s/ with a PNG thumbnail of each\n\n",
              static_cast<long long>(sample.DisplayedStitchCount()),
              sample.threads.size(), directory.c_str());
  std::printf("%-22s %9s %9s %8s  %s\n", "file", "bytes", "stitches", "colours", "round trip");
  int failures = 0;
  std::vector<std::string> extensions;
  WritableExtensions(&extensions);
  std::vector<DemoFile> files;
  std::vector<std::pair<std::string, std::vector<uint8_t>>> stored;  // what goes into designs.zip
  for (const std::string& extension : extensions) {
    const FormatCode code = FormatFromExtension(extension);
    if (FindFormat(code)->write == nullptr) continue;
    files.push_back({"fennick-demo." + extension, code, code == kFormatPes ? 0 : -1});
    if (code == kFormatPes) files.push_back({"fennick-demo-v5.pes", code, 1});
  }
  for (const DemoFile& file : files) {
    const std::string path = directory + "/" + file.name;
    Design written = sample;
    written.name = path;
    if (file.pes5 != -1) {
      ConversionSettings settings;
      ReadConversion("pes", settings);
      settings.pes5 = file.pes5;
      SetSaveAsConversion(settings);
    }
    std::vector<uint8_t> bytes;
    if (WriteDesignFile(written, bytes, file.code) == 0 || !SaveFile(path, bytes)) {
      ++failures;
      continue;
    }
    stored.emplace_back(file.name, bytes);
    Design read;
    const bool loaded = LoadDesign(path, read);
    // Each PES path keeps the colours its own way: palette entries, or the
    // thread records the writer chose (which it left in the written design).
    Design expected = sample;
    if (file.pes5 == 0) expected = WithPaletteColors(sample, bytes);
    if (file.pes5 == 1) expected.threads = written.threads;
    if (file.code == kFormatHus || file.code == kFormatVip) expected = WithStoredColors(sample, file.code);
    const std::string verdict = loaded ? CompareRoundTrip(expected, read) : "could not be read back";
    if (verdict != "OK") ++failures;
    // A thumbnail of what was read back, as the browser would show it.
    BitmapOptions thumbnail;
    thumbnail.size = 200;
    if (loaded && !SavePicture(read, thumbnail, path + ".png")) ++failures;
    std::printf("%-22s %9zu %9lld %8zu  %s\n", file.name.c_str(), bytes.size(),
                loaded ? static_cast<long long>(read.DisplayedStitchCount()) : 0LL, read.threads.size(), verdict.c_str());
  }
  failures += StoreInZip(directory, stored);
  return failures == 0 ? 0 : 1;
}

}  // namespace fennick::cli
