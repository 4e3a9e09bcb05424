// Windows that stay on the screen, however large their text is.
#pragma once

#include <QApplication>
#include <QScrollArea>
#include <QSize>

namespace k2k {

// Gives a window the size that it wants, or less where the screen has no room for it, and moves it back onto the
// screen.
void FitToScreen(QWidget& window, QSize wanted);

// The largest size of a window on the screen of this one.
QSize RoomOnScreen(const QWidget& window);

// Asks for all the room that its content needs. When it gets less, there are scroll bars, and it scrolls to the control
// that has the focus.
class ContentArea : public QScrollArea {
  public:
    // Takes the content over.
    explicit ContentArea(QWidget* content);
    // The focus leaves the content while that goes, which is no business of the area any more.
    ~ContentArea() override { disconnect(qApp, nullptr, this, nullptr); }

    QSize sizeHint() const override;
};

}  // namespace k2k
