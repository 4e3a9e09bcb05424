// What dialect 7.1 adds to 5.1.
#include "mapread/file_map71.h"

#include <algorithm>

#include "driver/build_log.h"

namespace k2k {

namespace {

constexpr std::string_view SunFlags = "10";

}  // namespace

void CFileMap71::ReadEntityPair() {
    const int32_t type = ToInt(token());
    CFileMap51::ReadEntityPair();
    if (type == static_cast<int32_t>(EntityType::Sun)) AddKey(currentEntity_->keys, "flags", SunFlags);
}

// A list of texture coordinates may stand in front of the vectors.
void CFileMap71::ReadTextureMapping(Texinfo& texinfo, const MapFace* face, int32_t vertexCount) {
    RequireFace(face);
    if (!scanner_.NextToken(true)) FatalError("Separator '(' or '[' missing, line %d", line());
    if (token() == "[") {
        SkipCornerPairs(vertexCount);
    } else {
        scanner_.Unread();
    }
    CFileMap51::ReadTextureMapping(texinfo, face, vertexCount);
}

void CFileMap71::SkipCornerPairs(int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        RequireToken();
        NextOnLine();
    }
    if (!scanner_.NextToken(true) || token() != "]") FatalError("Separator ')' missing, line %d", line());
}

void CFileMap71::ReadSurfaceFlags(Texinfo& texinfo, int32_t /*vertexCount*/) {
    if (!ReadSurfaceTail(texinfo)) return;
    const std::string material = ToUpper(token());
    std::copy_n(material.begin(), std::min(material.size(), texinfo.material.size() - 1), texinfo.material.begin());
}

}  // namespace k2k
