// Brings a level that was built at a zoom back to its own size.
#pragma once

namespace k2k {

// Divides everything in the level that has a length by zoom.
void UndoZoom(float zoom);

}  // namespace k2k
