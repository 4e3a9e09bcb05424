// The whole desktop program with stages that only take notes.
#include "desktop/desktop_program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QSlider>
#include <cstdlib>

#include "desktop/build_thread.h"
#include "desktop/files_dialog.h"
#include "desktop/last_files.h"
#include "desktop/options_dialog.h"
#include "desktop/user.h"
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "support/build_state.h"
#include "support/files.h"

namespace k2k {
namespace {

using test::Answer;
using test::Find;
using test::WaitFor;
using ::testing::HasSubstr;

std::atomic<int> stagesRun;
std::atomic<bool> stageMayEnd;
std::atomic<bool> stageBegan;

int Note() {
    ++stagesRun;
    return 0;
}

int Fail() {
    FatalError("E051");
}

int WaitForLeave() {
    stageBegan = true;
    while (!stageMayEnd) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return 0;
}

class TheDesktopProgram : public test::BuildState {
  protected:
    TheDesktopProgram() {
        stagesRun = 0;
        stageMayEnd = stageBegan = false;
        SetLogView(nullptr);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QString::fromStdString(folder_.path().string()));
    }

    int Run(std::vector<const char*> arguments) { return RunDesktop(arguments, stages_); }

    // Does something with the run's window when it shows what is expected.
    class WithWindow : public QObject {
      public:
        WithWindow(std::function<bool(RunWindow&)> ready, std::function<void(RunWindow&)> action) {
            connect(&timer_, &QTimer::timeout, this, [this, ready, action] {
                for (QWidget* widget : QApplication::topLevelWidgets()) {
                    auto* window = dynamic_cast<RunWindow*>(widget);
                    if (window == nullptr || !window->isVisible() || !ready(*window)) continue;
                    timer_.stop();
                    action(*window);
                    return;
                }
            });
            timer_.start(5);
        }

      private:
        QTimer timer_;
    };

    static QString CaptionOf(RunWindow& window) { return Find<QLabel>(window, "caption").text(); }
    static QString TextOf(RunWindow& window) { return Find<QPlainTextEdit>(window, "text").toPlainText(); }
    static bool AtTheEnd(RunWindow& window) { return CaptionOf(window) == "Ok"; }
    // The bar is full when the window knows how the run ended.
    static bool AtAnError(RunWindow& window) {
        const auto& bar = Find<QProgressBar>(window, "progress");
        return CaptionOf(window) == "Error" && bar.value() == bar.maximum();
    }
    static void Close(RunWindow& window) { window.close(); }

    // Closes the window, and says yes to the question.
    void Abort(RunWindow& window) {
        answer_ = std::make_unique<Answer<QMessageBox>>(
            [](QMessageBox& question) { question.button(QMessageBox::Yes)->click(); });
        window.close();
    }

