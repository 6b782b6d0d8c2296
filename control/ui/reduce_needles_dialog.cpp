#include "control/ui/reduce_needles_dialog.h"

#include <QDialogButtonBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <tuple>

#include "control/ui/blit.h"
#include "core/preferences.h"
#include "tools/render/design_renderer.h"

namespace fennick {
namespace {

constexpr char kIntro[] =
    "Use the control below to adjust the maximum number of individual colors (needles) in the design.";
constexpr char kNote[] =
    "Note:\nThis does not adjust your overall number of color stops, which remains the same. If you wish to "
    "reduce the overall number of color stops, you can use the Color Sort or simply edit the colors.";

// A pane shows at most this many colour blocks.
constexpr size_t kMostBlocks = 250;

size_t PaneIndex(ReduceNeedlesModel::Pane pane) { return pane == ReduceNeedlesModel::Pane::kOriginal ? 0 : 1; }

// The preference keeps 0x00BBGGRR, the renderer 0x00RRGGBB.
uint32_t BackgroundPixel() {
  const Channels color = SplitColor(GetBackgroundColor());
  return uint32_t{color.r} << 16 | uint32_t{color.g} << 8 | color.b;
}

// A copy of the design that ends before its block kMostBlocks. The bounds are
// kept, so the picture is fitted as the whole design would be.
Design FirstBlocks(const Design& design) {
  Design shown = design;
  size_t block = 0;
  for (StitchNode* node = shown.stitches.Head(); node != nullptr; node = node->Next()) {
    // Counted as the renderer counts: a stop without a thread after it starts no block.
    if (!node->IsColorStop() || block + 1 >= shown.threads.size() || ++block < kMostBlocks) continue;
    while (shown.stitches.Tail() != node) shown.stitches.Remove(shown.stitches.Tail());
    shown.stitches.Remove(node);
    break;
  }
  return shown;
}

// The largest rectangle of `size`'s aspect within `pane`, centred.
QRect AspectFitted(const QSize& size, const QRect& pane) {
  QRect fitted(QPoint(), size.scaled(pane.size(), Qt::KeepAspectRatio));
  fitted.moveCenter(pane.center());
  return fitted;
}

}  // namespace

// One design's picture. It is rendered at the pane's size when the model says
// it is stale; a resize only stretches the picture it has.
class SVReduceNeedleDlg::Preview : public QFrame {
 public:
  Preview(ReduceNeedlesModel& model, Pane pane, uint32_t background, QWidget* parent)
      : QFrame(parent), model_(model), pane_(pane) {
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    setMinimumSize(160, 160);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    renderer_.bitmap.background = background;
    renderer_.shaded = true;
    renderer_.thick = true;
    renderer_.flipY = true;  // y grows upwards in the design, downwards on screen
  }

 protected:
  void paintEvent(QPaintEvent* event) override {
    QFrame::paintEvent(event);
    QPainter painter(this);
    const QRect pane = contentsRect();
    painter.fillRect(pane, QColor::fromRgb(renderer_.bitmap.background));
    if (model_.PreviewStale(pane_)) Render(pane.size() * devicePixelRatioF());
    if (!renderer_.bitmap.valid) return;
    Blit(renderer_.bitmap, painter, AspectFitted(QSize(renderer_.bitmap.width, renderer_.bitmap.height), pane));
  }

 private:
  void Render(const QSize& size) {
    if (size.isEmpty() || renderer_.bitmap.Create(size.width(), size.height()) != 0) return;
    // Render clears the bitmap first, so blocks drawn one call each would not
    // add up: one walk over the blocks in order gives their sum.
    // A copy: rendering marks the nodes it drew, and the model's designs stay untouched.
    Design shown = FirstBlocks(pane_ == Pane::kOriginal ? model_.Original() : model_.Modified());
    renderer_.design = &shown;
    renderer_.Render(-1);
    renderer_.design = nullptr;
    model_.PreviewDrawn(pane_);
  }

