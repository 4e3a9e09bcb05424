// The window of a run: text, progress, caption, activity mark, and the button that ends it.
#pragma once

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "desktop/shared_display.h"

class QCheckBox;
class QLabel;
class QMessageBox;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace k2k {

// How a run ended.
struct RunEnd {
    int status = 0;
    bool finished = false;  // not failed on the way
    bool close = false;     // the window is to close by itself
};

// Shown with the first text of the run. The close button, Escape and the button ask before they end a run that goes on;
// a run that failed counts as one, since it never finished.
class RunWindow : public QDialog {
  public:
    // quit ends the program with a status.
    explicit RunWindow(std::function<void(int status)> quit);

    // What the run draws on, from any thread.
    SharedDisplay& RunDisplay() { return display_; }

    // The run is over. Without any text there is nothing to look at, and the program ends.
    void EndRun(const RunEnd& end);

    // The request to close.
    void reject() override;

  private:
    void Refresh();
    void ShowLines(std::vector<std::string> lines);
    void AskToAbort();
    void Quit();

    const std::function<void(int)> quit_;
    QPlainTextEdit* text_;
    QProgressBar* bar_;
    QCheckBox* activity_;
    QLabel* caption_;
    QPushButton* button_;
    QMessageBox* question_ = nullptr;
    std::vector<std::string> shownLines_;
    bool running_ = true;
    int status_ = 0;  // of the program, when it is closed now
    SharedDisplay display_;
};

}  // namespace k2k
