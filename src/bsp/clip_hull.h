// Clipping hulls: trees of the level grown by a box, as compact tables of planes and links.
//
// Hulls are built before the visible tree, whose planes fill the shared plane table; so each hull is captured with its
// planes by value, and joined into the level when the visible tree is finished.
#pragma once

#include <cstdint>

#include "solid/tree.h"

namespace k2k {

// Writes the tree into the hull node table; returns the row of its root. A root that is a leaf writes nothing.
int32_t WriteClipNodes(const CBspNode& root);

// Stores the hull's root and its box in whole numbers in the level info.
void RecordHull(int32_t hull, int32_t root);

// Keeps a copy of the hull node table as it stands, rows of earlier hulls included, for JoinHull.
void CaptureHull(int32_t hull);

// Moves the capture to the end of the hull node table; nothing without one.
void JoinHull(int32_t hull);

// Drops all captures.
void ResetHullCaptures();

}  // namespace k2k
