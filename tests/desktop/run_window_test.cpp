#include "desktop/run_window.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTextCursor>
#include <optional>

#include "desktop/user.h"

namespace k2k {
namespace {

using test::Find;
using test::WaitFor;

class ARunWindow : public ::testing::Test {
  protected:
    SharedDisplay& Display() { return window_.RunDisplay(); }

    // The window with a run that goes on.
    void Start() {
        Display().Text("Building ...");
        WaitFor([this] { return window_.isVisible(); }, "the window is shown");
        test::Show(window_);
    }

    QPlainTextEdit& Text() { return Find<QPlainTextEdit>(window_, "text"); }
    QProgressBar& Bar() { return Find<QProgressBar>(window_, "progress"); }
    QString Caption() { return Find<QLabel>(window_, "caption").text(); }
    QPushButton& Button() { return Find<QPushButton>(window_, "button"); }
    bool ActivityShown() { return Find<QCheckBox>(window_, "activity").isChecked(); }

    void WaitForText(const QString& text) {
        WaitFor([&] { return Text().toPlainText() == text; }, "the text is shown");
    }
    void WaitForCaption(const QString& caption) {
        WaitFor([&] { return Caption() == caption; }, "the caption is shown");
    }

    // The question before a run is aborted; null when it is not asked.
    QMessageBox* Question() { return window_.findChild<QMessageBox*>(); }
    void WaitForQuestion() {
        WaitFor([this] { return Question() != nullptr && Question()->isVisible(); }, "the question");
    }
    void StartAndAsk() {
        Start();
        Button().click();
        WaitForQuestion();
    }
    void AnswerQuestion(QMessageBox::StandardButton button) {
        WaitForQuestion();
        Question()->button(button)->click();
        WaitFor([this] { return Question() == nullptr; }, "the question goes");
    }

