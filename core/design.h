// The one in-memory form of an embroidery design: relative needle moves in
// stitch units of 0.1 mm (y grows upwards), thread colours, bounds and metadata,
// with the operations every reader, writer and tool shares.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/stitch_list.h"

namespace fennick {

// One item of design metadata, such as "Author" of a PES header.
struct DesignProperty {
  std::string label;
  uint8_t kind = 0;
  std::string value;
  uint32_t number = 0;
  std::vector<uint8_t> data;
};

// Indices into `ThreadColor::colorAnalysis`.
enum ColorAnalysisSlot {
  kHueSector = 0,
  kSaturation = 1,
  kValue = 2,
  kHue = 3,
  kRed = 4,
  kGreen = 5,
  kBlue = 6,
  kRgbSum = 7,
};

// Sums of moves wrap at 32 bits, in every pass over a design alike.
constexpr int32_t Wrap32(int64_t value) { return static_cast<int32_t>(static_cast<uint32_t>(value)); }

// A colour as threads keep it: 0x00BBGGRR.
constexpr uint32_t ColorRef(uint8_t r, uint8_t g, uint8_t b) {
  return static_cast<uint32_t>(r) | static_cast<uint32_t>(g) << 8 | static_cast<uint32_t>(b) << 16;
}

struct Channels {
  uint8_t r, g, b;
};

constexpr Channels SplitColor(uint32_t colorRef) {
  return {static_cast<uint8_t>(colorRef), static_cast<uint8_t>(colorRef >> 8), static_cast<uint8_t>(colorRef >> 16)};
}

// The sum of the channel differences, 0 to 765: what every nearest-colour
// search measures.
constexpr int ColorDistance(Channels a, Channels b) {
  const auto apart = [](int x, int y) { return x > y ? x - y : y - x; };
  return apart(a.r, b.r) + apart(a.g, b.g) + apart(a.b, b.b);
}

struct ThreadColor {
  uint32_t rgb = 0;  // 0x00BBGGRR, red in the low byte
  std::string description;
  std::string brand;
  std::string catalogNumber;
  std::string chart;
  std::string colorName;  // the text shown in lists; every format fills it
  int32_t stitchCount = 0;
  int32_t threadLength = 0;  // stitch units
  int32_t startX = 0;
  int32_t startY = 0;
  int32_t minX = 0;
  int32_t maxX = 0;
  int32_t minY = 0;
  int32_t maxY = 0;
  int32_t matchPercent = 0;
  int32_t colorGroup = 0;
  int32_t chartIndex = 0;  // palette or chart position; meaning per format
  int32_t threadKind = 0;  // the byte a PES thread record keeps beside its colour
  std::array<int32_t, 8> colorAnalysis{};  // see ColorAnalysisSlot
  std::vector<DesignProperty> properties;

  // Fills `colorAnalysis` (hue sector, saturation, value, hue, r, g, b, sum) from `rgb`.
  void AnalyseColor();
};

struct StitchPoint {
  int32_t x = 0;
  int32_t y = 0;
  bool operator==(const StitchPoint&) const = default;
};

class Design {
 public:
  Design() = default;
  // Copying follows the design's own assignment rule: `fileThreads`,
  // `formatVersion`, `hoopWidth` and `hoopHeight` are not copied.
  Design(const Design& other) { *this = other; }
  Design& operator=(const Design& other);
  Design(Design&&) noexcept = default;
  Design& operator=(Design&&) noexcept = default;
  ~Design() = default;
  // Drops what a copy would not carry, so that the design stands for a copy
  // of itself where making one is not worth its cost.
  void DropFileFields();

