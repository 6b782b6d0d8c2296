// The folder picker: a file dialog that shows folders, "Select Folder", whose
// OK tests the typed text and offers to create a folder that is missing.
#pragma once

#include <QFileDialog>
#include <optional>
#include <string>

namespace fennick {

class FolderDialog : public QFileDialog {
  Q_OBJECT

 public:
  FolderDialog(const QString& title, const QString& start, QWidget* parent = nullptr);
  // The folder chosen, or nothing on Cancel.
  static std::optional<std::string> Choose(const std::string& title, const std::string& start,
                                           QWidget* parent = nullptr);

 public slots:
  void accept() override;
};

}  // namespace fennick
