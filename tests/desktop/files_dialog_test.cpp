#include "desktop/files_dialog.h"

#include <gtest/gtest.h>

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

#include "desktop/user.h"
#include "support/files.h"

namespace k2k {
namespace {

using test::Find;

class TheFilesDialog : public ::testing::Test {
  protected:
    QLineEdit& Map() { return Find<QLineEdit>(dialog_, "map"); }
    QLineEdit& Palette() { return Find<QLineEdit>(dialog_, "palette"); }

    // Drops files as a file manager does; returns whether they were welcome.
    bool Drop(const QList<QUrl>& files) {
        QMimeData data;
        data.setUrls(files);
        return Drop(data);
    }
    bool Drop(const QMimeData& data) {
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(&dialog_, &enter);
        if (!enter.isAccepted()) return false;
        QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&dialog_, &drop);
        return true;
    }

    // Presses a Browse button and answers the file chooser.
    void Browse(const char* button, std::function<void(QFileDialog&)> choose) {
        const test::Answer<QFileDialog> answer(std::move(choose));
        Find<QPushButton>(dialog_, button).click();
    }

    FilesDialog dialog_{{"/last/house.$$M", "/last/game.pcx"}};
};

TEST_F(TheFilesDialog, BeginsWithTheLastFiles) {
    EXPECT_EQ(Map().text(), "/last/house.$$M");
    EXPECT_EQ(Palette().text(), "/last/game.pcx");
}

TEST_F(TheFilesDialog, GivesWhatIsTyped) {
    test::Show(dialog_);
    Map().clear();
    QTest::keyClicks(&Map(), "/my maps/a.$$M");
    QTest::keyClick(&Map(), Qt::Key_Return);
    EXPECT_EQ(dialog_.result(), QDialog::Accepted);
    EXPECT_EQ(dialog_.Files().map, "/my maps/a.$$M");
    EXPECT_EQ(dialog_.Files().palette, "/last/game.pcx");
}

TEST_F(TheFilesDialog, NeedsBothFiles) {
    test::Show(dialog_);
    Palette().clear();
    QTest::keyClick(&Map(), Qt::Key_Return);
    EXPECT_TRUE(dialog_.isVisible());
    Palette().setText("x.pcx");
    Map().clear();
    QTest::keyClick(&Palette(), Qt::Key_Return);
    EXPECT_TRUE(dialog_.isVisible());
}

TEST_F(TheFilesDialog, EndsOnEscape) {
    test::Show(dialog_);
    QTest::keyClick(&Map(), Qt::Key_Escape);
    EXPECT_FALSE(dialog_.isVisible());
    EXPECT_EQ(dialog_.result(), QDialog::Rejected);
}

TEST_F(TheFilesDialog, TakesADroppedMap) {
    EXPECT_TRUE(Drop({QUrl::fromLocalFile("/maps/my house.$$M")}));
    EXPECT_EQ(dialog_.Files().map, "/maps/my house.$$M");
    EXPECT_EQ(dialog_.Files().palette, "/last/game.pcx");
}

TEST_F(TheFilesDialog, TakesADroppedPaletteAndAMap) {
    EXPECT_TRUE(Drop({QUrl::fromLocalFile("/maps/GAME.LMP"), QUrl::fromLocalFile("/maps/b.$$M")}));
    EXPECT_EQ(dialog_.Files().map, "/maps/b.$$M");
    EXPECT_EQ(dialog_.Files().palette, "/maps/GAME.LMP");
}

TEST_F(TheFilesDialog, TakesNothingThatIsNoFile) {
    QMimeData text;
    text.setText("/maps/b.$$M");
    EXPECT_FALSE(Drop(text));
    EXPECT_TRUE(Drop({QUrl("https://example.org/a.$$M")}));
    EXPECT_EQ(dialog_.Files().map, "/last/house.$$M");
}

TEST_F(TheFilesDialog, LeavesDropsOnItsLinesToItself) {
    EXPECT_FALSE(Map().acceptDrops());
    EXPECT_FALSE(Palette().acceptDrops());
}

TEST_F(TheFilesDialog, TakesAMapFromTheFileChooser) {
    const test::TempDir folder;
    const std::string map = folder.File("house.$$M");
    test::WriteFile(map, "x");
    test::Show(dialog_);
    Browse("browse map", [&](QFileDialog& chooser) {
        EXPECT_EQ(chooser.windowTitle(), "Choose a map");
        chooser.setDirectory(QString::fromStdString(folder.path().string()));
        auto& name = *chooser.findChild<QLineEdit*>("fileNameEdit");
        name.setText("house.$$M");
        QTest::keyClick(&name, Qt::Key_Return);
    });
    EXPECT_EQ(dialog_.Files().map.toStdString(), map);
}

TEST_F(TheFilesDialog, KeepsItsFileWhenTheFileChooserIsCancelled) {
    test::Show(dialog_);
    Browse("browse palette", [](QFileDialog& chooser) {
        EXPECT_EQ(chooser.windowTitle(), "Choose a palette");
        chooser.reject();
    });
    EXPECT_EQ(dialog_.Files().palette, "/last/game.pcx");
}

TEST_F(TheFilesDialog, IsUsedWithTheKeyboard) {
    test::Show(dialog_);
    EXPECT_TRUE(Map().hasFocus());
    QTest::keyClick(&dialog_, Qt::Key_P, Qt::AltModifier);
    EXPECT_TRUE(Palette().hasFocus());
    QTest::keyClick(&dialog_, Qt::Key_M, Qt::AltModifier);
    EXPECT_TRUE(Map().hasFocus());
    QTest::keyClick(&Map(), Qt::Key_Tab);
    EXPECT_TRUE(Find<QPushButton>(dialog_, "browse map").hasFocus());
}

}  // namespace
}  // namespace k2k
