#include "driver/dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>
#include <vector>

#include "driver/settings.h"
#include "support/build_state.h"
#include "support/files.h"

namespace k2k {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Dialog : public test::BuildState {
  protected:
    // The command string of the options as they stand.
    static std::string Composed() { return ComposeCommand(FillControls(Options())); }

    static int Position(Slider slider) { return FillControls(Options())[slider]; }

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

// A slider's position, what it shows there and what it adds to the command string.
struct SliderStand {
    Slider slider;
    int position;
    const char* shown;
    const char* words;
};

const SliderStand Stands[] = {
    {Slider::Visibility, 0, "off", "-noportals "},
    {Slider::Visibility, 1, "on", ""},
    {Slider::Light, 0, "low quality", "-preview "},
    {Slider::Light, 1, "high quality", ""},
    {Slider::Warnings, 0, "quiet", "-quiet "},
    {Slider::Warnings, 1, "default", ""},
    {Slider::Warnings, 2, "all", "-verbose "},
    {Slider::Detail, 0, "none", "-nodetail "},
    {Slider::Detail, 1, "auto", ""},
    {Slider::Detail, 2, "all", "-forcedetail "},
    {Slider::Cpus, 1, "1", "-threads 1 "},
    {Slider::Cpus, 4, "4", "-threads 4 "},
    {Slider::Cpus, 8, "8", "-threads 8 "},
    {Slider::Gamma, 0, "0.00", "-gamma 0.00 "},
    {Slider::Gamma, 150, "1.50", "-gamma 1.50 "},
    {Slider::Gamma, 300, "3.00", "-gamma 3.00 "},
    {Slider::Zoom, 0, "auto", "-autozoom "},
    {Slider::Zoom, 1, "1", ""},
    {Slider::Zoom, 4, "4", "-zoomlevel 4 "},
    {Slider::Zoom, 8, "8", "-zoomlevel 8 "},
    {Slider::Jitter, 0, "0", "-jitter 0 "},
    {Slider::Jitter, 4, "4", "-jitter 4 "},
    {Slider::Jitter, 8, "8", "-jitter 8 "},
    {Slider::Ambient, 0, "0 %", "-lmambient 0 "},
    {Slider::Ambient, 50, "50 %", "-lmambient 50 "},
    {Slider::Ambient, 100, "100 %", "-lmambient 100 "},
    {Slider::Shaded, 16, "16", "-sizeshaded 16 "},
    {Slider::Shaded, 506, "506", "-sizeshaded 506 "},
    {Slider::Shaded, 996, "996", "-sizeshaded 996 "},
    {Slider::Flat, 15, "auto", ""},
    {Slider::Flat, 16, "16", "-sizeflat 16 "},
    {Slider::Flat, 505, "505", "-sizeflat 505 "},
    {Slider::Flat, 996, "996", "-sizeflat 996 "},
    {Slider::Turbulence, 15, "auto", ""},
    {Slider::Turbulence, 16, "16", "-sizeturb 16 "},
    {Slider::Turbulence, 505, "505", "-sizeturb 505 "},
    {Slider::Turbulence, 996, "996", "-sizeturb 996 "},
    {Slider::Scale, 0, "0.01", "-litres 0.01 "},
    {Slider::Scale, 1, "0.05", ""},
    {Slider::Scale, 25, "1.00", "-litres 1.00 "},
    {Slider::Scale, 50, "8.00", "-litres 8.00 "},
    {Slider::Compress, 0, "full", "-litcomp 0.00 "},
    {Slider::Compress, 50, "50 %", "-litcomp 0.50 "},
    {Slider::Compress, 100, "off", "-litcomp 1.00 "},
    {Slider::Limit, 0, "0", "-litmax 0 "},
    {Slider::Limit, 128, "128", "-litmax 128 "},
    {Slider::Limit, 255, "255", "-litmax 255 "},
    {Slider::LightScale, 0, "0.00", "-litscale 0.00 "},
    {Slider::LightScale, 150, "1.50", "-litscale 1.50 "},
    {Slider::LightScale, 300, "3.00", "-litscale 3.00 "},
    {Slider::Subdivision, 0, "0", "-radsubdiv 0 "},
    {Slider::Subdivision, 128, "128", "-radsubdiv 128 "},
    {Slider::Subdivision, 255, "255", "-radsubdiv 255 "},
    {Slider::Bounce, 0, "0", "-radbounce 0 "},
    {Slider::Bounce, 16, "16", "-radbounce 16 "},
    {Slider::Bounce, 32, "32", "-radbounce 32 "},
};

TEST_F(Dialog, EverySliderShowsAndAddsItsValueAtItsEndsAndInItsMiddle) {
    for (const SliderStand& stand : Stands) {
        const SliderRow& row = SliderRows()[static_cast<size_t>(stand.slider)];
        EXPECT_EQ(row.shown(stand.position), stand.shown) << row.label;
        EXPECT_EQ(row.words(stand.position), stand.words) << row.label << stand.position;
        EXPECT_THAT(ComposedAt(stand.slider, stand.position), HasSubstr(stand.words));
    }
}

TEST_F(Dialog, EverySliderStandsWhereItsWordsPutIt) {
    for (const SliderStand& stand : Stands) {
        if (stand.slider == Slider::Scale && stand.position == 1) continue;  // it adds no words there
        test::BuildState::Reset();
        ParseOptions(stand.words);
        EXPECT_EQ(Position(stand.slider), stand.position) << stand.words;
    }
}

TEST_F(Dialog, EverySliderHasItsRange) {
    for (const SliderStand& stand : Stands) {
        const SliderRow& row = SliderRows()[static_cast<size_t>(stand.slider)];
        EXPECT_THAT(stand.position, ::testing::AllOf(::testing::Ge(row.least), ::testing::Le(row.most))) << row.label;
    }
    for (const SliderRow& row : SliderRows()) {
        const auto at = [&](int position) {
            return [&row, position](const SliderStand& stand) {
                return &row == &SliderRows()[static_cast<size_t>(stand.slider)] && stand.position == position;
            };
        };
        EXPECT_TRUE(std::ranges::any_of(Stands, at(row.least))) << row.label;
        EXPECT_TRUE(std::ranges::any_of(Stands, at(row.most))) << row.label;
    }
}

// The texts beside the sliders, in their order.
constexpr std::pair<const char*, const char*> LabelsAndToolTips[] = {
    {"Visibility calculations :", "off= fast build, low fps / on= slow build, high fps"},
    {"Light calculations :", "low= fast build, poor lights / high= slow build, nice lights"},
    {"Warnings :", ""},
    {"Detail faces:", ""},
    {"CPUs to be used :", "Threadcount, should be set to number of installed CPUs for fast build"},
    {"Lightmap gamma :", "Contrast/brightness for static shadows. Default 1.50"},
    {"Zoom-level :", ""},
    {"Phong jitter:", ""},
    {"Lightmap ambient :", "0=better shadow gradient / 100=more ambient light"},
    {"Tesselate shaded:", "Subdivide every N texels. Low=nice dyn. lighting, high=high fps"},
    {"Tesselate flat :", "Subdivide every N texels. Low=nice dyn. lighting, auto=high fps"},
    {"Tesselate turbulence:", "Subdivide every N texels. Low=nice dyn. lighting, auto=high fps"},
    {"Lightmap scale v7:", "Lightmap scale. 0.01 means low quality / 8.0 means very high quality."},
    {"Light compress at:", "Light compression. Low=less overexposure."},
    {"Light limiting at:", "Light exposure threshold. Low=darker. High=brighter. Default=196"},
    {"Light scale:", "Lightsource brightness scale. Default=0.5"},
    {"Rad. subdivision:", "Radiosity patch subdivision. Small=slow build / High=Poor quality."},
    {"Rad. bouncing:", "Radiosity reflection amount. Zero=no radiosity / More=Less shadows."},
};

TEST_F(Dialog, EverySliderHasItsLabelAndItsToolTip) {
    ASSERT_EQ(SliderRows().size(), std::size(LabelsAndToolTips));
    for (size_t i = 0; i < SliderRows().size(); ++i) {
        EXPECT_EQ(SliderRows()[i].label, LabelsAndToolTips[i].first);
        EXPECT_EQ(SliderRows()[i].toolTip, LabelsAndToolTips[i].second);
    }
}

TEST_F(Dialog, EveryOtherControlHasItsLabel) {
    const auto labels = [](const auto& rows) {
        std::vector<std::string_view> all;
        for (const auto& row : rows) all.push_back(row.label);
        return all;
    };
    EXPECT_THAT(labels(CheckBoxRows()),
                ElementsAre("Don't snap vertices", "Lit maps only", "Write logfile", "Create Meshes",
                            "Merge across leafs", "Lighting v2.0", "Close when done", "Solid sky", "Invisible==None"));
    EXPECT_THAT(labels(BuildChoiceRows()), ElementsAre("Build BSP Map", "Build Simple Map", "Update Entities",
                                                       "Update Textures", "Update Lights"));
    EXPECT_THAT(
        labels(TextRows()),
        ElementsAre("Max. level size :", "Fat Hull offsets :", "Narrow Hull offsets :", "Command-line options :"));
}

// What the dialog sets; the palette and the map are not its own.
auto WhatTheDialogSets(const BuildOptions& o) {
    return std::tie(o.hiprec, o.litmapsonly, o.writelog, o.mesh, o.mergeacross, o.litv2, o.close, o.solidsky,
                    o.invisibletonone, o.noportals, o.nodetail, o.forcedetail, o.quiet, o.verbose, o.preview, o.threads,
                    o.gamma, o.autozoom, o.zoomlevel, o.jitter, o.lmambient, o.sizeshaded, o.sizeflat, o.sizeturb,
                    o.litres, o.litcomp, o.litmax, o.litscale, o.radsubdiv, o.radbounce, o.nobsp, o.nh, o.entsonly,
                    o.texsonly, o.lightsonly, o.bound, o.fat, o.narrow);
}

TEST_F(Dialog, ParsesToTheOptionsThatItWasFilledWith) {
    for (const char* text :
         {"", "-litmapsonly -writelog -mesh -mergeacross -litv2 -close -solidsky -invisibletonone",
          "-threads 4 -gamma 1.15 -zoomlevel 3 -jitter 2 -lmambient 10 -sizeflat 99 -litcomp 0.29 -nodetail",
          "-threads 8 -gamma 3 -autozoom -jitter 0 -lmambient 0 -sizeshaded 16 -sizeflat 996 -sizeturb 996 -litres 8 "
          "-litcomp 1 -litmax 0 -litscale 3 -radsubdiv 0 -radbounce 32",
          "-threads 1 -gamma 0 -lmambient 100 -sizeshaded 996 -sizeflat 16 -sizeturb 16 -litres 0.01 -litcomp 0 "
          "-litmax 255 -litscale 0 -radsubdiv 255 -radbounce 0",
          "-forcedetail -verbose -preview -noportals -bound 4096 -fat 1 2 3 -narrow -4 5 -6", "-mesh -nobsp",
          "-quiet -entsonly", "-texsonly", "-lightsonly"}) {
        test::BuildState::Reset();
        ParseOptions(text);
        const BuildOptions before = Options();
        const std::string composed = Composed();
        test::BuildState::Reset();
        ParseOptions(composed);
        EXPECT_EQ(WhatTheDialogSets(Options()), WhatTheDialogSets(before)) << text << " -> " << composed;
    }
}

TEST_F(Dialog, EveryPositionOfEverySliderComesBack) {
    for (size_t i = 0; i < SliderRows().size(); ++i) {
        const SliderRow& row = SliderRows()[i];
        for (int position = row.least; position <= row.most; ++position) {
            const auto slider = static_cast<Slider>(i);
            if (slider == Slider::Scale && position == 1) continue;
            test::BuildState::Reset();
            ParseOptions(ComposedAt(slider, position));
            ASSERT_EQ(Position(slider), position) << row.label;
        }
    }
}

TEST_F(Dialog, TextFieldsGoIntoTheStringAsTyped) {
    DialogControls controls = FillControls(Options());
    controls[TextField::Bound] = " 1e3 ";
    controls[TextField::FatWidth] = "";
    controls[TextField::NarrowOffset] = "-0.50";
    controls[TextField::Free] = "-bound 7  \"-light hsl\"";
    EXPECT_THAT(ComposeCommand(controls),
                EndsWith("-bound  1e3  -fat  48 8 -narrow 32 32 -0.50 -bound 7  \"-light hsl\" "));
}

TEST_F(Dialog, TheFreeTextOverridesAllElse) {
    DialogControls controls = FillControls(Options());
    controls[Slider::Gamma] = 100;
    controls[TextField::Free] = "-gamma 2.25 -bound 99";
    ParseOptions(ComposeCommand(controls));
    EXPECT_EQ(Options().gamma, 2.25F);
    EXPECT_EQ(Options().bound, 99.0F);
}

TEST_F(Dialog, EveryCheckBoxAddsItsWord) {
    for (size_t i = 0; i < CheckBoxRows().size(); ++i) {
        DialogControls controls = FillControls(Options());
        controls.checks = {};
        controls.checks[i] = true;
        test::BuildState::Reset();
        Options().hiprec = false;
        ParseOptions(ComposeCommand(controls));
        EXPECT_EQ(FillControls(Options()).checks, controls.checks) << CheckBoxRows()[i].label;
    }
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
}

TEST_F(Dialog, EveryPositionOfTheLightmapScaleIsFoundAgain) {
    for (int position = 0; position <= 50; ++position)
        EXPECT_EQ(PositionOfScale(static_cast<float>(ScaleOfPosition(position))), position);
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

TEST_F(DialogSequence, ReportsSettingsThatCannotBeParsedAndTakesTheDefaults) {
    for (const std::string& damaged : {std::string("-quiet -mesh -gamma"), "-verbose " + std::string(300, 'x'),
                                       std::string("-verbose -mesh \"my map")}) {
        SaveSettings(damaged);
        ParseOptions("map -pal mine.bmp -dialog");
        const auto command = RunDialog("old", AcceptControls);
        ASSERT_TRUE(command);
        EXPECT_THAT(*command, StartsWith("-hiprec -litmapsonly -mesh -mergeacross -solidsky -quiet -threads"));
        EXPECT_EQ(Paths().MapPath, "map.$$M");
        EXPECT_THAT(test::Logged(), HasSubstr("CRITICAL ERROR"));
    }
}

TEST_F(DialogSequence, ReportsAFatalErrorBehindDamagedSettingsToo) {
    SaveSettings("-gamma");
    RunDialog("old", AcceptControls);
    test::Logged();
    test::ExpectFatal([] { ParseOptions("-gamma"); }, "Missing command-line parameter for -gamma\n");
    EXPECT_THAT(test::Logged(), HasSubstr("CRITICAL ERROR"));
}

TEST_F(DialogSequence, LogsTheOldCommandString) {
    SaveSettings("-writelog");
    RunDialog("map -dialog", AcceptControls);
    EXPECT_EQ(test::ReadFile("buildlog.txt"), "\nmap -dialog");
}

}  // namespace
}  // namespace k2k
