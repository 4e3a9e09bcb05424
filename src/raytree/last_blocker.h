// The triangle that stopped a thread's last ray. Rays come in runs from neighbouring points to one light, so it often
// stops the next one as well. After Haines and Greenberg, "The Light Buffer: A Shadow-Testing Accelerator" (1986),
// whose idea is kept for a single triangle.
#pragma once

#include <cstdint>

namespace k2k::Opcode {

struct LastBlocker {
    uint64_t model = 0;  // the serial number of the triangle's model; 0 for none
    uint32_t triangle = 0;
    uint32_t parent = 0;  // the binary node that holds it
};

}  // namespace k2k::Opcode
