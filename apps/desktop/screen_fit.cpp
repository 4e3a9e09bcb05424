#include "desktop/screen_fit.h"

#include <QScreen>
#include <QScrollBar>
#include <algorithm>

namespace k2k {

namespace {

// What a window manager adds around a window: borders and a title bar.
constexpr QSize FrameRoom{16, 48};

}  // namespace

QSize RoomOnScreen(const QWidget& window) {
    return window.screen()->availableSize() - FrameRoom;
}

void FitToScreen(QWidget& window, QSize wanted) {
    window.resize(wanted.boundedTo(RoomOnScreen(window)));
    if (!window.isVisible()) return;
    const QRect screen = window.screen()->availableGeometry();
    const QRect frame = window.frameGeometry();
    const int x = std::max(screen.left(), std::min(frame.left(), screen.right() - frame.width()));
    const int y = std::max(screen.top(), std::min(frame.top(), screen.bottom() - frame.height()));
    if (QPoint(x, y) != frame.topLeft()) window.move(x, y);
}

ContentArea::ContentArea(QWidget* content) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setWidget(content);
    // Also for a control that is reached from outside of the area.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (widget()->isAncestorOf(now)) ensureWidgetVisible(now);
    });
}

QSize ContentArea::sizeHint() const {
    // Room for the bar, so that a content that is only too high is not too wide as well.
    return widget()->sizeHint() + QSize(verticalScrollBar()->sizeHint().width(), 0);
}

}  // namespace k2k
