#include "tools/reduce_needles.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>

#include "core/preferences.h"
#include "core/text.h"

namespace fennick {
namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr float kNoDistance = 1000000.0F;

// Half away from zero, then cut.
int32_t RoundAway(double value) { return static_cast<int32_t>(value >= 0.0 ? value + 0.5 : value - 0.5); }

// A colour still in the running, with the weight (thread length) it gathers.
struct Needle {
  ThreadColor thread;
  ColorPoint point;
};

// Picks the colour to drop: of the closest pair, the lighter one. Every pair
// closer than all before it passes the lighter one's weight to the heavier
// one, not only the pair that wins: deliberate, so near colours weigh more.
size_t DropOne(std::vector<Needle>& needles, const std::vector<size_t>& running, const std::vector<float>& distances) {
  const size_t count = needles.size();
  float best = kNoDistance;
  size_t victim = running.size();
  for (size_t i = 0; i < running.size(); ++i) {
    for (size_t j = i + 1; j < running.size(); ++j) {
      const float distance = distances[running[i] * count + running[j]];
      if (!(distance < best)) continue;  // of equal pairs the first wins
      best = distance;
      ThreadColor& a = needles[running[i]].thread;
      ThreadColor& b = needles[running[j]].thread;
      // Of equal weights the later colour goes. Weights wrap at 32 bits.
      if (b.threadLength <= a.threadLength) {
        victim = j;
        a.threadLength = Wrap32(int64_t{a.threadLength} + b.threadLength);
      } else {
        victim = i;
        b.threadLength = Wrap32(int64_t{b.threadLength} + a.threadLength);
      }
    }
  }
  return victim;
}

std::string ListLine(int number, const ThreadColor& thread, bool english) {
  if (!english) {
    return FormatText("%i: %s,  %i st.  %-1.1f m.", number, thread.colorName.c_str(), thread.stitchCount,
                      thread.threadLength * 0.0001);
  }
  const float yards = static_cast<float>(thread.threadLength) * 0.01F * 0.3937008F * 0.02777778F;
  return FormatText("%i: %s,  %i st.  %-1.1f yd.", number, thread.colorName.c_str(), thread.stitchCount,
                    static_cast<double>(yards));
}

size_t PaneIndex(ReduceNeedlesModel::Pane pane) { return pane == ReduceNeedlesModel::Pane::kOriginal ? 0 : 1; }

}  // namespace

ColorPoint ColorPoint::FromRgb(uint32_t rgb) {
  const Channels channels = SplitColor(rgb);
  const int r = channels.r, g = channels.g, b = channels.b;
  const int largest = std::max({r, g, b});
  const int delta = largest - std::min({r, g, b});
  int32_t hue = 0, saturation = 0;
  if (delta != 0) {
    saturation = static_cast<int32_t>(static_cast<double>(delta) / largest * 255.0);
    // Of equal maxima red wins, then green.
    double sector;
    if (r == largest) {
      sector = static_cast<double>(g - b) / delta;
    } else if (g == largest) {
      sector = static_cast<double>(b - r) / delta + 2;
    } else {
      sector = static_cast<double>(r - g) / delta + 4;
    }
    double degrees = sector * 60;
    if (degrees < 0) degrees += 360;
    if (degrees == 360) degrees = 0;
    hue = static_cast<int32_t>(degrees);
  }
  const double radius = 2 * saturation;
  ColorPoint point;
  point.x = RoundAway(std::cos(hue * kRadiansPerDegree) * radius);
  point.y = RoundAway(std::sin(hue * kRadiansPerDegree) * radius);
  point.z = largest;
  return point;
}

double ColorPointDistance(const ColorPoint& a, const ColorPoint& b) {
  const int32_t dx = a.x - b.x, dy = a.y - b.y, dz = a.z - b.z;
  return std::sqrt(static_cast<double>(dz * dz + dx * dx + dy * dy));
}

int CountDistinctColors(const Design& design) {
  std::vector<uint32_t> colors;
  colors.reserve(design.threads.size());
  for (const ThreadColor& thread : design.threads) colors.push_back(thread.rgb);
  std::sort(colors.begin(), colors.end());
  return static_cast<int>(std::unique(colors.begin(), colors.end()) - colors.begin());
}

