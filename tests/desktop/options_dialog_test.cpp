#include "desktop/options_dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <map>

#include "desktop/user.h"
#include "support/files.h"

namespace k2k {
namespace {

using test::Find;
using ::testing::ElementsAreArray;
using ::testing::SizeIs;

// The text of a label without its "&".
std::string Plain(QString text) {
    return text.remove('&').toStdString();
}

// The letter behind the "&" of a label, or none.
QString LetterOf(const QString& text) {
    const qsizetype at = text.indexOf('&');
    return at < 0 ? QString() : QString(text[at + 1].toLower());
}

std::string FieldName(const TextRow& row, size_t field) {
    return std::string(row.label) + ' ' + std::to_string(field + 1);
}

class TheDialog : public ::testing::Test {
  protected:
    void ShowAll() {
        test::Show(dialog_);
        Button(">>>").click();
    }

    QSlider& SliderOf(size_t i) { return Find<QSlider>(dialog_, SliderRows()[i].label); }
    QSlider& SliderOf(Slider slider) { return SliderOf(static_cast<size_t>(slider)); }
    std::string ShownValue(size_t i) {
        return Find<QLabel>(dialog_, std::string(SliderRows()[i].label) + " value").text().toStdString();
    }
    QPushButton& Button(std::string_view label) { return Find<QPushButton>(dialog_, label); }
    QWidget& LowerHalf() { return Find<QWidget>(dialog_, "lower half"); }
    QLabel* LabelOf(const QWidget& control) {
        for (QLabel* label : dialog_.findChildren<QLabel*>())
            if (label->buddy() == &control) return label;
        return nullptr;
    }

    // The labels of everything that can be reached, with their "&".
    std::vector<QString> Labels() {
        std::vector<QString> labels;
        for (const QLabel* label : dialog_.findChildren<QLabel*>())
            if (label->buddy() != nullptr) labels.push_back(label->text());
        for (const QAbstractButton* button : dialog_.findChildren<QAbstractButton*>())
            if (!button->text().isEmpty()) labels.push_back(button->text());
        return labels;
    }

    static DialogControls Defaults() { return FillControls(BuildOptions{}); }

