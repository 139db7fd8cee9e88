#include <gk/gk.h>

#include <iostream>

int main() {
  const gkContour square({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, true, 1);
  gkContour moved(std::vector<gkVector<2>>(), false, 0);
  square.map(gkXform<2>(gkMatrix<2>::identity(), gkVector<2>(5, 0)), moved);
  try {
    const gkContour single({{0, 0}}, true, 0);
    single.polygon();
    moved.cachedVectorSize(-1);
    std::cerr << "expected BadParams\n";
    return 1;
  } catch (const gkContourDefs::Errors& e) {
    if (e.errorNumber() != 0x10004683) {
      std::cerr << "wrong error number " << e.errorNumber() << "\n";
      return 1;
    }
  }
  std::cout << "consumer: " << moved.points()[0].x() << "\n";
  return moved.points()[0].x() == 5.0 ? 0 : 1;
}
