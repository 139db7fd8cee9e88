#include <gtest/gtest.h>

#include <gk/base/angle.h>
#include <gk/base/color.h>
#include <gk/base/edgelet.h>
#include <gk/base/vector.h>

namespace {

using V = gkVector<2>;

}  // namespace

// ---- gkEdgelet -------------------------------------------------------------------------------

TEST(Edgelet, DefaultIsAtTheOriginWithNoMagnitudeAndAngleZero) {
  const gkEdgelet e;
  EXPECT_EQ(e.position(), V());
  EXPECT_EQ(e.magnitude(), 0);
  EXPECT_EQ(e.angle(), gkAngle8(0));
}

TEST(Edgelet, KeepsPositionMagnitudeAndAngle) {
  const gkEdgelet e(V(12.25, -0.1), 40000, gkAngle8(200));
  EXPECT_EQ(e.position(), V(12.25, -0.1));
  EXPECT_EQ(e.magnitude(), 40000);
  EXPECT_EQ(e.angle().value(), 200);
}

TEST(Edgelet, MagnitudeCoversTheFullSixteenBitRange) {
  EXPECT_EQ(gkEdgelet(V(), 65535, gkAngle8()).magnitude(), 65535);
}

TEST(Edgelet, EqualityComparesEveryField) {
  const gkEdgelet e(V(1.0, 2.0), 300, gkAngle8(7));
  EXPECT_EQ(e, gkEdgelet(V(1.0, 2.0), 300, gkAngle8(7)));
  EXPECT_NE(e, gkEdgelet(V(1.0, 2.5), 300, gkAngle8(7)));
  EXPECT_NE(e, gkEdgelet(V(1.0, 2.0), 301, gkAngle8(7)));
  EXPECT_NE(e, gkEdgelet(V(1.0, 2.0), 300, gkAngle8(8)));
}

// ---- gkColor ---------------------------------------------------------------------------------

TEST(DrawingColor, DefaultIsOpaqueBlack) {
  const gkColor c;
  EXPECT_EQ(c.red(), 0);
  EXPECT_EQ(c.green(), 0);
  EXPECT_EQ(c.blue(), 0);
  EXPECT_EQ(c.alpha(), 255);
}

TEST(DrawingColor, KeepsItsChannels) {
  const gkColor c(10, 20, 30, 40);
  EXPECT_EQ(c.red(), 10);
  EXPECT_EQ(c.green(), 20);
  EXPECT_EQ(c.blue(), 30);
  EXPECT_EQ(c.alpha(), 40);
}

TEST(DrawingColor, AlphaDefaultsToOpaque) {
  EXPECT_EQ(gkColor(1, 2, 3).alpha(), 255);
  EXPECT_EQ(gkColor(1, 2, 3), gkColor(1, 2, 3, 255));
}

TEST(DrawingColor, EqualityComparesEveryChannel) {
  const gkColor c(10, 20, 30, 40);
  EXPECT_EQ(c, gkColor(10, 20, 30, 40));
  EXPECT_NE(c, gkColor(11, 20, 30, 40));
  EXPECT_NE(c, gkColor(10, 21, 30, 40));
  EXPECT_NE(c, gkColor(10, 20, 31, 40));
  EXPECT_NE(c, gkColor(10, 20, 30, 41));
}
