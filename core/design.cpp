#include "core/design.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/design_path.h"
#include "core/text.h"

namespace fennick {
namespace {

// The fixed starting points of every extent; an extent is never wider.
constexpr int32_t kExtentMin = 10000;
constexpr int32_t kExtentMax = -10000;
// 750 mm of allowance per thread, in stitch units.
constexpr int32_t kThreadAllowance = 7500;
constexpr double kDegreesPerRadian = 57.29577950560105;

struct Extent {
  int32_t minX = kExtentMin, maxX = kExtentMax, minY = kExtentMin, maxY = kExtentMax;
  void Widen(int64_t x, int64_t y) {
    minX = static_cast<int32_t>(std::min<int64_t>(minX, x));
    maxX = static_cast<int32_t>(std::max<int64_t>(maxX, x));
    minY = static_cast<int32_t>(std::min<int64_t>(minY, y));
    maxY = static_cast<int32_t>(std::max<int64_t>(maxY, y));
  }
};

// Follows the needle from the origin, widening the bounds at every point.
struct BoundsWalk {
  int32_t x = 0, y = 0;
  int32_t minX = kExtentMin, maxX = kExtentMax, minY = kExtentMin, maxY = kExtentMax;
  void Pass(const StitchNode& node) {
    x = Wrap32(int64_t{x} + node.dx);
    y = Wrap32(int64_t{y} + node.dy);
    maxX = std::max(maxX, x);
    minX = std::min(minX, x);
    maxY = std::max(maxY, y);
    minY = std::min(minY, y);
  }
  StitchPoint Store(Design& design) const {
    design.minX = minX;
    design.maxX = maxX;
    design.minY = minY;
    design.maxY = maxY;
    return {x, y};
  }
};

double MoveLength(const StitchNode& node) {
  const double dx = node.dx, dy = node.dy;
  return std::sqrt(dx * dx + dy * dy);
}

double MoveAngle(const StitchNode& node) {
  return std::atan2(static_cast<double>(node.dy), static_cast<double>(node.dx)) * kDegreesPerRadian;
}

double MoveAngle360(const StitchNode& node) {
  const double angle = MoveAngle(node);
  return angle < 0 ? angle + 360.0 : angle;
}

// The shorter arc between two angles in degrees, 0 to 180.
double AngleDifference(double a, double b) {
  double difference = std::fmod(std::fabs(a - b), 360.0);
  return difference > 180.0 ? 360.0 - difference : difference;
}

struct PaletteEntry {
  int index;
  const char* name;
  uint8_t r, g, b;
};

// FormatDefaultPalette. Entries 33 to 36 differ from 13, 14, 15 and 17 by one
// step on purpose.
constexpr PaletteEntry kDefaultPalette[] = {
    {0, "Black", 0, 0, 0},           {1, "Blue", 0, 0, 255},
    {2, "Light Green", 0, 255, 0},   {3, "Red", 255, 0, 0},
    {4, "Purple", 255, 0, 255},      {5, "Yellow", 255, 255, 0},
    {6, "Gray", 127, 127, 127},      {7, "Light Blue", 51, 154, 255},
    {8, "Green", 51, 204, 102},      {9, "Orange", 255, 127, 0},
    {10, "Pink", 255, 160, 180},     {11, "Brown", 153, 75, 0},
    {12, "White", 255, 255, 255},    {13, "Dark Blue", 0, 0, 127},
    {14, "Dark Green", 0, 127, 0},   {15, "Dark Red", 127, 0, 0},
    {16, "Light Red", 255, 127, 127}, {17, "Dark Purple", 127, 0, 127},
    {18, "Light Purple", 255, 127, 255}, {19, "Dark Yellow", 200, 200, 0},
    {20, "Light Yellow", 255, 255, 153}, {21, "Dark Gray", 60, 60, 60},
    {23, "Dark Orange", 232, 63, 0}, {24, "Light Orange", 255, 165, 65},
    {25, "Dark Pink", 255, 102, 122}, {26, "Light Pink", 255, 204, 204},
    {27, "Dark Brown", 115, 40, 0},  {28, "Light Brown", 175, 90, 10},
    {33, "Dark Blue", 0, 0, 128},    {34, "Dark Green", 0, 128, 0},
    {35, "Dark Red", 128, 0, 0},     {36, "Dark Purple", 128, 0, 128},
    {37, "Dark Yellow", 200, 200, 0}, {38, "Dark Gray", 60, 60, 60},
    {41, "Dark Orange", 232, 63, 0}, {42, "Dark Pink", 255, 102, 122},
    {43, "Dark Brown", 115, 40, 0},
};

}  // namespace

Design& Design::operator=(const Design& other) {
  if (this == &other) return *this;
  stitches = other.stitches;
  threads = other.threads;
  properties = other.properties;
  name = other.name;
  maxX = other.maxX;
  maxY = other.maxY;
  minX = other.minX;
  minY = other.minY;
  sourceFormat = other.sourceFormat;
  blobWord = other.blobWord;
  fitRotation = other.fitRotation;
  hoopRotation = other.hoopRotation;
  notes = other.notes;
  defaultColors = other.defaultColors;
  return *this;
}

void Design::DropFileFields() {
  fileThreads.clear();
  formatVersion = 0;
  hoopWidth = 0;
  hoopHeight = 0;
}

void Design::Clear() {
  threads.clear();
  stitches.Clear();
  properties.clear();
  name.clear();
  notes.clear();
  hoopRotation = 0;
  fitRotation = 0;
}

StitchPoint Design::ComputeBounds(StitchNode* start) {
  BoundsWalk walk;
  for (StitchNode* node = start != nullptr ? start : stitches.Head(); node != nullptr; node = node->Next()) {
    walk.Pass(*node);
  }
  return walk.Store(*this);
}

StitchPoint Design::Centre(StitchNode* start) {
  if (stitches.Empty()) return {};
  return CentreOnBounds(start, ComputeBounds(start));
}

void Design::CentreOnCurrentBounds() {
  if (!stitches.Empty()) CentreOnBounds(nullptr, {});
}

StitchPoint Design::CentreOnBounds(StitchNode* start, StitchPoint end) {
  const int32_t cx = Wrap32((int64_t{maxX} + minX) / 2);
  const int32_t cy = Wrap32((int64_t{maxY} + minY) / 2);
  StitchNode* first = start != nullptr ? start : stitches.Head();
  if (first->IsJump()) {
    first->dx = Wrap32(int64_t{first->dx} - cx);
    first->dy = Wrap32(int64_t{first->dy} - cy);
  } else {
    stitches.InsertBefore(first, Wrap32(-int64_t{cx}), Wrap32(-int64_t{cy}), STITCH_JUMP);
  }
  maxX = Wrap32(int64_t{maxX} - cx);
  minX = Wrap32(int64_t{minX} - cx);
  end.x = Wrap32(int64_t{end.x} - cx);
  maxY = Wrap32(int64_t{maxY} - cy);
  minY = Wrap32(int64_t{minY} - cy);
  end.y = Wrap32(int64_t{end.y} - cy);
  // An odd width keeps its extra unit on the plus side of x, an odd height on
  // the minus side of y. The asymmetry is deliberate.
  StitchNode* balance = start != nullptr ? start : stitches.Head();
  if (maxX < std::llabs(minX)) {
    balance->dx = Wrap32(int64_t{balance->dx} + 1);
    maxX = Wrap32(int64_t{maxX} + 1);
    minX = Wrap32(int64_t{minX} + 1);
  }
  if (maxY > std::llabs(minY)) {
    balance->dy = Wrap32(int64_t{balance->dy} - 1);
    maxY = Wrap32(int64_t{maxY} - 1);
    minY = Wrap32(int64_t{minY} - 1);
  }
  return end;
}

void Design::MergeJumps(bool keepStitches) {
  // A node is final once the walk leaves it, so the bounds are measured on the way.
  BoundsWalk walk;
  StitchNode* current = stitches.Head();
  while (current != nullptr) {
    StitchNode* next = current->Next();
    if (next == nullptr || !current->IsJump() || (!next->IsJump() && keepStitches) || current->IsColorStop() ||
        next->IsColorStop()) {
      walk.Pass(*current);
      current = next;
      continue;
    }
    current->dx = Wrap32(int64_t{current->dx} + next->dx);
    current->dy = Wrap32(int64_t{current->dy} + next->dy);
    const bool nextWasJump = next->IsJump();
    stitches.Remove(next);
    // A swallowed landing stitch ends the run.
    if (!nextWasJump) {
      walk.Pass(*current);
      current = current->Next();
    }
  }
  if (StitchNode* tail = stitches.Tail()) tail->flags &= ~STITCH_COLORSTOP;
  walk.Store(*this);
}

void Design::SplitLongStitches(int32_t maxStep, int32_t /*unused*/, bool pureJumps) {
  if (maxStep <= 0) return;
  StitchNode* node = stitches.Head();
  while (node != nullptr) {
    if (!pureJumps && node->IsColorStop()) {
      const bool wasJump = node->IsJump();
      node->flags &= ~STITCH_JUMP;
      if (node->HasMove()) {
        stitches.InsertBefore(node, 0, 0, STITCH_COLORSTOP);
        node->flags &= ~STITCH_COLORSTOP;
        if (wasJump) node->flags |= STITCH_JUMP;
      }
    }
    const int64_t ax = std::llabs(node->dx) > maxStep ? std::llabs(node->dx) : 0;
    const int64_t ay = std::llabs(node->dy) > maxStep ? std::llabs(node->dy) : 0;
    if (ax == 0 && ay == 0) {
      node = node->Next();
      continue;
    }
    const int64_t big = std::max(ax, ay);
    int64_t count = big / maxStep;
    if (count * maxStep < big) ++count;
    const double angle = std::atan2(static_cast<double>(node->dy), static_cast<double>(node->dx));
    const double segment = MoveLength(*node) / static_cast<double>(count);
    // Narrowed to 16 bits on purpose.
    const int16_t stepX = static_cast<int16_t>(static_cast<int32_t>(std::trunc(std::cos(angle) * segment)));
    const int16_t stepY = static_cast<int16_t>(static_cast<int32_t>(std::trunc(std::sin(angle) * segment)));
    StitchNode* first = nullptr;
    StitchNode* last = nullptr;
    for (int64_t i = 0; i < count; ++i) {
      last = stitches.InsertBefore(node, stepX, stepY, STITCH_JUMP);
      if (first == nullptr) first = last;
    }
    last->dx = Wrap32(last->dx + int64_t{node->dx} - stepX * count);
    last->dy = Wrap32(last->dy + int64_t{node->dy} - stepY * count);
    node->dx = 0;
    node->dy = 0;
    if (!pureJumps) {
      // Every step's cut-off fraction lands on the last piece, which over many
      // steps can pass maxStep, and no writer could encode it: such a piece is
      // shared out evenly over as many jumps as it needs.
      const int64_t rest = std::max(std::llabs(last->dx), std::llabs(last->dy));
      if (rest > maxStep) {
        const int64_t pieces = (rest + maxStep - 1) / maxStep;
        const int64_t restX = last->dx, restY = last->dy;
        for (int64_t i = 1; i < pieces; ++i) {
          stitches.InsertBefore(last, Wrap32(restX * i / pieces - restX * (i - 1) / pieces),
                                Wrap32(restY * i / pieces - restY * (i - 1) / pieces), STITCH_JUMP);
        }
        last->dx = Wrap32(restX - restX * (pieces - 1) / pieces);
        last->dy = Wrap32(restY - restY * (pieces - 1) / pieces);
      }
      // The node stays as a zero stitch at the landing point.
      node->flags &= ~STITCH_JUMP;
      node = node->Next();
    } else {
      if (node->IsColorStop()) first->flags |= STITCH_COLORSTOP;
      stitches.Remove(node);
      node = last;  // checked again, as the remainder may still be too long
    }
  }
}

void Design::RotateQuarter(int32_t direction) {
  const int32_t sign = direction >= 1 ? 1 : -1;
  for (StitchNode& node : stitches) {
    const int64_t dx = node.dx;
    node.dx = Wrap32(int64_t{node.dy} * sign);
    node.dy = Wrap32(-dx * sign);
  }
  std::swap(maxX, maxY);
  std::swap(minX, minY);
}

bool Design::BoundsTurnExactly() const {
  constexpr int32_t kFar = 1 << 30;
  const auto within = [](int32_t value) { return value >= -kFar && value <= kFar; };
  return within(minX) && within(maxX) && within(minY) && within(maxY);
}

void Design::RotateQuarterMeasured(int32_t direction, bool boundsCurrent) {
  if (direction == 0 && boundsCurrent) return;
  const int32_t oldMaxX = maxX, oldMinX = minX, oldMaxY = maxY, oldMinY = minY;
  const bool exact = boundsCurrent && BoundsTurnExactly();
  if (direction != 0) RotateQuarter(direction);
  if (!exact) {
    ComputeBounds();
  } else if (direction >= 1) {
    maxX = oldMaxY;
    minX = oldMinY;
    maxY = -oldMinX;
    minY = -oldMaxX;
  } else {
    maxX = -oldMinY;
    minX = -oldMaxY;
    maxY = oldMaxX;
    minY = oldMinX;
  }
}

void Design::StripLeadingMoves() {
  while (StitchNode* head = stitches.Head()) {
    if (!head->IsJump() && head->HasMove()) break;
    // A stop that goes takes its thread along, so that every later block keeps
    // its own colour; the last thread stays for what is left.
    if (head->IsColorStop() && threads.size() > 1) threads.erase(threads.begin());
    stitches.Remove(head);
  }
  Centre();
}

int Design::NormalizeColorStops() {
  if (stitches.Empty()) return 1;
  if (threads.empty()) return 2;
  stitches.Head()->flags &= ~STITCH_COLORSTOP;
  size_t colors = 1;
  for (StitchNode* node = stitches.Head()->Next(); node != nullptr; node = node->Next()) {
    if (!node->IsColorStop()) continue;
    if (node->Prev()->IsJump()) stitches.InsertBefore(node, 0, 0, 0);
    ++colors;
    if (node->IsPureStop()) continue;
    StitchNode* moved = stitches.InsertAfter(node, node->dx, node->dy, node->flags & ~STITCH_COLORSTOP);
    node->dx = 0;
    node->dy = 0;
    node->flags = STITCH_COLORSTOP;
    node = moved;
  }
  while (colors > threads.size()) threads.push_back(threads.back());
  threads.resize(colors);
  while (StitchNode* tail = stitches.Tail()) {
    if (!tail->IsJump()) break;
    stitches.Remove(tail);
  }
  return 0;
}

void Design::ComputeThreadStats() {
  if (stitches.Empty() || threads.empty()) return;
  size_t current = 0;
  int32_t count = 0;
  int64_t length = 0;
  int64_t x = 0, y = 0;
  StitchPoint start;
  Extent extent;
  bool noStitchYet = true;
  auto store = [&] {
    if (current >= threads.size()) return;
    ThreadColor& thread = threads[current];
    thread.stitchCount = count;
    thread.threadLength = static_cast<int32_t>(kThreadAllowance + static_cast<int64_t>(1.5 * static_cast<double>(length)));
    thread.startX = start.x;
    thread.startY = start.y;
    thread.minX = extent.minX;
    thread.maxX = extent.maxX;
    thread.minY = extent.minY;
    thread.maxY = extent.maxY;
  };
  for (const StitchNode& node : stitches) {
    if (node.IsColorStop()) {
      store();
      ++current;
      count = -1;  // the stop itself does not count
      length = 0;
      start = {static_cast<int32_t>(x), static_cast<int32_t>(y)};
      extent = Extent();
      noStitchYet = true;
    }
    x += node.dx;
    y += node.dy;
    if (node.IsColorStop() || node.IsJump() || !node.HasMove()) {
      if (!noStitchYet) extent.Widen(x, y);
    } else {
      extent.Widen(x, y);
      noStitchYet = false;
    }
    ++count;
    length += static_cast<int64_t>(MoveLength(node));
  }
  store();
}

void Design::AssignColorGroups() {
  int32_t counter = 0;
  for (size_t i = 0; i < threads.size(); ++i) {
    ThreadColor& thread = threads[i];
    thread.colorGroup = counter;
    for (size_t j = 0; j < i; ++j) {
      if (threads[j].rgb == thread.rgb && EqualsIgnoringCase(threads[j].brand, thread.brand)) {
        thread.colorGroup = threads[j].colorGroup;
        --counter;
        break;
      }
    }
    ++counter;
  }
}

void Design::ReclassifyJumps() {
  const std::string extension = AsciiLower(DesignPath(name).GetExtension());
  // "phdc", not "phd": a file ending in phd is not exempt.
  for (const char* exempt : {"pec", "pes", "phc", "phb", "phdc"}) {
    if (extension == exempt) return;
  }
  if (extension == "pcs") {
    for (StitchNode& node : stitches) {
      if (MoveLength(node) > 127.0) node.flags |= STITCH_JUMP;
    }
  }
  StitchNode* head = stitches.Head();
  if (head == nullptr) return;
  double previousAngle = head->HasMove() ? MoveAngle(*head) : 0.0;
  bool previousWasJump = false;
  double currentAngle = 0.0;
  double currentLength = 0.0;
  StitchNode* node = head->Next();
  while (node != nullptr) {
    if (node->HasMove()) {
      currentAngle = MoveAngle360(*node);
      currentLength = MoveLength(*node);
    }
    StitchNode* following = node->Next();
    if (node->IsJump() && following != nullptr) {
      // The nodes without a move passed over here are not visited again.
      while (!following->HasMove() && following->Next() != nullptr) following = following->Next();
      const double nextAngle = MoveAngle360(*following);
      const double reverse = currentAngle > 180.0 ? currentAngle - 180.0 : currentAngle + 180.0;
      // For a jump with a move this compares the jump with itself and gives 0:
      // that is how it is meant to be.
      double ratio = MoveLength(*node) / currentLength;
      if (ratio < 1.0) ratio = 1.0 / ratio;
      ratio -= 1.0;
      const bool satin = AngleDifference(previousAngle, reverse) < 3.5 ||
                         (AngleDifference(nextAngle, reverse) < 3.5 && ratio > 0.8);
      const bool straight = AngleDifference(previousAngle, currentAngle) < 3.5 &&
                            AngleDifference(nextAngle, currentAngle) < 3.5 && !following->IsJump() &&
                            !previousWasJump;
      if ((satin || straight) && currentLength > 80.0) node->flags &= ~STITCH_JUMP;
    }
    if (!node->HasMove() && !node->IsColorStop()) {
      node = following;
      continue;
    }
    const StitchNode* reached = node;
    if (node->IsColorStop()) {
      // Not past a jump: the tie-in stitch beyond it points back along the
      // travel and would make the travel look like a satin stitch.
      while (reached->Next() != nullptr && !reached->IsJump() && !reached->HasMove()) reached = reached->Next();
      currentAngle = MoveAngle360(*reached);
      currentLength = MoveLength(*reached);
    }
    previousAngle = currentAngle;
    previousWasJump = reached->IsJump();
    node = following;
  }
}

void Design::AppendThread(const ThreadColor& thread) {
  threads.push_back(thread);
  stitches.PushBack(0, 0, STITCH_COLORSTOP);
}

int64_t Design::DisplayedStitchCount() const {
  // Formats whose thread list is not matched to the stops can list more threads than nodes.
  return std::max<int64_t>(0, static_cast<int64_t>(stitches.Size()) - static_cast<int64_t>(threads.size()) + 1);
}

void ThreadColor::AnalyseColor() {
  const Channels c = SplitColor(rgb);
  const int32_t r = c.r, g = c.g, b = c.b;
  const int32_t sum = r + g + b;
  colorAnalysis[kRed] = r;
  colorAnalysis[kGreen] = g;
  colorAnalysis[kBlue] = b;
  colorAnalysis[kRgbSum] = sum;
  const int32_t value = std::max({r, g, b});
  colorAnalysis[kValue] = value;
  const int32_t chroma = sum < 20 ? 0 : value - std::min({r, g, b});
  if (sum > 750 || chroma == 0) {
    colorAnalysis[kHueSector] = -1;
    colorAnalysis[kSaturation] = -1;
    return;
  }
  colorAnalysis[kSaturation] = static_cast<int32_t>(static_cast<double>(chroma) / value * 255.0);
  double hue;
  if (r == value) {
    hue = static_cast<double>(g - b) / chroma;
  } else if (g != value) {
    hue = static_cast<double>(r - g) / chroma + 4.0;
  } else {
    hue = static_cast<double>(b - r) / chroma + 2.0;
  }
  hue *= 60.0;
  if (hue < 0.0) hue += 360.0;
  colorAnalysis[kHue] = static_cast<int32_t>(hue);
  colorAnalysis[kHueSector] = (1 + static_cast<int32_t>(hue / 30.0)) % 12;
}

ThreadColor DefaultPaletteColor(int index) {
  ThreadColor thread;
  thread.colorName = "Light Gray";
  thread.rgb = ColorRef(192, 192, 192);
  for (const PaletteEntry& entry : kDefaultPalette) {
    if (entry.index == index) {
      thread.colorName = entry.name;
      thread.rgb = ColorRef(entry.r, entry.g, entry.b);
      break;
    }
  }
  return thread;
}

int HusNearestColor(uint8_t r, uint8_t g, uint8_t b) {
  constexpr int kLastIndex = 28;  // 22 is the palette's light gray
  int best = 0;
  int bestDistance = 765;
  for (int index = 0; index <= kLastIndex; ++index) {
    const int distance = ColorDistance({r, g, b}, SplitColor(DefaultPaletteColor(index).rgb));
    if (distance < bestDistance) {
      best = index;
      bestDistance = distance;
    }
  }
  return best;
}

int DefaultPaletteIndex(size_t threadCount) {
  return static_cast<int>(threadCount > 27 ? threadCount % 28 : threadCount);
}

}  // namespace fennick
