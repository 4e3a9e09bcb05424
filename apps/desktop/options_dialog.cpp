#include "desktop/options_dialog.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <algorithm>

#include "desktop/screen_fit.h"

namespace k2k {

namespace {

// The sliders of the upper half; the others stand in the lower one.
constexpr size_t UpperSliders = static_cast<size_t>(Slider::Cpus) + 1;
constexpr int CheckBoxColumns = 3;
constexpr int SliderColumns = 2;
constexpr int CellsOfSlider = 3;  // label, slider, value
constexpr int PagesOfSlider = 10;
constexpr int SliderLetters = 14;  // the least length of a slider, in letters
constexpr int DefaultBuildCode = QDialog::Accepted + 1;
constexpr char MoreLetter = 'm';

QString Text(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString ShownAt(const SliderRow& row, int position) {
    return QString::fromStdString(row.shown(position));
}

// The width of the widest text that a slider shows.
int WidthOfValues(const SliderRow& row, const QFontMetrics& metrics) {
    int width = 0;
    for (int position = row.least; position <= row.most; ++position)
        width = std::max(width, metrics.horizontalAdvance(ShownAt(row, position)));
    return width;
}

QSlider* MakeSlider(const SliderRow& row, int position) {
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(Text(row.label));
    slider->setRange(row.least, row.most);
    slider->setPageStep(std::max(1, (row.most - row.least) / PagesOfSlider));
    slider->setValue(position);
    slider->setMinimumWidth(slider->fontMetrics().averageCharWidth() * SliderLetters);
    return slider;
}

// Shows the slider's value as it moves.
QLabel* MakeValue(const SliderRow& row, const QSlider& slider) {
    auto* value = new QLabel(ShownAt(row, slider.value()));
    value->setObjectName(Text(row.label) + " value");
    value->setMinimumWidth(WidthOfValues(row, value->fontMetrics()));
    QObject::connect(&slider, &QSlider::valueChanged, value,
                     [&row, value](int position) { value->setText(ShownAt(row, position)); });
    return value;
}

}  // namespace

OptionsDialog::OptionsDialog(const DialogControls& controls) {
    setWindowTitle(Text(DialogTitle));
    // The buttons get their letters first.
    QLayout* buttons = MakeButtons();
    auto* halves = new QWidget;
    auto* rows = new QVBoxLayout(halves);
    rows->addWidget(MakeUpperHalf(controls));
    lowerHalf_ = MakeLowerHalf(controls);
    rows->addWidget(lowerHalf_);
    rows->addStretch();
    lowerHalf_->hide();
    content_ = new ContentArea(halves);

    auto* all = new QVBoxLayout(this);
    all->addWidget(content_, 1);
    all->addLayout(buttons);
    ok_->setDefault(true);
}

DialogControls OptionsDialog::Controls() const {
    DialogControls controls;
    std::ranges::transform(sliders_, controls.sliders.begin(), &QSlider::value);
    std::ranges::transform(checks_, controls.checks.begin(), &QCheckBox::isChecked);
    const auto chosen = std::ranges::find_if(choices_, &QRadioButton::isChecked);
    controls.choice = static_cast<BuildChoice>(chosen - choices_.begin());
    std::ranges::transform(texts_, controls.texts.begin(), [](QLineEdit* text) { return text->text().toStdString(); });
    return controls;
}

DialogAnswer OptionsDialog::Answer() const {
    if (result() == DefaultBuildCode) return DialogAnswer::DefaultBuild;
    return result() == Accepted ? DialogAnswer::Ok : DialogAnswer::Cancel;
}

void OptionsDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    TakeRoom();
}

QWidget* OptionsDialog::MakeUpperHalf(const DialogControls& controls) {
    auto* half = new QWidget;
    auto* sliders = new QGridLayout;
    for (size_t i = 0; i < UpperSliders; ++i)
        AddSlider(*sliders, static_cast<int>(i), 0, static_cast<Slider>(i), controls.sliders[i]);
    auto* top = new QHBoxLayout;
    top->addLayout(sliders, 1);
    top->addWidget(MakeBuildGroup(controls.choice));

    auto* rows = new QVBoxLayout(half);
    rows->setContentsMargins({});
    rows->addLayout(top);
    rows->addLayout(MakeCheckBoxes(controls));
    return half;
}

QWidget* OptionsDialog::MakeLowerHalf(const DialogControls& controls) {
    auto* half = new QWidget;
    half->setObjectName("lower half");
    auto* sliders = new QGridLayout;
    constexpr size_t Count = static_cast<size_t>(Slider::Count) - UpperSliders;
    constexpr size_t RowCount = (Count + SliderColumns - 1) / SliderColumns;
    for (size_t i = 0; i < Count; ++i) {
        const size_t slider = UpperSliders + i;
        AddSlider(*sliders, static_cast<int>(i % RowCount), static_cast<int>(i / RowCount), static_cast<Slider>(slider),
                  controls.sliders[slider]);
    }
    auto* texts = new QGridLayout;
    AddTexts(*texts, controls);

    auto* rows = new QVBoxLayout(half);
    rows->setContentsMargins({});
    rows->addLayout(sliders);
    rows->addLayout(texts);
    return half;
}

QWidget* OptionsDialog::MakeBuildGroup(BuildChoice choice) {
    auto* group = new QGroupBox(Text(BuildGroupLabel));
    auto* rows = new QVBoxLayout(group);
    for (size_t i = 0; i < choices_.size(); ++i) {
        const std::string_view label = BuildChoiceRows()[i].label;
        choices_[i] = new QRadioButton(mnemonics_.Mark(label));
        choices_[i]->setObjectName(Text(label));
        choices_[i]->setChecked(static_cast<BuildChoice>(i) == choice);
        rows->addWidget(choices_[i]);
    }
    return group;
}

QLayout* OptionsDialog::MakeCheckBoxes(const DialogControls& controls) {
    auto* grid = new QGridLayout;
    for (size_t i = 0; i < checks_.size(); ++i) {
        const std::string_view label = CheckBoxRows()[i].label;
        checks_[i] = new QCheckBox(mnemonics_.Mark(label));
        checks_[i]->setObjectName(Text(label));
        checks_[i]->setChecked(controls.checks[i]);
        grid->addWidget(checks_[i], static_cast<int>(i) / CheckBoxColumns, static_cast<int>(i) % CheckBoxColumns);
    }
    return grid;
}

void OptionsDialog::AddSlider(QGridLayout& grid, int row, int column, Slider slider, int position) {
    const SliderRow& texts = SliderRows()[static_cast<size_t>(slider)];
    auto* label = new QLabel(mnemonics_.Mark(texts.label));
    QSlider* control = sliders_[static_cast<size_t>(slider)] = MakeSlider(texts, position);
    label->setBuddy(control);
    QLabel* value = MakeValue(texts, *control);
    const int firstCell = column * CellsOfSlider;
    int cell = firstCell;
    for (QWidget* widget :
         {static_cast<QWidget*>(label), static_cast<QWidget*>(control), static_cast<QWidget*>(value)}) {
        widget->setToolTip(Text(texts.toolTip));
        grid.addWidget(widget, row, cell++);
    }
    grid.setColumnStretch(firstCell + 1, 1);
}

void OptionsDialog::AddTexts(QGridLayout& grid, const DialogControls& controls) {
    for (int row = 0; const TextRow& texts : TextRows()) {
        auto* label = new QLabel(mnemonics_.Mark(texts.label));
        grid.addWidget(label, row, 0);
        for (size_t i = 0; i < texts.count; ++i) {
            const size_t field = static_cast<size_t>(texts.first) + i;
            texts_[field] = new QLineEdit(QString::fromStdString(controls.texts[field]));
            texts_[field]->setObjectName(Text(texts.label) + QString(" %1").arg(i + 1));
            texts_[field]->setAccessibleName(texts_[field]->objectName());
            const int columns = texts.first == TextField::Free ? 3 : 1;
            grid.addWidget(texts_[field], row, static_cast<int>(i) + 1, 1, columns);
        }
        label->setBuddy(texts_[static_cast<size_t>(texts.first)]);
        ++row;
    }
}

QLayout* OptionsDialog::MakeButtons() {
    buttons_ = new QHBoxLayout;
    buttons_->addWidget(new QLabel(Text(DialogVersion)));
    buttons_->addStretch();
    QPushButton* more = AddButton(*buttons_, MoreLabel);
    QPushButton* defaultBuild = AddButton(*buttons_, DefaultBuildLabel);
    ok_ = AddButton(*buttons_, "OK");
    QPushButton* cancel = AddButton(*buttons_, "Cancel");

    mnemonics_.Reserve(MoreLetter);
    more->setShortcut(QKeySequence(Qt::ALT | Qt::Key_M));
    more->setToolTip("Shows or hides more options (Alt+M)");
    more->setAccessibleName("More options");
    more->setCheckable(true);
    connect(more, &QPushButton::toggled, this, [this](bool on) {
        lowerHalf_->setVisible(on);
        TakeRoom();
    });
    connect(defaultBuild, &QPushButton::clicked, this, [this] { done(DefaultBuildCode); });
    connect(ok_, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    return buttons_;
}

QPushButton* OptionsDialog::AddButton(QBoxLayout& layout, std::string_view label) {
    auto* button = new QPushButton(mnemonics_.Mark(label));
    button->setObjectName(Text(label));
    layout.addWidget(button);
    return button;
}

// The buttons stand one below the other where the screen is too narrow for them.
void OptionsDialog::TakeRoom() {
    content_->widget()->layout()->activate();
    content_->updateGeometry();
    buttons_->setDirection(QBoxLayout::LeftToRight);
    const int margins = width() - contentsRect().width();
    if (buttons_->minimumSize().width() + margins > RoomOnScreen(*this).width())
        buttons_->setDirection(QBoxLayout::TopToBottom);
    layout()->activate();
    FitToScreen(*this, sizeHint());
}

DialogAnswer ShowOptionsDialog(DialogControls& controls) {
    OptionsDialog dialog(controls);
    dialog.exec();
    controls = dialog.Controls();
    return dialog.Answer();
}

}  // namespace k2k