int ReduceNeedles(Design& design, int maxNeedles) {
  // The thread count, not the distinct colours, decides: threads of one
  // colour that are not the first take the first one's record below.
  if (maxNeedles < 1 || design.threads.size() <= static_cast<size_t>(maxNeedles)) return 0;

  std::vector<Needle> needles;
  for (const ThreadColor& thread : design.threads) {
    const auto same = [&](const Needle& needle) { return needle.thread.rgb == thread.rgb; };
    if (std::none_of(needles.begin(), needles.end(), same)) {
      needles.push_back({thread, ColorPoint::FromRgb(thread.rgb)});
    }
  }
  const size_t count = needles.size();

  // The points never move, so their distances are measured once; the best is
  // kept in single precision, and so are they.
  std::vector<float> distances(count * count);
  for (size_t i = 0; i < count; ++i) {
    for (size_t j = i + 1; j < count; ++j) {
      distances[i * count + j] = static_cast<float>(ColorPointDistance(needles[i].point, needles[j].point));
    }
  }
  std::vector<size_t> running(count);
  for (size_t i = 0; i < count; ++i) running[i] = i;
  while (running.size() > static_cast<size_t>(maxNeedles)) {
    const size_t victim = DropOne(needles, running, distances);
    if (victim == running.size()) return 0;
    running.erase(running.begin() + static_cast<std::ptrdiff_t>(victim));
  }

  for (ThreadColor& thread : design.threads) {
    const ColorPoint point = ColorPoint::FromRgb(thread.rgb);
    size_t nearest = running.front();
    double best = ColorPointDistance(point, needles[nearest].point);
    for (const size_t index : running) {
      const double distance = ColorPointDistance(point, needles[index].point);
      if (distance < best) {
        best = distance;
        nearest = index;
      }
    }
    // The whole record: brand, number and chart come along, and the
    // statistics too, unrecomputed until the next ComputeThreadStats.
    thread = needles[nearest].thread;
  }
  return static_cast<int>(count - running.size());
}

void ReduceNeedlesModel::Open(const Design& design) {
  original_ = design;
  original_.ComputeThreadStats();  // the thread lengths are the weights of the merging
  modified_ = original_;
  removed_ = 0;
  maxNeedles_ = CountDistinctColors(original_);
  spinTop_ = maxNeedles_;
  listShown_[0] = listShown_[1] = true;
  previewStale_[0] = previewStale_[1] = true;
  FillLists();
  open_ = true;
}

bool ReduceNeedlesModel::SetEditText(const std::string& text) {
  if (!open_) return false;
  // atoi, with a number beyond int clamped where atoi would be undefined.
  const long number = std::strtol(text.c_str(), nullptr, 10);
  int value = static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
  value = std::min(value, spinTop_);
  value = std::max(value, 1);
  value = std::min(value, 100);
  if (value == maxNeedles_) return false;
  maxNeedles_ = value;
  modified_ = original_;
  removed_ = ReduceNeedles(modified_, value);
  previewStale_[PaneIndex(Pane::kModified)] = true;
  FillLists();
  return true;
}

std::string ReduceNeedlesModel::EditText() const { return FormatText("%i", maxNeedles_); }

const std::vector<std::string>& ReduceNeedlesModel::ListLines(Pane pane) const { return lines_[PaneIndex(pane)]; }

bool ReduceNeedlesModel::ListShown(Pane pane) const { return listShown_[PaneIndex(pane)]; }

void ReduceNeedlesModel::ToggleList(Pane pane) { listShown_[PaneIndex(pane)] = !listShown_[PaneIndex(pane)]; }

bool ReduceNeedlesModel::PreviewStale(Pane pane) const { return previewStale_[PaneIndex(pane)]; }

void ReduceNeedlesModel::PreviewDrawn(Pane pane) { previewStale_[PaneIndex(pane)] = false; }

std::optional<Design> ReduceNeedlesModel::Accept() const {
  if (removed_ == 0) return std::nullopt;
  return modified_;
}

void ReduceNeedlesModel::FillLists() {
  const bool english = GetEnglish() != 0;
  const Design* designs[2] = {&original_, &modified_};
  for (size_t pane = 0; pane < 2; ++pane) {
    std::vector<std::string>& lines = lines_[pane];
    lines.clear();
    int number = 1;
    for (const ThreadColor& thread : designs[pane]->threads) lines.push_back(ListLine(number++, thread, english));
  }
}

}  // namespace fennick
