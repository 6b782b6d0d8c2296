#include <cstdio>
#include <filesystem>
#include <iostream>

#include "archive/file_operations.h"
#include "cli/commands.h"
#include "core/design_path.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "core/text.h"
#include "threads/colour_conversion.h"
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

// Rounding rules of a format may move a needle point by this many stitch
// units; closing rules may add or leave out a few points at the end: a
// closing step, the last move before a trailer, or one point per colour where
// a reader counts colour records among the records.
constexpr int64_t kRoundingUnits = 2;
constexpr int64_t kClosingPoints = 2;

std::string Plural(int64_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

// "OK" when every colour and needle point came back; "OK, ..." naming what a
// format's own rules changed (a unit of rounding, a closing step, the last
// stitches its reader leaves unread); otherwise the first difference.
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
  int64_t deviation = 0;
  for (size_t i = 0; i < std::min(expected.size(), actual.size()); ++i) {
    const int64_t off = std::max(std::llabs(expected[i].x - actual[i].x), std::llabs(expected[i].y - actual[i].y));
    if (expected[i].block != actual[i].block || off > kRoundingUnits) {
      return FormatText("stitch %zu at (%lld, %lld) in colour %zu, not (%lld, %lld) in colour %zu", i + 1,
                        static_cast<long long>(actual[i].x), static_cast<long long>(actual[i].y), actual[i].block + 1,
                        static_cast<long long>(expected[i].x), static_cast<long long>(expected[i].y),
                        expected[i].block + 1);
    }
    deviation = std::max(deviation, off);
  }
  const int64_t tail = static_cast<int64_t>(actual.size()) - static_cast<int64_t>(expected.size());
  if (std::llabs(tail) > kClosingPoints + static_cast<int64_t>(written.threads.size())) {
    return std::to_string(actual.size()) + " stitches instead of " + std::to_string(expected.size());
  }
  std::string verdict = "OK";
  if (deviation > 0) verdict += ", points within " + Plural(deviation, "unit", "units");
  if (tail > 0) verdict += ", " + Plural(tail, "closing stitch", "closing stitches") + " added";
  if (tail < 0) verdict += ", last " + Plural(-tail, "stitch", "stitches") + " not read back";
  return verdict;
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
    // Colours go to the format's own first, as a host's Save As does, so that
    // they can come back exactly.
    Design written = sample;
    written.name = path;
    // SEW keeps the JEF palette.
    ConvertThreadsForFormat(written, FormatExtension(file.code == kFormatSew ? kFormatJef : file.code));
    const Design expected = written;
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
    const std::string verdict = loaded ? CompareRoundTrip(expected, read) : "could not be read back";
    if (verdict.rfind("OK", 0) != 0) ++failures;
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
