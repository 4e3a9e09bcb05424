// Dialect 7.1: vertex lists, mapping by vectors, and a material on each face.
#pragma once

#include "mapread/file_map51.h"

namespace k2k {

class CFileMap71 : public CFileMap51 {
  public:
    using CFileMap51::CFileMap51;
    bool IsSupported() override { return GetVersion() == 71; }

  protected:
    // A sun gets one more key: its flags.
    void ReadEntityPair() override;
    void ReadTextureMapping(Texinfo& texinfo, const MapFace* face, int32_t vertexCount) override;
    void ReadSurfaceFlags(Texinfo& texinfo, int32_t vertexCount) override;

  private:
    void SkipCornerPairs(int32_t count);
};

}  // namespace k2k
