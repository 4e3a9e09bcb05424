#include "light/light_block.h"

#include <algorithm>

#include "driver/build_options.h"
#include "radiosity/worker_pool.h"

namespace k2k {
namespace {

bool HasLight(const LightBlock& block) {
    return std::any_of(block.texels.begin(), block.texels.end(),
                       [](const Vec3& t) { return t[0] > 0 || t[1] > 0 || t[2] > 0; });
}

// The pool's lock, for a scope.
class ThreadLockScope {
  public:
    ThreadLockScope() { ThreadLock(); }
    ~ThreadLockScope() { ThreadUnlock(); }
    ThreadLockScope(const ThreadLockScope&) = delete;
    ThreadLockScope& operator=(const ThreadLockScope&) = delete;
};

}  // namespace

LightBlockList& LightBlocks() {
    static LightBlockList blocks;
    return blocks;
}

LightBlock MakeLightBlock(uint32_t styleCount, uint32_t width, uint32_t height, uint32_t vectorCount) {
    LightBlock block;
    block.styleCount = styleCount;
    block.width = width;
    block.height = height;
    block.vectorCount = vectorCount;
    block.texels.resize(size_t{width} * height * vectorCount * styleCount);
    return block;
}

LightBlock& NewLightBlock(uint32_t styleCount, uint32_t width, uint32_t height, uint32_t vectorCount) {
    const ThreadLockScope lock;
    return LightBlocks().emplace_back(MakeLightBlock(styleCount, width, height, vectorCount));
}

void AddFinishedBlock(LightBlock block) {
    if (Options().nod3dlmaps || (Options().litmapsonly && !HasLight(block))) return;
    const ThreadLockScope lock;
    LightBlocks().push_back(std::move(block));
}

}  // namespace k2k
