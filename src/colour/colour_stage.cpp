#include "colour/colour_stage.h"

#include "colour/palette_files.h"
#include "colour/palette_lump.h"
#include "driver/build_log.h"
#include "driver/build_options.h"
#include "levelfile/file_klv.h"

namespace k2k {

namespace {

// Status of a worker that ends without a report.
constexpr int EndedByError = -1;

void SettleColourOptions(BuildOptions& o) {
    if (o.rangecount == 0) {
        o.ranges[0] = {0, 256};
        o.rangecount = 1;
    }
    if (o.lightspace == ColourSpace::None) o.lightspace = o.colorspace;
    if (o.shadespace == ColourSpace::None) o.shadespace = o.colorspace;
}

bool ReadPalette(const BuildOptions& o, PaletteColours& out) {
    switch (o.palkind) {
        case PaletteKind::Pcx:
            return ReadPcxPalette(o.palpath, out);
        case PaletteKind::Bmp:
            return ReadBmpPalette(o.palpath, out);
        case PaletteKind::Lbm:
            return ReadLbmPalette(o.palpath, out);
        case PaletteKind::Raw:
            break;
    }
    return ReadRawPalette(o.palpath, out);
}

void WritePalette(const BuildOptions& o, const PaletteColours& palette) {
    const std::string& levelPath = Paths().LevelPath;
    if (!levelPath.empty()) {
        BuildLog("\nWriting KLV file ...");
        if (WritePaletteLump(levelPath, palette)) BuildLog(" ok\n");
    } else if ((o.palkind != PaletteKind::Raw || !o.outpal.empty()) && !o.npal) {
        BuildLog("Writing palette ...");
        if (WriteRawPalette(o.outpal.empty() ? "palette.lmp" : o.outpal, palette)) BuildLog(" ok\n");
    }
}

}  // namespace

int RunColourStage() {
    BuildOptions& o = Options();
    ClearDataSets();
    if (o.notables) return 0;
    SettleColourOptions(o);

    PaletteColours palette{};
    if (ReadPalette(o, palette)) WritePalette(o, palette);
    if (HasPendingError()) {
        ShowPendingError();
        throw ProgramExit(EndedByError);
    }
    return 0;
}

}  // namespace k2k
