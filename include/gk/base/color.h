#pragma once

/// A drawing colour, passed through to the tablet unchanged. Default is opaque black.
class gkColor {
 public:
  gkColor() = default;
  gkColor(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha = 255)
      : r_(red), g_(green), b_(blue), a_(alpha) {}

  unsigned char red() const { return r_; }
  unsigned char green() const { return g_; }
  unsigned char blue() const { return b_; }
  unsigned char alpha() const { return a_; }

  bool operator==(const gkColor& o) const {
    return r_ == o.r_ && g_ == o.g_ && b_ == o.b_ && a_ == o.a_;
  }
  bool operator!=(const gkColor& o) const { return !(*this == o); }

 private:
  unsigned char r_ = 0;
  unsigned char g_ = 0;
  unsigned char b_ = 0;
  unsigned char a_ = 255;
};
