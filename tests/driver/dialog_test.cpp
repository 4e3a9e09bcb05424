#include "driver/dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "driver/settings.h"
#include "support/build_state.h"
#include "support/files.h"

namespace k2k {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Dialog : public test::BuildState {
  protected:
    // The command string of the options as they stand.
    static std::string Composed() { return ComposeCommand(FillControls(Options())); }

    static int Position(Slider slider) { return FillControls(Options())[slider]; }

    static std::string Shown(Slider slider, int position) {
        return SliderRows()[static_cast<size_t>(slider)].shown(position);
    }

    // A command string with one slider elsewhere.
    static std::string ComposedAt(Slider slider, int position) {
        DialogControls controls = FillControls(Options());
        controls[slider] = position;
        return ComposeCommand(controls);
    }
};

TEST_F(Dialog, ComposesTheStringInItsOrder) {
    EXPECT_EQ(Composed(),
              "-hiprec -threads 1 -gamma 1.50 -jitter 8 -lmambient 50 -sizeshaded 236 -litres 1.00 -litcomp 0.50 "
              "-litmax 196 -litscale 0.50 -radsubdiv 64 -radbounce 16 -bound 56000 -fat 64 48 8 -narrow 32 32 0  ");
}

TEST_F(Dialog, ComposesEverythingThatIsOn) {
    ParseOptions(
        "-invisibletonone -solidsky -close -litv2 -mergeacross -mesh -writelog -litmapsonly -noportals -preview -quiet "
        "-forcedetail -autozoom -sizeflat 50 -sizeturb 60 -litres 0.01 -texsonly");
    DialogControls controls = FillControls(Options());
    controls[TextField::Bound] = "abc";
    controls[TextField::FatHeight] = "4.5";
    controls[TextField::Free] = "-eps 0.1";
    EXPECT_EQ(ComposeCommand(controls),
              "-hiprec -litmapsonly -writelog -mesh -mergeacross -litv2 -close -solidsky -invisibletonone "
              "-noportals -forcedetail -quiet -preview -threads 1 -gamma 1.50 -autozoom -jitter 8 -lmambient 50 "
              "-sizeshaded 236 -sizeflat 50 -sizeturb 60 -litres 0.01 -litcomp 0.50 -litmax 196 -litscale 0.50 "
              "-radsubdiv 64 -radbounce 16 -texsonly -bound abc -fat 64 4.5 8 -narrow 32 32 0 -eps 0.1 ");
}

TEST_F(Dialog, ParsesToTheOptionsThatItWasFilledWith) {
    ParseOptions("-threads 4 -gamma 1.15 -zoomlevel 3 -jitter 2 -lmambient 10 -sizeflat 99 -litcomp 0.29 -nodetail");
    const BuildOptions before = Options();
    ResetOptions();
    ParseOptions(ComposeCommand(FillControls(before)));
    const BuildOptions& after = Options();
    EXPECT_EQ(after.threads, 4);
    EXPECT_EQ(after.gamma, 1.15F);
    EXPECT_EQ(after.zoomlevel, 3.0F);
    EXPECT_EQ(after.jitter, 2);
    EXPECT_EQ(after.lmambient, 10.0F);
    EXPECT_EQ(after.sizeflat, 99);
    EXPECT_EQ(after.litcomp, 0.29F);
    EXPECT_TRUE(after.nodetail);
}

TEST_F(Dialog, AlwaysStartsWithUnsnappedVertices) {
    ResetOptions();
    EXPECT_THAT(Composed(), StartsWith("-hiprec "));
    Options().hiprec = false;
    EXPECT_THAT(Composed(), Not(HasSubstr("-hiprec")));
}

TEST_F(Dialog, QuietWinsOverVerbose) {
    EXPECT_EQ(Position(Slider::Warnings), 1);
    Options().verbose = true;
    EXPECT_EQ(Position(Slider::Warnings), 2);
    EXPECT_THAT(Composed(), HasSubstr("-verbose "));
    Options().quiet = true;
    EXPECT_EQ(Position(Slider::Warnings), 0);
}

TEST_F(Dialog, ForcedDetailWinsOverNone) {
    EXPECT_EQ(Position(Slider::Detail), 1);
    Options().nodetail = true;
    EXPECT_EQ(Position(Slider::Detail), 0);
    Options().forcedetail = true;
    EXPECT_EQ(Position(Slider::Detail), 2);
}

TEST_F(Dialog, TheZoomIsAutomaticOrAWholeNumber) {
    Options().zoomlevel = 4.75F;
    EXPECT_EQ(Position(Slider::Zoom), 4);
    EXPECT_THAT(Composed(), HasSubstr("-zoomlevel 4 "));
    Options().autozoom = true;
    EXPECT_EQ(Position(Slider::Zoom), 0);
    EXPECT_THAT(Composed(), HasSubstr("-autozoom "));
    EXPECT_THAT(ComposedAt(Slider::Zoom, 1), Not(HasSubstr("zoom")));
}

TEST_F(Dialog, AnAutomaticSizeAddsNothing) {
    EXPECT_EQ(Position(Slider::Flat), 15);
    EXPECT_THAT(ComposedAt(Slider::Flat, 15), Not(HasSubstr("-sizeflat")));
    EXPECT_THAT(ComposedAt(Slider::Flat, 16), HasSubstr("-sizeflat 16 "));
    EXPECT_THAT(ComposedAt(Slider::Turbulence, 15), Not(HasSubstr("-sizeturb")));
    EXPECT_THAT(ComposedAt(Slider::Turbulence, 16), HasSubstr("-sizeturb 16 "));
}

TEST_F(Dialog, SlidersStopAtTheirEnds) {
    ParseOptions("-threads 32 -gamma 9 -litres 99 -jitter -4 -lmambient nan -zoomlevel 1e30");
    EXPECT_EQ(Position(Slider::Cpus), 8);
    EXPECT_EQ(Position(Slider::Gamma), 300);
    EXPECT_EQ(Position(Slider::Scale), 50);
    EXPECT_EQ(Position(Slider::Jitter), 0);
    EXPECT_EQ(Position(Slider::Ambient), 0);
    EXPECT_EQ(Position(Slider::Zoom), 8);
}

TEST_F(Dialog, TheLightmapScaleIsOneInTheMiddle) {
    EXPECT_DOUBLE_EQ(ScaleOfPosition(0), 0.01);
    EXPECT_DOUBLE_EQ(ScaleOfPosition(25), 1.0);
    EXPECT_DOUBLE_EQ(ScaleOfPosition(50), 8.0);
    EXPECT_THAT(ComposedAt(Slider::Scale, 25), HasSubstr("-litres 1.00 "));
    EXPECT_THAT(ComposedAt(Slider::Scale, 0), HasSubstr("-litres 0.01 "));
    EXPECT_THAT(ComposedAt(Slider::Scale, 1), Not(HasSubstr("-litres")));
}

TEST_F(Dialog, EveryPositionOfTheLightmapScaleIsFoundAgain) {
    for (int position = 0; position <= 50; ++position)
        EXPECT_EQ(PositionOfScale(static_cast<float>(ScaleOfPosition(position))), position);
}

TEST_F(Dialog, SlidersShowWhatTheyStandFor) {
    EXPECT_EQ(Shown(Slider::Visibility, 0), "off");
    EXPECT_EQ(Shown(Slider::Light, 1), "high quality");
    EXPECT_EQ(Shown(Slider::Warnings, 1), "default");
    EXPECT_EQ(Shown(Slider::Detail, 2), "all");
    EXPECT_EQ(Shown(Slider::Cpus, 8), "8");
    EXPECT_EQ(Shown(Slider::Gamma, 150), "1.50");
    EXPECT_EQ(Shown(Slider::Zoom, 0), "auto");
    EXPECT_EQ(Shown(Slider::Ambient, 50), "50 %");
    EXPECT_EQ(Shown(Slider::Flat, 15), "auto");
    EXPECT_EQ(Shown(Slider::Flat, 16), "16");
    EXPECT_EQ(Shown(Slider::Compress, 0), "full");
    EXPECT_EQ(Shown(Slider::Compress, 100), "off");
    EXPECT_EQ(Shown(Slider::Compress, 50), "50 %");
    EXPECT_EQ(Shown(Slider::Scale, 50), "8.00");
}

TEST_F(Dialog, TheLastUpdateModeIsChosen) {
    EXPECT_EQ(FillControls(Options()).choice, BuildChoice::Bsp);
    Options().nobsp = true;
    EXPECT_EQ(FillControls(Options()).choice, BuildChoice::Simple);
    Options().lightsonly = true;
    EXPECT_EQ(FillControls(Options()).choice, BuildChoice::Lights);
    Options().entsonly = true;
    EXPECT_EQ(FillControls(Options()).choice, BuildChoice::Entities);
    Options().texsonly = true;
    EXPECT_EQ(FillControls(Options()).choice, BuildChoice::Textures);
}

TEST_F(Dialog, ASimpleMapNeedsMeshes) {
    DialogControls controls = FillControls(Options());
    controls.choice = BuildChoice::Simple;
    EXPECT_THAT(ComposeCommand(controls), HasSubstr("-noportals -nobsp "));
    ParseOptions(ComposeCommand(controls));
    EXPECT_FALSE(Options().nobsp);

    controls[CheckBox::Meshes] = true;
    ParseOptions(ComposeCommand(controls));
    EXPECT_TRUE(Options().nobsp);
}

TEST_F(Dialog, TextFieldsShowWholeNumbers) {
    ParseOptions("-bound 1e10 -fat 1.9 -2.9 3");
    DialogControls controls = FillControls(Options());
    EXPECT_EQ(controls[TextField::Bound], "10000000000");
    EXPECT_EQ(controls[TextField::FatWidth], "1");
    EXPECT_EQ(controls[TextField::FatHeight], "-2");
    EXPECT_EQ(controls[TextField::FatOffset], "3");
    EXPECT_EQ(controls[TextField::Free], "");
}

class DialogSequence : public Dialog {
  protected:
    test::InTempDir folder_;
};

TEST_F(DialogSequence, TakesTheOptionsFromTheSettings) {
    SaveSettings("-mesh -gamma 2");
    ParseOptions("map -pal x -dialog -quiet");
    const auto command = RunDialog("old", AcceptControls);
    ASSERT_TRUE(command);
    EXPECT_THAT(*command, HasSubstr("-gamma 2.00 "));
    EXPECT_TRUE(Options().mesh);
    EXPECT_FALSE(Options().quiet);
}

TEST_F(DialogSequence, KeepsTheMapAndThePaletteOfTheCommandLine) {
    SaveSettings("other -pal other.pcx");
    ParseOptions("map -pal mine.bmp -dialog");
    RunDialog("old", AcceptControls);
    EXPECT_EQ(Paths().MapPath, "map.$$M");
    EXPECT_EQ(Paths().LevelPath, "map.klv");
    EXPECT_EQ(Options().palpath, "mine.bmp");
    EXPECT_TRUE(OptionsValid);
}

TEST_F(DialogSequence, TakesMapAndPaletteFromTheSettingsWhereNoneAreNamed) {
    SaveSettings("other -pal other.pcx");
    ParseOptions("-dialog");
    RunDialog("old", AcceptControls);
    EXPECT_EQ(Paths().MapPath, "other.$$M");
    EXPECT_TRUE(OptionsValid);
}

TEST_F(DialogSequence, EndsOnCancel) {
    EXPECT_FALSE(RunDialog("old", [](DialogControls&) { return DialogAnswer::Cancel; }));
}

TEST_F(DialogSequence, ADefaultBuildTakesTheDefaultSettings) {
    SaveSettings("-gamma 2");
    const auto command = RunDialog("old", [](DialogControls&) { return DialogAnswer::DefaultBuild; });
    EXPECT_EQ(command, "-solidsky -litmapsonly -mergeacross -mesh -hiprec -quiet");
    EXPECT_TRUE(Options().solidsky);
    EXPECT_EQ(Options().gamma, 1.5F);
}

TEST_F(DialogSequence, WhatTheUserChangesIsBuilt) {
    RunDialog("old", [](DialogControls& controls) {
        controls[Slider::Gamma] = 250;
        return DialogAnswer::Ok;
    });
    EXPECT_EQ(Options().gamma, 2.5F);
}

TEST_F(DialogSequence, LogsTheOldCommandString) {
    SaveSettings("-writelog");
    RunDialog("map -dialog", AcceptControls);
    EXPECT_EQ(test::ReadFile("buildlog.txt"), "\nmap -dialog");
}

}  // namespace
}  // namespace k2k
