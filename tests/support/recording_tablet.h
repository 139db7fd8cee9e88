#pragma once

#include <vector>

#include <gk/base/ui_tablet.h>

namespace gk::test {

/// A tablet that records every segment drawn on it, in order.
class RecordingTablet : public gkUITablet {
 public:
  struct Call {
    gkPair<double> from;
    gkPair<double> to;
    gkColor color;
    Layers layer;
    bool operator==(const Call& o) const {
      return from == o.from && to == o.to && color == o.color && layer == o.layer;
    }
  };

  void drawLineSeg(const gkPair<double>& from, const gkPair<double>& to, const gkColor& color,
                   const Layers& layer) override {
    calls.push_back({from, to, color, layer});
  }

  std::vector<Call> calls;
};

}  // namespace gk::test
