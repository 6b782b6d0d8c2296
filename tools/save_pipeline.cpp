#include "tools/save_pipeline.h"

#include <algorithm>
#include <cctype>
#include <ctime>
#include <span>
#include <string>
#include <utility>

#include "archive/file_operations.h"
#include "core/format_table.h"
#include "core/text.h"
#include "core/user_interface.h"
#include "tools/design_notes.h"

namespace fennick {
namespace {

constexpr const char* kSaveErrorCaption = "Save Error";

// How far `size` overshoots `limit`, as a negative fraction of `size`; 0 when
// it does not. A size of 0 never overshoots.
double Overshoot(int64_t limit, int64_t size) {
  if (size <= 0) return 0.0;
  const double ratio = static_cast<double>(limit - size) / static_cast<double>(size);
  return ratio < 0.0 ? ratio : 0.0;
}

// Scales every move by `factor`, carrying each node's rounding error into the
// next so that the outline keeps its shape. The single precision and the
// narrowing of each move to 16 bits are deliberate: files made so far depend
// on them.
void ShrinkMoves(Design& design, float factor) {
  float carryX = 0.0F, carryY = 0.0F;
  for (StitchNode& node : design.stitches) {
    carryX += static_cast<float>(node.dx) * factor;
    carryY += static_cast<float>(node.dy) * factor;
    const int16_t dx = static_cast<int16_t>(static_cast<int64_t>(carryX));
    const int16_t dy = static_cast<int16_t>(static_cast<int64_t>(carryY));
    carryX -= dx;
    carryY -= dy;
    node.dx = dx;
    node.dy = dy;
  }
  design.ComputeBounds();
}

// Moves the fitted copy into `design` under the design's own assignment rule:
// the file fields of the caller's design stay.
void AssignFitted(Design& design, Design&& fitted) {
  std::vector<ThreadColor> fileThreads = std::move(design.fileThreads);
  const int32_t formatVersion = design.formatVersion;
  const int32_t hoopWidth = design.hoopWidth, hoopHeight = design.hoopHeight;
  design = std::move(fitted);
  design.fileThreads = std::move(fileThreads);
  design.formatVersion = formatVersion;
  design.hoopWidth = hoopWidth;
  design.hoopHeight = hoopHeight;
}

void ShowSaveError(const std::string& text) {
  CurrentUserInterface().ShowMessage(text, kSaveErrorCaption, MessageButtons::kOk);
}

// A failure of the system (a missing folder, no permission, a full disk)
// adds its reason, so that the user knows what to change.
void ShowNotSaved(const std::string& name, std::string cause) {
  std::string text = name + " could not be saved.";
  if (!cause.empty()) {
    cause[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(cause[0])));
    text += " " + cause + (cause.back() == '.' ? "" : ".");
  }
  ShowSaveError(text);
}

int WriteMode(int flag) { return flag == 0 ? (kWriteFreeName | kWriteNoDialog) : kWriteNoDialog; }

// The format a name is saved in, with the name's extension changed where the
// format is written under another one.
int SaveFormat(DesignPath& path) {
  const FormatCode named = FormatFromExtension(path.GetExtension());
  const FormatCode saved = SavedFormat(named);
  if (saved != named) path.ChangeExtension(FormatExtension(saved));
  return saved;
}

// The stored settings of the format `path` is saved in, by that format's
// extension or, for a format that is not written, the path's own.
ConversionSettings StoredConversion(const DesignPath& path, int format) {
  ConversionSettings conversion;
  const std::string extension = format >= 0 ? FormatExtension(format) : path.GetExtension();
  ReadConversion(AsciiLower(extension), conversion);
  return conversion;
}

int SaveNotes(const Design& design, DesignPath path, std::vector<DesignPath>* outputList, int flag) {
  std::string text;
  if (!design.threads.empty()) {
    text = DesignNotes(design);
  }
  path.ChangeExtension(".Txt");
  const std::span<const uint8_t> bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  // A file that cannot be written is a failure like any other, not a saved file.
  std::string cause;
  if (WriteFileBlock(bytes, path, WriteMode(flag), &cause) != 0) {
    ShowNotSaved(path.ToString(), cause);
    return 0;
  }
  if (outputList != nullptr) outputList->push_back(path);
  return 1;
}

}  // namespace

FormatCode SavedFormat(FormatCode code) {
  switch (code) {
    case kFormatPec:
    case kFormatPhc:
    case kFormatPhb:
    case kFormatPhd: return kFormatPes;
    case kFormatShv: return kFormatVip;
    default: return code;
  }
}

HoopSize HoopForName(const std::string& name) {
  DesignPath path(name);
  const ConversionSettings conversion = StoredConversion(path, SaveFormat(path));
  return {conversion.hoopWidth, conversion.hoopHeight};
}

