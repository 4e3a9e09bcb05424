// What a user does in tests: waits for something to appear, looks for a control, answers a dialog.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <functional>
#include <string_view>

namespace k2k::test {

// Far above what a loaded machine needs.
constexpr int PatienceMs = 60'000;

// Handles events until the condition holds; a test failure when it never does.
inline void WaitFor(const std::function<bool()>& condition, const char* what) {
    EXPECT_TRUE(QTest::qWaitFor(condition, PatienceMs)) << what;
}

// A control by its object name. The test ends where there is none.
template <class Control>
Control& Find(const QWidget& window, std::string_view name) {
    auto* found = window.findChild<Control*>(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
    if (found == nullptr) throw std::runtime_error("no control " + std::string(name));
    return *found;
}

// Shows a window and waits until keys reach it.
inline void Show(QWidget& window) {
    window.show();
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window, PatienceMs));
}

// Answers the next modal dialog of a kind as soon as it is on the screen.
template <class Dialog>
class Answer : public QObject {
  public:
    explicit Answer(std::function<void(Dialog&)> answer) {
        connect(&timer_, &QTimer::timeout, this, [this, answer = std::move(answer)] {
            auto* dialog = dynamic_cast<Dialog*>(QApplication::activeModalWidget());
            if (dialog == nullptr || !dialog->isVisible()) return;
            timer_.stop();
            answered_ = true;
            answer(*dialog);
        });
        timer_.start(5);
    }
    ~Answer() override { EXPECT_TRUE(answered_) << "the dialog never came"; }
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

  private:
    QTimer timer_;
    bool answered_ = false;
};

}  // namespace k2k::test
