// Maps of a few boxes, written in the dialect 7.1.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace k2k::test {

using Corner = std::array<double, 3>;

struct Box {
    Corner low, high;
    std::string texture = "WALL";
    uint32_t flags = 0;      // of the block
    uint32_t faceFlags = 0;  // of each face's texture
};

namespace BlockFlags {
constexpr uint32_t Passable = 2, Invisible = 4, Detail = 16;
}
constexpr uint32_t PhongFlag = 0x4000;

class SmallMap {
  public:
    SmallMap& Add(const Box& box);
    // Six walls of 16 units around a space: named as in "FLOOR", "CEILING", "WALL".
    SmallMap& AddRoom(const Corner& low, const Corner& high, uint32_t faceFlags = 0);
    SmallMap& Entity(const std::string& lines);
    SmallMap& Start(const Corner& at);
    // flags 1: casts shadows in double resolution.
    SmallMap& Light(const Corner& at, const Corner& colour, double range, uint32_t flags = 0);
    SmallMap& Sun();
    // The level entity's texture file.
    SmallMap& Wad(const std::string& name);

    std::string Text() const;

  private:
    std::string wad_ = "textures.$$w", blocks_, entities_;
};

// A room of 256 x 256 x 128 units with its corner at the origin, a start in it and a sun outside of any use.
SmallMap OneRoom(uint32_t faceFlags = 0);

// The room with a light in a corner of it.
SmallMap LitRoom(const Corner& colour = {200, 100, 50}, uint32_t faceFlags = 0);

// The room with its walls and ceiling lined by sky, and a low pillar on its floor: the sun shines in where sky is
// solid.
SmallMap SkyRoom();

}  // namespace k2k::test
