#include <expat.h>
#include <gk/base/svg_tablet.h>
#include <gk/cntr/contour.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Pt = gkPair<double>;

/// One element of a parsed document: its name, attributes, text, and the id of the nearest
/// enclosing element that has one.
struct Element {
  std::string name;
  std::map<std::string, std::string> attributes;
  std::string text;
  std::string groupId;
};

/// Parses a document with expat; fails the test if it is not well-formed XML.
struct Parsed {
  std::vector<Element> elements;
  bool wellFormed = false;
  std::string error;

  std::vector<const Element*> all(const std::string& name) const {
    std::vector<const Element*> out;
    for (const Element& e : elements) {
      if (e.name == name) {
        out.push_back(&e);
      }
    }
    return out;
  }
};

Parsed parse(const std::string& document) {
  struct State {
    Parsed parsed;
    std::vector<std::size_t> open;     // indices into elements
    std::vector<std::string> idStack;  // nearest id per open element
  } state;
  XML_Parser parser = XML_ParserCreate("UTF-8");
  XML_SetUserData(parser, &state);
  XML_SetElementHandler(
      parser,
      [](void* data, const XML_Char* name, const XML_Char** attributes) {
        auto& s = *static_cast<State*>(data);
        Element e;
        e.name = name;
        for (int k = 0; attributes[k]; k += 2) {
          e.attributes[attributes[k]] = attributes[k + 1];
        }
        e.groupId = s.idStack.empty() ? "" : s.idStack.back();
        const auto id = e.attributes.find("id");
        s.idStack.push_back(id != e.attributes.end() ? id->second : e.groupId);
        s.open.push_back(s.parsed.elements.size());
        s.parsed.elements.push_back(e);
      },
      [](void* data, const XML_Char*) {
        auto& s = *static_cast<State*>(data);
        s.open.pop_back();
        s.idStack.pop_back();
      });
  XML_SetCharacterDataHandler(parser, [](void* data, const XML_Char* text, int len) {
    auto& s = *static_cast<State*>(data);
    if (!s.open.empty()) {
      s.parsed.elements[s.open.back()].text.append(text, static_cast<std::size_t>(len));
    }
  });
  state.parsed.wellFormed =
      XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) == XML_STATUS_OK;
  if (!state.parsed.wellFormed) {
    state.parsed.error = XML_ErrorString(XML_GetErrorCode(parser));
  }
  XML_ParserFree(parser);
  return state.parsed;
}

/// The points of a polyline, read back with strtod.
std::vector<Pt> points(const Element& polyline) {
  std::vector<Pt> out;
  std::istringstream in(polyline.attributes.at("points"));
  std::string pair;
  while (in >> pair) {
    const auto comma = pair.find(',');
    out.emplace_back(std::strtod(pair.substr(0, comma).c_str(), nullptr),
                     std::strtod(pair.substr(comma + 1).c_str(), nullptr));
  }
  return out;
}

const gkColor kRed(255, 0, 0);
const gkColor kBlue(0, 0, 255);

}  // namespace

TEST(SvgTablet, EmptyTabletWritesAWellFormedSquareDocumentOfTheRequestedWidth) {
  gkSvgTablet tablet;
  tablet.widthPx(300);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  ASSERT_EQ(doc.all("svg").size(), 1u);
  EXPECT_EQ(doc.all("svg")[0]->attributes.at("width"), "300.000");
  EXPECT_EQ(doc.all("svg")[0]->attributes.at("height"), "300.000");
  EXPECT_TRUE(doc.all("polyline").empty());
}

TEST(SvgTablet, ChainedSegmentsOfOneColourAndLayerBecomeOnePolyline) {
  gkSvgTablet tablet;
  tablet.drawLineSeg({0, 0}, {1, 0}, kRed, gkUITablet::eDefaultLayer);
  tablet.drawLineSeg({1, 0}, {1, 1}, kRed, gkUITablet::eDefaultLayer);
  tablet.drawLineSeg({1, 1}, {0, 0}, kRed, gkUITablet::eDefaultLayer);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  ASSERT_EQ(doc.all("polyline").size(), 1u);
  EXPECT_EQ(points(*doc.all("polyline")[0]), (std::vector<Pt>{{0, 0}, {1, 0}, {1, 1}, {0, 0}}));
  EXPECT_EQ(doc.all("polyline")[0]->attributes.at("stroke"), "rgb(255,0,0)");
  EXPECT_EQ(tablet.segmentCount(), 3u);
}