int FitDesignToHoop(Design& design, const ConversionSettings& settings) {
  const int64_t hoopWidthUnits = int64_t{settings.hoopWidth} * 10;  // stitch units
  const int64_t hoopHeightUnits = int64_t{settings.hoopHeight} * 10;
  if (design.stitches.Empty()) return 0;
  // A design that fits as it stands is neither turned nor shrunk: centring
  // it in place gives what the working copy would, without the copy.
  const int32_t minX = design.minX, maxX = design.maxX, minY = design.minY, maxY = design.maxY;
  design.ComputeBounds();
  if (int64_t{design.maxX} - design.minX <= hoopWidthUnits && int64_t{design.maxY} - design.minY <= hoopHeightUnits) {
    design.CentreOnCurrentBounds();
    return 0;
  }

  // The working design is the design itself: centring changes only its head
  // and a quarter turn is undone exactly, so a design that does not fit is
  // put back as it was. Only shrinking, which cannot be undone, takes a copy.
  const StitchNode* head = design.stitches.Head();
  const int32_t headDx = head->dx, headDy = head->dy;
  const int32_t fitRotation = design.fitRotation;
  int32_t turn = 0;
  auto restore = [&] {
    if (turn != 0) design.RotateQuarter(-turn);
    if (design.stitches.Head() != head) {
      design.stitches.Remove(design.stitches.Head());  // the jump that centring put first
    } else {
      design.stitches.Head()->dx = headDx;
      design.stitches.Head()->dy = headDy;
    }
    design.fitRotation = fitRotation;
    design.minX = minX;
    design.maxX = maxX;
    design.minY = minY;
    design.maxY = maxY;
  };
  design.CentreOnCurrentBounds();
  int64_t width = int64_t{design.maxX} - design.minX;
  int64_t height = int64_t{design.maxY} - design.minY;
  int64_t hoopWidth = hoopWidthUnits;  // turned with the hoop
  int64_t hoopHeight = hoopHeightUnits;
  const bool hasHoop = settings.hoopWidth != 0 && settings.hoopHeight != 0;

  if (hasHoop) {
    const double upright = -(Overshoot(hoopWidth, width) + Overshoot(hoopHeight, height));
    if (upright != 0.0) {
      const double turned = -(Overshoot(hoopWidth, height) + Overshoot(hoopHeight, width));
      // Turning is chosen by the smaller overshoot alone; the size test below
      // still decides whether the turned design fits.
      if (turned == 0.0 || turned < upright) {
        if (settings.bothOrientations != 0) {
          std::swap(hoopWidth, hoopHeight);
        } else if (settings.rotate != 0) {
          turn = width > height ? 1 : -1;
          design.RotateQuarter(turn);
          std::swap(width, height);
          design.fitRotation = turn;
          design.Centre();
        }
      }
    }
  }

  if (settings.shrink != 0 && hasHoop) {
    const double overX = Overshoot(hoopWidth, width), overY = Overshoot(hoopHeight, height);
    if (overX + overY != 0.0) {
      const double needed = std::max(-overX, -overY);
      // The limit is `shrink` itself in percent, deliberately not `shrinkPercent`.
      const double limit = settings.shrink * 0.01;
      if (!(limit < needed)) {
        Design working(design);
        ShrinkMoves(working, static_cast<float>(1.0 - needed));
        if (int64_t{working.maxX} - working.minX > hoopWidth || int64_t{working.maxY} - working.minY > hoopHeight) {
          restore();
          return 1;
        }
        AssignFitted(design, std::move(working));
        return 0;
      }
    }
  }

  if (width > hoopWidth || height > hoopHeight) {
    restore();
    return 1;
  }
  return 0;
}

