// The files and tables that a build starts without.
#pragma once

namespace k2k {

// Names the interim files after the level.
void FormInterimPaths();

// Fatal when the map has the name of the level or of an interim file: a level given in its map's place would be lost.
void KeepMapFromBuildFiles();

// Removes the level and the interim files; those that are missing are no fault.
void RemoveBuildFiles();

// Back to an empty level: no entities, empty data sets, no files.
void StartOver();

}  // namespace k2k
