#include "program/small_map.h"

#include <bitset>
#include <iomanip>
#include <sstream>

namespace k2k::test {

namespace {

// Numbers as a map has them: whole ones without a point.
std::string Numbers(const Corner& values) {
    std::ostringstream text;
    text << std::setprecision(10) << values[0] << ' ' << values[1] << ' ' << values[2];
    return text.str();
}

template <size_t Digits>
std::string Binary(uint32_t value) {
    return std::bitset<Digits>(value).to_string();
}

// A side of a box: its corners (x + 2 y + 4 z, clockwise from outside) and the texture axes that lie in it.
struct Side {
    const char* corners;
    const char* axes;
};
constexpr std::array<Side, 6> Sides{{{"4 0 1 3 2", "( 1 0 0 0 ) ( 0 -1 0 0 )"},
                                     {"4 4 6 7 5", "( 1 0 0 0 ) ( 0 -1 0 0 )"},
                                     {"4 0 4 5 1", "( 1 0 0 0 ) ( 0 0 -1 0 )"},
                                     {"4 2 3 7 6", "( 1 0 0 0 ) ( 0 0 -1 0 )"},
                                     {"4 0 2 6 4", "( 0 1 0 0 ) ( 0 0 -1 0 )"},
                                     {"4 1 5 7 3", "( 0 1 0 0 ) ( 0 0 -1 0 )"}}};

}  // namespace

SmallMap& SmallMap::Add(const Box& box) {
    blocks_ += "{\nvertices 8\nfaces 6\n";
    for (size_t corner = 0; corner < 8; ++corner) {
        Corner at;
        for (size_t axis = 0; axis < 3; ++axis) at[axis] = (corner >> axis & 1) != 0 ? box.high[axis] : box.low[axis];
        blocks_ += Numbers(at) + '\n';
    }
    blocks_ += "{ " + Binary<8>(box.flags) + " ndef }\n";
    for (const Side& side : Sides) {
        blocks_ += std::string(side.corners) + " : " + box.texture + ' ' + side.axes + " : " +
                   Binary<16>(box.faceFlags) + " 0 50 ndef\n";
    }
    blocks_ += "}\n";
    return *this;
}

SmallMap& SmallMap::AddRoom(const Corner& low, const Corner& high, uint32_t faceFlags) {
    constexpr double Thick = 16;
    const auto add = [&](const Corner& from, const Corner& to, const char* texture) {
        Add({from, to, texture, 0, faceFlags});
    };
    const auto [x0, y0, z0] = low;
    const auto [x1, y1, z1] = high;
    add({x0 - Thick, y0 - Thick, z0 - Thick}, {x1 + Thick, y1 + Thick, z0}, "FLOOR");
    add({x0 - Thick, y0 - Thick, z1}, {x1 + Thick, y1 + Thick, z1 + Thick}, "CEILING");
    add({x0 - Thick, y0 - Thick, z0}, {x0, y1 + Thick, z1}, "WALL");
    add({x1, y0 - Thick, z0}, {x1 + Thick, y1 + Thick, z1}, "WALL");
    add({x0, y0 - Thick, z0}, {x1, y0, z1}, "WALL");
    add({x0, y1, z0}, {x1, y1 + Thick, z1}, "WALL");
    return *this;
}

SmallMap& SmallMap::Entity(const std::string& lines) {
    entities_ += "{\n" + lines + "\n}\n";
    return *this;
}

SmallMap& SmallMap::Start(const Corner& at) {
    return Entity("1 " + Numbers(at) + " 0 0 0\nplayer");
}

SmallMap& SmallMap::Light(const Corner& at, const Corner& colour, double range, uint32_t flags) {
    std::ostringstream text;
    text << "2 " << Numbers(at) << " 0 0 0 " << Numbers(colour) << ' ' << range << '\n' << Binary<8>(flags);
    return Entity(text.str());
}

SmallMap& SmallMap::Sun() {
    return Entity("5 0 45");
}

SmallMap& SmallMap::Wad(const std::string& name) {
    wad_ = name;
    return *this;
}

std::string SmallMap::Text() const {
    return "version 711\n{\n0 " + wad_ + "\npalette.raw\n" + blocks_ + "}\n" + entities_;
}

SmallMap OneRoom(uint32_t faceFlags) {
    SmallMap map;
    map.AddRoom({0, 0, 0}, {256, 256, 128}, faceFlags).Start({128, 128, 40}).Sun();
    return map;
}

SmallMap LitRoom(const Corner& colour, uint32_t faceFlags) {
    return OneRoom(faceFlags).Light({64, 64, 64}, colour, 300);
}

SmallMap SkyRoom() {
    SmallMap map = OneRoom();
    map.Add({{0, 0, 112}, {256, 256, 128}, "SKY1"});
    map.Add({{0, 0, 0}, {16, 256, 112}, "SKY1"}).Add({{240, 0, 0}, {256, 256, 112}, "SKY1"});
    map.Add({{16, 0, 0}, {240, 16, 112}, "SKY1"}).Add({{16, 240, 0}, {240, 256, 112}, "SKY1"});
    return map.Add({{112, 112, 0}, {144, 144, 16}, "PILLAR"});
}

}  // namespace k2k::test