  ReduceNeedlesModel& model_;
  Pane pane_;
  DesignRenderer renderer_;
};

SVReduceNeedleDlg::SVReduceNeedleDlg(const Design& design, QWidget* parent) : QDialog(parent) {
  setWindowTitle(QStringLiteral("Reduce Needles"));
  model_.Open(design);
  const uint32_t background = BackgroundPixel();

  auto* intro = new QLabel(QString::fromUtf8(kIntro), this);
  intro->setWordWrap(true);
  intro->setAlignment(Qt::AlignHCenter);

  edit_ = new QLineEdit(QString::fromStdString(model_.EditText()), this);
  edit_->setObjectName(QStringLiteral("edit"));
  edit_->setAlignment(Qt::AlignRight);
  edit_->setFixedWidth(edit_->fontMetrics().horizontalAdvance(QStringLiteral("0000")) + 16);
  connect(edit_, &QLineEdit::textEdited, this, &SVReduceNeedleDlg::EditChanged);
  // The spin: two arrows beside the edit, as tall as it together.
  auto* arrows = new QVBoxLayout;
  arrows->setSpacing(0);
  for (const auto& [name, arrow, by] : {std::tuple("up", Qt::UpArrow, 1), std::tuple("down", Qt::DownArrow, -1)}) {
    auto* button = new QToolButton(this);
    button->setObjectName(QString::fromLatin1(name));
    button->setArrowType(arrow);
    button->setAutoRepeat(true);
    button->setFixedSize(edit_->sizeHint().height(), edit_->sizeHint().height() / 2);
    connect(button, &QToolButton::clicked, this, [this, step = by] { Step(step); });
    arrows->addWidget(button);
  }
  auto* spinRow = new QHBoxLayout;
  spinRow->addStretch();
  spinRow->addWidget(edit_);
  spinRow->addLayout(arrows);
  spinRow->addStretch();

  auto* panes = new QHBoxLayout;
  const char* captions[2] = {"Original", "Modified"};
  const char* buttonNames[2] = {"1101", "1103"};
  const char* paneNames[2] = {"original", "modified"};
  for (const Pane pane : {Pane::kOriginal, Pane::kModified}) {
    const size_t i = PaneIndex(pane);
    previews_[i] = new Preview(model_, pane, background, this);
    previews_[i]->setObjectName(QString::fromLatin1(paneNames[i]) + QStringLiteral("Preview"));
    listButtons_[i] = new QToolButton(this);
    listButtons_[i]->setObjectName(QString::fromLatin1(buttonNames[i]));
    listButtons_[i]->setArrowType(Qt::DownArrow);
    listButtons_[i]->setAutoRaise(true);
    listButtons_[i]->setToolTip(QStringLiteral("Show or hide the list of colors"));
    connect(listButtons_[i], &QToolButton::clicked, this, [this, pane] { ToggleList(pane); });
    lists_[i] = new QListWidget(this);
    lists_[i]->setObjectName(QString::fromLatin1(paneNames[i]) + QStringLiteral("List"));
    lists_[i]->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    lists_[i]->setFixedHeight(lists_[i]->fontMetrics().height() * 7);

    auto* header = new QHBoxLayout;
    header->addWidget(listButtons_[i]);
    header->addWidget(new QLabel(QString::fromLatin1(captions[i]), this));
    header->addStretch();
    auto* column = new QVBoxLayout;
    column->addWidget(previews_[i], 1);
    column->addLayout(header);
    column->addWidget(lists_[i]);
    panes->addLayout(column, 1);
  }

  auto* note = new QLabel(QString::fromUtf8(kNote), this);
  note->setWordWrap(true);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->setCenterButtons(true);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(intro);
  layout->addLayout(spinRow);
  layout->addLayout(panes, 1);
  layout->addWidget(note);
  layout->addWidget(buttons);
  ShowLists();
  resize(720, 600);
}

SVReduceNeedleDlg::~SVReduceNeedleDlg() = default;

bool SVReduceNeedleDlg::Run(const Design& design, Design& result, QWidget* parent) {
  SVReduceNeedleDlg dialog(design, parent);
  if (dialog.exec() != QDialog::Accepted) return false;
  std::optional<Design> reduced = dialog.model_.Accept();
  if (!reduced) return false;
  result = std::move(*reduced);
  return true;
}

void SVReduceNeedleDlg::EditChanged(const QString& text) {
  const bool changed = model_.SetEditText(text.toStdString());
  const QString corrected = QString::fromStdString(model_.EditText());
  if (edit_->text() != corrected) edit_->setText(corrected);
  if (!changed) return;
  ShowLists();
  previews_[PaneIndex(Pane::kModified)]->update();
}

void SVReduceNeedleDlg::Step(int by) {
  // Within the spin's range; the model still has the last word.
  const int value = std::max(std::min(model_.MaxNeedles() + by, model_.SpinTop()), 1);
  EditChanged(QString::number(value));
}

void SVReduceNeedleDlg::ToggleList(Pane pane) {
  model_.ToggleList(pane);
  const size_t i = PaneIndex(pane);
  lists_[i]->setVisible(model_.ListShown(pane));
  listButtons_[i]->setArrowType(model_.ListShown(pane) ? Qt::DownArrow : Qt::RightArrow);
}

void SVReduceNeedleDlg::ShowLists() {
  for (const Pane pane : {Pane::kOriginal, Pane::kModified}) {
    QListWidget* list = lists_[PaneIndex(pane)];
    list->clear();
    for (const std::string& line : model_.ListLines(pane)) list->addItem(QString::fromStdString(line));
  }
}

}  // namespace fennick