  std::string name;  // path in the text form of DesignPath
  StitchList stitches;
  std::vector<ThreadColor> threads;      // one per colour stop plus one
  std::vector<ThreadColor> fileThreads;  // the thread records of a PES file
  int32_t maxX = 0;
  int32_t maxY = 0;
  int32_t minX = 0;
  int32_t minY = 0;
  std::string notes;
  int32_t formatVersion = 0;
  int32_t hoopWidth = 0;  // millimetres, as a PES header stores them
  int32_t hoopHeight = 0;
  int32_t hoopRotation = 0;  // +1 or -1 when the PES reader turned the design
  int32_t fitRotation = 0;   // +1 or -1 when the hoop fit turned the design
  int32_t sourceFormat = 0;  // FormatCode + 100 * formatVersion, set by the block form
  int32_t blobWord = 0;      // second word of the block form, carried unchanged
  std::vector<DesignProperty> properties;
  // True when the reader's format carries no colours and the threads came from
  // FormatDefaultPalette.
  bool defaultColors = false;

  // Empties threads, stitches, properties, name and notes and zeroes both
  // rotations; bounds, fileThreads and the format fields stay on purpose.
  void Clear();

  // Sets the bounds from `start` (or the head) on and returns the end point.
  StitchPoint ComputeBounds(StitchNode* start = nullptr);
  // Moves the design onto the origin; an odd width keeps its extra unit on the
  // plus side of x, an odd height on the minus side of y.
  StitchPoint Centre(StitchNode* start = nullptr);
  // Centre for a design whose bounds are current: the same move, without
  // walking the design to measure it again.
  void CentreOnCurrentBounds();
  // Folds runs of jumps; with keepStitches false a jump also swallows the one
  // stitch after it. Leaves the bounds of the result measured.
  void MergeJumps(bool keepStitches);
  // Cuts moves longer than maxStep in either axis into jumps. `unused` is kept
  // for the callers' sake and has no effect.
  void SplitLongStitches(int32_t maxStep, int32_t unused, bool pureJumps);
  // A quarter turn, clockwise for direction >= 1 (y grows upwards). The bounds are exchanged,
  // not recomputed.
  void RotateQuarter(int32_t direction);
  // A quarter turn (none for 0) that leaves the bounds current. A turn maps
  // every point exactly, so current bounds that turn exactly turn with the
  // design instead of being measured again.
  void RotateQuarterMeasured(int32_t direction, bool boundsCurrent);
  // Whether a quarter turn carries the bounds exactly: the measure's starting
  // values are symmetric about 0, so it does whenever negating them stays
  // within 32 bits.
  bool BoundsTurnExactly() const;
  // Drops leading jumps and empty moves without passing their moves on, then centres.
  void StripLeadingMoves();
  // Makes every stop pure and the thread count match the stops. Returns 0, or 1
  // with no stitches, 2 with no threads.
  int NormalizeColorStops();
  // Fills stitch count, length, start and extent of each thread.
  void ComputeThreadStats();
  // Gives threads of equal brand (any case) and colour the same colorGroup.
  void AssignColorGroups();
  // Turns long jumps that belong to a satin column or a straight run back into stitches.
  void ReclassifyJumps();
  // Appends `thread` and a pure stop at the tail.
  void AppendThread(const ThreadColor& thread);

  // The stitch count a user is shown: nodes less threads plus one.
  int64_t DisplayedStitchCount() const;

 private:
  // Moves the box of the current bounds onto the origin through `start` (or
  // the head); `end` is the end point, moved along.
  StitchPoint CentreOnBounds(StitchNode* start, StitchPoint end);
};

// FormatDefaultPalette: the colours of readers whose format has none.
// Unlisted indices give "Light Gray".
ThreadColor DefaultPaletteColor(int index);
// The default-palette index 0 to 28 nearest to (r, g, b) by the sum of
// channel differences; ties go to the lower index.
int HusNearestColor(uint8_t r, uint8_t g, uint8_t b);
// The palette index of the next thread of a reader without colours: the
// thread count, wrapping to 0 after 27.
int DefaultPaletteIndex(size_t threadCount);

}  // namespace fennick
