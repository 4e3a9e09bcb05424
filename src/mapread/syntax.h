// Small steps of the map's syntax that all its readers share.
#pragma once

#include "driver/build_log.h"
#include "driver/token_scanner.h"

namespace k2k {

// The next token, perhaps on a later line. An entity that the text's end leaves open is fatal.
inline void RequireToken(TokenScanner& scanner, bool wholeLine = false) {
    if (!scanner.NextToken(true, wholeLine)) FatalError(" \nE715");
}

// Counts a warning about a block; whether it is to be printed.
inline bool BlockWarning(WarnFamily family) {
    ++WarnCount;
    return WarnOnce(family);
}

}  // namespace k2k
