#include <gk/base/svg_tablet.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <ostream>
#include <set>
#include <sstream>
#include <string>

gkSvgTablet::BadSetting::~BadSetting() = default;

namespace {

// Room around the drawing, in picture pixels, so that strokes on the bounding box are not cut.
constexpr double kMarginPx = 12;
constexpr double kFontPx = 11;
constexpr double kLegendLinePx = 16;

bool finite(const gkPair<double>& p) {
  return std::isfinite(p.x()) && std::isfinite(p.y());
}

// Numbers go through to_chars, never printf or streams, so that the host's locale cannot turn
// a decimal point into a comma.
std::string number(double v, std::chars_format format, int precision) {
  char buf[400];  // a fixed-format 1e300 needs ~305 characters
  const auto result = std::to_chars(buf, buf + sizeof buf, v, format, precision);
  return std::string(buf, result.ptr);
}

// Drawn coordinates round-trip: 17 significant digits read back as the same double.
std::string exact(double v) {
  return number(v, std::chars_format::general, 17);
}

// Picture coordinates only need to be sharp on screen.
std::string px(double v) {
  return number(v, std::chars_format::fixed, 3);
}

std::string rgb(const gkColor& c) {
  return "rgb(" + std::to_string(c.red()) + "," + std::to_string(c.green()) + "," +
         std::to_string(c.blue()) + ")";
}

std::string opacity(const char* attribute, const gkColor& c) {
  if (c.alpha() == 255) {
    return "";
  }
  return std::string(" ") + attribute + "=\"" +
         number(c.alpha() / 255.0, std::chars_format::general, 4) + "\"";
}

// Length of the valid UTF-8 sequence starting at s[i] that encodes a character XML 1.0 allows,
// or 0. Overlong forms, surrogates and code points past U+10FFFF are not valid UTF-8.
std::size_t validXmlChar(const std::string& s, std::size_t i) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(s[k]); };
  const unsigned char b0 = byte(i);
  if (b0 < 0x80) {
    return (b0 >= 0x20 || b0 == '\t' || b0 == '\n' || b0 == '\r') ? 1 : 0;
  }
  std::size_t len = 0;
  unsigned long cp = 0;
  if ((b0 & 0xE0) == 0xC0) {
    len = 2;
    cp = b0 & 0x1F;
  } else if ((b0 & 0xF0) == 0xE0) {
    len = 3;
    cp = b0 & 0x0F;
  } else if ((b0 & 0xF8) == 0xF0) {
    len = 4;
    cp = b0 & 0x07;
  } else {
    return 0;
  }
  if (i + len > s.size()) {
    return 0;
  }
  for (std::size_t k = 1; k < len; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) {
      return 0;
    }
    cp = (cp << 6) | (byte(i + k) & 0x3F);
  }
  static const unsigned long kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (cp < kSmallest[len] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF) || cp == 0xFFFE ||
      cp == 0xFFFF) {
    return 0;
  }
  return len;
}

// Escapes the five XML specials and replaces whatever XML cannot carry by U+FFFD.
std::string xmlText(const std::string& s) {
  std::string out;
  out.reserve(s.size());
  for (std::size_t i = 0; i < s.size();) {
    const std::size_t len = validXmlChar(s, i);
    if (len == 0) {
      out += "\xEF\xBF\xBD";
      ++i;
      continue;
    }
    if (len == 1) {
      switch (s[i]) {
        case '&':
          out += "&amp;";
          break;
        case '<':
          out += "&lt;";
          break;
        case '>':
          out += "&gt;";
          break;
        case '"':
          out += "&quot;";
          break;
        case '\'':
          out += "&apos;";
          break;
        default:
          out += s[i];
      }
    } else {
      out.append(s, i, len);
    }
    i += len;
  }
  return out;
}

// An XML name usable as an id: ASCII letters, digits, '-', '_' and '.', not starting with a
// digit, '-' or '.'. Everything else becomes '-'.
std::string xmlId(const std::string& name) {
  std::string id;
  for (char ch : name) {
    const bool ok = (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') ||
                    (ch >= '0' && ch <= '9') || ch == '-' || ch == '_' || ch == '.';
    id += ok ? ch : '-';
  }
  if (id.empty() ||
      !((id[0] >= 'a' && id[0] <= 'z') || (id[0] >= 'A' && id[0] <= 'Z') || id[0] == '_')) {
    id = "g-" + id;
  }
  return id;
}

const char* layerName(gkUITablet::Layers layer) {
  return layer == gkUITablet::eOverlayLayer ? "overlay" : "default";
}

bool onLayer(gkUITablet::Layers item, gkUITablet::Layers layer) {
  // Any value other than the overlay goes with the default layer.
  return (item == gkUITablet::eOverlayLayer) == (layer == gkUITablet::eOverlayLayer);
}

}  // namespace

