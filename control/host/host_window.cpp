#include "control/host/host_window.h"

#include <QAction>
#include <QActionGroup>
#include <QFileInfo>
#include <QKeySequence>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <cstring>
#include <vector>

#include "control/host/page_view.h"
#include "core/design_path.h"
#include "core/format_table.h"
#include "core/global_memory.h"

namespace fennick {
namespace {

constexpr int32_t kDispatchFileImport = 5;
constexpr int32_t kDispatchSave = 10;
constexpr int32_t kDispatchSaveAs = 11;

// Hoops a user picks for the page, tenths of a millimetre.
struct Hoop {
  const char* name;
  int32_t width;
  int32_t height;
};
constexpr Hoop kHoops[] = {{"100 x 100 mm", 1000, 1000}, {"130 x 180 mm", 1300, 1800},
                           {"200 x 200 mm", 2000, 2000}, {"300 x 200 mm", 3000, 2000}};

// The page's blocks live in this program's own handle table; the control's
// in the library's. A block crosses as its bytes.
int32_t ToLibraryBlock(GlobalHandle local) {
  const size_t size = GlobalSize(local);
  const uint32_t block = size == 0 ? 0 : FennickGlobalAlloc(FENNICK_GMEM_DDESHARE | FENNICK_GMEM_MOVEABLE, size);
  if (block != 0) std::memcpy(FennickGlobalLock(block), GlobalLock(local), size);
  if (block != 0) FennickGlobalUnlock(block);
  GlobalUnlock(local);
  GlobalFree(local);
  return static_cast<int32_t>(block);
}

GlobalHandle FromLibraryBlock(int32_t handle) {
  const auto block = static_cast<uint32_t>(handle);
  const size_t size = FennickGlobalSize(block);
  if (size == 0) return 0;
  const uint8_t* bytes = FennickGlobalLock(block);
  const GlobalHandle local = GlobalAllocCopy(std::vector<uint8_t>(bytes, bytes + size));
  FennickGlobalUnlock(block);
  return local;
}

HostWindow& Host(void* context) { return *static_cast<HostWindow*>(context); }

void CopyText(const std::string& text, char* buffer, int32_t size) {
  std::strncpy(buffer, text.c_str(), static_cast<size_t>(size));
  buffer[size - 1] = '\0';
}

FennickHostCallbacks Callbacks(HostWindow& window) {
  FennickHostCallbacks table{};
  table.context = &window;
  table.PrepareImport = [](void* context) { Host(context).Automation().PrepareImport(); };
  table.GetDesign = [](void* context, int32_t* hDesign) { return Host(context).GetDesign(*hDesign) ? 1 : 0; };
  table.PutDesign = [](void* context, int32_t hDesign) { return Host(context).PutDesign(hDesign) ? 1 : 0; };
  table.NewDesign = [](void* context) {
    Host(context).Automation().NewDesign();
    emit Host(context).PageChanged();
    return 1;
  };
  table.GetHoopSize = [](void* context, int32_t* width, int32_t* height) {
    Host(context).Automation().GetHoopSize(*width, *height);
  };
  table.GetFormatHoop = [](void* context, const char* extension, int32_t* width, int32_t* height) {
    Host(context).Automation().GetFormatHoop(extension, *width, *height);
  };
  table.GetDesignExtension = [](void* context, char* buffer, int32_t size) {
    CopyText(Host(context).Automation().GetDesignExtension(), buffer, size);
  };
  table.GetImportExtension = [](void* context, char* buffer, int32_t size) {
    CopyText(Host(context).Automation().GetImportExtension(), buffer, size);
  };
  table.GetSaveExtension = [](void* context, char* buffer, int32_t size) {
    CopyText(Host(context).Automation().GetSaveExtension(), buffer, size);
  };
  table.GetConversion = [](void* context, const char* extension, int32_t values[11]) {
    ConversionValues answer{};
    std::copy(values, values + 11, answer.begin());
    Host(context).Automation().GetConversion(extension, answer);
    std::copy(answer.begin(), answer.end(), values);
  };
  table.GetResizeSettings = [](void* context, int32_t values[9]) {
    ResizeSettings settings;
    Host(context).Automation().GetResizeSettings(settings);
    const auto fields = ResizeFields(settings);
    for (size_t i = 0; i < fields.size(); ++i) values[i] = *fields[i];
  };
  return table;
}

}  // namespace

HostWindow::HostWindow(QWidget* parent) : QMainWindow(parent), view_(new PageView(this)) {
  setWindowTitle("Fennick Host");
  const FennickHostCallbacks table = Callbacks(*this);
  FennickRegisterHost(&table);
  control_ = FennickCreateControl();
  // The control docks along the top (its DockingPos).
  auto* dock = new QToolBar("FennickAddin", this);
  dock->setObjectName("FennickAddin");
  dock->setMovable(false);
  toolBar_ = static_cast<QWidget*>(FennickCreateToolBar(control_, dock));
  if (toolBar_ != nullptr) dock->addWidget(toolBar_);
  BuildMenus();
  addToolBar(Qt::TopToolBarArea, dock);
  setCentralWidget(view_);
  status_ = new QLabel(this);
  statusBar()->addWidget(status_, 1);
  connect(this, &HostWindow::PageChanged, this, &HostWindow::ShowPage);
  SetHoop(kHoops[0].width, kHoops[0].height);
  ShowPage();
}

HostWindow::~HostWindow() {
  FennickRevokeHost();
  FennickDestroyControl(control_);
}

bool HostWindow::OpenFile(const std::string& path) {
  Design design;
  ReadDesignFile(design, path);
  if (design.stitches.Empty()) return false;
  page_.page = std::move(design);
  ShowPage();
  return true;
}

void HostWindow::SetHoop(int32_t width, int32_t height) {
  page_.hoopWidth = width;
  page_.hoopHeight = height;
  view_->SetHoop(width, height);
}

bool HostWindow::GetDesign(int32_t& hDesign) {
  int32_t local = 0;
  const bool got = page_.GetDesign(local);
  hDesign = ToLibraryBlock(static_cast<GlobalHandle>(local));
  return got && hDesign != 0;
}

bool HostWindow::PutDesign(int32_t hDesign) {
  const GlobalHandle local = FromLibraryBlock(hDesign);
  FennickGlobalFree(static_cast<uint32_t>(hDesign));  // the page keeps a copy
  const bool shown = local != 0 && page_.PutDesign(static_cast<int32_t>(local));
  if (!shown && local != 0) GlobalFree(local);
  emit PageChanged();
  return shown;
}

void HostWindow::BuildMenus() {
  QMenu* file = menuBar()->addMenu("&File");
  file->addAction("&Import...", QKeySequence("Ctrl+I"), this, &HostWindow::Import);
  // A design without a name or extension has no format to be saved in: Save asks for one.
  file->addAction("&Save", QKeySequence::Save, this, [this] {
    RunOnPage(DesignPath(Page().name).GetExtension().empty() ? kDispatchSaveAs : kDispatchSave);
  });
  file->addAction("Save &As...", QKeySequence::SaveAs, this, [this] { RunOnPage(kDispatchSaveAs); });
  file->addSeparator();
  file->addAction("&Quit", QKeySequence::Quit, this, &QWidget::close);

  // The design commands, as the control names them, go to its tool bar window.
  QMenu* design = menuBar()->addMenu("&Design");
  auto* commands = new QToolBar("Design commands", this);
  commands->setObjectName("Design commands");
  commands->setToolButtonStyle(Qt::ToolButtonTextOnly);
  commands->setMovable(false);
  for (const int32_t id : {FENNICK_CMD_NEW, FENNICK_CMD_OPEN, FENNICK_CMD_SAVE, FENNICK_CMD_AUTO_BASTE,
                           FENNICK_CMD_COLOR_SORT, FENNICK_CMD_NOTES, FENNICK_CMD_BITMAP,
                           FENNICK_CMD_REDUCE_NEEDLES, FENNICK_CMD_PREFERENCES, FENNICK_CMD_FIT_HOOP}) {
    char name[64];
    char tip[128];
    FennickCommandText(id, 0, name, sizeof name);
    FennickCommandText(id, 1, tip, sizeof tip);
    QAction* action = design->addAction(name, this, [this, id] { FennickSendCommand(control_, id); });
    action->setToolTip(QString(tip).trimmed());
    action->setObjectName(QString::number(id));
    commands->addAction(action);
  }
  addToolBar(Qt::TopToolBarArea, commands);
  addToolBarBreak(Qt::TopToolBarArea);

  QMenu* view = menuBar()->addMenu("&View");
  view->addAction("Zoom &In", QKeySequence::ZoomIn, this, [this] { view_->ZoomBy(1.25f); });
  view->addAction("Zoom &Out", QKeySequence::ZoomOut, this, [this] { view_->ZoomBy(0.8f); });
  view->addAction("&Whole Hoop", QKeySequence("Ctrl+0"), this, [this] { view_->ResetView(); });
  QAction* shaded = view->addAction("Toggle 3D On/Off", [this](bool on) { view_->SetShaded(on); });
  shaded->setCheckable(true);
  shaded->setChecked(true);
  QAction* jumps = view->addAction("Toggle jump stitches on/off.", [this](bool on) { view_->SetShowJumps(on); });
  jumps->setCheckable(true);
  QMenu* hoops = view->addMenu("&Hoop");
  auto* group = new QActionGroup(this);
  for (const Hoop& hoop : kHoops) {
    QAction* action = hoops->addAction(hoop.name, this, [this, hoop] { SetHoop(hoop.width, hoop.height); });
    action->setCheckable(true);
    action->setChecked(&hoop == &kHoops[0]);
    group->addAction(action);
  }
}

void HostWindow::ShowPage() {
  view_->SetDesign(&page_.page);
  const Design& design = page_.page;
  const QString name = design.name.empty() ? "Untitled" : QFileInfo(QString::fromStdString(design.name)).fileName();
  setWindowTitle(name + " - Fennick Host");
  if (design.stitches.Empty()) {
    status_->setText("Empty page");
    return;
  }
  status_->setText(QString("%1 stitches, %2 colours, %3 x %4 mm")
                       .arg(design.stitches.Size())
                       .arg(design.threads.size())
                       .arg((design.maxX - design.minX) / 10.0, 0, 'f', 1)
                       .arg((design.maxY - design.minY) / 10.0, 0, 'f', 1));
}

void HostWindow::RunOnPage(int32_t dispatchId) {
  int32_t block = 0;
  if (!GetDesign(block)) return;
  FennickVariant argument{};
  argument.type = FENNICK_VT_I4;
  argument.i4 = block;
  FennickVariant result{};
  FennickInvoke(control_, dispatchId, &argument, 1, &result, 0);
  // The control freed the block unless no host answered; a stale handle frees nothing.
  FennickGlobalFree(static_cast<uint32_t>(block));
  if (result.type == FENNICK_VT_I4 && result.i4 != 0) PutDesign(result.i4);
  FennickVariantClear(&result);
}

// The control's browser picks designs; the page takes the first, the others are let go.
void HostWindow::Import() {
  FennickVariant result{};
  FennickInvoke(control_, kDispatchFileImport, nullptr, 0, &result, 0);
  const auto list = static_cast<uint32_t>(result.type == FENNICK_VT_I4 ? result.i4 : 0);
  const size_t size = FennickGlobalSize(list);
  if (size < 4) return;
  const uint8_t* bytes = FennickGlobalLock(list);
  uint32_t count = 0;
  std::memcpy(&count, bytes, 4);
  for (uint32_t i = 0; i < count && 4 + 4 * (i + 1) <= size; ++i) {
    int32_t handle = 0;
    std::memcpy(&handle, bytes + 4 + 4 * i, 4);
    if (i == 0) {
      PutDesign(handle);
    } else {
      FennickGlobalFree(static_cast<uint32_t>(handle));
    }
  }
  FennickGlobalUnlock(list);
  FennickGlobalFree(list);
}

}  // namespace fennick
