#include "control/ui/prop_sheet.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>
#include <map>

namespace fennick {
namespace {

// Called after every input, so that the views show what the pages made of it.
using Changed = std::function<void()>;

struct PageView {
  QWidget* widget;
  std::function<void()> refresh;
};

QString Text(const char* text) { return QString::fromUtf8(text); }
QString Id(int32_t id) { return QString::number(id); }

QLabel* Label(const char* text, bool wrap = false) {
  auto* label = new QLabel(Text(text));
  label->setWordWrap(wrap);
  return label;
}

// An edit of digits, wide enough for `digits` of them. Only the colour
// overlap's edit takes digits alone; the others take a minus sign too, so
// that the pages' lower bounds can be met as they were typed.
QLineEdit* NumberEdit(const QString& name, int digits, bool withSign = true) {
  auto* edit = new QLineEdit;
  edit->setObjectName(name);
  edit->setValidator(new QRegularExpressionValidator(QRegularExpression(withSign ? "-?[0-9]*" : "[0-9]*"), edit));
  edit->setFixedWidth(edit->fontMetrics().horizontalAdvance(QString(digits + 1, '0')) + 16);
  return edit;
}

QCheckBox* Check(int32_t id, const char* label) {
  auto* check = new QCheckBox(Text(label));
  check->setObjectName(Id(id));
  return check;
}

QSlider* Slider(int32_t id, int32_t low, int32_t high, int tickInterval) {
  auto* slider = new QSlider(Qt::Horizontal);
  slider->setObjectName(Id(id));
  slider->setRange(low, high);
  slider->setPageStep(tickInterval);
  slider->setTickPosition(QSlider::TicksBelow);
  slider->setTickInterval(tickInterval);
  slider->setMinimumWidth(220);
  return slider;
}

QPushButton* Button(const char* label, const QString& name) {
  auto* button = new QPushButton(Text(label));
  button->setObjectName(name);
  button->setAutoDefault(false);
  return button;
}

// Leaves the text alone when it is already shown, so the cursor stays put.
void Show(QLineEdit* edit, const std::string& text) {
  const QString shown = QString::fromStdString(text);
  if (edit->text() != shown) edit->setText(shown);
}
void Show(QAbstractButton* button, bool on) {
  const QSignalBlocker blocker(button);
  button->setChecked(on);
}
void Show(QSlider* slider, int32_t position) {
  const QSignalBlocker blocker(slider);
  slider->setValue(position);
}

// Forwards what the user types; `change` is the page's handler.
template <typename Change>
void OnTyped(QLineEdit* edit, Change change, const Changed& changed) {
  QObject::connect(edit, &QLineEdit::textEdited, edit, [change, changed](const QString& text) {
    change(text.toStdString());
    changed();
  });
}
template <typename Change>
void OnClicked(QAbstractButton* button, Change change, const Changed& changed) {
  QObject::connect(button, &QAbstractButton::clicked, button, [change, changed](bool on) {
    change(on);
    changed();
  });
}
template <typename Change>
void OnMoved(QSlider* slider, Change change, const Changed& changed) {
  QObject::connect(slider, &QSlider::valueChanged, slider, [change, changed](int position) {
    change(position);
    changed();
  });
}

QVBoxLayout* PageLayout(QWidget* page) {
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(16, 16, 16, 16);
  layout->setSpacing(8);
  return layout;
}

// A button at the page's foot, on the left.
void AddFootButton(QVBoxLayout* layout, QPushButton* button) {
  layout->addStretch(1);
  auto* row = new QHBoxLayout;
  row->addWidget(button);
  row->addStretch(1);
  layout->addLayout(row);
}

PageView ColorSortView(SPropColorSort& page, const Changed& changed) {
  auto* widget = new QWidget;
  QVBoxLayout* layout = PageLayout(widget);
  layout->addWidget(Label(SPropColorSort::kPrompt, true));
  auto* threshold = NumberEdit("threshold", 3, false);
  auto* row = new QHBoxLayout;
  row->addWidget(threshold);
  row->addStretch(1);
  layout->addLayout(row);
  auto* useDefault = Button(kUseDefaultLabel, "default");
  AddFootButton(layout, useDefault);

  OnTyped(threshold, [&page](const std::string& text) { page.OnThresholdChange(text); }, changed);
  QObject::connect(useDefault, &QPushButton::clicked, widget, [&page, changed] {
    page.UseDefault();
    changed();
  });
  return {widget, [&page, threshold] { Show(threshold, page.Threshold()); }};
}

PageView BasteView(SPropBaste& page, const Changed& changed) {
  auto* widget = new QWidget;
  QVBoxLayout* layout = PageLayout(widget);
  auto* combine = Check(SPropBaste::kCombine.id, SPropBaste::kCombine.label);
  auto* cross = Check(SPropBaste::kCross.id, SPropBaste::kCross.label);
  layout->addWidget(combine);
  layout->addWidget(cross);
  layout->addSpacing(8);

  layout->addWidget(Label(SPropBaste::kLength.label));
  auto* length = NumberEdit(Id(SPropBaste::kLength.id), 3);
  auto* lengthRow = new QHBoxLayout;
  lengthRow->addWidget(length);
  lengthRow->addStretch(1);
  layout->addLayout(lengthRow);
  layout->addSpacing(8);

  layout->addWidget(Label(SPropBaste::kEdge.label));
  auto* edge = Slider(SPropBaste::kEdge.id, SPropBaste::kEdgeLow, SPropBaste::kEdgeHigh, 1);
  auto* readout = new QLabel;
  readout->setObjectName(Id(SPropBaste::kEdgeReadout.id));
  readout->setMinimumWidth(readout->fontMetrics().horizontalAdvance("00 mm") + 8);
  auto* edgeRow = new QHBoxLayout;
  edgeRow->addWidget(edge, 1);
  edgeRow->addWidget(readout);
  layout->addLayout(edgeRow);
  auto* useDefault = Button(kUseDefaultLabel, "default");
  AddFootButton(layout, useDefault);

  OnClicked(combine, [&page](bool on) { page.SetCombine(on); }, changed);
  OnClicked(cross, [&page](bool on) { page.SetCross(on); }, changed);
  OnTyped(length, [&page](const std::string& text) { page.OnLengthChange(text); }, changed);
  OnMoved(edge, [&page](int position) { page.OnEdgeMoved(position); }, changed);
  QObject::connect(useDefault, &QPushButton::clicked, widget, [&page, changed] {
    page.UseDefault();
    changed();
  });
  return {widget, [&page, combine, cross, length, edge, readout] {
            Show(combine, page.Combine());
            Show(cross, page.Cross());
            Show(length, page.Length());
            Show(edge, page.Edge());
            readout->setText(QString::fromStdString(page.EdgeReadout()));
          }};
}

PageView ConversionView(SPropConversion& page, const Changed& changed) {
  auto* widget = new QWidget;
  QVBoxLayout* layout = PageLayout(widget);
  auto* columns = new QHBoxLayout;
  layout->addLayout(columns);

  auto* formats = new QGroupBox;
  auto* formatColumn = new QVBoxLayout(formats);
  auto* radios = new QButtonGroup(widget);
  for (size_t i = 0; i < kConversionFormats.size(); ++i) {
    auto* radio = new QRadioButton(Text(kConversionFormats[i].label));
    radio->setObjectName(Id(kConversionFormats[i].radio));
    radios->addButton(radio, static_cast<int>(i));
    formatColumn->addWidget(radio);
  }
  formatColumn->addStretch(1);
  columns->addWidget(formats);

  // Every control of the table, by id.
  std::map<int32_t, QWidget*> controls;
  for (const ConversionControl& control : kConversionControls) {
    if (control.isEdit) {
      auto* edit = NumberEdit(Id(control.id), control.high >= 1000000 ? 7 : 4);
      OnTyped(edit, [&page, id = control.id](const std::string& text) { page.OnEditChange(id, text); }, changed);
      controls[control.id] = edit;
    } else {
      auto* check = Check(control.id, control.label);
      OnClicked(check, [&page, id = control.id](bool on) { page.OnCheck(id, on); }, changed);
      // The PES choices come and go with the format; the page keeps its shape.
      QSizePolicy policy = check->sizePolicy();
      policy.setRetainSizeWhenHidden(true);
      check->setSizePolicy(policy);
      controls[control.id] = check;
    }
  }
  const auto labelOf = [](int32_t id) {
    for (const ConversionControl& control : kConversionControls) {
      if (control.id == id) return control.label;
    }
    return "";
  };

  auto* settings = new QGroupBox;
  auto* grid = new QGridLayout(settings);
  grid->setHorizontalSpacing(8);
  grid->setVerticalSpacing(8);
  // Largest hoop: width x height mm.
  grid->addWidget(Label(labelOf(1033)), 0, 0);
  auto* hoop = new QHBoxLayout;
  hoop->addWidget(controls[1033]);
  hoop->addWidget(Label(labelOf(1034)));
  hoop->addWidget(controls[1034]);
  hoop->addWidget(Label(kConversionHoopUnit));
  hoop->addStretch(1);
  grid->addLayout(hoop, 0, 1);
  // Split after N colors / N stitches.
  const auto splitRow = [&](int row, int32_t check, int32_t edit, const char* unit) {
    grid->addWidget(controls[check], row, 0);
    auto* line = new QHBoxLayout;
    line->addWidget(controls[edit]);
    line->addWidget(Label(unit));
    line->addStretch(1);
    grid->addLayout(line, row, 1);
  };
  splitRow(1, 1037, 1035, kConversionColorsLabel);
  splitRow(2, 1038, 1036, kConversionStitchesLabel);
  grid->addWidget(controls[1042], 3, 0, 1, 2);
  grid->addWidget(controls[1040], 4, 0, 1, 2);
  grid->addWidget(controls[1027], 5, 0);
  auto* shrink = new QHBoxLayout;
  shrink->addWidget(Label(labelOf(1041)));
  shrink->addWidget(controls[1041]);
  shrink->addStretch(1);
  grid->addLayout(shrink, 5, 1);
  grid->addWidget(controls[1094], 6, 0, 1, 2);
  grid->addWidget(controls[1095], 7, 0, 1, 2);
  grid->setRowStretch(8, 1);
  grid->setColumnStretch(1, 1);
  columns->addWidget(settings, 1);

  auto* useDefault = Button(kUseDefaultLabel, "default");
  AddFootButton(layout, useDefault);

  QObject::connect(radios, &QButtonGroup::idClicked, widget, [&page, changed](int selection) {
    page.Select(selection);
    changed();
  });
  QObject::connect(useDefault, &QPushButton::clicked, widget, [&page, changed] {
    page.UseDefault();
    changed();
  });
  return {widget, [&page, radios, controls] {
            Show(radios->button(page.Selection()), true);
            for (const ConversionControl& control : kConversionControls) {
              QWidget* shown = controls.at(control.id);
              if (control.isEdit) {
                Show(static_cast<QLineEdit*>(shown), page.Text(control.id));
              } else {
                Show(static_cast<QCheckBox*>(shown), page.Checked(control.id));
              }
              shown->setEnabled(page.Enabled(control.id));
              shown->setVisible(page.Visible(control.id));
            }
          }};
}

PageView TessimoView(SPropTessimo& page, const Changed& changed) {
  auto* widget = new QWidget;
  QVBoxLayout* layout = PageLayout(widget);
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(10);
  grid->setVerticalSpacing(10);
  layout->addLayout(grid);

  struct Row {
    QSlider* slider;
    QLineEdit* readout;
    QCheckBox* apply;
  };
  std::vector<Row> rows;
  QSpinBox* maxSmall = nullptr;
  int line = 0;
  for (const TessimoSlider& item : kTessimoSliders) {
    const bool sensitivity = item.id == SPropTessimo::kSensitivity;
    auto* slider = Slider(item.id, item.low, item.high, sensitivity ? 1 : (item.high - item.low > 50 ? 25 : 5));
    OnMoved(slider, [&page, id = item.id](int position) { page.OnSliderMoved(id, position); }, changed);
    grid->addWidget(Label(item.label), line, 0);
    Row row{slider, nullptr, nullptr};
    if (sensitivity) {
      auto* ends = new QHBoxLayout;
      ends->addWidget(Label(SPropTessimo::kLowLabel));
      ends->addWidget(slider, 1);
      ends->addWidget(Label(SPropTessimo::kHighLabel));
      grid->addLayout(ends, line, 1);
    } else {
      grid->addWidget(slider, line, 1);
      row.readout = new QLineEdit;
      row.readout->setObjectName("readout" + Id(item.id));
      row.readout->setReadOnly(true);
      row.readout->setFocusPolicy(Qt::NoFocus);
      row.readout->setAlignment(Qt::AlignRight);
      row.readout->setFixedWidth(row.readout->fontMetrics().horizontalAdvance("25.0 mm") + 16);
      grid->addWidget(row.readout, line, 2);
    }
    if (item.check != 0) {
      row.apply = Check(item.check, SPropTessimo::kApplyLabel);
      OnClicked(row.apply, [&page, id = item.check](bool on) { page.OnCheck(id, on); }, changed);
      grid->addWidget(row.apply, line, 3);
    }
    rows.push_back(row);
    ++line;
    // The tie-off choice belongs with the plain stitches, under their row.
    if (item.id == kTessimoSliders[0].id) {
      auto* tieOff = Check(SPropTessimo::kTieOff.id, SPropTessimo::kTieOff.label);
      OnClicked(tieOff, [&page](bool on) { page.OnCheck(SPropTessimo::kTieOff.id, on); }, changed);
      rows.push_back({nullptr, nullptr, tieOff});
      maxSmall = new QSpinBox;
      maxSmall->setObjectName(Id(SPropTessimo::kMaxSmall.id));
      maxSmall->setRange(SPropTessimo::kMaxSmallLow, SPropTessimo::kMaxSmallHigh);
      QObject::connect(maxSmall, &QSpinBox::valueChanged, widget, [&page, changed](int value) {
        page.OnMaxSmallChange(value);
        changed();
      });
      auto* tie = new QHBoxLayout;
      tie->addWidget(tieOff);
      tie->addWidget(maxSmall);
      tie->addWidget(Label(SPropTessimo::kMaxSmall.label));
      tie->addStretch(1);
      grid->addLayout(tie, line++, 0, 1, 4);
    }
  }
  grid->setColumnStretch(1, 1);
  auto* useDefault = Button(kUseDefaultSettingsLabel, "default");
  AddFootButton(layout, useDefault);
  QObject::connect(useDefault, &QPushButton::clicked, widget, [&page, changed] {
    page.UseDefaultSettings();
    changed();
  });

  return {widget, [&page, rows, maxSmall] {
            for (const Row& row : rows) {
              if (row.slider != nullptr) {
                const int32_t id = row.slider->objectName().toInt();
                Show(row.slider, page.Position(id));
                if (row.readout != nullptr) row.readout->setText(QString::fromStdString(page.Readout(id)));
              }
              if (row.apply != nullptr) Show(row.apply, page.Checked(row.apply->objectName().toInt()));
            }
            const QSignalBlocker blocker(maxSmall);
            maxSmall->setValue(page.MaxSmall());
          }};
}

}  // namespace

SPropSheet::SPropSheet(const QString& title, QWidget* parent) : QDialog(parent) {
  setWindowTitle(title);
  pages_.Initialise();
  const Changed changed = [this] { Refresh(); };

  tabs_ = new QTabWidget;
  const PageView views[] = {ColorSortView(pages_.colorSort, changed), BasteView(pages_.baste, changed),
                            ConversionView(pages_.conversion, changed), TessimoView(pages_.tessimo, changed)};
  const char* const titles[] = {SPropColorSort::kTitle, SPropBaste::kTitle, SPropConversion::kTitle,
                                SPropTessimo::kTitle};
  for (size_t i = 0; i < std::size(views); ++i) {
    tabs_->addTab(views[i].widget, Text(titles[i]));
    refreshViews_.push_back(views[i].refresh);
  }

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply);
  apply_ = buttons->button(QDialogButtonBox::Apply);
  apply_->setObjectName(Id(PreferenceSheet::kApplyCommand));
  connect(buttons, &QDialogButtonBox::accepted, this, &SPropSheet::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &SPropSheet::reject);
  connect(apply_, &QPushButton::clicked, this, &SPropSheet::OnApply);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_);
  layout->addWidget(buttons);
  Refresh();
}

void SPropSheet::accept() {
  pages_.Apply();
  Refresh();
  QDialog::accept();
}

void SPropSheet::reject() {
  pages_.Cancel();
  Refresh();
  QDialog::reject();
}

void SPropSheet::OnApply() {
  pages_.Apply();
  Refresh();
}

void SPropSheet::Refresh() {
  for (const auto& refresh : refreshViews_) refresh();
  apply_->setEnabled(pages_.AnyModified());
}

}  // namespace fennick
