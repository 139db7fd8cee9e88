#pragma once

#include <cstddef>
#include <cstdint>

/// What the first byte of a fuzz input selects (modulo kArchiveFuzzChoices): how the rest of the
/// input, an archive, is loaded.
enum gkArchiveFuzzChoice : std::uint8_t {
  eFuzzLoadObject = 0,  ///< gkArchive::loadObject()
  eFuzzContour,         ///< ar || gkPtrHandle<gkContour>
  eFuzzRegion,          ///< ar || gkPtrHandle<gkRegion>
  eFuzzRegionSet,       ///< ar || gkPtrHandle<gkRegionSet>
  eFuzzContourT,        ///< ar || gkPtrHandle<gkContourT<gkEdgelet>>
  eFuzzRegionT,         ///< ar || gkPtrHandle<gkRegionT<gkEdgelet>>
  eFuzzRegionSetT,      ///< ar || gkPtrHandle<gkRegionSetT<gkEdgelet>>
  eFuzzXform,           ///< ar || gkPtrHandle_const<gk2XformBase>
  kArchiveFuzzChoices
};

/// Loads one fuzz input and exercises what was loaded. Returns true when the load succeeded,
/// false when it was refused with a gkException. Anything else (another exception, a crash, a
/// sanitizer report) escapes: that is a finding.
bool gkArchiveFuzzLoad(const std::uint8_t* data, std::size_t size);

/// The fuzzer's body: gkArchiveFuzzLoad, always 0 (libFuzzer's convention).
int gkArchiveFuzzOne(const std::uint8_t* data, std::size_t size);
