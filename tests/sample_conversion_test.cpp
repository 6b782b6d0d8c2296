// Every real sample converted to every writable format through the save
// pipeline. The bytes are held to a manifest (data/conversion_bytes.txt) so
// that any change to a writer's output shows up here and has to be owned:
// rows that a deliberate change moved name it in their note. Run with
// FENNICK_WRITE_CONVERSION_BYTES=1 to rewrite the manifest; unchanged rows
// keep their notes, changed ones are marked "changed" for a person to explain.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/file_io.h"
#include "core/format_table.h"
#include "core/preferences.h"
#include "core/text.h"
#include "tests/test_support.h"
#include "tools/save_pipeline.h"

namespace fennick {
namespace {

namespace fs = std::filesystem;

const char* const kSamples[] = {
    "geometric_objects.dst", "geometric_objects.emd", "geometric_objects.exp", "geometric_objects.hus",
    "geometric_objects.jef", "geometric_objects.pcs", "geometric_objects.pec", "geometric_objects.pes",
    "geometric_objects.phb", "geometric_objects.phc", "geometric_objects.sew", "geometric_objects.shv",
    "geometric_objects.vip", "geometric_objects.xxx", "reorder.pes",           "shamrockin.emd",
    "shamrockin.pes",        "Star.pcs",              "star.pes",              "Star.phb",
    "Star.shv",              "Star.vip",              "Star.xxx",
};

struct Target {
  const char* label;
  FormatCode format;
  bool pes5;
};
const Target kTargets[] = {
    {"PES", kFormatPes, false}, {"PES5", kFormatPes, true}, {"SEW", kFormatSew, false},
    {"JEF", kFormatJef, false}, {"HUS", kFormatHus, false}, {"PCS", kFormatPcs, false},
    {"DST", kFormatDst, false}, {"XXX", kFormatXxx, false}, {"EXP", kFormatExp, false},
    {"VIP", kFormatVip, false},
};

uint64_t Fnv1a(const std::vector<uint8_t>& bytes) {
  uint64_t hash = 14695981039346656037ull;
  for (uint8_t byte : bytes) hash = (hash ^ byte) * 1099511628211ull;
  return hash;
}

struct Row {
  std::string key;    // "sample -> target"
  std::string bytes;  // per written piece "size:hash", or "refused"
  std::string note;
};

// Saves `sample` as `target` into its own folder of `folder`; `design` is
// left as the pipeline fitted it. Returns the files written.
std::vector<DesignPath> Convert(const test::ScratchFolder& folder, const std::string& sample, const Target& target,
                                ConversionSettings settings, Design& design) {
  if (ReadDesignFile(design, (fs::path(FENNICK_TEST_DATA) / sample).string(), LastFile::kLeave) != 0) return {};
  settings.pes5 = target.pes5 ? 1 : 0;
  SetSaveAsConversion(settings);
  const fs::path out = folder.Path() / target.label;
  fs::remove_all(out);
  fs::create_directories(out);
  design.name = (out / ("out." + AsciiLower(FormatExtension(target.format)))).string();
  std::vector<DesignPath> written;
  SaveDesign(design, &written, 1, &settings);
  return written;
}

// What converting `sample` to `target` writes, piece by piece.
std::string ConvertedBytes(const test::ScratchFolder& folder, const std::string& sample, const Target& target) {
  Design design;
  std::string result;
  for (const DesignPath& path : Convert(folder, sample, target, BuiltInConversion(target.format), design)) {
    std::vector<uint8_t> bytes;
    ReadWholeFile(path.FullName(), bytes);
    result += (result.empty() ? "" : " ") + std::to_string(bytes.size()) + ":" +
              FormatText("%016llx", static_cast<unsigned long long>(Fnv1a(bytes)));
  }
  return result.empty() ? "refused" : result;
}

const fs::path kManifest = fs::path(FENNICK_TEST_DATA) / "conversion_bytes.txt";

// Lines "sample -> TARGET | bytes | note"; '#' starts a comment line.
std::map<std::string, Row> ReadManifest() {
  std::map<std::string, Row> rows;
  std::ifstream file(kManifest);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    const size_t first = line.find(" | "), second = line.find(" | ", first + 3);
    if (first == std::string::npos) continue;
    Row row{line.substr(0, first), line.substr(first + 3, second == std::string::npos ? std::string::npos : second - first - 3),
            second == std::string::npos ? "" : line.substr(second + 3)};
    rows[row.key] = row;
  }
  return rows;
}

TEST(SampleConversion, EveryWriterKeepsItsBytes) {
  test::ScratchFolder folder;
  test::Messages silent;
  const std::map<std::string, Row> manifest = ReadManifest();
  const bool rewrite = std::getenv("FENNICK_WRITE_CONVERSION_BYTES") != nullptr;
  std::vector<Row> rows;
  for (const char* sample : kSamples) {
    for (const Target& target : kTargets) {
      Row row{std::string(sample) + " -> " + target.label, ConvertedBytes(folder, sample, target), ""};
      const auto known = manifest.find(row.key);
      if (rewrite) {
        row.note = known == manifest.end() ? "new" : known->second.bytes == row.bytes ? known->second.note : "changed";
      } else if (known == manifest.end()) {
        ADD_FAILURE() << row.key << " is missing from " << kManifest;
      } else {
        EXPECT_EQ(row.bytes, known->second.bytes) << row.key;
      }
      rows.push_back(row);
    }
  }
  SetSaveAsConversion(BuiltInConversion(kFormatPes));
  if (!rewrite) return;
  std::ofstream file(kManifest);
  file << "# Every sample converted to every writable format with the built-in conversion settings:\n"
          "# the size and FNV-1a hash of each file written. A note names the deliberate changes "
          "(docs/deviations.md) that moved a row.\n";
  for (const Row& row : rows) file << row.key << " | " << row.bytes << (row.note.empty() ? "" : " | " + row.note) << "\n";
}

// Where the needle goes down in each colour block that sews anything (both
// ends of every stitch), relative to the lowest and leftmost of them: what a
// machine sews, whatever the format's own travel, anchor and colour-change
// nodes are. Also both ends of every travel, where each colour starts, and the
// longest stitch.
struct Sewn {
  std::vector<std::set<test::Point>> blocks{1};
  std::set<test::Point> travelEnds;
  std::set<test::Point> starts;
  double longest = 0;
};

Sewn Sew(const Design& design) {
  Sewn sewn;
  std::vector<test::Point> travelEnds, starts;
  int64_t x = 0, y = 0;
  test::Point low{INT64_MAX, INT64_MAX};
  for (const StitchNode& node : design.stitches) {
    if (node.IsColorStop() && !sewn.blocks.back().empty()) sewn.blocks.emplace_back();
    const test::Point from{x, y};
    x += node.dx;
    y += node.dy;
    if (node.IsJump()) travelEnds.insert(travelEnds.end(), {from, {x, y}});
    if (node.IsJump() || node.IsColorStop() || !node.HasMove()) continue;
    if (sewn.blocks.back().empty()) starts.push_back(from);
    sewn.blocks.back().insert({from, {x, y}});
    low = {std::min({low.first, from.first, x}), std::min({low.second, from.second, y})};
    sewn.longest = std::max(sewn.longest, std::hypot(double(node.dx), double(node.dy)));
  }
  if (sewn.blocks.back().empty()) sewn.blocks.pop_back();
  const auto fromLow = [&](const std::vector<test::Point>& points, std::set<test::Point>& into) {
    into.clear();
    for (const auto& [px, py] : points) into.emplace(px - low.first, py - low.second);
  };
  for (auto& block : sewn.blocks) fromLow({block.begin(), block.end()}, block);
  fromLow(travelEnds, sewn.travelEnds);
  fromLow(starts, sewn.starts);
  return sewn;
}

// Whether `points` has one within `tolerance` units of `point` on both axes.
bool Near(const std::set<test::Point>& points, const test::Point& point, int64_t tolerance) {
  const auto& [x, y] = point;
  for (auto it = points.lower_bound({x - tolerance, y - tolerance}); it != points.end() && it->first <= x + tolerance;
       ++it) {
    if (std::abs(it->second - y) <= tolerance) return true;
  }
  return false;
}

// The points of `a` that `b` has none near.
std::vector<test::Point> Unmatched(const std::set<test::Point>& a, const std::set<test::Point>& b, int64_t tolerance) {
  std::vector<test::Point> unmatched;
  std::copy_if(a.begin(), a.end(), std::back_inserter(unmatched),
               [&](const test::Point& point) { return !Near(b, point, tolerance); });
  return unmatched;
}

// Each sample, written whole (no split) to each format and read back, sews
// the same points in the same colour blocks. What may differ, and why:
// - DST, XXX and VIP writers leave a travel unanchored, and their readers
//   fold the stitch after a travel into it: the point where it lands may go.
//   JEF writes a jump behind every colour change, with the same effect on the
//   point where the colour starts.
// - Readers that turn long jumps back into stitches may sew a travel that
//   runs on in a straight line, and PCS, which marks no jumps, sews every
//   short one: an end of a travel may be gained.
// - The XXX reader stops 4 bytes before the trailer, which the writer puts
//   right behind the last record: the last two records may go.
// - The EXP reader ends every design with a step of one unit back.
// - PCS keeps positions in its own unit, so a point may move by one unit.
// - SEW refuses designs of more than 12 colours.
// And no travel comes back as a stitch across the design: no sample has a
// stitch of 30 mm.
TEST(SampleConversion, EveryFormatSewsTheSameBlocks) {
  test::ScratchFolder folder;
  test::Messages silent;
  for (const char* sample : kSamples) {
    for (const Target& target : kTargets) {
      ConversionSettings settings = BuiltInConversion(target.format);
      settings.splitColors = 0;
      settings.splitStitches = 0;
      Design source;
      const std::vector<DesignPath> written = Convert(folder, sample, target, settings, source);
      const std::string what = std::string(sample) + " -> " + target.label;
      if (written.empty()) {
        EXPECT_EQ(target.format, kFormatSew) << what << " was refused";
        continue;
      }
      ASSERT_EQ(written.size(), 1u) << what;
      Design back;
      ASSERT_EQ(ReadDesignFile(back, written[0].FullName(), LastFile::kLeave), 0) << what;
      const Sewn expected = Sew(source), actual = Sew(back);
      EXPECT_LT(actual.longest, 300.0) << what;
      ASSERT_EQ(actual.blocks.size(), expected.blocks.size()) << what << ": colour blocks";

      const FormatCode format = target.format;
      const int64_t tolerance = format == kFormatPcs ? 1 : 0;
      const auto near = [tolerance](const std::set<test::Point>& allowed) {
        return [&allowed, tolerance](const test::Point& point) { return Near(allowed, point, tolerance); };
      };
      for (size_t block = 0; block < expected.blocks.size(); ++block) {
        std::vector<test::Point> lost = Unmatched(expected.blocks[block], actual.blocks[block], tolerance);
        std::vector<test::Point> gained = Unmatched(actual.blocks[block], expected.blocks[block], tolerance);
        const bool last = block + 1 == expected.blocks.size();
        if (format == kFormatDst || format == kFormatXxx || format == kFormatVip) {
          std::erase_if(lost, near(expected.travelEnds));
        }
        if (format == kFormatJef) std::erase_if(lost, near(expected.starts));
        if (format == kFormatXxx && last && lost.size() <= 2) lost.clear();
        if (format == kFormatExp || format == kFormatXxx || format == kFormatPcs || format == kFormatHus ||
            format == kFormatVip) {
          std::erase_if(gained, near(expected.travelEnds));
        }
        if (format == kFormatExp && last && gained.size() == 1) gained.clear();
        EXPECT_TRUE(lost.empty() && gained.empty())
            << what << ", block " << block << " of " << expected.blocks.size() << ": " << lost.size() << " of "
            << expected.blocks[block].size() << " points lost, " << gained.size() << " gained";
      }
    }
  }
  SetSaveAsConversion(BuiltInConversion(kFormatPes));
}

}  // namespace
}  // namespace fennick
