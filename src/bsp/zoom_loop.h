// The scale at which a map is read.
#pragma once

namespace k2k {

// Reads the map; with -autozoom at every whole scale up to the limit, until one gives no block warnings, and at last at
// the one that gave the fewest. -zoomlevel is that scale from then on.
void ReadMapAtBestZoom();

}  // namespace k2k
