#include "browser/ui/folder_dialog.h"

#include <QLineEdit>

#include "browser/folder_check.h"

namespace fennick {

FolderDialog::FolderDialog(const QString& title, const QString& start, QWidget* parent)
    : QFileDialog(parent, title.isEmpty() ? QString(kFolderDialogTitle) : title, start) {
  // Qt's own dialog, so that the labels are ours on every desktop.
  setOption(QFileDialog::DontUseNativeDialog);
  setFileMode(QFileDialog::Directory);
  setOption(QFileDialog::ShowDirsOnly);
  setNameFilters({QStringLiteral("Show Folders Only (.)"), QStringLiteral("All Files (*.*)")});
  setLabelText(QFileDialog::FileName, QStringLiteral("Folder:"));
  setLabelText(QFileDialog::Accept, QStringLiteral("Open"));
}

void FolderDialog::accept() {
  const QStringList chosen = selectedFiles();
  auto* edit = findChild<QLineEdit*>();
  // A typed text wins over the folder the list points at.
  QString text = edit != nullptr && !edit->text().isEmpty() ? edit->text() : chosen.value(0);
  if (!text.startsWith('/')) text = directory().absoluteFilePath(text);
  if (AcceptFolderText(text.toStdString(), false)) {
    selectFile(text);
    QFileDialog::accept();
  }
}

std::optional<std::string> FolderDialog::Choose(const std::string& title, const std::string& start, QWidget* parent) {
  FolderDialog dialog(QString::fromStdString(title), QString::fromStdString(start), parent);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.selectedFiles().value(0).toStdString();
}

}  // namespace fennick
