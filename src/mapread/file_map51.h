// Dialect 5.1: a block is a list of vertices and faces that name them; mapping may be given by vectors.
#pragma once

#include "mapread/file_map50.h"

namespace k2k {

class CFileMap51 : public CFileMap50 {
  public:
    using CFileMap50::CFileMap50;
    void Reset() override;
    bool IsSupported() override { return GetVersion() == 51; }

  protected:
    std::unique_ptr<CEntityPair> NewEntityPair(int32_t type) override;
    void ReadBlock() override;
    void ReadTextureMapping(Texinfo& texinfo, const MapFace* face, int32_t vertexCount) override;

    // The two counts and the vertices. False when the block is to have no faces.
    virtual bool ReadBlockHeader(MapBlock& block, int32_t& faceCount);
    // Three of the vertices that a face names, for its plane.
    virtual void ChooseFacePoints(std::span<const int32_t> indices, std::array<int32_t, 3>& chosen);
    // All items behind the header, to the closing brace. Whether there was a face.
    virtual bool ReadFaces(MapBlock& block, int32_t faceCount, std::vector<Texinfo>& texinfos);
    // The optional end of a face.
    virtual void ReadSurfaceFlags(Texinfo& texinfo, int32_t vertexCount);

    // Leaves the last item as the current token. False when the face has no such end.
    bool ReadSurfaceTail(Texinfo& texinfo);

  private:
    int32_t ReadVertexCount(const MapBlock& block);
    int32_t ReadFaceCount(const MapBlock& block);
    void ReadVertices(const MapBlock& block, int32_t count);
    float ReadCoordinate(const MapBlock& block);
    void ReadFace(MapBlock& block, std::vector<Texinfo>& texinfos);
    std::vector<int32_t> ReadIndices();
    void ReadMappingVector(Vec3& axis, float& shift);

    // Sets the planes of all faces and marks those that are too narrow or double.
    void SetPlanes(MapBlock& block, bool isMesh);
    // Removes marked faces. Whether enough are left for a block.
    bool CullFaces(MapBlock& block, std::vector<Texinfo>& texinfos, bool isMesh);
    // False for blocks of flagged textures, whose clipped faces are of no use. Flat ones have a use when -sizeflat is
    // on.
    static bool NeedsPolygons(const MapBlock& block);

    std::vector<Vec3> vertices_;  // of the block that is being read
};

}  // namespace k2k
