#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <gk/base/vector.h>

/// What one clearance fuzz input decodes to: a walk of up to 64 vertices, open or closed.
struct gkClearanceFuzzInput {
  bool closed = true;
  std::vector<gkVector<2>> points;
};

/// Decodes the bytes: the first byte's low bit closes the walk; then five bytes a vertex, a
/// mode byte and two little-endian 16-bit integers a and b:
///   mode 0: the lattice point (a, b) / 64;
///   mode 1: the previous vertex moved by (a, b) * 1e-7 (steps of about the sweep's reach);
///   mode 2: a point on the segment between two earlier vertices (a picks the pair, b the
///           place along it), moved off it by a multiple of 1e-7 along its normal;
///   mode 3: an earlier vertex again (a picks it).
gkClearanceFuzzInput gkClearanceFuzzDecode(const std::uint8_t* data, std::size_t size);

/// Runs the clearance sweep on the decoded walk and checks its one promise: when it answers
/// true, every two segments sharing no vertex lie farther apart than the reach (measured in
/// extended precision over every pair); when it names a pair, the pair exists and shares no
/// vertex. Returns false when the promise is broken.
bool gkClearanceFuzzCheck(const std::uint8_t* data, std::size_t size);