TEST(SvgTablet, AChangeOfColourOrLayerOrABreakInTheChainStartsANewPolyline) {
  gkSvgTablet tablet;
  tablet.drawLineSeg({0, 0}, {1, 0}, kRed, gkUITablet::eDefaultLayer);
  tablet.drawLineSeg({1, 0}, {2, 0}, kBlue, gkUITablet::eDefaultLayer);  // colour
  tablet.drawLineSeg({2, 0}, {3, 0}, kBlue, gkUITablet::eOverlayLayer);  // layer
  tablet.drawLineSeg({5, 0}, {6, 0}, kBlue, gkUITablet::eOverlayLayer);  // gap
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  EXPECT_EQ(doc.all("polyline").size(), 4u);
}

TEST(SvgTablet, PolylinePointsReadBackAsExactlyTheDrawnDoubles) {
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> coordinate(-1e6, 1e6);
  gkSvgTablet tablet;
  std::vector<Pt> drawn{{coordinate(rng), coordinate(rng)}};
  for (int k = 0; k < 500; ++k) {
    const Pt next(coordinate(rng), coordinate(rng));
    tablet.drawLineSeg(drawn.back(), next, kRed, gkUITablet::eDefaultLayer);
    drawn.push_back(next);
  }
  drawn.emplace_back(0.1, 1.0 / 3.0);
  tablet.drawLineSeg(drawn[drawn.size() - 2], drawn.back(), kRed, gkUITablet::eDefaultLayer);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  ASSERT_EQ(doc.all("polyline").size(), 1u);
  EXPECT_EQ(points(*doc.all("polyline")[0]), drawn);
}

TEST(SvgTablet, ClosedContourDrawsOnePolylineFromItsLastVertexThroughEveryVertex) {
  const gkContour square({{0, 0}, {4, 0}, {4, 3}, {0, 3}}, true, 0);
  gkSvgTablet tablet;
  tablet.beginGroup("outline");
  square.draw(tablet, gkContourDefs::eDrawOutline, kBlue, gkUITablet::eDefaultLayer);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  ASSERT_EQ(doc.all("polyline").size(), 1u);
  EXPECT_EQ(doc.all("polyline")[0]->groupId, "outline");
  EXPECT_EQ(points(*doc.all("polyline")[0]),
            (std::vector<Pt>{{0, 3}, {0, 0}, {4, 0}, {4, 3}, {0, 3}}));
}

TEST(SvgTablet, SegmentsTextsAndDotsWithNonFiniteCoordinatesAreSkippedAndCounted) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  gkSvgTablet tablet;
  tablet.drawLineSeg({0, 0}, {nan, 0}, kRed, gkUITablet::eDefaultLayer);
  tablet.drawLineSeg({nan, 0}, {1, inf}, kRed, gkUITablet::eDefaultLayer);
  tablet.drawLineSeg({1, 1}, {2, 2}, kRed, gkUITablet::eDefaultLayer);
  tablet.drawText({-inf, 0}, "lost", kRed);
  tablet.drawDot({0, nan}, 3, kRed);
  tablet.drawDot({0, 0}, nan, kRed);
  EXPECT_EQ(tablet.segmentCount(), 3u);
  EXPECT_EQ(tablet.skippedCount(), 5u);
  const std::string svg = tablet.str();
  const Parsed doc = parse(svg);
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  ASSERT_EQ(doc.all("polyline").size(), 1u);
  EXPECT_EQ(points(*doc.all("polyline")[0]), (std::vector<Pt>{{1, 1}, {2, 2}}));
  EXPECT_TRUE(doc.all("text").empty());
  EXPECT_TRUE(doc.all("circle").empty());
  EXPECT_EQ(svg.find("nan"), std::string::npos);
  EXPECT_EQ(svg.find("inf"), std::string::npos);
}

