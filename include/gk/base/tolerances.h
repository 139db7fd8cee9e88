#pragma once

/// The library's tolerances, each named once with the reason it has the value it has.
/// Algorithms use these names, never bare literals.

/// Two vertices (or a direction and an axis) closer than this in every coordinate are the same:
/// only what rounding of exact inputs can produce, so distinct input points stay distinct.
inline constexpr double gkTolCoincident = 1e-15;

/// Proximity and crossing tolerance in coordinate units: a point within this distance of a
/// segment lies on it. Vision coordinates are pixels, so this is far below any real feature.
inline constexpr double gkTolProximity = 1e-6;

/// Two lines are parallel when the sine of the angle between them is at most this. Relative to
/// the direction lengths, so it does not depend on scale; 1e-10 rad is a 1e-6 offset over 1e4
/// units, which keeps it in step with gkTolProximity over any image-sized extent.
inline constexpr double gkTolParallelSine = 1e-10;
