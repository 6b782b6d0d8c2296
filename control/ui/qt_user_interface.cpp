#include "control/ui/qt_user_interface.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QMessageBox>
#include <QMetaObject>
#include <QThread>

#include "browser/ui/folder_dialog.h"
#include "browser/ui/import_design_dialog.h"
#include "control/ui/prop_sheet.h"
#include "control/ui/reduce_needles_dialog.h"

namespace fennick {
namespace {

QMessageBox::StandardButtons ButtonsOf(MessageButtons buttons) {
  switch (buttons) {
    case MessageButtons::kOk: return QMessageBox::Ok;
    case MessageButtons::kOkCancel: return QMessageBox::Ok | QMessageBox::Cancel;
    case MessageButtons::kYesNo: return QMessageBox::Yes | QMessageBox::No;
    case MessageButtons::kYesNoCancel: return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

MessageAnswer AnswerOf(int button) {
  switch (button) {
    case QMessageBox::Cancel: return MessageAnswer::kCancel;
    case QMessageBox::Yes: return MessageAnswer::kYes;
    case QMessageBox::No: return MessageAnswer::kNo;
    default: return MessageAnswer::kOk;
  }
}

// The name filters of "text|pattern|" pairs, and the extension of each.
void ParseFilter(const std::string& filter, QStringList& names, QStringList& extensions) {
  const QStringList parts = QString::fromStdString(filter).split('|');
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    if (parts[i].isEmpty()) break;
    names << parts[i];
    const QString pattern = parts[i + 1];
    extensions << pattern.mid(pattern.lastIndexOf('.') + 1);
  }
}

}  // namespace

QtUserInterface::QtUserInterface() { SetUserInterface(this); }

QtUserInterface::~QtUserInterface() { SetUserInterface(nullptr); }

MessageAnswer QtUserInterface::ShowMessage(const std::string& text, const std::string& caption,
                                           MessageButtons buttons) {
  // Message boxes may be asked for on any thread; the box opens on the interface's.
  const auto show = [&] {
    QMessageBox box(QMessageBox::NoIcon, QString::fromStdString(caption), QString::fromStdString(text),
                    ButtonsOf(buttons), QApplication::activeWindow());
    return AnswerOf(box.exec());
  };
  if (QThread::currentThread() == qApp->thread()) return show();
  MessageAnswer answer = SafeAnswer(buttons);
  QMetaObject::invokeMethod(qApp, [&] { answer = show(); }, Qt::BlockingQueuedConnection);
  return answer;
}

void QtUserInterface::SetWaitCursor(bool on) {
  if (QThread::currentThread() != qApp->thread()) return;
  if (on) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QApplication::restoreOverrideCursor();
  }
}

std::vector<std::string> QtUserInterface::ChooseDesigns() {
  ImportDesignDialog dialog("", QApplication::activeWindow());
  dialog.exec();
  return dialog.selected;
}

std::optional<std::string> QtUserInterface::ChooseSaveName(const SaveDialogRequest& request) {
  QStringList names;
  QStringList extensions;
  ParseFilter(request.filter, names, extensions);
  QFileDialog dialog(QApplication::activeWindow());
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.setNameFilters(names);
  if (!request.folder.empty()) dialog.setDirectory(QString::fromStdString(request.folder));
  dialog.selectFile(QString::fromStdString(request.fileTitle));
  // A name typed without extension takes the one of the format shown.
  const auto follow = [&](const QString& name) {
    const qsizetype index = names.indexOf(name);
    if (index >= 0) dialog.setDefaultSuffix(extensions[index]);
  };
  QObject::connect(&dialog, &QFileDialog::filterSelected, follow);
  if (request.filterIndex >= 1 && request.filterIndex <= names.size()) {
    dialog.selectNameFilter(names[request.filterIndex - 1]);
    follow(names[request.filterIndex - 1]);
  }
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return dialog.selectedFiles().front().toStdString();
}

std::optional<bool> QtUserInterface::AskWithCheckBox(const std::string& caption, const std::string& text,
                                                     const std::string& checkBox, bool checked) {
  QMessageBox box(QMessageBox::NoIcon, QString::fromStdString(caption), QString::fromStdString(text),
                  QMessageBox::Ok | QMessageBox::Cancel, QApplication::activeWindow());
  auto* check = new QCheckBox(QString::fromStdString(checkBox));
  check->setChecked(checked);
  box.setCheckBox(check);
  if (box.exec() != QMessageBox::Ok) return std::nullopt;
  return check->isChecked();
}

std::optional<std::string> QtUserInterface::ChooseFolder(const std::string& title, const std::string& start) {
  return FolderDialog::Choose(title, start, QApplication::activeWindow());
}

void QtUserInterface::ShowPreferences(const std::string& title) {
  SPropSheet sheet(QString::fromStdString(title), QApplication::activeWindow());
  sheet.exec();
}

bool QtUserInterface::ReduceNeedles(const Design& design, Design& result) {
  return SVReduceNeedleDlg::Run(design, result, QApplication::activeWindow());
}

}  // namespace fennick
