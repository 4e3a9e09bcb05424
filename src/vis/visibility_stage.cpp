// The second stage: which regions each region can see.
#include "vis/visibility_stage.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/run_stats.h"
#include "driver/text.h"
#include "levelfile/file_klv.h"
#include "levelfile/portal_data.h"
#include "vis/base_vis.h"
#include "vis/portal_file.h"
#include "vis/portal_vis.h"
#include "vis/region_rows.h"
#include "vis/undo_zoom.h"

namespace k2k {
namespace {

bool IsZoomed(const BuildOptions& options) {
    return options.zoomlevel != 0 && options.zoomlevel != 1;
}

// The first stage leaves a level; one that has gone since is not to come back without its entities.
bool LoadLevel(CFileKLV& file) {
    RequireLevel(file.name());
    return file.Open(false) && file.Load();
}

void SaveLevel(CFileKLV& file) {
    file.Save();
    file.Close();
}

void UndoZoomOnly(const BuildOptions& options) {
    if (!IsZoomed(options)) return;
    CFileKLV file(Paths().LevelPath);
    if (!LoadLevel(file)) return;
    UndoZoom(options.zoomlevel);
    SaveLevel(file);
}

// Row 0 is the solid region, which has no portals.
int32_t RegionCount() {
    return std::max(static_cast<int32_t>(Portals().regions.size()) - 1, 0);
}

// The interim portal file stands beside the level.
const std::string& FormPortalPath() {
    std::string path = Paths().LevelPath;
    StripExtension(path);
    return Paths().PortalPath = path + ".$$p";
}

void MakeVisibility(const BuildOptions& options) {
    VisGraph graph = ReadPortalFile(FormPortalPath(), RegionCount());
    RequireRowSpace(graph.regionCount());
    AddStat("portals", static_cast<int64_t>(graph.portals.size() / 2));
    StartProgress(static_cast<int32_t>(graph.portals.size()));
    BasePortalVis(graph, options.eps);
    if (options.fast) {
        FastPortalVis(graph);
    } else {
        FlowSettings settings;
        settings.level = options.level;
        settings.eps = options.eps;
        const FlowCounts counts = CalculatePortalVis(graph, settings, options.threads);
        AddStat("region_flow_calls", counts.regionFlowCalls);
        AddStat("repeated_views", counts.repeats);
    }
    for (const VisPortal& portal : graph.portals) CheckPolygon(portal.polygon);
    std::vector<uint8_t>& visibility = Portals().visibility;
    visibility.clear();
    MakeRegionRows(graph, Portals().regions, visibility);
}

}  // namespace

int VisibilityStage() {
    BuildOptions& options = Options();
    if (options.lightsonly || options.entsonly || options.texsonly || options.nobsp) return 0;
    if (options.noportals && options.preview) {
        UndoZoomOnly(options);
        return 0;
    }
    if (options.noportals || options.preview) {
        options.fast = true;
        options.level = 2;
    }
    if (Paths().LevelPath.empty()) return -1;
    CFileKLV file(Paths().LevelPath);
    if (!LoadLevel(file)) return 0;
    MakeVisibility(options);
    if (IsZoomed(options)) UndoZoom(options.zoomlevel);
    SaveLevel(file);
    return 0;
}

}  // namespace k2k