TEST(SvgTablet, TheOverlayLayerIsWrittenAfterEveryGroupOfTheDefaultLayer) {
  gkSvgTablet tablet;
  tablet.beginGroup("marks");
  tablet.drawLineSeg({0, 0}, {1, 1}, kRed, gkUITablet::eOverlayLayer);
  tablet.beginGroup("shape");
  tablet.drawLineSeg({0, 1}, {1, 0}, kBlue, gkUITablet::eDefaultLayer);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  const auto lines = doc.all("polyline");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0]->groupId, "shape");
  EXPECT_EQ(lines[1]->groupId, "marks-overlay");
}

TEST(SvgTablet, GroupNamesBecomeUniqueXmlSafeIds) {
  gkSvgTablet tablet;
  for (const char* name : {"hull", "hull", "2 holes & more", ""}) {
    tablet.beginGroup(name);
    tablet.drawLineSeg({0, 0}, {1, 1}, kRed, gkUITablet::eDefaultLayer);
  }
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  std::vector<std::string> ids;
  for (const Element* g : doc.all("g")) {
    if (g->attributes.count("id")) {
      ids.push_back(g->attributes.at("id"));
    }
  }
  EXPECT_EQ(ids, (std::vector<std::string>{"hull", "hull-2", "g-2-holes---more", "g-"}));
}

TEST(SvgTablet, DrawingBeforeAnyGroupGoesToTheDrawingGroup) {
  gkSvgTablet tablet;
  tablet.drawLineSeg({0, 0}, {1, 1}, kRed, gkUITablet::eDefaultLayer);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  ASSERT_EQ(doc.all("polyline").size(), 1u);
  EXPECT_EQ(doc.all("polyline")[0]->groupId, "drawing");
}

TEST(SvgTablet, TextIsEscapedAndWhatXmlCannotCarryIsReplaced) {
  gkSvgTablet tablet;
  tablet.title("a < b & \"c\"");
  tablet.drawText({0, 0}, "<3 & 'x'", kRed);
  tablet.drawText({1, 1}, std::string("bad \xff\xfe utf8 \x01 \xc0\xaf end"), kRed);
  tablet.drawText({2, 2}, "\xce\xb1 ok", kRed);  // a Greek alpha is kept
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  ASSERT_EQ(doc.all("title").size(), 1u);
  EXPECT_EQ(doc.all("title")[0]->text, "a < b & \"c\"");
  const auto texts = doc.all("text");
  ASSERT_EQ(texts.size(), 3u);
  EXPECT_EQ(texts[0]->text, "<3 & 'x'");
  const std::string replacement = "\xEF\xBF\xBD";
  EXPECT_EQ(texts[1]->text, "bad " + replacement + replacement + " utf8 " + replacement + " " +
                                replacement + replacement + " end");
  EXPECT_EQ(texts[2]->text, "\xce\xb1 ok");
}

TEST(SvgTablet, LegendListsItsEntriesInOrderWithTheirColours) {
  gkSvgTablet tablet;
  tablet.drawLineSeg({0, 0}, {1, 1}, kRed, gkUITablet::eDefaultLayer);
  tablet.addLegendEntry("outline", kRed);
  tablet.addLegendEntry("hull", kBlue);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  std::vector<std::string> labels;
  std::vector<std::string> strokes;
  for (const Element& e : doc.elements) {
    if (e.groupId == "legend" && e.name == "text") {
      labels.push_back(e.text);
    }
    if (e.groupId == "legend" && e.name == "line") {
      strokes.push_back(e.attributes.at("stroke"));
    }
  }
  EXPECT_EQ(labels, (std::vector<std::string>{"outline", "hull"}));
  EXPECT_EQ(strokes, (std::vector<std::string>{"rgb(255,0,0)", "rgb(0,0,255)"}));
}

