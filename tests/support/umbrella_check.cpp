#include <gk/gk.h>

int main() {
  const gkContour square({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, true, 7);
  return square.label() == 7 && square.points().size() == 4 ? 0 : 1;
}
