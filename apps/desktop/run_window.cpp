#include "desktop/run_window.h"

#include <QApplication>
#include <QCheckBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBlock>
#include <QVBoxLayout>
#include <algorithm>
#include <span>

#include "desktop/screen_fit.h"
#include "driver/dialog_controls.h"

namespace k2k {

namespace {

constexpr int VisibleLines = 30;

// A name in a message may hold what Qt takes for the end of a line; a blank stands for it, as the view counts on its
// lines being those of the run.
QString OneLine(const std::string& line) {
    constexpr QStringView LineEnds = u"\r\u2028\u2029\uFDD0\uFDD1";
    QString text = QString::fromStdString(line);
    std::ranges::replace_if(
        text, [&](QChar c) { return LineEnds.contains(c); }, ' ');
    return text;
}

QString Join(std::span<const std::string> lines) {
    QString text;
    for (const std::string& line : lines) text += '\n' + OneLine(line);
    return text.mid(1);
}

QPlainTextEdit* MakeTextView() {
    auto* view = new QPlainTextEdit;
    view->setObjectName("text");
    view->setAccessibleName("Messages");
    view->setReadOnly(true);
    view->setUndoRedoEnabled(false);
    view->setLineWrapMode(QPlainTextEdit::NoWrap);
    view->setTabChangesFocus(true);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(QApplication::font().pointSizeF());
    view->setFont(font);
    return view;
}

// The room of a whole line, and of enough lines to follow a run.
QSize TextSize(const QPlainTextEdit& view) {
    const QFontMetrics metrics = view.fontMetrics();
    const int margins = 2 * (view.frameWidth() + static_cast<int>(view.document()->documentMargin()));
    // The advance of one letter is rounded, so that of the line is asked for.
    const QString line(static_cast<qsizetype>(TextView::Columns), 'm');
    return {metrics.horizontalAdvance(line) + margins + view.verticalScrollBar()->sizeHint().width(),
            metrics.lineSpacing() * VisibleLines + margins};
}

// A check mark that only the run sets.
QCheckBox* MakeActivityMark() {
    auto* mark = new QCheckBox;
    mark->setObjectName("activity");
    mark->setAccessibleName("Activity");
    mark->setFocusPolicy(Qt::NoFocus);
    mark->setAttribute(Qt::WA_TransparentForMouseEvents);
    return mark;
}

}  // namespace

RunWindow::RunWindow(std::function<void(int)> quit)
    : quit_(std::move(quit)),
      text_(MakeTextView()),
      bar_(new QProgressBar),
      activity_(MakeActivityMark()),
      caption_(new QLabel),
      button_(new QPushButton("&Cancel")),
      display_([this] {
          QMetaObject::invokeMethod(
              this, [this] { Refresh(); }, Qt::QueuedConnection);
      }) {
    setWindowTitle(QString::fromUtf8(DialogTitle.data(), DialogTitle.size()));
    setWindowFlag(Qt::WindowMinMaxButtonsHint);
    bar_->setObjectName("progress");
    bar_->setAccessibleName("Progress");
    bar_->setRange(0, 1);
    bar_->setValue(0);
    caption_->setObjectName("caption");
    button_->setObjectName("button");
    connect(button_, &QPushButton::clicked, this, &RunWindow::reject);

    auto* below = new QHBoxLayout;
    below->addWidget(activity_);
    below->addWidget(caption_, 1);
    below->addWidget(button_);
    auto* all = new QVBoxLayout(this);
    all->addWidget(text_, 1);
    all->addWidget(bar_);
    all->addLayout(below);
    button_->setDefault(true);
    button_->setFocus();
    FitToScreen(*this, sizeHint() - text_->sizeHint() + TextSize(*text_).expandedTo(text_->sizeHint()));
}

void RunWindow::EndRun(const RunEnd& end) {
    Refresh();
    status_ = end.status;
    // A status below 0 is the end of the program, which an option's value brought about.
    running_ = !end.finished && end.status >= 0;
    if (end.status != 0) {
        bar_->setValue(bar_->maximum());
        caption_->setText("Error");
    }
    if (shownLines_.empty() || (end.finished && end.close)) Quit();
}

void RunWindow::reject() {
    if (running_ && !display_.RunFinished())
        AskToAbort();
    else
        Quit();
}

void RunWindow::Refresh() {
    RunPicture picture = display_.Take();
    for (int i = 0; i < picture.beeps; ++i) QApplication::beep();
    const bool first = shownLines_.empty();
    ShowLines(std::move(picture.lines));
    // Nothing to do is an empty bar, where Qt would show a busy one.
    bar_->setRange(0, std::max(picture.total, 1));
    bar_->setValue(std::clamp(picture.done, 0, bar_->maximum()));
    caption_->setText(QString::fromStdString(picture.caption));
    button_->setText('&' + QString::fromStdString(picture.button));
    activity_->setChecked(picture.active);
    if (first && !shownLines_.empty()) show();
}

// Only what changed is put in anew, so that a selection above it stays.
void RunWindow::ShowLines(std::vector<std::string> lines) {
    if (lines == shownLines_) return;
    const auto changed = std::ranges::mismatch(shownLines_, lines).in2;
    const auto kept = static_cast<int>(changed - lines.begin());
    QTextCursor cursor(text_->document());
    if (kept > 0) cursor.setPosition(text_->document()->findBlockByNumber(kept - 1).position());
    if (kept > 0) cursor.movePosition(QTextCursor::EndOfBlock);
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    cursor.insertText((kept > 0 && changed != lines.end() ? "\n" : "") + Join({changed, lines.end()}));
    text_->verticalScrollBar()->setValue(text_->verticalScrollBar()->maximum());
    shownLines_ = std::move(lines);
}

void RunWindow::AskToAbort() {
    if (question_ != nullptr) {
        question_->activateWindow();
        return;
    }
    question_ = new QMessageBox(QMessageBox::Question, "Quit map compiler", "Do you really want to abort?",
                                QMessageBox::Yes | QMessageBox::No, this);
    question_->setAttribute(Qt::WA_DeleteOnClose);
    question_->setDefaultButton(QMessageBox::No);
    connect(question_, &QMessageBox::finished, this, [this](int answer) {
        question_ = nullptr;
        if (answer == QMessageBox::Yes) Quit();
    });
    question_->open();
}

void RunWindow::Quit() {
    hide();
    quit_(status_);
}

}  // namespace k2k
