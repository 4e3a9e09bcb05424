// Dialect 5.0: a face is three points of its plane and a plain texture mapping, on one line.
#pragma once

#include "mapread/file_map.h"

namespace k2k {

class CFileMap50 : public CFileMap {
  public:
    using CFileMap::CFileMap;
    bool IsSupported() override { return true; }

  protected:
    std::unique_ptr<CEntityPair> NewEntityPair(int32_t type) override;
    void ReadBlock() override;

    // All items of a block, to its closing brace. Faces that are too narrow or double are left out.
    virtual bool ReadFaces50(MapBlock& block, std::vector<Texinfo>& texinfos);
    // The mapping behind a texture name. A missing face is fatal.
    virtual void ReadTextureMapping(Texinfo& texinfo, const MapFace* face, int32_t vertexCount);

    const MapFace& RequireFace(const MapFace* face) const;

  private:
    void ReadFlagGroup(MapBlock& block, int32_t groupNumber);
    void ReadFace(MapBlock& block, std::vector<Texinfo>& texinfos, int32_t planeNumber);
    void ReadPoints(MapFace& face);
    // Whether the face's plane is worth keeping.
    bool CheckPlane(const MapBlock& block, MapFace& face, int32_t planeNumber);
    void ReadTail(Texinfo& texinfo);
    void ReadSecondFlags(Texinfo& texinfo);
};

}  // namespace k2k