    StageEntries stages_{Note, Note, Note, Note, Note};
    std::unique_ptr<Answer<QMessageBox>> answer_;
    test::InTempDir folder_;
};

TEST_F(TheDesktopProgram, RunsTheStagesAndClosesOnOk) {
    QString text;
    const WithWindow user(AtTheEnd, [&](RunWindow& window) {
        text = TextOf(window);
        EXPECT_EQ(Find<QPushButton>(window, "button").text(), "&Ok");
        Find<QPushButton>(window, "button").click();
    });
    EXPECT_EQ(Run({"map", "-pal", "x"}), 0);
    EXPECT_EQ(stagesRun, 4);
    EXPECT_TRUE(text.startsWith("KMS to KLV Compiler V7.01 (KLV6 BSP) [CPUs: "));
    EXPECT_TRUE(text.contains("\nTime:   "));
    EXPECT_THAT(test::ReadFile("K2K.ini"), HasSubstr("Commandline=map -pal x\n"));
}

TEST_F(TheDesktopProgram, ClosesByItself) {
    EXPECT_EQ(Run({"map", "-pal", "x", "-close"}), 0);
    EXPECT_EQ(stagesRun, 4);
}

TEST_F(TheDesktopProgram, ShowsTheUsage) {
    const WithWindow user(AtTheEnd, [](RunWindow& window) {
        EXPECT_TRUE(TextOf(window).contains("Usage: MAPFILE -pal PALFILE [OPTIONS]\n\nMAPFILE: filename.$$M"));
        window.close();
    });
    EXPECT_EQ(Run({"map", "-palette", "x"}), 0);
    EXPECT_EQ(stagesRun, 0);
}

TEST_F(TheDesktopProgram, StaysAtAFatalErrorUntilTheUserLeaves) {
    stages_.visibility = Fail;
    const WithWindow user(AtAnError, [this](RunWindow& window) {
        EXPECT_TRUE(TextOf(window).endsWith("\n------ CRITICAL ERROR ------\nE051\n\nPress any key... "));
        Abort(window);
    });
    EXPECT_EQ(Run({"map", "-pal", "x", "-close"}), 1);
    EXPECT_EQ(stagesRun, 1);
}

TEST_F(TheDesktopProgram, ShowsAFatalErrorOfTheCommandString) {
    const WithWindow user(AtAnError, [this](RunWindow& window) {
        EXPECT_TRUE(TextOf(window).contains("Missing command-line parameter for -gamma\n"));
        Abort(window);
    });
    EXPECT_EQ(Run({"map", "-pal", "x", "-gamma"}), 1);
}

TEST_F(TheDesktopProgram, EndsWithTheStatusOfAWrongOption) {
    const WithWindow user(AtAnError, [](RunWindow& window) {
        EXPECT_TRUE(TextOf(window).contains("Name redefinition :  b"));
        window.close();
    });
    EXPECT_EQ(Run({"map", "-colormap", "a", "-colormap", "b"}), -1);
}

TEST_F(TheDesktopProgram, BuildsWhatTheDialogSays) {
    const Answer<OptionsDialog> answer([](OptionsDialog& dialog) {
        Find<QSlider>(dialog, "Warnings :").setValue(2);
        Find<QCheckBox>(dialog, "Close when done").click();
        Find<QPushButton>(dialog, "OK").click();
    });
    EXPECT_EQ(Run({"map", "-pal", "x", "-dialog"}), 0);
    EXPECT_EQ(stagesRun, 4);
    EXPECT_TRUE(Options().verbose);
    EXPECT_THAT(test::ReadFile("K2K.ini"), HasSubstr("-close -solidsky -verbose -threads"));
}

TEST_F(TheDesktopProgram, EndsAtOnceWhenTheDialogIsCancelled) {
    const Answer<OptionsDialog> answer([](OptionsDialog& dialog) { Find<QPushButton>(dialog, "Cancel").click(); });
    EXPECT_EQ(Run({"map", "-pal", "x", "-dialog"}), 0);
    EXPECT_EQ(stagesRun, 0);
    EXPECT_FALSE(std::filesystem::exists("K2K.ini"));
}

TEST_F(TheDesktopProgram, BuildsWithTheDefaultSettings) {
    const Answer<OptionsDialog> answer([](OptionsDialog& dialog) {
        Find<QSlider>(dialog, "Warnings :").setValue(2);
        Find<QPushButton>(dialog, "Default build").click();
    });
    const WithWindow user(AtTheEnd, Close);
    EXPECT_EQ(Run({"map", "-pal", "x", "-dialog"}), 0);
    EXPECT_EQ(stagesRun, 4);
    EXPECT_THAT(test::ReadFile("K2K.ini"),
                HasSubstr("Commandline=-solidsky -litmapsonly -mergeacross -mesh -hiprec -quiet\n"));
}

TEST_F(TheDesktopProgram, AsksForFilesWithoutArguments) {
    std::filesystem::create_directory("maps");
    const Answer<FilesDialog> files([this](FilesDialog& dialog) {
        Find<QLineEdit>(dialog, "map").setText(QString::fromStdString(folder_.File("maps/house.$$M")));
        Find<QLineEdit>(dialog, "palette").setText(QString::fromStdString(folder_.File("maps/game.pcx")));
        dialog.accept();
    });
    const Answer<OptionsDialog> answer([](OptionsDialog& dialog) {
        Find<QCheckBox>(dialog, "Close when done").click();
        dialog.accept();
    });
    EXPECT_EQ(Run({}), 0);
    EXPECT_EQ(stagesRun, 4);
    EXPECT_EQ(Paths().MapPath, "house.$$M");
    EXPECT_EQ(Options().palpath, "game.pcx");
    EXPECT_TRUE(std::filesystem::exists(folder_.File("maps/K2K.ini"))) << "the settings stand beside the map";
}

TEST_F(TheDesktopProgram, KeepsTheLastChoices) {
    const auto choose = [](FilesDialog& dialog) {
        Find<QLineEdit>(dialog, "map").setText("/gone/house.$$M");
        Find<QLineEdit>(dialog, "palette").setText("/gone/game.pcx");
        dialog.accept();
    };
    const auto cancel = [](OptionsDialog& dialog) { dialog.reject(); };
    {
        const Answer<FilesDialog> files(choose);
        const Answer<OptionsDialog> options(cancel);
        Run({});
    }
    const Answer<FilesDialog> files([](FilesDialog& dialog) {
        EXPECT_EQ(dialog.Files().map, "/gone/house.$$M");
        EXPECT_EQ(dialog.Files().palette, "/gone/game.pcx");
        dialog.reject();
    });
    EXPECT_EQ(Run({}), 0);
}

TEST_F(TheDesktopProgram, KeepsTheLastChoicesForEveryFolder) {
    const Answer<FilesDialog> files([](FilesDialog& dialog) {
        Find<QLineEdit>(dialog, "palette").setText("game.pcx");
        dialog.accept();
    });
    const Answer<OptionsDialog> options([](OptionsDialog& dialog) { dialog.reject(); });
    Run({"house.$$M"});
    EXPECT_EQ(LoadLastFiles().map.toStdString(), folder_.File("house.$$M"));
    EXPECT_EQ(LoadLastFiles().palette.toStdString(), folder_.File("game.pcx"));
}

TEST_F(TheDesktopProgram, AsksForThePaletteOfAMapThatAFileManagerNames) {
    const Answer<FilesDialog> files([](FilesDialog& dialog) {
        EXPECT_EQ(dialog.Files().map, "/maps/house.$$M");
        dialog.reject();
    });
    EXPECT_EQ(Run({"/maps/house.$$M"}), 0);
    EXPECT_EQ(stagesRun, 0);
}

TEST_F(TheDesktopProgram, GoesOnWhenTheUserDoesNotWantToAbort) {
    stages_.geometry = WaitForLeave;
    const Answer<QMessageBox> answer([](QMessageBox& question) {
        question.button(QMessageBox::No)->click();
        stageMayEnd = true;
    });
    const WithWindow ask([](RunWindow&) -> bool { return stageBegan; }, Close);
    EXPECT_EQ(Run({"map", "-pal", "x", "-close"}), 0);
    EXPECT_EQ(stagesRun, 3);
}

TEST_F(TheDesktopProgram, LeavesABuildThatGoesOnWhenItIsAborted) {
    stages_.geometry = WaitForLeave;
    std::optional<int> status;
    RunWindow window([&](int s) { status = s; });
    const BuildThread build("map -pal x", stages_, window);
    WaitFor([] { return stageBegan.load(); }, "the stage runs");
    WaitFor([&] { return window.isVisible(); }, "the window");
    Abort(window);
    WaitFor([&] { return status.has_value(); }, "the program ends");
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(build.Ended());
    stageMayEnd = true;
    WaitFor([&] { return build.Ended(); }, "the build ends");
}

}  // namespace
}  // namespace k2k