Design SplitDesign(Design& design, int32_t stitchLimit, int32_t colorLimit) {
  Design result;
  const bool tooManyStitches = stitchLimit != 0 && design.stitches.Size() > static_cast<size_t>(std::max(stitchLimit, 0));
  const bool tooManyColors = colorLimit != 0 && design.threads.size() > static_cast<size_t>(std::max(colorLimit, 0));
  if ((stitchLimit == 0 && colorLimit == 0) || (!tooManyStitches && !tooManyColors)) return result;
  result.name = design.name;

  int64_t x = 0, y = 0;
  int64_t kept = 0;
  int64_t stops = 0;
  bool splitNow = false;
  size_t threadInUse = 0;
  // The stitch count of the colour being sewn, the one kept whole if it can be.
  int32_t colorStitches = design.threads.empty() ? 0 : design.threads.front().stitchCount;

  StitchNode* node = design.stitches.Head();
  for (; node != nullptr; node = node->Next()) {
    if (node->IsColorStop()) {
      ++stops;
      ++threadInUse;
      colorStitches = threadInUse < design.threads.size() ? design.threads[threadInUse].stitchCount : 0;
      if (colorLimit != 0 && stops >= colorLimit) splitNow = true;
      if (stitchLimit != 0) {
        // A colour that would not fit goes whole to the next piece, unless
        // it is too big for any piece.
        if (int64_t{colorStitches} + kept >= stitchLimit) splitNow = true;
        if (colorStitches >= stitchLimit) splitNow = false;
      }
    }
    if ((stitchLimit != 0 && kept >= stitchLimit) || splitNow) break;
    ++kept;
    x += node->dx;
    y += node->dy;
  }
  if (node == nullptr) return result;

  // A split in the midst of a colour takes that colour's thread along: the
  // first piece then lacks the entry of its last colour, on purpose.
  const size_t firstMoved = std::min(threadInUse, design.threads.size());
  result.threads.assign(std::make_move_iterator(design.threads.begin() + static_cast<ptrdiff_t>(firstMoved)),
                        std::make_move_iterator(design.threads.end()));
  design.threads.resize(firstMoved);

  // The smaller side is copied, so that cutting many pieces off a large design
  // does not relink every later node at each cut.
  const size_t keptNodes = static_cast<size_t>(kept);
  const size_t movedNodes = design.stitches.Size() - keptNodes;
  if (keptNodes < movedNodes) {
    result.stitches = std::move(design.stitches);
    design.stitches.Reserve(keptNodes);
    for (StitchNode* head = result.stitches.Head(); head != node; head = result.stitches.Remove(head)) {
      design.stitches.PushBack(head->dx, head->dy, head->flags);
    }
  } else {
    result.stitches.Reserve(movedNodes);
    for (StitchNode* moved = node; moved != nullptr; moved = design.stitches.Remove(moved)) {
      result.stitches.PushBack(moved->dx, moved->dy, moved->flags);
    }
  }
  // The first moved node leads from the origin to where it stands.
  StitchNode* first = result.stitches.Head();
  first->dx = Wrap32(x + first->dx);
  first->dy = Wrap32(y + first->dy);
  first->flags = (first->flags & ~STITCH_COLORSTOP) | STITCH_JUMP;
  x = 0;
  y = 0;
  for (const StitchNode& moved : result.stitches) {
    x += moved.dx;
    y += moved.dy;
    result.minX = Wrap32(std::min<int64_t>(result.minX, x));
    result.maxX = Wrap32(std::max<int64_t>(result.maxX, x));
    result.minY = Wrap32(std::min<int64_t>(result.minY, y));
    result.maxY = Wrap32(std::max<int64_t>(result.maxY, y));
  }
  return result;
}

namespace {

// Both forms of SaveDesign: with `keep`, the pieces are written from a copy
// and the caller's design stays the fitted one.
int Save(Design& design, std::vector<DesignPath>* outputList, int flag, const ConversionSettings* settings,
         bool keep) {
  DesignPath path(design.name);
  const int format = SaveFormat(path);
  design.name = path.ToString();
  if (format == kFormatTxt) return SaveNotes(design, path, outputList, flag);

  const ConversionSettings conversion = settings != nullptr ? *settings : StoredConversion(path, format);

  if (FitDesignToHoop(design, conversion) != 0) {
    ShowSaveError(design.name + " is too big for the current hoop.");
    return 0;
  }
  Design copy;
  if (keep) {
    copy = design;
  } else {
    design.DropFileFields();  // as a copy would be
  }
  Design& piece = keep ? copy : design;
  if (piece.stitches.Empty()) return 0;

  const int32_t stitchLimit = conversion.splitStitches != 0 ? conversion.stitchLimit : 0;
  const int32_t colorLimit = conversion.splitColors != 0 ? conversion.colorLimit : 0;
  const std::string title = path.GetStem();
  std::vector<uint8_t> bytes;
  int written = 0;
  while (!piece.stitches.Empty()) {
    Design rest = SplitDesign(piece, stitchLimit, colorLimit);
    if (written != 0) {
      DesignPath piecePath(piece.name);
      const std::string extension = piecePath.GetExtension();
      piecePath.SetFileName(FormatText("%s %i", title.c_str(), written + 1) +
                            (extension.empty() ? "" : "." + extension));
      piece.name = piecePath.ToString();
    }
    const std::string pieceName = piece.name;
    if (WriteDesignFile(piece, bytes, format) == 0) {
      ShowNotSaved(pieceName, "");
      break;
    }
    DesignPath writtenPath(piece.name);
    // A file that cannot be written ends the save like a writer that gives no bytes.
    std::string cause;
    if (WriteFileBlock(bytes, writtenPath, WriteMode(flag), &cause) != 0) {
      ShowNotSaved(pieceName, cause);
      break;
    }
    rest.name = writtenPath.ToString();
    if (outputList != nullptr) outputList->push_back(writtenPath);
    piece = std::move(rest);
    ++written;
  }
  return written;
}

}  // namespace

int SaveDesign(Design& design, std::vector<DesignPath>* outputList, int flag, const ConversionSettings* settings) {
  return Save(design, outputList, flag, settings, true);
}

int SaveDesign(Design&& design, std::vector<DesignPath>* outputList, int flag, const ConversionSettings* settings) {
  return Save(design, outputList, flag, settings, false);
}

}  // namespace fennick
