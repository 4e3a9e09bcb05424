#include "bsp/zoom_loop.h"

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "mapread/read_map.h"

namespace k2k {
namespace {

constexpr float DefaultMaxZoom = 10.0F;

// Silences the reports of trial reads.
class QuietScope {
  public:
    QuietScope() : quiet_(Options().quiet), verbose_(Options().verbose) {
        Options().quiet = true;
        Options().verbose = false;
    }
    ~QuietScope() {
        Options().quiet = quiet_;
        Options().verbose = verbose_;
    }
    QuietScope(const QuietScope&) = delete;
    QuietScope& operator=(const QuietScope&) = delete;

  private:
    const bool quiet_, verbose_;
};

// Raises the zoom from where it stands; returns the best one met. A tie keeps the smaller.
float TryZooms(float maxZoom) {
    float& zoom = Options().zoomlevel;
    int32_t bestWarn = WarnCount;
    float bestZoom = zoom;
    while (WarnCount >= 1 && maxZoom >= zoom + 1.0F) {
        zoom += 1.0F;
        ReadMap(false);
        if (WarnCount >= bestWarn) continue;
        bestWarn = WarnCount;
        bestZoom = zoom;
    }
    return bestZoom;
}

}  // namespace

void ReadMapAtBestZoom() {
    float& zoom = Options().zoomlevel;
    if (!Options().autozoom) {
        ReadMap(false);
        return;
    }
    const float maxZoom = zoom < 1.0F ? DefaultMaxZoom : zoom;
    const QuietScope quiet;
    zoom = 1.0F;
    BuildLog(" \nDetermining best zoom factor [1..%.0f]\n", static_cast<double>(maxZoom));
    ReadMap(false);
    const float bestZoom = TryZooms(maxZoom);
    if (zoom != bestZoom) {
        zoom = bestZoom;
        ReadMap(false);
    }
    BuildLog("Autozoom set to %.0f\n", static_cast<double>(bestZoom));
}

}  // namespace k2k