    OptionsDialog dialog_{Defaults()};
};

TEST_F(TheDialog, HasItsTitleItsVersionAndItsButtons) {
    EXPECT_EQ(dialog_.windowTitle(), "Map Compiler");
    const auto labels = dialog_.findChildren<QLabel*>();
    EXPECT_TRUE(std::ranges::any_of(labels, [](const QLabel* label) { return label->text() == "v7.20"; }));
    for (const char* label : {">>>", "Default build", "OK", "Cancel"}) EXPECT_EQ(Plain(Button(label).text()), label);
    ASSERT_THAT(dialog_.findChildren<QGroupBox*>(), SizeIs(1));
    EXPECT_EQ(dialog_.findChild<QGroupBox*>()->title(), " Build / Update ");
}

TEST_F(TheDialog, HasEverySliderWithItsLabelItsRangeAndItsToolTip) {
    EXPECT_THAT(dialog_.findChildren<QSlider*>(), SizeIs(SliderRows().size()));
    for (size_t i = 0; i < SliderRows().size(); ++i) {
        const SliderRow& row = SliderRows()[i];
        const QSlider& slider = SliderOf(i);
        const QLabel* label = LabelOf(slider);
        ASSERT_NE(label, nullptr) << row.label;
        EXPECT_EQ(Plain(label->text()), row.label);
        EXPECT_EQ(slider.minimum(), row.least) << row.label;
        EXPECT_EQ(slider.maximum(), row.most) << row.label;
        EXPECT_EQ(slider.toolTip().toStdString(), row.toolTip);
        EXPECT_EQ(label->toolTip().toStdString(), row.toolTip);
    }
}

TEST_F(TheDialog, ShowsAndGivesEverySliderAtItsEndsAndInItsMiddle) {
    ShowAll();
    for (size_t i = 0; i < SliderRows().size(); ++i) {
        const SliderRow& row = SliderRows()[i];
        for (const int position : {row.most, (row.least + row.most) / 2, row.least}) {
            SliderOf(i).setValue(position);
            EXPECT_EQ(ShownValue(i), row.shown(position)) << row.label;
            DialogControls expected = Defaults();
            expected.sliders = dialog_.Controls().sliders;
            expected.sliders[i] = position;
            EXPECT_EQ(dialog_.Controls().sliders, expected.sliders) << row.label;
        }
    }
}

TEST_F(TheDialog, IsFilledWithEverySlidersEndsAndMiddle) {
    for (const auto part : {0, 1, 2}) {
        DialogControls controls = Defaults();
        for (size_t i = 0; i < controls.sliders.size(); ++i) {
            const SliderRow& row = SliderRows()[i];
            controls.sliders[i] = row.least + (row.most - row.least) * part / 2;
        }
        OptionsDialog dialog(controls);
        EXPECT_EQ(dialog.Controls().sliders, controls.sliders);
    }
}

TEST_F(TheDialog, MovesEverySliderWithTheKeyboard) {
    ShowAll();
    for (size_t i = 0; i < SliderRows().size(); ++i) {
        const SliderRow& row = SliderRows()[i];
        SliderOf(i).setFocus();
        QTest::keyClick(&SliderOf(i), Qt::Key_End);
        EXPECT_EQ(dialog_.Controls().sliders[i], row.most) << row.label;
        QTest::keyClick(&SliderOf(i), Qt::Key_Left);
        EXPECT_EQ(dialog_.Controls().sliders[i], row.most - 1) << row.label;
        QTest::keyClick(&SliderOf(i), Qt::Key_Home);
        EXPECT_EQ(dialog_.Controls().sliders[i], row.least) << row.label;
    }
}

TEST_F(TheDialog, GivesEveryCheckBox) {
    DialogControls expected = Defaults();
    EXPECT_THAT(dialog_.findChildren<QCheckBox*>(), SizeIs(CheckBoxRows().size()));
    for (size_t i = 0; i < CheckBoxRows().size(); ++i) {
        auto& box = Find<QCheckBox>(dialog_, CheckBoxRows()[i].label);
        EXPECT_EQ(Plain(box.text()), CheckBoxRows()[i].label);
        EXPECT_EQ(box.isChecked(), expected.checks[i]);
        box.click();
        expected.checks[i] = !expected.checks[i];
        EXPECT_EQ(dialog_.Controls().checks, expected.checks) << CheckBoxRows()[i].label;
    }
    EXPECT_EQ(OptionsDialog(expected).Controls().checks, expected.checks);
}

TEST_F(TheDialog, GivesEveryKindOfBuild) {
    for (size_t i = 0; i < BuildChoiceRows().size(); ++i) {
        auto& button = Find<QRadioButton>(dialog_, BuildChoiceRows()[i].label);
        EXPECT_EQ(Plain(button.text()), BuildChoiceRows()[i].label);
        button.click();
        EXPECT_EQ(dialog_.Controls().choice, static_cast<BuildChoice>(i));
        DialogControls controls = Defaults();
        controls.choice = static_cast<BuildChoice>(i);
        EXPECT_EQ(OptionsDialog(controls).Controls().choice, controls.choice);
    }
}

TEST_F(TheDialog, GivesTextsAsTheyAreTyped) {
    DialogControls expected = Defaults();
    for (const TextRow& row : TextRows()) {
        const QLabel* label = LabelOf(Find<QLineEdit>(dialog_, FieldName(row, 0)));
        ASSERT_NE(label, nullptr);
        EXPECT_EQ(Plain(label->text()), row.label);
        for (size_t i = 0; i < row.count; ++i) {
            const size_t field = static_cast<size_t>(row.first) + i;
            auto& line = Find<QLineEdit>(dialog_, FieldName(row, i));
            EXPECT_EQ(line.text().toStdString(), expected.texts[field]);
            line.clear();
            QTest::keyClicks(&line, " -1.50x ");
            line.insert("\u00E4" + QString::number(field));
            expected.texts[field] = " -1.50x \u00E4" + std::to_string(field);
        }
    }
    EXPECT_THAT(dialog_.Controls().texts, ElementsAreArray(expected.texts));
    EXPECT_THAT(OptionsDialog(expected).Controls().texts, ElementsAreArray(expected.texts));
}

TEST_F(TheDialog, KeepsTextsLongerThanALineEditShows) {
    DialogControls controls = Defaults();
    controls[TextField::Free] = std::string(2000, 'x');
    EXPECT_EQ(OptionsDialog(controls).Controls()[TextField::Free], controls[TextField::Free]);
}

TEST_F(TheDialog, HidesItsLowerHalfBehindTheArrows) {
    test::Show(dialog_);
    EXPECT_FALSE(LowerHalf().isVisible());
    EXPECT_TRUE(SliderOf(Slider::Visibility).isVisible());
    EXPECT_FALSE(SliderOf(Slider::Bounce).isVisible());
    const int height = dialog_.height();
    Button(">>>").click();
    EXPECT_TRUE(SliderOf(Slider::Bounce).isVisible());
    EXPECT_TRUE(Find<QLineEdit>(dialog_, "Command-line options : 1").isVisible());
    EXPECT_GT(dialog_.height(), height);
    EXPECT_EQ(Button(">>>").text(), ">>>");
    Button(">>>").click();
    EXPECT_FALSE(LowerHalf().isVisible());
    EXPECT_EQ(dialog_.height(), height);
}

TEST_F(TheDialog, NeedsNoScrollBarsOnALargeScreen) {
    ShowAll();
    const auto& area = *dialog_.findChild<QScrollArea*>();
    EXPECT_FALSE(area.verticalScrollBar()->isVisible());
    EXPECT_FALSE(area.horizontalScrollBar()->isVisible());
}

TEST_F(TheDialog, StartsTheBuildOnOk) {
    test::Show(dialog_);
    Button("OK").click();
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(dialog_.Answer(), DialogAnswer::Ok);
}

TEST_F(TheDialog, EndsOnCancel) {
    test::Show(dialog_);
    Button("Cancel").click();
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(dialog_.Answer(), DialogAnswer::Cancel);
}

TEST_F(TheDialog, StartsADefaultBuild) {
    test::Show(dialog_);
    Button("Default build").click();
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(dialog_.Answer(), DialogAnswer::DefaultBuild);
}

TEST_F(TheDialog, TakesEscapeAndTheCloseButtonForCancel) {
    test::Show(dialog_);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(dialog_.Answer(), DialogAnswer::Cancel);
    test::Show(dialog_);
    dialog_.close();
    EXPECT_EQ(dialog_.Answer(), DialogAnswer::Cancel);
}

TEST_F(TheDialog, TakesReturnForOk) {
    ShowAll();
    auto& text = Find<QLineEdit>(dialog_, "Command-line options : 1");
    text.setFocus();
    QTest::keyClick(&text, Qt::Key_Return);
    EXPECT_EQ(dialog_.Answer(), DialogAnswer::Ok);
    EXPECT_FALSE(dialog_.isVisible());
}

TEST_F(TheDialog, PressesTheButtonThatHasTheFocusOnReturn) {
    test::Show(dialog_);
    Button("Default build").setFocus();
    QTest::keyClick(&Button("Default build"), Qt::Key_Return);
    EXPECT_EQ(dialog_.Answer(), DialogAnswer::DefaultBuild);
}

TEST_F(TheDialog, HasNoLetterTwice) {
    std::map<QString, int> uses{{"m", 1}};  // of ">>>"
    for (const QString& label : Labels())
        if (const QString letter = LetterOf(label); !letter.isEmpty()) ++uses[letter];
    for (const auto& [letter, count] : uses) EXPECT_EQ(count, 1) << letter.toStdString();
    EXPECT_GE(uses.size(), 26U);
}

TEST_F(TheDialog, GivesALetterToEveryControlOfTheUpperHalfThatHasOneLeft) {
    test::Show(dialog_);
    std::vector<std::string> without;
    for (const QAbstractButton* button : dialog_.findChildren<QAbstractButton*>())
        if (button->isVisible() && LetterOf(button->text()).isEmpty()) without.push_back(button->text().toStdString());
    for (size_t i = 0; i <= static_cast<size_t>(Slider::Cpus); ++i)
        EXPECT_FALSE(LetterOf(LabelOf(SliderOf(i))->text()).isEmpty()) << i;
    EXPECT_THAT(without, ::testing::ElementsAre("Close when done", "Invisible==None", ">>>"));
}

TEST_F(TheDialog, IsDescribedWithTheControlsThatHaveNoLetter) {
    const std::string page = test::ReadFile(K2K_SOURCE_DIR "/docs/desktop.md");
    for (const QString& label : Labels()) {
        if (label == ">>>") continue;
        const bool listed = page.find("\n- `" + Plain(label) + "`\n") != std::string::npos;
        EXPECT_EQ(listed, LetterOf(label).isEmpty()) << label.toStdString();
    }
}

TEST_F(TheDialog, ReachesControlsByTheirLetters) {
    test::Show(dialog_);
    // A button that is reached by its letter is pressed for a moment before it acts.
    const auto press = [this](const QString& label, const std::function<bool()>& effect) {
        QTest::keyClick(&dialog_, LetterOf(label)[0].toLatin1(), Qt::AltModifier);
        test::WaitFor(effect, label.toLatin1());
    };
    const auto focuses = [&](Slider slider) {
        press(LabelOf(SliderOf(slider))->text(), [&] { return SliderOf(slider).hasFocus(); });
    };
    focuses(Slider::Warnings);
    const auto& meshes = Find<QCheckBox>(dialog_, "Create Meshes");
    press(meshes.text(), [&] { return meshes.isChecked(); });
    const auto& lights = Find<QRadioButton>(dialog_, "Update Lights");
    press(lights.text(), [&] { return lights.isChecked(); });
    press("&More", [this] { return LowerHalf().isVisible(); });
    focuses(Slider::Zoom);
    press(Button("Default build").text(), [this] { return !dialog_.isVisible(); });
    EXPECT_EQ(dialog_.Answer(), DialogAnswer::DefaultBuild);
}

TEST_F(TheDialog, GoesThroughItsControlsInTheirOrderWithTab) {
    std::vector<std::string> order;
    for (size_t i = 0; i < SliderRows().size(); ++i) {
        order.emplace_back(SliderRows()[i].label);
        if (i != static_cast<size_t>(Slider::Cpus)) continue;
        order.emplace_back("Build BSP Map");
        for (const CheckBoxRow& row : CheckBoxRows()) order.emplace_back(row.label);
    }
    for (const TextRow& row : TextRows())
        for (size_t i = 0; i < row.count; ++i) order.push_back(FieldName(row, i));
    for (const char* button : {">>>", "Default build", "OK", "Cancel"}) order.emplace_back(button);

    ShowAll();
    SliderOf(Slider::Visibility).setFocus();
    std::vector<std::string> reached;
    for (size_t i = 0; i < order.size(); ++i) {
        reached.push_back(QApplication::focusWidget()->objectName().toStdString());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(reached, order);
    EXPECT_TRUE(SliderOf(Slider::Visibility).hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    EXPECT_TRUE(Button("Cancel").hasFocus());
}

TEST_F(TheDialog, BeginsAtItsFirstControl) {
    test::Show(dialog_);
    EXPECT_TRUE(SliderOf(Slider::Visibility).hasFocus());
}

TEST_F(TheDialog, HasANameForEveryControl) {
    for (const QLineEdit* line : dialog_.findChildren<QLineEdit*>()) EXPECT_FALSE(line->accessibleName().isEmpty());
    EXPECT_EQ(Button(">>>").accessibleName(), "More options");
}

// The dialog with text of three times the size, as on a screen that is too small for it.
class TheLargeDialog : public ::testing::Test {
  protected:
    TheLargeDialog() {
        QFont large = before_;
        large.setPointSizeF(before_.pointSizeF() * 3);
        QApplication::setFont(large);
    }
    ~TheLargeDialog() override { QApplication::setFont(before_); }

    const QFont before_ = QApplication::font();
};

TEST_F(TheLargeDialog, StaysOnTheScreen) {
    OptionsDialog dialog(FillControls(BuildOptions{}));
    test::Show(dialog);
    const QRect screen = dialog.screen()->availableGeometry();
    EXPECT_TRUE(screen.contains(dialog.frameGeometry()));
    Find<QPushButton>(dialog, ">>>").click();
    EXPECT_TRUE(screen.contains(dialog.frameGeometry()));
    for (const char* button : {">>>", "Default build", "OK", "Cancel"})
        EXPECT_TRUE(dialog.rect().contains(Find<QPushButton>(dialog, button).geometry())) << button;
    EXPECT_TRUE(dialog.findChild<QScrollArea*>()->verticalScrollBar()->isVisible());
}

TEST_F(TheLargeDialog, ScrollsToTheControlThatIsReached) {
    OptionsDialog dialog(FillControls(BuildOptions{}));
    test::Show(dialog);
    Find<QPushButton>(dialog, ">>>").click();
    auto& last = Find<QLineEdit>(dialog, "Command-line options : 1");
    const auto isSeen = [&last] { return !last.visibleRegion().isEmpty(); };
    EXPECT_FALSE(isSeen());
    Find<QPushButton>(dialog, ">>>").setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    EXPECT_TRUE(last.hasFocus());
    test::WaitFor(isSeen, "the field is scrolled to");
}

}  // namespace
}  // namespace k2k
