// Asks for the map and the palette of a build.
#pragma once

#include <QDialog>

#include "desktop/last_files.h"

class QLineEdit;
class QPushButton;

namespace k2k {

// Files may be typed, chosen, or dropped from a file manager.
class FilesDialog : public QDialog {
  public:
    explicit FilesDialog(const BuildFiles& files);

    BuildFiles Files() const;

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    // What is asked for in one row.
    struct Question {
        const char* label;
        const char* name;
        const char* title;   // of the file chooser
        const char* filter;  // of the file chooser
    };
    QLineEdit* AddRow(int row, const Question& question, const QString& file);

    QLineEdit* map_;
    QLineEdit* palette_;
    QPushButton* ok_;
};

}  // namespace k2k
