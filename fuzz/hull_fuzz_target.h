#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <gk/base/vector.h>

/// Decodes the bytes into a list of up to 4000 points (decoding stops there). The input is a
/// series of seven-byte records, a mode byte m and three little-endian 16-bit words a, b and c
/// (a trailing partial record is ignored); m & 7 is the mode and h = m >> 3 (0 … 31) a small
/// parameter. Fresh points are placed in a frame: an origin o and a scale s, at first (0, 0)
/// and 1. n is the number of points so far; "the last point" is o while there is none.
///   mode 0, lattice: the point o + s * (a, b) / 64, a and b signed.
///   mode 1, ring: k = 2 + 2 * (b & 0xFF) + (h & 1) points (2 … 513) on an ellipse around the
///           last point, with semi-axes r = s * (a + 1) / 64 and r * q, q = (b >> 8) / 64 (a
///           circle when b >> 8 is 0), turned by (h >> 1) * pi / 16; point i at the angle
///           2 pi (i + (c & 0xFF) / 256) / k. Each coordinate is then moved by a pseudo-random
///           whole number of units in [-j, j], j = c >> 9; the unit is s * 1e-7 when c's bit 8
///           is clear, the coordinate's unit in the last place when it is set.
///   mode 2, copy: 1 + (b & 0xFF) earlier points again, from point a % n on (wrapping).
///   mode 3, near-collinear: 1 + h points on the segment from point a % n to point b % n, at
///           t = ((c & 0xFF) + 97 i) % 256 / 256 for the i-th, moved off its line by
///           int8(c >> 8) * s * 1e-9 along its unit normal.
///   mode 4, special: the point (special(a), special(b)), where special(w) with e = w >> 4 is,
///           by w & 15: NaN, +inf, -inf, +0, -0, e * 5e-324, -e * 5e-324, 1e300, -1e300,
///           2^480 * e / 2048, -2^480 * e / 2048, 2^-480 * e / 2048, -2^-480 * e / 2048,
///           DBL_MAX, -DBL_MAX, e / 64.
///   mode 5, frame: o = (a, b) * 1e9 / 64 (a and b signed: 64 gives 1e9) and s = 2^(int16(c)
///           % 1101); no point.
///   mode 6, cloud: 1 + 2 * (b & 0xFF) pseudo-random points around the last point, in the box
///           of half-size r = s * (a + 1) / 64, or in the disc of radius r when c's bit 8 is
///           set; when g = c & 0xFF is not 0, the box or disc coordinates are multiples of r / g
///           (duplicates and collinear runs).
///   mode 7, reorder: the list turned left by a % n, then reversed when b is odd (which points
///           the hull's sample takes depends on the order); no point.
/// Copies, near-collinear points and reorders need an earlier point; with none they give none.
/// One ring record gives more than 128 points, enough for the hull's sample filter.
std::vector<gkVector<2>> gkHullFuzzDecode(const std::uint8_t* data, std::size_t size);

/// Computes gwConvexHull of the decoded points and the plain hull (every finite point sorted,
/// duplicates removed, Andrew's monotone chain with the same exact turns:
/// tests/support/plain_hull.h). Returns false when they differ (vertex by vertex, as
/// gkVector<2>::operator== compares: +0 equals -0, since which of two points differing only in
/// the sign of a zero survives the removal of duplicates depends on the sort).
bool gkHullFuzzCheck(const std::uint8_t* data, std::size_t size);