TEST(SvgTablet, TranslucentColoursCarryTheirOpacity) {
  gkSvgTablet tablet;
  tablet.drawLineSeg({0, 0}, {1, 1}, gkColor(0, 128, 0, 51), gkUITablet::eDefaultLayer);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  ASSERT_EQ(doc.all("polyline").size(), 1u);
  EXPECT_EQ(doc.all("polyline")[0]->attributes.at("stroke-opacity"), "0.2");
}

TEST(SvgTablet, WidthAndStrokeThatAreNotFiniteAndPositiveAreRefusedAndLeaveTheSettings) {
  gkSvgTablet tablet;
  tablet.widthPx(640);
  tablet.strokePx(2);
  for (double bad : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(),
                     std::numeric_limits<double>::infinity()}) {
    EXPECT_THROW(tablet.widthPx(bad), gkSvgTablet::BadSetting);
    EXPECT_THROW(tablet.strokePx(bad), gkSvgTablet::BadSetting);
  }
  EXPECT_EQ(tablet.widthPx(), 640);
  EXPECT_EQ(tablet.strokePx(), 2);
}

TEST(SvgTablet, TheHeightFollowsTheAspectRatioOfWhatWasDrawn) {
  gkSvgTablet tablet;
  tablet.widthPx(224);  // 200 pixels inside the 12-pixel margins
  tablet.drawLineSeg({10, 10}, {110, 60}, kRed, gkUITablet::eDefaultLayer);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  EXPECT_EQ(doc.all("svg")[0]->attributes.at("height"), "124.000");
}

TEST(SvgTablet, HugeCoordinatesGiveAFiniteTransformAndExactPoints) {
  gkSvgTablet tablet;
  const double huge = std::numeric_limits<double>::max();
  tablet.drawLineSeg({-huge, -huge}, {huge, huge}, kRed, gkUITablet::eDefaultLayer);
  tablet.drawText({huge, -huge}, "corner", kRed);
  const std::string svg = tablet.str();
  const Parsed doc = parse(svg);
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  EXPECT_EQ(points(*doc.all("polyline")[0]), (std::vector<Pt>{{-huge, -huge}, {huge, huge}}));
  EXPECT_EQ(svg.find("inf"), std::string::npos);
  EXPECT_EQ(svg.find("nan"), std::string::npos);
}

TEST(SvgTablet, ClearForgetsTheDrawingButKeepsTheSettings) {
  gkSvgTablet tablet;
  tablet.widthPx(500);
  tablet.title("kept");
  tablet.drawLineSeg({0, 0}, {1, 1}, kRed, gkUITablet::eDefaultLayer);
  tablet.addLegendEntry("gone", kRed);
  tablet.clear();
  EXPECT_EQ(tablet.segmentCount(), 0u);
  EXPECT_EQ(tablet.widthPx(), 500);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  EXPECT_TRUE(doc.all("polyline").empty());
  EXPECT_TRUE(doc.all("line").empty());
  EXPECT_EQ(doc.all("title")[0]->text, "kept");
}

TEST(SvgTablet, DotsAndTextsArePlacedInPicturePixels) {
  gkSvgTablet tablet;
  tablet.widthPx(224);
  tablet.drawLineSeg({0, 0}, {100, 100}, kRed, gkUITablet::eDefaultLayer);
  tablet.drawDot({50, 25}, 3, kBlue);
  tablet.drawText({100, 100}, "7", kBlue);
  const Parsed doc = parse(tablet.str());
  ASSERT_TRUE(doc.wellFormed) << doc.error;
  const Element& dot = *doc.all("circle")[0];
  EXPECT_EQ(dot.attributes.at("cx"), "112.000");
  EXPECT_EQ(dot.attributes.at("cy"), "62.000");
  EXPECT_EQ(dot.attributes.at("r"), "3.000");
  const Element& text = *doc.all("text")[0];
  EXPECT_EQ(text.attributes.at("x"), "214.000");  // 2 px right of the anchor
  EXPECT_EQ(text.attributes.at("y"), "210.000");  // 2 px above it
  EXPECT_EQ(text.text, "7");
}