void gkSvgTablet::drawLineSeg(const gkPair<double>& from, const gkPair<double>& to,
                              const gkColor& color, const Layers& layer) {
  ++segmentCount_;
  if (!finite(from) || !finite(to)) {
    ++skippedCount_;
    return;
  }
  Group& g = current();
  if (!g.lines.empty()) {
    Polyline& last = g.lines.back();
    if (last.color == color && last.layer == layer && last.points.back() == from) {
      last.points.push_back(to);
      return;
    }
  }
  g.lines.push_back({color, layer, {from, to}});
}

void gkSvgTablet::drawText(const gkPair<double>& at, const std::string& text, const gkColor& color,
                           const Layers& layer) {
  if (!finite(at)) {
    ++skippedCount_;
    return;
  }
  current().texts.push_back({at, text, color, layer});
}

void gkSvgTablet::drawDot(const gkPair<double>& at, double radiusPx, const gkColor& color,
                          const Layers& layer) {
  if (!finite(at) || !std::isfinite(radiusPx) || radiusPx < 0) {
    ++skippedCount_;
    return;
  }
  current().dots.push_back({at, radiusPx, color, layer});
}

void gkSvgTablet::beginGroup(const std::string& name) {
  groups_.push_back({name, {}, {}, {}});
}

void gkSvgTablet::addLegendEntry(const std::string& label, const gkColor& color) {
  legend_.push_back({label, color});
}

void gkSvgTablet::widthPx(double w) {
  if (!std::isfinite(w) || w <= 0) {
    throw BadSetting(L"gkSvgTablet: the width must be finite and positive");
  }
  widthPx_ = w;
}

void gkSvgTablet::strokePx(double w) {
  if (!std::isfinite(w) || w <= 0) {
    throw BadSetting(L"gkSvgTablet: the stroke width must be finite and positive");
  }
  strokePx_ = w;
}

gkSvgTablet::Group& gkSvgTablet::current() {
  if (groups_.empty()) {
    beginGroup("drawing");
  }
  return groups_.back();
}

void gkSvgTablet::clear() {
  groups_.clear();
  legend_.clear();
  segmentCount_ = 0;
  skippedCount_ = 0;
}

