#include "driver/dialog_controls.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <initializer_list>

#include "driver/build_log.h"

namespace k2k {

namespace {

using In = const BuildOptions&;

K2K_PRINTF(1, 2)
std::string Print(const char* format, ...) {
    std::array<char, 64> text{};
    va_list args;
    va_start(args, format);
    std::vsnprintf(text.data(), text.size(), format, args);
    va_end(args);
    return text.data();
}

// The text of a position, counted from 0.
std::string OneOf(int position, std::initializer_list<const char*> texts) {
    return texts.begin()[position];
}

std::string Number(int position) {
    return std::to_string(position);
}
std::string Percent(int position) {
    return Print("%i %%", position);
}
std::string Hundredths(int position) {
    return Print("%.2f", position / 100.0);
}
std::string SurfaceSize(int position) {
    return position < 16 ? "auto" : Number(position);
}
std::string ZoomFactor(int position) {
    return position == 0 ? "auto" : Number(position);
}
std::string LightmapScale(int position) {
    return Print("%.2f", ScaleOfPosition(position));
}
std::string Compression(int position) {
    if (position == 0) return "full";
    return position == 100 ? "off" : Percent(position);
}

double ToHundredths(float value) {
    return std::round(value * 100.0F);
}

// The later word wins where two are on.
double WarningsPosition(In o) {
    return o.quiet ? 0 : o.verbose ? 2 : 1;
}
double DetailPosition(In o) {
    return o.forcedetail ? 2 : o.nodetail ? 0 : 1;
}

constexpr std::string_view SizeTip = "Subdivide every N texels. Low=nice dyn. lighting, auto=high fps";

const SliderRow Sliders[] = {
    {"Visibility calculations :", 0, 1,
     [](int p) {
         return OneOf(p, {"off", "on"});
     },
     [](int p) {
         return OneOf(p, {"-noportals ", ""});
     },
     [](In o) { return o.noportals ? 0.0 : 1.0; }, "off= fast build, low fps / on= slow build, high fps"},
    {"Light calculations :", 0, 1,
     [](int p) {
         return OneOf(p, {"low quality", "high quality"});
     },
     [](int p) {
         return OneOf(p, {"-preview ", ""});
     },
     [](In o) { return o.preview ? 0.0 : 1.0; }, "low= fast build, poor lights / high= slow build, nice lights"},
    {"Warnings :", 0, 2,
     [](int p) {
         return OneOf(p, {"quiet", "default", "all"});
     },
     [](int p) {
         return OneOf(p, {"-quiet ", "", "-verbose "});
     },
     WarningsPosition, ""},
    {"Detail faces:", 0, 2,
     [](int p) {
         return OneOf(p, {"none", "auto", "all"});
     },
     [](int p) {
         return OneOf(p, {"-nodetail ", "", "-forcedetail "});
     },
     DetailPosition, ""},
    {"CPUs to be used :", 1, 8, Number, [](int p) { return Print("-threads %i ", p); },
     [](In o) -> double { return o.threads; }, "Threadcount, should be set to number of installed CPUs for fast build"},
    {"Lightmap gamma :", 0, 300, Hundredths, [](int p) { return Print("-gamma %.2f ", p / 100.0); },
     [](In o) { return ToHundredths(o.gamma); }, "Contrast/brightness for static shadows. Default 1.50"},
    {"Zoom-level :", 0, 8, ZoomFactor,
     [](int p) { return p == 0   ? "-autozoom "
                        : p == 1 ? ""
                                 : Print("-zoomlevel %i ", p); },
     [](In o) -> double { return o.autozoom ? 0.0F : o.zoomlevel; }, ""},
    {"Phong jitter:", 0, 8, Number, [](int p) { return Print("-jitter %i ", p); },
     [](In o) -> double { return o.jitter; }, ""},
    {"Lightmap ambient :", 0, 100, Percent, [](int p) { return Print("-lmambient %i ", p); },
     [](In o) -> double { return o.lmambient; }, "0=better shadow gradient / 100=more ambient light"},
    {"Tesselate shaded:", 16, 996, Number, [](int p) { return Print("-sizeshaded %i ", p); },
     [](In o) -> double { return o.sizeshaded; }, "Subdivide every N texels. Low=nice dyn. lighting, high=high fps"},
    {"Tesselate flat :", 15, 996, SurfaceSize, [](int p) { return p < 16 ? "" : Print("-sizeflat %i ", p); },
     [](In o) -> double { return o.sizeflat; }, SizeTip},
    {"Tesselate turbulence:", 15, 996, SurfaceSize, [](int p) { return p < 16 ? "" : Print("-sizeturb %i ", p); },
     [](In o) -> double { return o.sizeturb; }, SizeTip},
    {"Lightmap scale v7:", 0, 50, LightmapScale,
     [](int p) { return p == 1 ? "" : Print("-litres %.2f ", ScaleOfPosition(p)); },
     [](In o) { return PositionOfScale(o.litres); },
     "Lightmap scale. 0.01 means low quality / 8.0 means very high quality."},
    {"Light compress at:", 0, 100, Compression, [](int p) { return Print("-litcomp %.2f ", p / 100.0); },
     [](In o) { return ToHundredths(o.litcomp); }, "Light compression. Low=less overexposure."},
    {"Light limiting at:", 0, 255, Number, [](int p) { return Print("-litmax %i ", p); },
     [](In o) -> double { return o.litmax; }, "Light exposure threshold. Low=darker. High=brighter. Default=196"},
    {"Light scale:", 0, 300, Hundredths, [](int p) { return Print("-litscale %.2f ", p / 100.0); },
     [](In o) { return ToHundredths(o.litscale); }, "Lightsource brightness scale. Default=0.5"},
    {"Rad. subdivision:", 0, 255, Number, [](int p) { return Print("-radsubdiv %i ", p); },
     [](In o) -> double { return o.radsubdiv; }, "Radiosity patch subdivision. Small=slow build / High=Poor quality."},
    {"Rad. bouncing:", 0, 32, Number, [](int p) { return Print("-radbounce %i ", p); },
     [](In o) -> double { return o.radbounce; }, "Radiosity reflection amount. Zero=no radiosity / More=Less shadows."},
};

using O = BuildOptions;

const CheckBoxRow CheckBoxes[] = {
    {"Don't snap vertices", "-hiprec ", &O::hiprec},
    {"Lit maps only", "-litmapsonly ", &O::litmapsonly},
    {"Write logfile", "-writelog ", &O::writelog},
    {"Create Meshes", "-mesh ", &O::mesh},
    {"Merge across leafs", "-mergeacross ", &O::mergeacross},
    {"Lighting v2.0", "-litv2 ", &O::litv2},
    {"Close when done", "-close ", &O::close},
    {"Solid sky", "-solidsky ", &O::solidsky},
    {"Invisible==None", "-invisibletonone ", &O::invisibletonone},
};

const BuildChoiceRow BuildChoices[] = {
    {"Build BSP Map", ""},
    {"Build Simple Map", "-noportals -nobsp "},
    {"Update Entities", "-entsonly "},
    {"Update Textures", "-texsonly "},
    {"Update Lights", "-lightsonly "},
};

const TextRow Texts[] = {
    {"Max. level size :", "-bound ", TextField::Bound, 1},
    {"Fat Hull offsets :", "-fat ", TextField::FatWidth, 3},
    {"Narrow Hull offsets :", "-narrow ", TextField::NarrowWidth, 3},
    {"Command-line options :", "", TextField::Free, 1},
};

static_assert(std::size(Sliders) == static_cast<size_t>(Slider::Count));
static_assert(std::size(CheckBoxes) == static_cast<size_t>(CheckBox::Count));
static_assert(std::size(BuildChoices) == static_cast<size_t>(BuildChoice::Count));

// The curve of the lightmap scale: two straight pieces that meet in the middle.
constexpr double LeastScale = 0.01;
constexpr double MiddleScale = 1.0;
constexpr double MostScale = 8.0;
constexpr int HalfRange = 25;

// Updates exclude each other; of several the last in this order shows.
BuildChoice ChoiceOf(In o) {
    if (o.texsonly) return BuildChoice::Textures;
    if (o.entsonly) return BuildChoice::Entities;
    if (o.lightsonly) return BuildChoice::Lights;
    return o.nobsp ? BuildChoice::Simple : BuildChoice::Bsp;
}

// The slider's end nearest to a position outside of its range.
int PositionOf(const SliderRow& row, In o) {
    return static_cast<int>(std::fmin(std::fmax(row.fill(o), row.least), row.most));
}

std::string WholeNumber(float value) {
    return Print("%.0f", std::trunc(value));
}

void FillBox(DialogControls& controls, TextField first, const std::array<float, 3>& box) {
    for (size_t i = 0; i < box.size(); ++i) controls.texts[static_cast<size_t>(first) + i] = WholeNumber(box[i]);
}

}  // namespace

std::span<const SliderRow> SliderRows() {
    return Sliders;
}
std::span<const CheckBoxRow> CheckBoxRows() {
    return CheckBoxes;
}
std::span<const BuildChoiceRow> BuildChoiceRows() {
    return BuildChoices;
}
std::span<const TextRow> TextRows() {
    return Texts;
}

double ScaleOfPosition(int position) {
    if (position < HalfRange) return LeastScale + (MiddleScale - LeastScale) * position / HalfRange;
    return MiddleScale + (MostScale - MiddleScale) * (position - HalfRange) / HalfRange;
}

double PositionOfScale(double scale) {
    if (scale < MiddleScale) return std::round((scale - LeastScale) * HalfRange / (MiddleScale - LeastScale));
    return HalfRange + std::round((scale - MiddleScale) * HalfRange / (MostScale - MiddleScale));
}

DialogControls FillControls(const BuildOptions& options) {
    DialogControls controls;
    for (size_t i = 0; i < std::size(Sliders); ++i) controls.sliders[i] = PositionOf(Sliders[i], options);
    for (size_t i = 0; i < std::size(CheckBoxes); ++i) controls.checks[i] = options.*CheckBoxes[i].option;
    controls.choice = ChoiceOf(options);
    controls[TextField::Bound] = WholeNumber(options.bound);
    FillBox(controls, TextField::FatWidth, options.fat);
    FillBox(controls, TextField::NarrowWidth, options.narrow);
    return controls;
}

std::string ComposeCommand(const DialogControls& controls) {
    std::string command;
    const auto addSlider = [&](size_t i) { command += Sliders[i].words(controls.sliders[i]); };

    for (size_t i = 0; i < std::size(CheckBoxes); ++i)
        if (controls.checks[i]) command += CheckBoxes[i].words;
    for (const Slider slider : {Slider::Visibility, Slider::Detail, Slider::Warnings, Slider::Light})
        addSlider(static_cast<size_t>(slider));
    for (size_t i = static_cast<size_t>(Slider::Cpus); i < std::size(Sliders); ++i) addSlider(i);
    command += BuildChoices[static_cast<size_t>(controls.choice)].words;
    for (const TextRow& row : Texts) {
        command += row.words;
        for (size_t i = 0; i < row.count; ++i) command += controls.texts[static_cast<size_t>(row.first) + i] + ' ';
    }
    return command;
}

}  // namespace k2k
