#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include <gk/base/color.h>
#include <gk/base/exception.h>
#include <gk/base/pair.h>
#include <gk/base/ui_tablet.h>
#include <gk/gk_export.h>

/// A tablet that renders to a standalone SVG document. Shapes draw on it as on any tablet; the
/// picture is written when asked, scaled so that everything drawn fits the requested width.
///
/// Segments are grouped: beginGroup(name) starts a new `<g>` that collects the segments, texts
/// and markers drawn until the next beginGroup, so a picture keeps "outline", "hull" and so on
/// apart. Inside a group, a segment that starts where the previous one of the same colour and
/// layer ended extends the same `<polyline>`, so a contour of n vertices costs one element, not
/// n. The overlay layer is written after the default layer, so it is always on top.
///
/// Coordinates keep the image convention of vision tools: x to the right, y downwards, so a
/// picture looks like the image the contour was traced from. Polylines keep the drawn
/// coordinates exactly (17 significant digits, under a group transform), so a picture can be
/// read back and compared with the shape; texts and dots are placed in picture pixels so that
/// they keep their size whatever the scale.
///
/// Nothing that is not finite can be shown: a segment, text or dot with a non-finite coordinate
/// is skipped and counted. Text is escaped, and bytes that are not valid UTF-8 or not allowed in
/// XML are replaced, so the document is always well-formed XML.
class GK_EXPORT gkSvgTablet : public gkUITablet {
 public:
  /// Thrown for a setting the tablet cannot honour (a width that is not finite and positive).
  class GK_EXPORT BadSetting : public gkExceptionWithString {
   public:
    explicit BadSetting(const std::wstring& message) : gkExceptionWithString(message) {}
    ~BadSetting() override;
  };

  gkSvgTablet() = default;

  void drawLineSeg(const gkPair<double>& from, const gkPair<double>& to, const gkColor& color,
                   const Layers& layer) override;

  /// Draws text with its baseline starting at `at` (e.g. a vertex number).
  void drawText(const gkPair<double>& at, const std::string& text, const gkColor& color,
                const Layers& layer = eDefaultLayer);
  /// Draws a filled dot of the given radius in picture units (pixels of the written picture,
  /// so it stays visible whatever the scale), e.g. a query point.
  void drawDot(const gkPair<double>& at, double radiusPx, const gkColor& color,
               const Layers& layer = eDefaultLayer);

  /// Starts a named group; what is drawn next belongs to it. The name becomes the group's id
  /// (made XML-safe). Drawing before any beginGroup goes to a group named "drawing".
  void beginGroup(const std::string& name);
  /// Adds a line to the legend, drawn in the top-left corner in the order added.
  void addLegendEntry(const std::string& label, const gkColor& color);

  /// Picture title (the SVG `<title>`); empty for none.
  const std::string& title() const { return title_; }
  void title(const std::string& t) { title_ = t; }
  /// Width of the written picture in pixels (default 800; the height follows the aspect ratio).
  /// Values that are not finite and positive are refused with BadSetting.
  double widthPx() const { return widthPx_; }
  void widthPx(double w);
  /// Stroke width in pixels (default 1.5), kept whatever the scale. Values that are not finite
  /// and positive are refused with BadSetting.
  double strokePx() const { return strokePx_; }
  void strokePx(double w);

  /// The number of drawLineSeg calls received (segments with non-finite ends included).
  std::size_t segmentCount() const { return segmentCount_; }
  /// The number of segments, texts and dots skipped because a coordinate is not finite.
  std::size_t skippedCount() const { return skippedCount_; }

  /// Writes the document. An empty drawing gives a valid document of the requested width.
  void write(std::ostream& out) const;
  /// The document as a string.
  std::string str() const;
  /// Forgets everything drawn (groups, legend, counts); the settings stay.
  void clear();

 private:
  struct Polyline {
    gkColor color;
    Layers layer;
    std::vector<gkPair<double>> points;
  };
  struct Text {
    gkPair<double> at;
    std::string text;
    gkColor color;
    Layers layer;
  };
  struct Dot {
    gkPair<double> at;
    double radiusPx;
    gkColor color;
    Layers layer;
  };
  struct Group {
    std::string name;
    std::vector<Polyline> lines;
    std::vector<Text> texts;
    std::vector<Dot> dots;
  };
  struct LegendEntry {
    std::string label;
    gkColor color;
  };

  Group& current();

  std::vector<Group> groups_;
  std::vector<LegendEntry> legend_;
  std::string title_;
  double widthPx_ = 800;
  double strokePx_ = 1.5;
  std::size_t segmentCount_ = 0;
  std::size_t skippedCount_ = 0;
};
