// The rows of the option table.
#include "driver/option_table.h"

#include "driver/file_options.h"

namespace k2k {

namespace {

using O = BuildOptions;
using enum OptionTopic;

// The palette's name counts once: later ones, also those of the dialog's parse, are read and dropped.
void StorePalette(std::string_view text) {
    if (Options().palgiven) return;
    Options().palgiven = true;
    SetPalettePath(text);
}

constexpr std::string_view Rgb = "RED GREEN BLUE";
constexpr std::string_view HullBox = "WIDTH HEIGHT OFFSET";

const OptionRow Table[] = {
    {"-b", IgnoredFlag{}, NoEffect, "", "Ignored."},
    {"-v", IgnoredFlag{}, NoEffect, "", "Ignored."},
    {"-l", IgnoredFlag{}, NoEffect, "", "Ignored."},
    {"-g", IgnoredFlag{}, NoEffect, "", "Ignored."},
    {"-dialog", Flag{&O::dialog}, Report, "",
     "Takes the options from the settings file K2K.ini, through the options dialog where there is one."},
    {"-verbose", Flag{&O::verbose}, Report, "", "Prints every warning and more about each step."},
    {"-quiet", Flag{&O::quiet}, Report, "", "Prints neither warnings nor progress."},
    {"-entsonly", Flag{&O::entsonly}, Modes, "", "Only replaces the entities of an existing level."},
    {"-texsonly", Flag{&O::texsonly}, Modes, "", "Only reloads the textures of an existing level."},
    {"-lightsonly", Flag{&O::lightsonly}, Modes, "",
     "Only updates the entities and lights of an existing level. Wins over -entsonly."},
    {"-preview", Flag{&O::preview}, Modes, "", "Builds fast, with poor lighting, for a look at the level."},
    {"-hiprec", Flag{&O::hiprec}, Map, "", "Keeps the points of planes unrounded. Always on."},
    {"-notables", Flag{&O::notables}, Colours, "", "Skips the colour stage; the level's palette stays as it is."},
    {"-noportals", Flag{&O::noportals}, Visibility, "",
     "Computes visibility the fast way; together with -preview not at all."},
    {"-mono", Flag{&O::mono}, Lighting, "", "Makes all lights and the ambient light grey."},
    {"-draw", Flag{&O::draw}, NoEffect, "", "No effect."},
    {"-notjunc", Flag{&O::notjunc}, Surfaces, "", "Leaves T-junctions of edges unrepaired."},
    {"-nofill", Flag{&O::nofill}, Surfaces, "", "Keeps what lies outside of the level."},
    {"-noclip", Flag{&O::noclip}, NoEffect, "", "No effect."},
    {"-fast", Flag{&O::fast}, Visibility, "", "Computes visibility fast and less exactly."},
    {"-rgb", SpaceFlag{&O::colorspace, ColourSpace::Rgb}, Colours, "", "Colour space of the tables: RGB."},
    {"-hsl", SpaceFlag{&O::colorspace, ColourSpace::Hsl}, Colours, "", "Colour space of the tables: HSL."},
    {"-hsv", SpaceFlag{&O::colorspace, ColourSpace::Hsv}, Colours, "", "Colour space of the tables: HSV."},
    {"-light rgb", SpaceFlag{&O::lightspace, ColourSpace::Rgb}, Colours, "",
     "Colour space of the light table: RGB. One word, so it stands in double quotes."},
    {"-light hsl", SpaceFlag{&O::lightspace, ColourSpace::Hsl}, Colours, "", "The same: HSL."},
    {"-light hsv", SpaceFlag{&O::lightspace, ColourSpace::Hsv}, Colours, "", "The same: HSV."},
    {"-shade rgb", SpaceFlag{&O::shadespace, ColourSpace::Rgb}, Colours, "",
     "Colour space of the shade table: RGB. One word, so it stands in double quotes."},
    {"-shade hsl", SpaceFlag{&O::shadespace, ColourSpace::Hsl}, Colours, "", "The same: HSL."},
    {"-shade hsv", SpaceFlag{&O::shadespace, ColourSpace::Hsv}, Colours, "", "The same: HSV."},
    {"-ml", Flag{&O::ml}, NoEffect, "", "No effect."},
    {"-npal", Flag{&O::npal}, Colours, "", "Writes no palette file."},
    {"-nmixtab", Flag{&O::nmixtab}, NoEffect, "", "No effect."},
    {"-ncolormap", Flag{&O::ncolormap}, NoEffect, "", "No effect."},
    {"-r", JoinedText{AddRange}, Colours, "START,LENGTH", "A range of the palette's colours; up to 24 ranges."},
    {"-outpal", JoinedText{SetPaletteOutput}, Colours, "FILE",
     "Name for a palette file, where one is written. The first one given counts."},
    {"-colormap", JoinedText{SetColormapPath}, Colours, "FILE", "Name of a colour map; stored only. At most once."},
    {"-mixtab", JoinedText{SetMixtabPath}, Colours, "FILE", "Name of a mixture table; stored only. At most once."},
    {"-pal", JoinedText{StorePalette}, Colours, "FILE",
     "The palette file: PCX, BMP or LBM by its extension, else 768 bytes of red, green and blue (.lmp is added where "
     "there is no extension). Required; the first one given counts."},
    {"-threads", IntValue{.member = &O::threads, .most = MaxThreads}, Visibility, "COUNT",
     "Number of worker threads of the visibility and lighting stages.", "processors"},
    {"-level", IntValue{&O::level}, Visibility, "LEVEL",
     "How many separator tests visibility makes, 0 to 4: exact and slow, or coarse and fast."},
    {"-f1", FloatValue{&O::f1}, NoEffect, "VALUE", "No effect."},
    {"-f2", FloatValue{&O::f2}, NoEffect, "VALUE", "No effect."},
    {"-f3", FloatValue{&O::f3}, NoEffect, "VALUE", "No effect."},
    {"-dist", FloatValue{&O::dist}, NoEffect, "VALUE", "No effect."},
    {"-eps", FloatValue{&O::eps}, Map, "DISTANCE", "Distance below which a point lies on a plane."},
    {"-az", FloatValue{&O::az}, Lighting, "DEGREES", "Azimuth of the sun."},
    {"-el", FloatValue{&O::el}, Lighting, "DEGREES", "Elevation of the sun."},
    {"-bound", FloatValue{&O::bound}, Map, "SIZE", "Largest coordinate of a block."},
    {"-lmambient", FloatValue{&O::lmambient}, Lighting, "PERCENT",
     "Softness of light by its angle: 0 for better gradients, 100 for more ambient light."},
    {"-jitter", IntValue{&O::jitter}, Lighting, "COUNT",
     "Offset of light samples on smoothed surfaces, in texels; without -litv2."},
    {"-d", ShortValue{&O::d}, NoEffect, "VALUE", "No effect."},
    {"-b", ShortValue{&O::b}, NoEffect, "VALUE", "Never reached: the flag of the same name is found first."},
    {"-fat", FloatTriple{&O::fat}, Hulls, HullBox, "Box of the fat collision hull."},
    {"-narrow", FloatTriple{&O::narrow}, Hulls, HullBox, "Box of the narrow collision hull."},
    {"-sunrgb", FloatTriple{&O::sunrgb}, Lighting, Rgb, "Colour of the sun, in percent."},
    {"-ambrgb", FloatTriple{&O::ambrgb}, Lighting, Rgb, "Ambient colour, in percent."},
    {"-fog1", FogColour{0}, Lighting, Rgb, "First fog colour, in percent."},
    {"-fog2", FogColour{1}, Lighting, Rgb, "Second fog colour, in percent."},
    {"-fog3", FogColour{2}, Lighting, Rgb, "Third fog colour, in percent."},
    {"-fog4", FogColour{3}, Lighting, Rgb, "Fourth fog colour, in percent."},
    {"-sethulls", IntTriple{&O::sethulls}, Hulls, "FIRST SECOND THIRD",
     "Box of each hull slot: 0 none, 1 the narrow one, 2 the fat one."},
    {"-nh", Flag{&O::nh}, Hulls, "", "Builds one collision hull only, without size, and no fat hull."},
    {"-solidsky", Flag{&O::solidsky}, Map, "", "Treats sky blocks as solid."},
    {"-nodetail", Flag{&O::nodetail}, Map, "", "Treats detail blocks as plain ones."},
    {"-forcedetail", Flag{&O::forcedetail}, Map, "", "Keeps detail blocks that cut surfaces of the level."},
    {"-nod3dlmaps", Flag{&O::nod3dlmaps}, Lighting, "", "Writes version 5 of the level file, without lightmaps."},
    {"-keepportal", Flag{&O::keepportal}, Visibility, "", "Keeps the interim portal file."},
    {"-writelog", Flag{&O::writelog}, Report, "", "Appends all messages to buildlog.txt in the working directory."},
    {"-gamma", FloatValue{&O::gamma}, Lighting, "VALUE", "Gamma of the lightmaps."},
    {"-zoomlevel", FloatValue{&O::zoomlevel}, Map, "FACTOR",
     "Scale at which the map is built; the level has its own size again."},
    {"-autozoom", Flag{&O::autozoom}, Map, "",
     "Searches the scale with the fewest warnings, up to -zoomlevel (or 10, where that is below 1)."},
    {"-litmapsonly", Flag{&O::litmapsonly}, Lighting, "",
     "Gives no lightmap to surfaces without light and ambient, and always stores the lightmap pages."},
    {"-nobsp", Flag{&O::nobsp}, Modes, "",
     "Stores triangle meshes without a BSP tree. Needs -mesh; turns on -nh, -noportals and -nodetail."},
    {"-mesh", Flag{&O::mesh}, Modes, "",
     "Writes a level with meshes. A map that holds mesh blocks turns it on, and so does a level with meshes that is "
     "updated."},
    {"-litv2", Flag{&O::litv2}, Lighting, "",
     "Lights the level with radiosity: light that surfaces reflect counts too."},
    {"-invisibletonone", Flag{&O::invisibletonone}, Map, "",
     "Gives the faces of invisible blocks the texture flags of empty ones."},
    {"-mergeacross", Flag{&O::mergeacross}, Surfaces, "", "Merges surfaces across regions."},
    {"-sizeshaded", SizeValue{&O::sizeshaded}, Surfaces, "TEXELS", "Largest size of a shaded surface."},
    {"-sizeflat", SizeValue{&O::sizeflat}, Surfaces, "TEXELS", "Largest size of a flat surface; 0 is automatic."},
    {"-sizeturb", SizeValue{&O::sizeturb}, Surfaces, "TEXELS", "Largest size of a turbulent surface; 0 is automatic."},
    {"-litres", FloatValue{&O::litres}, Lighting, "FACTOR", "Resolution of the lightmaps of a level with meshes."},
    {"-litcomp", FloatValue{&O::litcomp, 0.0F, 1.0F}, Lighting, "VALUE",
     "Where the compression of bright light begins, as a part of -litmax; with -litv2."},
    {"-litmax", IntValue{&O::litmax, 0, 255}, Lighting, "VALUE", "Brightest colour of a lightmap; with -litv2."},
    {"-litscale", FloatValue{&O::litscale, 0.0F, 6.0F}, Lighting, "FACTOR",
     "Brightness of light sources; with -litv2."},
    {"-radsubdiv", IntValue{&O::radsubdiv, 0, 255}, Lighting, "UNITS",
     "Size of a radiosity patch; below 1 they stay whole. With -litv2."},
    {"-radbounce", IntValue{&O::radbounce, 0, 32}, Lighting, "COUNT", "How often light is reflected; with -litv2."},
    {"-close", Flag{&O::close}, Report, "", "Closes a window after the build. A console program ends in any case."},
};

}  // namespace

std::span<const OptionRow> OptionTable() {
    return Table;
}

}  // namespace k2k
