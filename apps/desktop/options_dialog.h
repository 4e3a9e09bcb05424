// The dialog "Map Compiler": the options of a build as sliders, check boxes, buttons and text fields.
#pragma once

#include <QDialog>
#include <array>

#include "desktop/mnemonics.h"
#include "driver/dialog.h"

class QBoxLayout;
class QCheckBox;
class QGridLayout;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSlider;

namespace k2k {

class ContentArea;

// Every control has its label as its object name; the fields of a text row have a number behind it.
class OptionsDialog : public QDialog {
  public:
    explicit OptionsDialog(const DialogControls& controls);

    // The controls as they stand now.
    DialogControls Controls() const;

    // By which button it was closed.
    DialogAnswer Answer() const;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    QWidget* MakeUpperHalf(const DialogControls& controls);
    QWidget* MakeLowerHalf(const DialogControls& controls);
    QWidget* MakeBuildGroup(BuildChoice choice);
    QLayout* MakeCheckBoxes(const DialogControls& controls);
    QLayout* MakeButtons();
    void AddSlider(QGridLayout& grid, int row, int column, Slider slider, int position);
    void AddTexts(QGridLayout& grid, const DialogControls& controls);
    QPushButton* AddButton(QBoxLayout& layout, std::string_view label);
    void TakeRoom();

    Mnemonics mnemonics_;
    std::array<QSlider*, static_cast<size_t>(Slider::Count)> sliders_{};
    std::array<QCheckBox*, static_cast<size_t>(CheckBox::Count)> checks_{};
    std::array<QRadioButton*, static_cast<size_t>(BuildChoice::Count)> choices_{};
    std::array<QLineEdit*, static_cast<size_t>(TextField::Count)> texts_{};
    QWidget* lowerHalf_ = nullptr;
    ContentArea* content_ = nullptr;
    QBoxLayout* buttons_ = nullptr;
    QPushButton* ok_ = nullptr;
};

// Shows the dialog until a button closes it.
DialogAnswer ShowOptionsDialog(DialogControls& controls);

}  // namespace k2k