void gkSvgTablet::write(std::ostream& out) const {
  // Bounds of everything kept (all of it is finite).
  double minX = 0, minY = 0, maxX = 0, maxY = 0;
  bool any = false;
  const auto extend = [&](const gkPair<double>& p) {
    if (!any) {
      minX = maxX = p.x();
      minY = maxY = p.y();
      any = true;
      return;
    }
    minX = std::min(minX, p.x());
    maxX = std::max(maxX, p.x());
    minY = std::min(minY, p.y());
    maxY = std::max(maxY, p.y());
  };
  for (const Group& g : groups_) {
    for (const Polyline& l : g.lines) {
      for (const auto& p : l.points) {
        extend(p);
      }
    }
    for (const Text& t : g.texts) {
      extend(t.at);
    }
    for (const Dot& d : g.dots) {
      extend(d.at);
    }
  }

  // Half extents: a difference of two finite doubles may overflow, half of each may not.
  const double halfW = maxX * 0.5 - minX * 0.5;
  const double halfH = maxY * 0.5 - minY * 0.5;
  const double halfMax = std::max(halfW, halfH);
  const double inner = std::max(widthPx_ - 2 * kMarginPx, 1.0);
  double scale = halfMax > 0 ? (inner * 0.5) / halfMax : 1.0;
  if (!std::isfinite(scale) || scale <= 0) {
    scale = 1.0;
  }
  const double heightPx = halfMax > 0 ? (halfH * scale) * 2 + 2 * kMarginPx : widthPx_;
  const double offsetX = kMarginPx - minX * scale;
  const double offsetY = kMarginPx - minY * scale;
  const auto toPx = [&](const gkPair<double>& p) {
    return std::make_pair(p.x() * scale + offsetX, p.y() * scale + offsetY);
  };

  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  out << "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"" << px(widthPx_)
      << "\" height=\"" << px(heightPx) << "\" viewBox=\"0 0 " << px(widthPx_) << ' '
      << px(heightPx) << "\">\n";
  if (!title_.empty()) {
    out << "<title>" << xmlText(title_) << "</title>\n";
  }
  out << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";

  std::set<std::string> usedIds;
  const auto uniqueId = [&](const std::string& base) {
    std::string id = base;
    for (int k = 2; !usedIds.insert(id).second; ++k) {
      id = base + "-" + std::to_string(k);
    }
    return id;
  };
  const std::string transform =
      "translate(" + exact(offsetX) + " " + exact(offsetY) + ") scale(" + exact(scale) + ")";

  // The default layer first, the overlay on top of it.
  for (Layers layer : {eDefaultLayer, eOverlayLayer}) {
    for (const Group& g : groups_) {
      const bool hasLines = std::any_of(g.lines.begin(), g.lines.end(),
                                        [&](const Polyline& l) { return onLayer(l.layer, layer); });
      const bool hasTexts = std::any_of(g.texts.begin(), g.texts.end(),
                                        [&](const Text& t) { return onLayer(t.layer, layer); });
      const bool hasDots = std::any_of(g.dots.begin(), g.dots.end(),
                                       [&](const Dot& d) { return onLayer(d.layer, layer); });
      if (!hasLines && !hasTexts && !hasDots) {
        continue;
      }
      std::string base = xmlId(g.name);
      if (layer == eOverlayLayer) {
        base += "-overlay";
      }
      out << "<g id=\"" << uniqueId(base) << "\" class=\"" << layerName(layer) << "\">\n";
      if (hasLines) {
        // Strokes keep their pixel width under the scale.
        out << "<g transform=\"" << transform << "\" fill=\"none\" stroke-width=\"" << px(strokePx_)
            << "\" stroke-linejoin=\"round\" stroke-linecap=\"round\">\n";
        for (const Polyline& l : g.lines) {
          if (!onLayer(l.layer, layer)) {
            continue;
          }
          out << "<polyline vector-effect=\"non-scaling-stroke\" stroke=\"" << rgb(l.color) << '"'
              << opacity("stroke-opacity", l.color) << " points=\"";
          for (std::size_t k = 0; k < l.points.size(); ++k) {
            out << (k ? " " : "") << exact(l.points[k].x()) << ',' << exact(l.points[k].y());
          }
          out << "\"/>\n";
        }
        out << "</g>\n";
      }
      for (const Dot& d : g.dots) {
        if (onLayer(d.layer, layer)) {
          const auto p = toPx(d.at);
          out << "<circle cx=\"" << px(p.first) << "\" cy=\"" << px(p.second) << "\" r=\""
              << px(d.radiusPx) << "\" fill=\"" << rgb(d.color) << '"'
              << opacity("fill-opacity", d.color) << "/>\n";
        }
      }
      for (const Text& t : g.texts) {
        if (onLayer(t.layer, layer)) {
          const auto p = toPx(t.at);
          out << "<text x=\"" << px(p.first + 2) << "\" y=\"" << px(p.second - 2)
              << "\" font-family=\"sans-serif\" font-size=\"" << px(kFontPx) << "\" fill=\""
              << rgb(t.color) << '"' << opacity("fill-opacity", t.color) << '>' << xmlText(t.text)
              << "</text>\n";
        }
      }
      out << "</g>\n";
    }
  }

  if (!legend_.empty()) {
    std::size_t longest = 0;
    for (const LegendEntry& e : legend_) {
      longest = std::max(longest, e.label.size());
    }
    const double boxW = 34 + 0.6 * kFontPx * static_cast<double>(longest);
    const double boxH = kLegendLinePx * static_cast<double>(legend_.size()) + 8;
    out << "<g id=\"" << uniqueId("legend") << "\" font-family=\"sans-serif\" font-size=\""
        << px(kFontPx) << "\">\n";
    out << "<rect x=\"4\" y=\"4\" width=\"" << px(boxW) << "\" height=\"" << px(boxH)
        << "\" fill=\"white\" fill-opacity=\"0.85\" stroke=\"rgb(160,160,160)\"/>\n";
    for (std::size_t k = 0; k < legend_.size(); ++k) {
      const double y = 4 + 4 + kLegendLinePx * (static_cast<double>(k) + 0.5);
      out << "<line x1=\"10\" y1=\"" << px(y) << "\" x2=\"28\" y2=\"" << px(y) << "\" stroke=\""
          << rgb(legend_[k].color) << '"' << opacity("stroke-opacity", legend_[k].color)
          << " stroke-width=\"3\"/>\n";
      out << "<text x=\"34\" y=\"" << px(y + 4) << "\">" << xmlText(legend_[k].label)
          << "</text>\n";
    }
    out << "</g>\n";
  }
  out << "</svg>\n";
}

std::string gkSvgTablet::str() const {
  std::ostringstream out;
  write(out);
  return out.str();
}
