// Reading blocks of dialect 5.1.
#include "mapread/file_map51.h"

#include <algorithm>
#include <cmath>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "mapread/widest_triple.h"

namespace k2k {

namespace {

constexpr int32_t MaxVertexCount = 357913941;  // times three coordinates stays within 30 bits
constexpr int32_t MaxFaceCorners = 0x3FFFFFFF;

// The shortest text of a vertex: three digits, each with white space behind.
constexpr size_t MinVertexText = 6;

void SetMaterial(std::array<char, 20>& material, std::string_view text) {
    material = {};
    std::copy_n(text.begin(), std::min(text.size(), material.size() - 1), material.begin());
}

}  // namespace

void CFileMap51::Reset() {
    CFileMap50::Reset();
    vertices_.clear();
}

std::unique_ptr<CEntityPair> CFileMap51::NewEntityPair(int32_t type) {
    if (type == static_cast<int32_t>(EntityType::Extended)) return std::make_unique<CEPairModelExt>();
    return CFileMap50::NewEntityPair(type);
}

bool CFileMap51::ReadBlockHeader(MapBlock& block, int32_t& faceCount) {
    const int32_t vertexCount = ReadVertexCount(block);
    faceCount = ReadFaceCount(block);
    ReadVertices(block, vertexCount);
    return faceCount > 0;
}

int32_t CFileMap51::ReadVertexCount(const MapBlock& block) {
    const int32_t number = block.number - 1;
    if (!scanner_.NextToken(true) || token() != "vertices") {
        FatalError("Version count missing, block %d line %d\n", number, line());
    }
    if (!scanner_.NextToken(false)) FatalError("Vertex count missing, block %d\n", number);
    const int32_t count = ToInt(token());
    if (count <= 0 || count > MaxVertexCount) FatalError("Illegal vertex count, block %d\n", number);
    return count;
}

int32_t CFileMap51::ReadFaceCount(const MapBlock& block) {
    const int32_t number = block.number - 1;
    if (!scanner_.NextToken(true) || token() != "faces") FatalError("Face tag missing, block %d\n", number);
    if (!scanner_.NextToken(false)) FatalError("Face count missing, block %d\n", number);
    return ToInt(token());
}

void CFileMap51::ReadVertices(const MapBlock& block, int32_t count) {
    vertices_.clear();
    vertices_.reserve(std::min(static_cast<size_t>(count), textSize() / MinVertexText));
    for (int32_t i = 0; i < count; ++i) {
        Vec3 vertex;
        for (float& coordinate : vertex) coordinate = ReadCoordinate(block);
        vertices_.push_back(vertex);
    }
}

float CFileMap51::ReadCoordinate(const MapBlock& block) {
    const auto requireNumber = [&](bool isNumber) {
        if (!isNumber) FatalError("Invalid vertex list, block %d line %d\n", block.number - 1, line());
    };
    requireNumber(scanner_.NextToken(true));
    const float coordinate = ToFloat(token()) * Options().zoomlevel;
    if (std::fabs(coordinate) > Options().bound) {
        FatalError("Block outside level boundaries !\nUse -bound XXX to increase size !\n");
    }
    requireNumber(std::isfinite(coordinate));
    return coordinate;
}

bool CFileMap51::ReadFaces(MapBlock& block, int32_t faceCount, std::vector<Texinfo>& texinfos) {
    int32_t groupTokens = 0;  // counted through all groups of the block
    const auto takeGroupToken = [&](std::string_view text) {
        if (groupTokens == 0) block.flags = ParseBinary(text);
        if (groupTokens == 1) SetMaterial(block.material, text);
        if (groupTokens < 2) ++groupTokens;
    };
    for (RequireToken(); token() != "}"; RequireToken()) {
        if (token() == "{") {
            ReadGroup(takeGroupToken);
            continue;
        }
        if (static_cast<int64_t>(block.faces.size()) >= faceCount) {
            FatalError("More faces than expected, block %d", block.number - 1);
        }
        ReadFace(block, texinfos);
    }
    return !block.faces.empty();
}

void CFileMap51::ReadFace(MapBlock& block, std::vector<Texinfo>& texinfos) {
    const std::vector<int32_t> indices = ReadIndices();
    MapFace face;
    face.block = block.number;
    face.planeNumber = static_cast<int32_t>(block.faces.size()) + 1;
    std::array<int32_t, 3> chosen{};
    ChooseFacePoints(indices, chosen);
    for (size_t i = 0; i < chosen.size(); ++i) face.points[i] = vertices_[static_cast<size_t>(chosen[i])];
    face.polygon.reserve(indices.size());
    for (const int32_t index : indices) face.polygon.push_back(vertices_[static_cast<size_t>(index)]);

    if (!scanner_.NextToken(true) || token() != ":") FatalError("Separator ':' missing, line %d", line());
    const auto corners = static_cast<int32_t>(indices.size());
    Texinfo texinfo;
    ReadTextureName(texinfo);
    ReadTextureMapping(texinfo, &face, corners);
    ReadSurfaceFlags(texinfo, corners);
    block.faces.push_back(std::move(face));
    texinfos.push_back(texinfo);
}

// The current token is the number of indices.
std::vector<int32_t> CFileMap51::ReadIndices() {
    const int32_t count = ToInt(token());
    if (count < 3 || count >= MaxFaceCorners) FatalError("Invalid face definition, line %d", line());
    std::vector<int32_t> indices;
    scanner_.ReadInts(indices, count);
    const auto isOutside = [this](int32_t index) {
        return index < 0 || static_cast<size_t>(index) >= vertices_.size();
    };
    if (std::any_of(indices.begin(), indices.end(), isOutside)) FatalError("Index out of bounds, line %d\n", line());
    return indices;
}

void CFileMap51::ChooseFacePoints(std::span<const int32_t> indices, std::array<int32_t, 3>& chosen) {
    std::vector<Vec3> corners;
    corners.reserve(indices.size());
    for (const int32_t index : indices) corners.push_back(vertices_[static_cast<size_t>(index)]);
    const std::array<int32_t, 3> widest = WidestTriple(corners);
    for (size_t i = 0; i < chosen.size(); ++i) chosen[i] = indices[static_cast<size_t>(widest[i])];
}

void CFileMap51::ReadTextureMapping(Texinfo& texinfo, const MapFace* face, int32_t /*vertexCount*/) {
    const MapFace& mapped = RequireFace(face);
    if (!extended_) {
        // Planes are not known before all faces are read: the mapping is that of a floor, on every face.
        ReadPlainMapping(texinfo, mapped);
        return;
    }
    ReadMappingVector(texinfo.vecS, texinfo.shiftS);
    ReadMappingVector(texinfo.vecT, texinfo.shiftT);
}

void CFileMap51::ReadMappingVector(Vec3& axis, float& shift) {
    if (!scanner_.NextToken(true) || token() != "(") FatalError("Separator '(' missing, line %d", line());
    std::array<float, 4> numbers{};
    scanner_.ReadFloats(numbers.data(), 4);
    if (NextOnLine() != ")") FatalError("Separator ')' missing, line %d", line());
    axis = {numbers[0], numbers[1], numbers[2]};
    shift = numbers[3];
}

void CFileMap51::ReadSurfaceFlags(Texinfo& texinfo, int32_t /*vertexCount*/) {
    ReadSurfaceTail(texinfo);
}

bool CFileMap51::ReadSurfaceTail(Texinfo& texinfo) {
    constexpr uint32_t kinds = TextureNoLightmap | TextureFlat | TextureSky | TextureTurbulent;
    if (!ReadTailMark(texinfo)) return false;
    texinfo.flags |= ParseBinary(NextOnLine());
    if ((texinfo.flags & kinds) != 0) texinfo.flags |= TextureNoLightmap;
    ReadAmbientAndAlbedo(texinfo);
    NextOnLine();
    return true;
}

}  // namespace k2k
