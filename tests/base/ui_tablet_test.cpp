#include <gk/base/color.h>
#include <gk/base/pair.h>
#include <gk/base/ui_tablet.h>
#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

static_assert(std::is_abstract_v<gkUITablet>);
static_assert(std::has_virtual_destructor_v<gkUITablet>);
static_assert(std::is_default_constructible_v<gkColor>);
static_assert(std::is_default_constructible_v<gkUITablet::Layers>);

namespace {

struct Segment {
  gkPair<double> from;
  gkPair<double> to;
  gkColor color;
  gkUITablet::Layers layer;
};

/// A tablet that records every segment it is asked to draw.
class RecordingTablet : public gkUITablet {
 public:
  void drawLineSeg(const gkPair<double>& from, const gkPair<double>& to, const gkColor& color,
                   const Layers& layer) override {
    segments.push_back({from, to, color, layer});
  }

  std::vector<Segment> segments;
};

/// What a shape does: draws through a reference to the base class.
void drawTriangle(gkUITablet& tablet, const gkColor& color, gkUITablet::Layers layer) {
  const gkPair<double> a(0.0, 0.0);
  const gkPair<double> b(4.0, 0.0);
  const gkPair<double> c(0.0, 3.0);
  tablet.drawLineSeg(a, b, color, layer);
  tablet.drawLineSeg(b, c, color, layer);
  tablet.drawLineSeg(c, a, color, layer);
}

}  // namespace

TEST(UITablet, SubclassRecordsSegmentsDrawnThroughABaseReference) {
  RecordingTablet recorder;
  const gkColor red(255, 0, 0);
  drawTriangle(recorder, red, gkUITablet::eOverlayLayer);

  ASSERT_EQ(recorder.segments.size(), 3U);
  EXPECT_EQ(recorder.segments[0].from, gkPair<double>(0.0, 0.0));
  EXPECT_EQ(recorder.segments[0].to, gkPair<double>(4.0, 0.0));
  EXPECT_EQ(recorder.segments[1].from, gkPair<double>(4.0, 0.0));
  EXPECT_EQ(recorder.segments[1].to, gkPair<double>(0.0, 3.0));
  EXPECT_EQ(recorder.segments[2].from, gkPair<double>(0.0, 3.0));
  EXPECT_EQ(recorder.segments[2].to, gkPair<double>(0.0, 0.0));
  for (const Segment& s : recorder.segments) {
    EXPECT_EQ(s.color, red);
    EXPECT_EQ(s.layer, gkUITablet::eOverlayLayer);
  }
}

TEST(UITablet, ColorAndLayerArePassedThroughUnchanged) {
  RecordingTablet recorder;
  gkUITablet& tablet = recorder;
  const gkColor translucent(10, 20, 30, 40);
  tablet.drawLineSeg(gkPair<double>(-1.5, 2.25), gkPair<double>(1e9, -1e-9), translucent,
                     gkUITablet::eDefaultLayer);
  ASSERT_EQ(recorder.segments.size(), 1U);
  EXPECT_EQ(recorder.segments[0].from.x(), -1.5);
  EXPECT_EQ(recorder.segments[0].from.y(), 2.25);
  EXPECT_EQ(recorder.segments[0].to.x(), 1e9);
  EXPECT_EQ(recorder.segments[0].to.y(), -1e-9);
  EXPECT_EQ(recorder.segments[0].color.red(), 10);
  EXPECT_EQ(recorder.segments[0].color.green(), 20);
  EXPECT_EQ(recorder.segments[0].color.blue(), 30);
  EXPECT_EQ(recorder.segments[0].color.alpha(), 40);
  EXPECT_EQ(recorder.segments[0].layer, gkUITablet::eDefaultLayer);
}

TEST(UITablet, DefaultLayerIsTheValueInitialisedLayer) {
  EXPECT_EQ(gkUITablet::Layers(), gkUITablet::eDefaultLayer);
  EXPECT_EQ(static_cast<int>(gkUITablet::eDefaultLayer), 0);
  EXPECT_EQ(static_cast<int>(gkUITablet::eOverlayLayer), 1);
}

TEST(UITablet, RecordingTabletCanBeCopied) {
  RecordingTablet original;
  drawTriangle(original, gkColor(), gkUITablet::eDefaultLayer);
  const RecordingTablet copy(original);
  EXPECT_EQ(copy.segments.size(), 3U);
}

TEST(Color, DefaultIsOpaqueBlack) {
  const gkColor c;
  EXPECT_EQ(c.red(), 0);
  EXPECT_EQ(c.green(), 0);
  EXPECT_EQ(c.blue(), 0);
  EXPECT_EQ(c.alpha(), 255);
  EXPECT_EQ(c, gkColor(0, 0, 0, 255));
}

TEST(Color, AlphaDefaultsToOpaque) {
  const gkColor c(1, 2, 3);
  EXPECT_EQ(c.red(), 1);
  EXPECT_EQ(c.green(), 2);
  EXPECT_EQ(c.blue(), 3);
  EXPECT_EQ(c.alpha(), 255);
}

TEST(Color, ColorsCompareByAllFourChannels) {
  const gkColor c(1, 2, 3, 4);
  EXPECT_TRUE(c == gkColor(1, 2, 3, 4));
  EXPECT_FALSE(c != gkColor(1, 2, 3, 4));
  EXPECT_TRUE(c != gkColor(9, 2, 3, 4));
  EXPECT_TRUE(c != gkColor(1, 9, 3, 4));
  EXPECT_TRUE(c != gkColor(1, 2, 9, 4));
  EXPECT_TRUE(c != gkColor(1, 2, 3, 9));
  EXPECT_FALSE(c == gkColor(1, 2, 3, 9));
}
