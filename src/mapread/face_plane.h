// The plane of a map face, from its three points.
#pragma once

#include "solid/map_block.h"

namespace k2k {

// Rounds the three points to whole numbers, halves away from zero.
void RoundPoints(MapFace& face);

// Sets normal, distance and plane type from the points; precise planes have their distance put on half units, those off
// the axes always on the one below. False when the points span no area to speak of.
bool SetFacePlane(MapFace& face, bool precise);

// False when the points were no numbers or so far out that the plane cannot be stored.
bool HasFinitePlane(const MapFace& face);

// Whether all points lie in the face's plane, within -eps.
bool ArePointsInPlane(const std::array<Vec3, 3>& points, const MapFace& face);

}  // namespace k2k
