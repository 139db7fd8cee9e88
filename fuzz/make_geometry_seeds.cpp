// Writes the seed corpus of the geometry fuzzer: the scenes of geometry_fuzz_seeds.h, each
// encoded into the fuzzer's byte format (geometry_fuzz_target.h), one file per scene.
//
//   gkgeom_make_geometry_seeds <directory>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "geometry_fuzz_seeds.h"
#include "geometry_fuzz_target.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: " << argv[0] << " <directory>\n";
    return 2;
  }
  int written = 0;
  for (const auto& [name, scene] : gk::fuzz::geometrySeeds()) {
    const std::string path = std::string(argv[1]) + "/" + name;
    const std::vector<std::uint8_t> bytes = gkGeometryFuzzEncode(scene);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    if (!out) {
      std::cerr << "gkgeom_make_geometry_seeds: cannot write " << path << '\n';
      return 1;
    }
    ++written;
  }
  std::cout << "wrote " << written << " seeds to " << argv[1] << '\n';
  return 0;
}
