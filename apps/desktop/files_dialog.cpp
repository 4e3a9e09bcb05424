#include "desktop/files_dialog.h"

#include <QDialogButtonBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

#include "desktop/screen_fit.h"
#include "driver/dialog_controls.h"

namespace k2k {

namespace {

constexpr int VisibleLetters = 60;

bool IsPalette(const QString& file) {
    static const QStringList extensions{"pcx", "raw", "bmp", "lbm", "lmp"};
    return extensions.contains(QFileInfo(file).suffix().toLower());
}

// Where a chooser begins: at the file, or in its folder when it is gone.
QString StartOf(const QString& file) {
    return QFileInfo::exists(file) ? file : QFileInfo(file).path();
}

}  // namespace

FilesDialog::FilesDialog(const BuildFiles& files) {
    setWindowTitle(QString::fromUtf8(DialogTitle.data(), DialogTitle.size()));
    setAcceptDrops(true);
    auto* grid = new QGridLayout(this);
    map_ = AddRow(0, {"&Map:", "map", "Choose a map", "Maps (*.$$M *.$$m);;All files (*)"}, files.map);
    palette_ = AddRow(1,
                      {"&Palette:", "palette", "Choose a palette",
                       "Palettes (*.pcx *.raw *.bmp *.lbm *.lmp *.PCX *.RAW *.BMP *.LBM *.LMP);;All files (*)"},
                      files.palette);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    ok_ = buttons->button(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    grid->addWidget(buttons, 2, 0, 1, 3);
    ok_->setDefault(true);

    const auto allowOk = [this] { ok_->setEnabled(!map_->text().isEmpty() && !palette_->text().isEmpty()); };
    for (QLineEdit* line : {map_, palette_}) connect(line, &QLineEdit::textChanged, this, allowOk);
    allowOk();
    FitToScreen(*this, sizeHint());
}

BuildFiles FilesDialog::Files() const {
    return {map_->text(), palette_->text()};
}

QLineEdit* FilesDialog::AddRow(int row, const Question& question, const QString& file) {
    auto* line = new QLineEdit(file);
    line->setObjectName(question.name);
    line->setAcceptDrops(false);  // the dialog takes drops as files, not as text
    line->setMinimumWidth(line->fontMetrics().averageCharWidth() * VisibleLetters);
    auto* label = new QLabel(question.label);
    label->setBuddy(line);
    auto* browse = new QPushButton(row == 0 ? "&Browse..." : "B&rowse...");
    browse->setObjectName(QString("browse ") + question.name);
    connect(browse, &QPushButton::clicked, this, [this, line, question] {
        const QString chosen =
            QFileDialog::getOpenFileName(this, question.title, StartOf(line->text()), question.filter);
        if (!chosen.isEmpty()) line->setText(chosen);
    });
    auto& grid = static_cast<QGridLayout&>(*layout());
    grid.addWidget(label, row, 0);
    grid.addWidget(line, row, 1);
    grid.addWidget(browse, row, 2);
    return line;
}

void FilesDialog::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void FilesDialog::dropEvent(QDropEvent* event) {
    for (const QUrl& url : event->mimeData()->urls()) {
        const QString file = url.toLocalFile();
        if (!file.isEmpty()) (IsPalette(file) ? palette_ : map_)->setText(file);
    }
    event->acceptProposedAction();
}

}  // namespace k2k