    std::optional<int> status_;  // that the window ended the program with
    RunWindow window_{[this](int status) { status_ = status; }};
};

TEST_F(ARunWindow, ComesWithTheFirstText) {
    Display().SetCaption("nexus (0)");
    WaitForCaption("nexus (0)");
    EXPECT_FALSE(window_.isVisible());
    Start();
    EXPECT_EQ(window_.windowTitle(), "Map Compiler");
    EXPECT_EQ(Button().text(), "&Cancel");
}

TEST_F(ARunWindow, ShowsLinesThatGrow) {
    Start();
    WaitForText("Building ...");
    Display().Text(" ok");
    WaitForText("Building ... ok");
    Display().Text(" \n\nnext \n");
    WaitForText("Building ... ok \n\nnext ");
}

TEST_F(ARunWindow, ShowsTextThatIsNoAscii) {
    Display().Text("Couldn\u00B4t \u20AC");
    WaitForText(QString::fromUtf8("Couldn\u00B4t \u20AC"));
}

TEST_F(ARunWindow, HasRoomForAWholeLineAndARunThatScrolls) {
    Start();
    for (int i = 0; i < 60; ++i) Display().Text(std::string(79, 'm') + "\n");
    WaitFor([this] { return Text().verticalScrollBar()->isVisible(); }, "more lines than the window shows");
    EXPECT_FALSE(Text().horizontalScrollBar()->isVisible());
}

TEST_F(ARunWindow, ShowsWhatWouldEndALineAsABlank) {
    Start();
    Display().Text(" a\rb\u2028c\u2029d\uFDD0e\uFDD1f\nnext");
    WaitForText("Building ... a b c d e f\nnext");
    Display().Text(" ok");
    WaitForText("Building ... a b c d e f\nnext ok");
}

TEST_F(ARunWindow, ShowsAFirstLineThatIsEmpty) {
    Display().Text("\nnext");
    WaitForText("\nnext");
}

TEST_F(ARunWindow, StaysAtItsLastLine) {
    Start();
    for (int i = 0; i < 400; ++i) Display().Text("line " + std::to_string(i) + "\n");
    WaitFor([this] { return Text().toPlainText().endsWith("line 399"); }, "the last line");
    const QScrollBar& bar = *Text().verticalScrollBar();
    EXPECT_GT(bar.maximum(), 0);
    EXPECT_EQ(bar.value(), bar.maximum());
    EXPECT_LT(Text().blockCount(), 129);
}

TEST_F(ARunWindow, KeepsASelectionWhileTextArrives) {
    Start();
    WaitForText("Building ...");
    QTextCursor cursor = Text().textCursor();
    cursor.setPosition(0);
    cursor.setPosition(5, QTextCursor::KeepAnchor);
    Text().setTextCursor(cursor);
    Display().Text("\nnext");
    WaitForText("Building ...\n\nnext");
    EXPECT_EQ(Text().textCursor().selectedText(), "Build");
}

TEST_F(ARunWindow, ShowsTheProgress) {
    Start();
    Display().SetProgressRange(80);
    Display().SetProgress(20);
    Display().SetCaption("portals (60)");
    WaitForCaption("portals (60)");
    EXPECT_EQ(Bar().maximum(), 80);
    EXPECT_EQ(Bar().value(), 20);
}

TEST_F(ARunWindow, ShowsAnEmptyBarWhereThereIsNothingToDo) {
    Start();
    Display().SetProgressRange(0);
    Display().SetProgress(0);
    Display().SetCaption("nexus (0)");
    WaitForCaption("nexus (0)");
    EXPECT_EQ(Bar().maximum(), 1);
    EXPECT_EQ(Bar().value(), 0);
}

TEST_F(ARunWindow, BlinksItsActivityMark) {
    Start();
    Display().SetActivity(true);
    WaitFor([this] { return ActivityShown(); }, "the mark comes");
    Display().SetActivity(false);
    WaitFor([this] { return !ActivityShown(); }, "the mark goes");
}

TEST_F(ARunWindow, AsksBeforeItAborts) {
    StartAndAsk();
    EXPECT_EQ(Question()->windowTitle(), "Quit map compiler");
    EXPECT_EQ(Question()->text(), "Do you really want to abort?");
    EXPECT_EQ(Question()->standardButtons(), QMessageBox::Yes | QMessageBox::No);
    AnswerQuestion(QMessageBox::No);
    EXPECT_FALSE(status_);
    EXPECT_TRUE(window_.isVisible());
    Button().click();
    AnswerQuestion(QMessageBox::Yes);
    EXPECT_EQ(status_, 0);
    EXPECT_FALSE(window_.isVisible());
}

TEST_F(ARunWindow, AsksWhenItIsClosed) {
    Start();
    window_.close();
    AnswerQuestion(QMessageBox::No);
    EXPECT_TRUE(window_.isVisible());
    EXPECT_FALSE(status_);
}

TEST_F(ARunWindow, AsksOnEscapeAndEscapeMeansNo) {
    Start();
    QTest::keyClick(&window_, Qt::Key_Escape);
    WaitForQuestion();
    QTest::keyClick(Question(), Qt::Key_Escape);
    WaitFor([this] { return Question() == nullptr; }, "the question goes");
    EXPECT_TRUE(window_.isVisible());
}

TEST_F(ARunWindow, AsksOnReturnAndReturnMeansNo) {
    Start();
    QTest::keyClick(&window_, Qt::Key_Return);
    WaitForQuestion();
    QTest::keyClick(Question(), Qt::Key_Return);
    WaitFor([this] { return Question() == nullptr; }, "the question goes");
    EXPECT_FALSE(status_);
}

TEST_F(ARunWindow, AsksOnlyOnceAtATime) {
    StartAndAsk();
    window_.reject();
    EXPECT_EQ(window_.findChildren<QMessageBox*>().size(), 1);
    AnswerQuestion(QMessageBox::No);
}

TEST_F(ARunWindow, FollowsTheRunWhileItAsks) {
    StartAndAsk();
    Display().Text(" ok");
    WaitForText("Building ... ok");
    AnswerQuestion(QMessageBox::No);
}

TEST_F(ARunWindow, ClosesWithoutAQuestionAfterTheEnd) {
    Start();
    Display().SetButton("Ok");
    Display().SetCaption("Ok");
    window_.EndRun({.status = 0, .finished = true, .close = false});
    EXPECT_EQ(Button().text(), "&Ok");
    EXPECT_EQ(Caption(), "Ok");
    EXPECT_FALSE(status_);
    QTest::keyClick(&window_, Qt::Key_Return);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(Question(), nullptr);
}

TEST_F(ARunWindow, ClosesWithoutAQuestionAsSoonAsTheButtonSaysOk) {
    Start();
    Display().SetButton("Ok");
    WaitFor([this] { return Button().text() == "&Ok"; }, "the button");
    Button().click();
    EXPECT_EQ(Question(), nullptr);
    EXPECT_EQ(status_, 0);
}

TEST_F(ARunWindow, ClosesByItselfWhenAsked) {
    Start();
    window_.EndRun({.status = 0, .finished = true, .close = true});
    EXPECT_EQ(status_, 0);
    EXPECT_FALSE(window_.isVisible());
}

TEST_F(ARunWindow, ClosesByItselfInFrontOfAnOpenQuestion) {
    StartAndAsk();
    window_.EndRun({.status = 0, .finished = true, .close = true});
    EXPECT_EQ(status_, 0);
}

TEST_F(ARunWindow, StaysWithTheMessageOfAFatalError) {
    Start();
    Display().SetProgressRange(80);
    Display().SetProgress(20);
    Display().Text("\n------ CRITICAL ERROR ------\n");
    window_.EndRun({.status = 1, .finished = false, .close = true});
    WaitForText("Building ...\n\n------ CRITICAL ERROR ------");
    EXPECT_EQ(Bar().value(), 80);
    EXPECT_EQ(Caption(), "Error");
    EXPECT_TRUE(window_.isVisible());
    Button().click();
    AnswerQuestion(QMessageBox::Yes);
    EXPECT_EQ(status_, 1);
}

TEST_F(ARunWindow, EndsTheProgramWithTheStatusOfAWrongOption) {
    Display().Text("Name redefinition :  x\n");
    window_.EndRun({.status = -1, .finished = false, .close = false});
    EXPECT_TRUE(window_.isVisible());
    EXPECT_FALSE(status_);
    window_.close();
    EXPECT_EQ(status_, -1);
}

TEST_F(ARunWindow, NeverComesWhenARunEndsWithoutAWord) {
    window_.EndRun({});
    EXPECT_EQ(status_, 0);
    EXPECT_FALSE(window_.isVisible());
}

TEST_F(ARunWindow, DoesNotComeBackWithMoreTextOfAnAbortedRun) {
    StartAndAsk();
    AnswerQuestion(QMessageBox::Yes);
    Display().Text(" ok");
    WaitForText("Building ... ok");
    EXPECT_FALSE(window_.isVisible());
}

TEST_F(ARunWindow, IsUsedWithTheKeyboard) {
    Start();
    EXPECT_TRUE(Button().hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_TRUE(Text().hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_TRUE(Button().hasFocus());
    QTest::keyClick(&window_, Qt::Key_C, Qt::AltModifier);
    AnswerQuestion(QMessageBox::No);
}

TEST(ALargeRunWindow, StaysOnTheScreen) {
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSizeF(before.pointSizeF() * 3);
    QApplication::setFont(large);
    {
        RunWindow window([](int) {});
        test::Show(window);
        EXPECT_TRUE(window.screen()->availableGeometry().contains(window.frameGeometry()));
        EXPECT_TRUE(window.rect().contains(Find<QPushButton>(window, "button").geometry()));
    }
    QApplication::setFont(before);
}

}  // namespace
}  // namespace k2k
